#include "app/entities/FixJointEntity.h"

#include <map>
#include <vector>

#include "app/Painter.h"
#include "app/Scene.h"
#include "app/entities/PlaneEntity.h"
#include "logging/Log.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "util/Assert.h"

namespace app {

namespace {

physics::BodyPtr OwnerOf(const physics::GeomPtr& geom) {
    return physics::BodyPtr(dynamic_cast<physics::Body*>(geom->GetBody()));
}

// Geoms in the order of their ids, so that walks over them repeat from run to run.
struct ByGeomID {
    bool operator()(const physics::GeomPtr& a, const physics::GeomPtr& b) const {
        return a->GetID() < b->GetID();
    }
};
using OrderedGeoms = std::set<physics::GeomPtr, ByGeomID>;
using Adjacency = std::map<physics::GeomPtr, OrderedGeoms, ByGeomID>;

// Everything reachable from the start, kept to the allowed geoms.
OrderedGeoms FloodFill(const physics::GeomPtr& start, const Adjacency& edges,
                       const OrderedGeoms& allowed) {
    OrderedGeoms reached{start};
    std::vector<physics::GeomPtr> pending{start};
    while (!pending.empty()) {
        const physics::GeomPtr geom = pending.back();
        pending.pop_back();
        const auto found = edges.find(geom);
        if (found == edges.end()) {
            continue;
        }
        for (const physics::GeomPtr& next : found->second) {
            if (reached.insert(next).second) {
                pending.push_back(next);
            }
        }
    }
    OrderedGeoms kept;
    for (const physics::GeomPtr& geom : reached) {
        if (allowed.count(geom)) {
            kept.insert(geom);
        }
    }
    return kept;
}

physics::GeomSet ToGeomSet(const OrderedGeoms& geoms) {
    physics::GeomSet set;
    for (const physics::GeomPtr& geom : geoms) {
        set.insert(geom);
    }
    return set;
}

}  // namespace

FixJointEntity::FixJointEntity(float jointSize) : JointEntity("Fixjoint", jointSize) {}

FixJointEntity::~FixJointEntity() = default;

JointEntityPtr FixJointEntity::Clone() const {
    JointEntityPtr clone(new FixJointEntity(size->Get()));
    clone->CopyAttributes(*this);
    return clone;
}

void FixJointEntity::Rebuild() {
    if (m_geom0 != m_stored0 || m_geom1 != m_stored1) {
        RemoveFromSimulation();
        AddToSimulation();
    }
}

void FixJointEntity::AddToSimulation() {
    if (!m_geom0 || !m_geom1) {
        return;
    }
    m_stored0 = m_geom0;
    m_stored1 = m_geom1;
    physics::Simulation& sim = physics::Simulation::Get();
    const physics::BodyPtr body0 = OwnerOf(m_geom0);
    const physics::BodyPtr body1 = OwnerOf(m_geom1);
    if (!body0 && !body1) {
        physics::BodyPtr body(new physics::Body());
        physics::GeomSet both;
        both.insert(m_geom0);
        both.insert(m_geom1);
        body->SetGeoms(both);
        sim.AddBody(body);
    } else if (!body0 || !body1) {
        (body0 ? body0 : body1)->AddGeom(body0 ? m_geom1 : m_geom0);
    } else if (body0 != body1) {
        // The older body stays: the ground, whose id is 0, always does.
        const bool keepFirst = body0->GetID() < body1->GetID();
        const physics::BodyPtr& keeper = keepFirst ? body0 : body1;
        const physics::BodyPtr& loser = keepFirst ? body1 : body0;
        const physics::GeomSet moved = loser->GetGeoms();
        loser->SetGeoms(physics::GeomSet());
        sim.RemoveBody(loser);
        keeper->AddGeoms(moved);
    }
}

void FixJointEntity::RemoveFromSimulation() {
    try {
        Split();
    } catch (const std::exception& e) {
        Log(logging::Warning, "Error while removing fixate: " + util::String(e.what()));
    }
}

void FixJointEntity::Split() {
    if (!m_stored0 || !m_stored1) {
        return;
    }
    const physics::BodyPtr owner0 = OwnerOf(m_stored0);
    const physics::BodyPtr owner1 = OwnerOf(m_stored1);
    if (owner0 && owner1 && owner0 != owner1) {
        return;
    }
    const physics::BodyPtr body = owner0 ? owner0 : owner1;
    if (!body) {
        m_stored0.Reset();
        m_stored1.Reset();
        return;
    }
    physics::Simulation& sim = physics::Simulation::Get();
    const physics::GeomPtr& ground = sim.GetWorldGeom();

    Scene& scene = Scene::Get();
    OrderedGeoms present;
    for (const physics::GeomPtr& geom : scene.GetSimGeoms()) {
        present.insert(geom);
    }
    Adjacency edges;
    for (const EntityPtr& entity : scene.GetEntities()) {
        if (const auto* joint = dynamic_cast<const FixJointEntity*>(entity.Get())) {
            if (joint != this && joint->m_geom0 && joint->m_geom1) {
                edges[joint->m_geom0].insert(joint->m_geom1);
                edges[joint->m_geom1].insert(joint->m_geom0);
            }
        } else if (const auto* plane = dynamic_cast<const PlaneEntity*>(entity.Get())) {
            // Planes are always part of the ground.
            if (present.count(plane->GetGeom())) {
                edges[plane->GetGeom()].insert(ground);
                edges[ground].insert(plane->GetGeom());
            }
        }
    }
    // The ground counts as present, so that halves fixed to it stay with it.
    OrderedGeoms allowed = present;
    allowed.insert(ground);
    OrderedGeoms part0 = FloodFill(m_stored0, edges, allowed);
    OrderedGeoms part1 = FloodFill(m_stored1, edges, allowed);
    m_stored0.Reset();
    m_stored1.Reset();
    // The ground alone is no part of the scene's shapes.
    const auto isEmpty = [&](const OrderedGeoms& part) {
        return part.empty() || (part.size() == 1 && part.count(ground));
    };
    if (isEmpty(part0) && isEmpty(part1)) {
        // Both shapes went before the joint (a clear does that); the ground body stays.
        if (body != sim.GetWorldBody()) {
            body->SetGeoms(physics::GeomSet());
            sim.RemoveBody(body);
        }
        return;
    }
    if (part0 == part1) {
        return;
    }
    if (body == sim.GetWorldBody()) {
        if (part1.count(ground)) {
            std::swap(part0, part1);
        } else if (!part0.count(ground)) {
            return;
        }
    } else if (part0.count(ground)) {
        std::swap(part0, part1);
    }
    // The part that goes leaves in one rebuild of the body that stays.
    physics::GeomSet staying;
    for (const physics::GeomPtr& geom : body->GetGeoms()) {
        if (!part1.count(geom)) {
            staying.insert(geom);
        }
    }
    if (staying.size() != body->GetGeoms().size()) {
        body->SetGeoms(staying);
    }
    if (part1.empty()) {
        return;
    }
    if (part1.count(ground)) {
        physics::GeomSet withGround = ToGeomSet(part1);
        for (const physics::GeomPtr& geom : sim.GetWorldBody()->GetGeoms()) {
            withGround.insert(geom);
        }
        sim.GetWorldBody()->SetGeoms(withGround);
    } else {
        physics::BodyPtr split(new physics::Body());
        split->SetGeoms(ToGeomSet(part1));
        sim.AddBody(split);
    }
}

void FixJointEntity::Draw(Painter& painter) const {
    if (!painter.GetOptions().drawJoints || !IsInSimulation()) {
        return;
    }
    const float side = size->Get();
    const float angle = m_geom0->GetBody()->angle;
    painter.Sprite(IsBackground() ? "fixjoint_bg" : "fixjoint", m_world0, side, angle,
                   color->Get());
    if (selected || mouseOver) {
        painter.Sprite("ring", m_world0, 1.5f * side, 0, GetBorderColor());
    }
}

bool FixJointEntity::IsInSimulation() const {
    if (!JointEntity::IsInSimulation()) {
        return false;
    }
    const physics::AbstractBody* body0 = m_geom0->GetBody();
    return body0 && body0 == m_geom1->GetBody();
}

}  // namespace app
