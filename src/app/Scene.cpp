#include "app/Scene.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "app/Chain.h"
#include "app/FileInfo.h"
#include "app/entities/GeomEntity.h"
#include "app/entities/JointEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PlaneEntity.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Particle.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "script/ValueConversions.h"
#include "util/Assert.h"
#include "util/Exception.h"
#include "util/Pointee.h"

namespace app {

namespace {

// Takes the entity's physics out; a failure is reported and the entity is gone anyway.
void RemoveFromSimulationGuarded(Entity& entity) {
    try {
        entity.RemoveFromSimulation();
    } catch (const std::exception& e) {
        Log(logging::Warning,
            "Exception caught when removing entity from simulation:" + util::String(e.what()));
    }
}

// Resets every attribute of the object to the value it was made with.
void ResetAttributes(const script::ClassObject& object) {
    for (const script::VariablePtr& variable : object.GetVariables()) {
        if (auto* attribute = dynamic_cast<script::AbstractAttrib*>(variable.Get())) {
            attribute->ResetToDefault();
        }
    }
}

// The same for the named attributes of an object under the root, when it is there.
void ResetNamedAttributes(const util::String& path, std::initializer_list<const char*> names) {
    if (const script::ClassObject* object = script::FindInRoot(path)) {
        for (const char* name : names) {
            if (auto* attribute =
                    dynamic_cast<script::AbstractAttrib*>(object->GetVariable(name).Get())) {
                attribute->ResetToDefault();
            }
        }
    }
}

}  // namespace

Scene::Scene() : script::Reflected("Scene"), m_camera(new Camera()) {
    AddAttrib(title, "title", "");
    AddAttrib(author, "author", "");
    AddAttrib(description, "description", "");
    m_selection = GroupPtr(new Group("selected"));
    m_groups.insert(m_selection);
    AddMemberCmd("Clear", &Scene::Clear);
    AddMemberCmd("New", &Scene::New);
    AddCommand("EraseWater", [this](script::ObjectPtr selectedOnly) {
        EraseWater(script::ObjectToValue<bool>(std::move(selectedOnly)));
    });
    AddReflected(m_camera);
    Clear();
}

Scene::~Scene() {
    // At the end of the program the world may be gone first; then there is nothing to undo.
    if (!physics::Simulation::IsAlive()) {
        return;
    }
    for (const EntityPtr& entity : m_entities) {
        RemoveFromSimulationGuarded(*entity);
    }
}

void Scene::AddEntity(const EntityPtr& entity) {
    if (!entity) {
        return;
    }
    m_entities.push_back(entity);
    entity->AddToSimulation();
}

void Scene::RemoveEntity(const EntityPtr& entity) {
    const auto found = std::find(m_entities.begin(), m_entities.end(), entity);
    if (found != m_entities.end()) {
        m_entities.erase(found);
    }
    // A copy: a group's callback may change the set of groups.
    std::vector<GroupPtr> groups(m_groups.begin(), m_groups.end());
    for (const GroupPtr& group : groups) {
        group->Remove(entity);
    }
    RemoveFromSimulationGuarded(*entity);
}

std::vector<EntityPtr> Scene::GetEntitiesAt(const math::Vec2& point) const {
    std::vector<EntityPtr> found;
    for (auto it = m_entities.rbegin(); it != m_entities.rend(); ++it) {
        if ((*it)->Contains(point)) {
            found.push_back(*it);
        }
    }
    return found;
}

EntityPtr Scene::GetEntityAt(const math::Vec2& point) const {
    for (auto it = m_entities.rbegin(); it != m_entities.rend(); ++it) {
        if ((*it)->Contains(point)) {
            return *it;
        }
    }
    return nullptr;
}

GroupPtr Scene::GetEntityGroupAt(const math::Vec2& point) const {
    GroupPtr taken(new Group());
    const EntityPtr entity = GetEntityAt(point);
    if (!entity) {
        return taken;
    }
    taken->Add(entity);
    if (GetModifiers().alt) {
        return taken;
    }
    if (const ChainPtr& chain = entity->GetChain()) {
        for (const EntityPtr& neighbour : chain->GetNeighbors(entity, true)) {
            taken->Add(neighbour);
        }
    }
    const GroupPtr& tracked = m_camera->GetTrackedGroup();
    for (const GroupPtr& group : m_groups) {
        if (group != m_selection && group != tracked && group->Contains(entity)) {
            taken->Add(*group);
        }
    }
    return taken;
}

std::vector<physics::GeomPtr> Scene::GetGeomsAt(const math::Vec2& point) const {
    std::vector<physics::GeomPtr> geoms;
    for (auto it = m_entities.rbegin(); it != m_entities.rend(); ++it) {
        const auto* shape = dynamic_cast<const GeomEntity*>(it->Get());
        if (shape && shape->Contains(point)) {
            geoms.push_back(shape->GetGeom());
        }
    }
    geoms.push_back(physics::Simulation::Get().GetWorldGeom());
    return geoms;
}

physics::GeomPtr Scene::GetGeomAt(const math::Vec2& point) const {
    for (auto it = m_entities.rbegin(); it != m_entities.rend(); ++it) {
        const auto* shape = dynamic_cast<const GeomEntity*>(it->Get());
        if (shape && shape->Contains(point)) {
            return shape->GetGeom();
        }
    }
    return physics::Simulation::Get().GetWorldGeom();
}

util::HashSet<physics::GeomPtr> Scene::GetSimGeoms() const {
    util::HashSet<physics::GeomPtr> geoms;
    for (const EntityPtr& entity : m_entities) {
        const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get());
        if (shape && shape->IsInSimulation()) {
            geoms.insert(shape->GetGeom());
        }
    }
    return geoms;
}

