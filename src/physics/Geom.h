#pragma once

#include <cstddef>
#include <cstdint>

#include "math/BoundingBox2.h"
#include "math/OBB2D.h"
#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/AbstractBody.h"  // complete, for the owner pointer's inline copies
#include "physics/Forward.h"
#include "physics/Transform.h"
#include "util/HashMap.h"

namespace physics {

// World centre and radius.
struct BoundingCircle {
    math::Vec2 centre{0, 0};
    math::real radius = 0;
};

// A shape with material, placed in the world by its owner's transform.
class Geom : public util::Pointee {
public:
    // Material from MaterialDefaults::Current(); identity transform; a new ID.
    Geom();
    Geom(const Geom& other);
    Geom& operator=(const Geom&) = delete;
    ~Geom() override;

    // Signed distance from the surface, negative inside.
    virtual math::real Dist(const math::Vec2& worldPoint) const = 0;
    // Unit outward normal at the surface point nearest to the point.
    virtual math::Vec2 Normal(const math::Vec2& worldPoint) const = 0;
    virtual math::real Area() const = 0;
    // Inertia about its centre, divided by mass.
    virtual math::real InertiaPerMass() const = 0;
    virtual math::Vec2 ClosestPoint(const math::Vec2& worldPoint) const = 0;
    virtual math::BoundingBox2f GetBoundingBox() const = 0;
    virtual math::OBB2D GetOBB() const = 0;
    virtual BoundingCircle GetBoundingCircle() const = 0;
    // Stores the local-to-world transform and derives the inverse and the world position;
    // subclasses update their world data.
    virtual void SetTransform(const Transform& localToWorld);

    // Which of the collider's lists the geom goes in: a cheap stand-in for trying casts.
    enum class Collides { Never, AsCircle, AsBox, AsPlane, AsPolygon };
    virtual Collides GetCollides() const { return Collides::Never; }

    size_t GetID() const { return m_id; }
    AbstractBody* GetBody() const { return m_owner; }
    // The counted owner: null for a loose geom and for one held by an owner it belongs to.
    const AbstractBodyPtr& GetBodyPtr() const { return m_body; }
    void SetBody(const AbstractBodyPtr& body) {
        m_body = body;
        m_owner = body.Get();
    }
    // An owner that holds this geom itself, as a particle does: it is not counted, so the
    // two do not keep each other alive, and the owner clears it when it dies.
    void SetOwner(AbstractBody* owner) {
        m_body.Reset();
        m_owner = owner;
    }

    const Transform& GetTransform() const { return m_localToWorld; }
    const Transform& GetInverseTransform() const { return m_worldToLocal; }
    const math::Vec2& GetPosition() const { return m_position; }

    math::real density;
    math::real friction;
    math::real restitution;
    math::real airFrictionMult = 1;
    bool collideWater = true;
    uint32_t collideSet = 1;

    // Pairs joined by hinges do not collide while their count is above 0.
    void AddNoCollide(Geom* other);
    void RemoveNoCollide(Geom* other);
    bool IsNoCollide(Geom* other) const { return m_noCollide.Contains(other); }

    // Recomputes the owner's mass after a change of density; nothing for a loose geom or
    // one held by something other than a Body.
    void RecalcGeoms();

    static size_t PeekNextID();

private:
    size_t m_id;
    AbstractBodyPtr m_body;
    AbstractBody* m_owner = nullptr;
    Transform m_worldToLocal;
    Transform m_localToWorld;
    math::Vec2 m_position{0, 0};
    util::HashMap<Geom*, int> m_noCollide;
};

// True only if the pair may touch: shared collide bits (low five), two different bodies of
// which at least one moves, and no hinge between the geoms.
bool CanCollide(const AbstractBody* bodyA, Geom* geomA, const AbstractBody* bodyB, Geom* geomB);

}  // namespace physics
