#pragma once

#include <utility>
#include <vector>

#include "app/FileInfo.h"
#include "app/Group.h"
#include "app/entities/Entity.h"
#include "app/entities/JointEntity.h"
#include "app/entities/PenEntity.h"
#include "math/Matrix3.h"
#include "math/Vector2.h"
#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/Forward.h"
#include "physics/SPH.h"
#include "script/Forward.h"
#include "util/Pointee.h"

namespace app {

class Snapshot;
using SnapshotPtr = util::SharedPtr<Snapshot>;

// The whole scene in memory, the running simulation included, to be put back exactly: the
// currency of undo. Nothing is copied that does not change: the snapshot holds the very
// entities with their geoms, bodies and polygons, and beside them what does change, their
// attribute values, the links between them and the motion. A restore therefore gives back
// the same objects, and an entity erased since lives on in the snapshots that hold it.
//
// Besides what a scene file keeps, a snapshot keeps what a running world carries from one
// step into the next: each body's exact frame and motion, the order of the bodies and
// links, the warm starts of hinges and contacts, the water's motion and the fluid's random
// stream. A world restored while running continues bit for bit as it did after the capture.
class Snapshot : public util::Pointee {
public:
    // One link or piece of dynamic state, put back after the entities' first reading.
    class RestoreHelper : public util::Pointee {
    public:
        ~RestoreHelper() override;
        virtual void Restore() = 0;
        // Once every entity is back in the scene: the state that putting the entities back
        // recomputes, set to what it was exactly.
        virtual void RestoreExact() {}
    };
    using RestoreHelperPtr = util::SharedPtr<RestoreHelper>;

    // Captures the scene as it is now.
    Snapshot();
    ~Snapshot() override;
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    // Puts the scene back. Never throws: each entity's part and each step is guarded on
    // its own and logged, so that one bad entity costs only itself.
    void Restore();

    const std::vector<EntityPtr>& GetEntities() const { return m_entities; }
    double GetSimTime() const { return m_simTime; }

private:
    // A water particle: the very object, and its motion at the capture.
    struct Drop {
        physics::ParticlePtr particle;
        math::Vec2 position;
        math::Vec2 velocity;
        math::Vec2 force;
        math::real age;
    };

    // An entity's keys and the variables they set.
    struct EntityKeys {
        EntityPtr entity;
        AttributeMap keys;
        AttributeValues values;
    };

    void CaptureEntity(const EntityPtr& entity);
    void CaptureContacts();
    util::String MakeScript() const;
    void RestoreWater();

    std::vector<EntityPtr> m_entities;
    std::vector<RestoreHelperPtr> m_helpers;
    std::vector<EntityKeys> m_attributes;
    std::vector<Drop> m_water;
    GroupPtr m_selection;
    GroupPtr m_tracked;
    double m_simTime = 0;
    math::Mat3 m_cameraMatrix;
    Descriptions m_sceneText;
    Descriptions m_fileText;
    util::String m_fileName;
    script::CodeBlockPtr m_script;
    // The world's order of bodies, its contacts and the fluid's random stream.
    physics::BodyList m_bodyOrder;
    physics::ContactList m_contacts;
    physics::SPH::JitterState m_jitter;
};

// A body with its geoms and motion. Restore gives the body its geoms back and its
// velocities; RestoreExact its frame and motion exactly as captured.
class BodyInfo : public Snapshot::RestoreHelper {
public:
    explicit BodyInfo(const physics::BodyPtr& body);
    ~BodyInfo() override;
    void Restore() override;
    void RestoreExact() override;

private:
    physics::BodyPtr m_body;
    physics::Body::State m_state;
};

// A joint's ends. Restore reattaches and rebuilds it; RestoreExact gives the rebuilt link
// the place, anchors and warm start of the captured one.
class JointInfo : public Snapshot::RestoreHelper {
public:
    explicit JointInfo(const JointEntityPtr& joint);
    ~JointInfo() override;
    void Restore() override;
    void RestoreExact() override;
    bool IsAttached() const { return m_geom0 && m_geom1; }

private:
    JointEntityPtr m_joint;
    physics::GeomPtr m_geom0;
    physics::GeomPtr m_geom1;
    math::Vec2 m_local0;
    math::Vec2 m_local1;
    JointEntity::LinkState m_link;
};

// A pen's place and a copy of its trail.
class PenInfo : public Snapshot::RestoreHelper {
public:
    explicit PenInfo(const PenEntityPtr& pen);
    ~PenInfo() override;
    void Restore() override;
    bool IsAttached() const { return bool(m_geom); }

private:
    PenEntityPtr m_pen;
    physics::GeomPtr m_geom;
    math::Vec2 m_localPoint;
    PenEntity::Trail m_trail;
};

// An entity's place in its chain.
class EntChainInfo : public Snapshot::RestoreHelper {
public:
    EntChainInfo(const EntityPtr& entity, const ChainPtr& chain, size_t index);
    ~EntChainInfo() override;
    void Restore() override;

private:
    EntityPtr m_entity;
    ChainPtr m_chain;
    size_t m_index;
};

}  // namespace app