void Scene::SortByZ() {
    std::stable_sort(
        m_entities.begin(), m_entities.end(),
        [](const EntityPtr& a, const EntityPtr& b) { return a->zDepth->Get() < b->zDepth->Get(); });
}

void Scene::RenumberZ() {
    for (size_t i = 0; i < m_entities.size(); ++i) {
        m_entities[i]->zDepth->SetNative(static_cast<float>(i));
    }
}

void Scene::MoveToBack(const Group& group) {
    std::stable_partition(m_entities.begin(), m_entities.end(),
                          [&group](const EntityPtr& e) { return group.Contains(e); });
}

void Scene::MoveToFront(const Group& group) {
    std::stable_partition(m_entities.begin(), m_entities.end(),
                          [&group](const EntityPtr& e) { return !group.Contains(e); });
}

void Scene::TransformEntities(const Group& group, const physics::Transform& transform) {
    const std::vector<EntityPtr> members = group.InOrder(m_entities);
    for (const EntityPtr& entity : members) {
        entity->BeginTransform();
    }
    for (const EntityPtr& entity : members) {
        entity->Transform(transform);
    }
    for (const EntityPtr& entity : members) {
        entity->EndTransform();
    }
}

GroupPtr Scene::GetGroup(const util::String& name) const {
    for (const GroupPtr& group : m_groups) {
        if (group->GetName() == name) {
            return group;
        }
    }
    return nullptr;
}

GroupPtr Scene::GetOrCreateGroup(const util::String& name) {
    GroupPtr group = GetGroup(name);
    if (!group) {
        group = GroupPtr(new Group(name));
        AddGroup(group);
    }
    return group;
}

void Scene::AddGroup(const GroupPtr& group) {
    m_groups.insert(group);
}

void Scene::RemoveGroup(const GroupPtr& group) {
    if (group != m_selection) {
        m_groups.erase(group);
    }
}

void Scene::Select(const Group& group) {
    const Modifiers keys = GetModifiers();
    if (m_selection->empty() || (keys.ctrl && !keys.shift)) {
        m_selection->Add(group);
    } else if (keys.shift) {
        m_selection->Remove(group);
    } else {
        m_selection->Clear();
        m_selection->Add(group);
    }
}

bool Scene::SelectInside(const physics::Polygon& polygon) {
    Group inside;
    for (const EntityPtr& entity : m_entities) {
        if (entity->IsInside(polygon)) {
            inside.Add(entity);
        }
    }
    Select(inside);
    return !inside.empty();
}

bool Scene::SelectAt(const math::Vec2& point) {
    Select(*GetEntityGroupAt(point));
    return !m_selection->empty();
}

GroupPtr Scene::CloneGroup(const Group& group) {
    return CloneGroupWith(group, nullptr);
}

GroupPtr Scene::CloneGroupTransformed(const Group& group, const math::Mat3& transform) {
    return CloneGroupWith(group, &transform);
}

