#pragma once

#include "app/entities/Entity.h"
#include "physics/Forward.h"
#include "physics/Hinge.h"

namespace app {

class JointEntity;
using JointEntityPtr = util::SharedPtr<JointEntity>;

// Ties two geoms together at a point of each. An end over nothing holds on to the ground
// geom. Both geoms are set or neither; a joint without them has no physics and leaves the
// scene at its next update.
class JointEntity : public Entity {
public:
    JointEntity(const util::String& reflectedName, float size);
    ~JointEntity() override;

    // A new joint of the same kind and attributes between the same points, unattached.
    virtual JointEntityPtr Clone() const = 0;
    // Registers the physics object if it is not.
    virtual void EnsureInSimulation();
    // Makes the physics object anew from the geoms and points.
    virtual void Rebuild() = 0;

    // The world points follow the geoms, except while transforming.
    void Update(math::real dt) override;
    // Both geoms set and both in the simulation.
    bool IsInSimulation() const override;
    // Moves the world points only: the geoms are what they are.
    void Transform(const physics::Transform& transform) override;
    // Within half the size of the first point.
    bool Contains(const math::Vec2& point) const override;
    bool IntersectsLines(const physics::LineList& stroke) const override;
    bool IsInside(const physics::Polygon& polygon) const override;
    math::BoundingBox2f GetBoundingBox() const override;

    // Keeps each end's geom while it still lies under its point, and otherwise takes the
    // topmost geom under the point that differs from the other end's; the ground when
    // nothing else is there. Both ends cleared if either finds none.
    void Attach(const math::Vec2 points[2]);
    // Sets the ends directly, by local points, and rebuilds.
    void SetEnds(const physics::GeomPtr& geom0, const math::Vec2& local0,
                 const physics::GeomPtr& geom1, const math::Vec2& local1);
    // The physics link's state that outlives a step: its place in the simulation's order,
    // its anchors as the geoms hold them, and a hinge's warm start. Snapshots keep it, so
    // that a joint rebuilt by a restore goes on exactly as it went. Invalid without a link.
    struct LinkState {
        bool valid = false;
        uint64_t serial = 0;
        math::Vec2 anchorA{0, 0};
        math::Vec2 anchorB{0, 0};
        physics::Hinge::WarmState warm;
    };
    virtual LinkState GetLinkState() const { return {}; }
    // Into the present link, if it has the same geoms as when the state was taken.
    virtual void SetLinkState(const LinkState& /*state*/) {}

    // Either end is on the ground geom.
    bool IsBackground() const;

    const physics::GeomPtr& GetGeom(int end) const { return end == 0 ? m_geom0 : m_geom1; }
    const math::Vec2& GetLocal(int end) const { return end == 0 ? m_local0 : m_local1; }
    const math::Vec2& GetWorld(int end) const { return end == 0 ? m_world0 : m_world1; }
    // The world points from the geoms as they lie now.
    void UpdateWorldPoints();

    script::AttribPtr<float> size;

protected:
    // What every link shares of the two above.
    LinkState GetAnchorState(const physics::AnchorPair& link) const;
    // False, changing nothing, when the link has other geoms than this joint's ends.
    bool SetAnchorState(physics::AnchorPair& link, const LinkState& state);

    physics::GeomPtr m_geom0;
    physics::GeomPtr m_geom1;
    math::Vec2 m_local0{0, 0};
    math::Vec2 m_local1{0, 0};
    math::Vec2 m_world0{0, 0};
    math::Vec2 m_world1{0, 0};
};

}  // namespace app
