#include "app/Snapshot.h"

#include <exception>
#include <unordered_set>

#include "app/Chain.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "logging/Log.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "util/Profiler2.h"

namespace app {

namespace {

util::ProfileRecord s_captureRecord("Snapshot::Snapshot");

// Runs one part of a restore; what it throws is logged and the restore goes on. The place
// of the caller comes from the compiler's builtins as default arguments, which every
// compiler of the project has (std::source_location needs a newer clang).
template <class Fn>
void Guarded(Fn&& part, const char* function = __builtin_FUNCTION(),
             const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    // Where the part stands is written only when it fails: a restore runs thousands.
    const auto position = [&] {
        return util::String(function) + " (" + file + ":" + std::to_string(line) + ")";
    };
    try {
        part();
    } catch (const std::exception& e) {
        Log(logging::Warning,
            "Snapshot::Restore failure in " + position() + ": " + util::String(e.what()));
    } catch (...) {
        Log(logging::Warning, "Snapshot::Restore failure. " + position());
    }
}

}  // namespace

Snapshot::RestoreHelper::~RestoreHelper() = default;

Snapshot::Snapshot() {
    util::ProfileRecordTimer timer(s_captureRecord);
    // The attribute maps below are read back in the present format.
    FileInfo::Get().version->SetNative(FileInfo::kCurrentVersion);

    physics::Simulation& sim = physics::Simulation::Get();
    Scene& scene = Scene::Get();
    m_simTime = sim.GetSimulatedTime();
    m_selection = GroupPtr(new Group(scene.GetSelection()->GetEntities()));
    if (const GroupPtr& tracked = scene.GetCamera().GetTrackedGroup()) {
        m_tracked = GroupPtr(new Group(tracked->GetEntities()));
    }
    m_cameraMatrix = scene.GetCamera().GetTransform();
    m_sceneText.Take(scene.title, scene.author, scene.description);
    m_fileText.Take(FileInfo::Get().title, FileInfo::Get().author, FileInfo::Get().description);
    m_fileName = FileInfo::Get().GetFileName();
    m_entities = scene.GetEntities();

    const physics::ParticleList& particles = sim.GetParticles();
    m_water.reserve(particles.size());
    for (const physics::ParticlePtr& particle : particles) {
        m_water.push_back(
            {particle, particle->position, particle->velocity, particle->force, particle->age});
    }

    m_bodyOrder = sim.GetBodies();
    m_helpers.reserve(m_bodyOrder.size() + m_entities.size());
    for (const physics::BodyPtr& body : m_bodyOrder) {
        m_helpers.push_back(RestoreHelperPtr(new BodyInfo(body)));
    }
    m_attributes.reserve(m_entities.size());
    for (const EntityPtr& entity : m_entities) {
        CaptureEntity(entity);
    }
    CaptureContacts();
    m_jitter = physics::SPH::Get().GetJitterState();

    const util::String text = MakeScript();
    if (!text.empty()) {
        m_script = script::Parser::Get().Parse(text);
    }
}

Snapshot::~Snapshot() = default;

void Snapshot::CaptureEntity(const EntityPtr& entity) {
    EntityKeys& captured = m_attributes.emplace_back();
    captured.entity = entity;
    entity->Capture(captured.keys, captured.values);
    if (const auto joint = util::DynamicPointerCast<JointEntity>(entity)) {
        util::SharedPtr<JointInfo> info(new JointInfo(joint));
        if (!info->IsAttached()) {
            Log(logging::Warning, "Bad joint in Snapshot");
        }
        m_helpers.push_back(info);
    } else if (const auto pen = util::DynamicPointerCast<PenEntity>(entity)) {
        util::SharedPtr<PenInfo> info(new PenInfo(pen));
        if (!info->IsAttached()) {
            Log(logging::Warning, "Bad pen in Snapshot");
        }
        m_helpers.push_back(info);
    }
    if (const ChainPtr& chain = entity->GetChain()) {
        const int index = chain->GetIndex(entity.Get());
        if (index >= 0) {
            m_helpers.push_back(
                RestoreHelperPtr(new EntChainInfo(entity, chain, static_cast<size_t>(index))));
        }
    }
}

void Snapshot::CaptureContacts() {
    // Contacts keep plain pointers to their bodies. A body erased since the step that found
    // a contact may be gone, so only contacts between bodies held here are kept, decided by
    // address alone.
    std::unordered_set<const physics::AbstractBody*> held;
    held.reserve(m_bodyOrder.size() + m_water.size());
    for (const physics::BodyPtr& body : m_bodyOrder) {
        held.insert(body.Get());
    }
    for (const Drop& drop : m_water) {
        held.insert(drop.particle.Get());
    }
    const physics::ContactList& contacts =
        physics::Simulation::Get().GetContactCache().GetContacts();
    m_contacts.reserve(contacts.size());
    for (const physics::Contact& contact : contacts) {
        if (held.count(contact.bodies[0]) && held.count(contact.bodies[1])) {
            m_contacts.push_back(contact);
        }
    }
}

util::String Snapshot::MakeScript() const {
    // Groups by the entities' own ids, under which the restore registers them.
    std::vector<util::String> statements;
    const Serializer& serializer = Serializer::Get();
    serializer.WriteGroups([](const Entity* entity) { return entity->entityID->Get(); },
                           statements);
    serializer.WriteSceneSettings(statements);
    util::String text;
    for (size_t i = 0; i < statements.size(); ++i) {
        text += statements[i];
        text += i + 1 < statements.size() ? ";\n" : "\n";
    }
    return text;
}

void Snapshot::Restore() {
    Guarded([] { FileInfo::Get().version->SetNative(FileInfo::kCurrentVersion); });
    Scene& scene = Scene::Get();
    physics::Simulation& sim = physics::Simulation::Get();
    Guarded([&] { scene.Clear(); });
    Guarded([&] {
        sim.Clear();
        sim.SetSimulatedTime(m_simTime);
    });
    // Clearing empties the descriptions too.
    Guarded([&] {
        m_sceneText.Put(scene.title, scene.author, scene.description);
        m_fileText.Put(FileInfo::Get().title, FileInfo::Get().author, FileInfo::Get().description);
        // A save after undoing a load must go to the file the scene came from.
        FileInfo::Get().SetFileName(m_fileName);
    });

    // Shapes first take their places, then bodies their geoms and joints their ends, then
    // the entities read their attributes again over what the rebuilds changed.
    for (const EntityKeys& captured : m_attributes) {
        Guarded([&] { captured.entity->Restore(captured.keys, captured.values); });
    }
    for (const RestoreHelperPtr& helper : m_helpers) {
        Guarded([&] { helper->Restore(); });
    }
    for (const EntityKeys& captured : m_attributes) {
        Guarded([&] { captured.entity->Restore(captured.keys, captured.values); });
    }

    Guarded([] { Serializer::Get().BeginRestoring(); });
    for (const EntityPtr& entity : m_entities) {
        Guarded([&] {
            entity->previewTransform = math::Mat3::Identity();
            scene.AddEntity(entity);
            Serializer::Get().RegisterRestored(entity);
        });
    }
    for (const RestoreHelperPtr& helper : m_helpers) {
        Guarded([&] { helper->RestoreExact(); });
    }
    Guarded([&] {
        sim.RestoreBodyOrder(m_bodyOrder);
        sim.RestoreContacts(m_contacts);
        physics::SPH::Get().SetJitterState(m_jitter);
    });
    Guarded([&] { RestoreWater(); });

    Guarded([&] {
        const GroupPtr& selection = scene.GetSelection();
        selection->Clear();
        selection->Add(*m_selection);
    });
    Guarded([&] {
        Camera& camera = scene.GetCamera();
        camera.SetTrackedGroup(m_tracked ? GroupPtr(new Group(m_tracked->GetEntities()))
                                         : GroupPtr());
        camera.SetTransform(m_cameraMatrix);
    });
    if (m_script) {
        Guarded([&] { script::Parser::Get().Execute(script::ExpressionPtr(m_script)); });
    }
}

void Snapshot::RestoreWater() {
    physics::Simulation& sim = physics::Simulation::Get();
    // The same particles, so that the contacts kept with the world still name them.
    for (const Drop& drop : m_water) {
        physics::Particle& particle = *drop.particle;
        particle.position = drop.position;
        particle.UpdateTransforms();
        if (!particle.IsImmovable()) {
            particle.velocity = drop.velocity;
        }
        particle.force = drop.force;
        particle.age = drop.age;
        sim.AddParticle(drop.particle);
    }
}

// Helpers.

BodyInfo::BodyInfo(const physics::BodyPtr& body) : m_body(body), m_state(body->GetState()) {}

BodyInfo::~BodyInfo() = default;

void BodyInfo::Restore() {
    physics::GeomSet geoms;
    for (const physics::Body::PlacedGeom& placed : m_state.placedGeoms) {
        geoms.insert(placed.geom);
    }
    m_body->SetGeoms(geoms);
    if (!m_body->IsImmovable()) {
        m_body->velocity = m_state.velocity;
        m_body->angularVelocity = m_state.angularVelocity;
    }
}

void BodyInfo::RestoreExact() {
    // A body that was given other geoms since keeps what Restore made of it.
    m_body->SetState(m_state);
}

JointInfo::JointInfo(const JointEntityPtr& joint)
    : m_joint(joint),
      m_geom0(joint->GetGeom(0)),
      m_geom1(joint->GetGeom(1)),
      m_local0(joint->GetLocal(0)),
      m_local1(joint->GetLocal(1)),
      m_link(joint->GetLinkState()) {}

JointInfo::~JointInfo() = default;

void JointInfo::Restore() {
    if (IsAttached()) {
        m_joint->SetEnds(m_geom0, m_local0, m_geom1, m_local1);
    }
}

void JointInfo::RestoreExact() {
    if (IsAttached()) {
        m_joint->SetLinkState(m_link);
    }
}

PenInfo::PenInfo(const PenEntityPtr& pen)
    : m_pen(pen),
      m_geom(pen->GetGeom()),
      m_localPoint(pen->GetLocalPoint()),
      m_trail(pen->GetTrail()) {}

PenInfo::~PenInfo() = default;

void PenInfo::Restore() {
    if (m_geom) {
        m_pen->SetGeom(m_geom, m_localPoint);
        m_pen->SetTrail(m_trail);
    }
}

EntChainInfo::EntChainInfo(const EntityPtr& entity, const ChainPtr& chain, size_t index)
    : m_entity(entity), m_chain(chain), m_index(index) {}

EntChainInfo::~EntChainInfo() = default;

void EntChainInfo::Restore() {
    m_chain->AddEntity(m_index, m_entity);
}

}  // namespace app