GroupPtr Scene::CloneGroupWith(const Group& group, const math::Mat3* matrix) {
    // The matrix as a scale along the world axes followed by a rigid placement.
    float sx = 1;
    float sy = 1;
    physics::Transform placement;
    if (matrix) {
        const math::Vec2 column0((*matrix)(0, 0), (*matrix)(1, 0));
        const math::Vec2 column1((*matrix)(0, 1), (*matrix)(1, 1));
        const float det = math::Cross(column0, column1);
        sx = column0.Length();
        sy = det < 0 ? -column1.Length() : column1.Length();
        if (!(sx > 0) || !(std::fabs(sy) > 0) ||
            std::fabs(math::Dot(column0, column1)) > 1e-4f * sx * std::fabs(sy)) {
            VORRA_THROW(BadDataException, "Bad transform");
        }
        placement.rotation = column0 / sx;
        placement.translation = math::Vec2((*matrix)(0, 2), (*matrix)(1, 2));
    }

    const std::vector<EntityPtr> members = group.InOrder(m_entities);
    std::map<const Entity*, EntityPtr> clones;
    std::map<const physics::Geom*, physics::GeomPtr> geomClones;
    // The bodies of the originals, with the clones of their geoms, in the order met.
    std::vector<std::pair<const physics::AbstractBody*, physics::GeomSet>> bodies;
    for (const EntityPtr& entity : members) {
        const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get());
        if (!shape) {
            continue;
        }
        const EntityPtr clone = matrix ? shape->CloneScaled(sx, sy) : shape->Clone();
        auto& cloned = static_cast<GeomEntity&>(*clone);
        if (matrix) {
            cloned.MoveGeom(placement);
        }
        clones[entity.Get()] = clone;
        geomClones[shape->GetGeom().Get()] = cloned.GetGeom();
        const physics::AbstractBody* body = shape->GetGeom()->GetBody();
        const auto slot = std::find_if(bodies.begin(), bodies.end(),
                                       [body](const auto& entry) { return entry.first == body; });
        if (!body) {
            continue;
        }
        if (slot == bodies.end()) {
            bodies.push_back({body, {}});
            bodies.back().second.insert(cloned.GetGeom());
        } else {
            slot->second.insert(cloned.GetGeom());
        }
    }
    physics::Simulation& sim = physics::Simulation::Get();
    for (const auto& [original, geoms] : bodies) {
        // A ground clone stays with the ground; a shared body is shared again.
        if (original == sim.GetWorldBody().Get()) {
            sim.GetWorldBody()->AddGeoms(geoms);
        } else if (geoms.size() > 1) {
            physics::BodyPtr body(new physics::Body());
            body->SetGeoms(geoms);
            sim.AddBody(body);
        }
    }
    GroupPtr result(new Group());
    for (const EntityPtr& entity : members) {
        const auto found = clones.find(entity.Get());
        if (found != clones.end()) {
            AddEntity(found->second);
            result->Add(found->second);
        }
    }
    const auto cloneOf = [&](const physics::GeomPtr& geom) {
        const auto found = geomClones.find(geom.Get());
        return found == geomClones.end() ? geom : found->second;
    };
    const auto mapPoint = [&](const math::Vec2& p) {
        return matrix ? matrix->TransformPoint(p) : p;
    };
    for (const EntityPtr& entity : members) {
        EntityPtr clone;
        if (const auto* joint = dynamic_cast<const JointEntity*>(entity.Get())) {
            const JointEntityPtr copy = joint->Clone();
            if (matrix) {
                const math::Vec2 points[2] = {mapPoint(joint->GetWorld(0)),
                                              mapPoint(joint->GetWorld(1))};
                copy->Attach(points);
            } else if (joint->GetGeom(0) && joint->GetGeom(1)) {
                copy->SetEnds(cloneOf(joint->GetGeom(0)), joint->GetLocal(0),
                              cloneOf(joint->GetGeom(1)), joint->GetLocal(1));
            }
            clone = copy;
        } else if (const auto* pen = dynamic_cast<const PenEntity*>(entity.Get())) {
            const PenEntityPtr copy = pen->ClonePen();
            if (matrix || !pen->GetGeom()) {
                const math::Vec2 at = mapPoint(pen->GetWorldPoint());
                const physics::GeomPtr under = GetGeomAt(at);
                copy->SetGeom(under, under->GetTransform().Inverted().Apply(at));
            } else {
                copy->SetGeom(cloneOf(pen->GetGeom()), pen->GetLocalPoint());
            }
            clone = copy;
        } else {
            continue;
        }
        clones[entity.Get()] = clone;
        AddEntity(clone);
        result->Add(clone);
    }
    // Chains come along as new chains with the same places.
    std::map<const Chain*, ChainPtr> chains;
    for (const EntityPtr& entity : members) {
        const ChainPtr& chain = entity->GetChain();
        const auto clone = clones.find(entity.Get());
        if (!chain || clone == clones.end()) {
            continue;
        }
        ChainPtr& copy = chains[chain.Get()];
        if (!copy) {
            copy = ChainPtr(new Chain());
        }
        copy->AddEntity(static_cast<size_t>(chain->GetIndex(entity.Get())), clone->second);
    }
    SortByZ();
    RenumberZ();
    return result;
}

void Scene::FlushBodies() {
    physics::Simulation& sim = physics::Simulation::Get();
    util::HashSet<const physics::AbstractBody*> used;
    used.insert(sim.GetWorldBody().Get());
    for (const EntityPtr& entity : m_entities) {
        if (const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get())) {
            used.insert(shape->GetGeom()->GetBody());
        }
    }
    std::vector<physics::BodyPtr> unused;
    for (const physics::BodyPtr& body : sim.GetBodies()) {
        if (used.Contains(body.Get())) {
            continue;
        }
        const physics::GeomSet& geoms = body->GetGeoms();
        if (geoms.size() == 1 && dynamic_cast<physics::WorldGeom*>(geoms.begin()->Get())) {
            continue;
        }
        unused.push_back(body);
    }
    for (const physics::BodyPtr& body : unused) {
        sim.RemoveBody(body);
    }
}

void Scene::Update(float dt) {
    std::vector<EntityPtr> gone;
    // A copy: an update may add or remove entities.
    const std::vector<EntityPtr> entities = m_entities;
    for (const EntityPtr& entity : entities) {
        try {
            if (entity->IsInSimulation()) {
                entity->Update(dt);
            } else {
                gone.push_back(entity);
            }
        } catch (const std::exception& e) {
            Log(logging::Warning, "Entity update error:" + util::String(e.what()));
        }
    }
    for (const EntityPtr& entity : gone) {
        RemoveEntity(entity);
    }
    FlushBodies();
    std::vector<GroupPtr> empty;
    for (const GroupPtr& group : m_groups) {
        if (group != m_selection && group->empty()) {
            empty.push_back(group);
        }
    }
    for (const GroupPtr& group : empty) {
        m_groups.erase(group);
    }
}

void Scene::RunSteps(long count) {
    physics::Simulation& sim = physics::Simulation::Get();
    script::Parser& parser = script::Parser::Get();
    const bool wasRunning = sim.running->Get();
    sim.running->SetNative(true);
    for (long i = 0; i < count; ++i) {
        parser.Update();
        Update(sim.timeDelta->Get());
        sim.StepTimed(true);
        // As the frame does once a frame: the handles of the step's contacts go.
        util::SweepHandles();
    }
    sim.running->SetNative(wasRunning);
}

void Scene::FinishLoading() {
    SortByZ();
    RenumberZ();
    FlushBodies();
}

void Scene::ZoomToScene() {
    math::BoundingBox2f box;
    for (const EntityPtr& entity : m_entities) {
        const math::BoundingBox2f entityBox = entity->GetBoundingBox();
        if (!entityBox.IsEmpty() && entityBox.IsFinite()) {
            box.Add(entityBox);
            CODE_ASSERT(box.IsFinite());
        }
    }
    for (const physics::ParticlePtr& particle : physics::Simulation::Get().GetParticles()) {
        box.Add(particle->position);
    }
    if (box.IsEmpty() || !box.IsFinite()) {
        m_camera->Reset();
        return;
    }
    m_camera->FitBox(box);
}

void Scene::Clear() {
    m_onClear.CallAll();
    m_camera->SetTrackedGroup(nullptr);
    // The world is emptied first, all at once: the entities then leave a world with no
    // bodies to split or rebuild. Each of a thousand fix joints would otherwise split its
    // body again as it left.
    physics::Simulation::Get().Clear();
    for (auto entity = m_entities.rbegin(); entity != m_entities.rend(); ++entity) {
        RemoveFromSimulationGuarded(**entity);
    }
    m_entities.clear();
    m_groups.clear();
    m_selection->Clear();
    m_groups.insert(m_selection);
    title->SetNative("");
    description->SetNative("");
    author->SetNative("");
    if (FileInfo::IsAlive()) {
        FileInfo& info = FileInfo::Get();
        info.title->SetNative("");
        info.author->SetNative("");
        info.description->SetNative("");
    }
}

void Scene::New() {
    Clear();
    ResetAttributes(physics::Simulation::Get());
    ResetNamedAttributes("App", {"borders", "waterColor", "fadeColor"});
    ResetNamedAttributes("Background", {"skyColor", "cloudOpacity", "drawClouds"});
    m_camera->pan->ResetToDefault();
    m_camera->zoom->ResetToDefault();
}

void Scene::EraseWater(bool selectedOnly) {
    physics::Simulation& sim = physics::Simulation::Get();
    if (!selectedOnly) {
        sim.ClearParticles();
        return;
    }
    const std::vector<EntityPtr> selected = m_selection->InOrder(m_entities);
    const physics::ParticleList particles = sim.GetParticles();
    sim.ClearParticles();
    for (const physics::ParticlePtr& particle : particles) {
        const bool inside = std::any_of(selected.begin(), selected.end(), [&](const EntityPtr& e) {
            return dynamic_cast<const GeomEntity*>(e.Get()) && e->Contains(particle->position);
        });
        if (!inside) {
            sim.AddParticle(particle);
        }
    }
}

}  // namespace app
