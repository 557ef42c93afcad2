#pragma once

#include <cstdint>

#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/AnchorPair.h"
#include "physics/Forward.h"
#include "util/Pointee.h"

namespace physics {

// A force generator between an anchor on each of two geoms, acting outside the solver.
class Joint : public util::Pointee, public AnchorPair {
public:
    Joint(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA, const math::Vec2& localAnchorB);
    ~Joint() override;

    // Called as the simulation takes the joint in and lets it go.
    virtual void OnAdd() {}
    virtual void OnRemove() {}
    // Adds the joint's forces to its bodies; once a step, after the body forces.
    virtual void ApplyForce() {}
    // False with both anchors on one geom; otherwise whether both owners are bodies of the
    // world.
    virtual bool IsValid() const;

    // The owners as rigid bodies; null for a loose geom or one held by a particle.
    Body* GetBodyA() const;
    Body* GetBodyB() const;
};

// A damped spring. Its stiffness scales with the simulation's springForce and the
// effective mass of the two ends along the spring, so that a strength factor means the
// same on light and heavy bodies; damping 1 is critical.
class SpringJoint : public Joint {
public:
    SpringJoint(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA,
                const math::Vec2& localAnchorB, math::real restLength, math::real strength = 1,
                math::real damping = 1);

    void ApplyForce() override;
    bool IsValid() const override { return Joint::IsValid(); }
    // 0.5 k (length - rest length)^2, with k as ApplyForce computes it; 0 when an owner is
    // missing.
    math::real GetEnergy() const;

    math::real GetRestLength() const { return m_restLength; }
    void SetRestLength(math::real length) { m_restLength = length; }
    math::real GetStrength() const { return m_strength; }
    void SetStrength(math::real strength) { m_strength = strength; }
    math::real GetDamping() const { return m_damping; }
    void SetDamping(math::real damping) { m_damping = damping; }

private:
    // Stiffness and damping of the spring as it now lies, from both owners.
    struct Law {
        math::Vec2 anchor0;
        math::Vec2 anchor1;
        math::real stiffness;
        math::real damping;
    };
    Law GetLaw(const Body& body0, const Body& body1) const;

    math::real m_restLength;
    math::real m_strength;
    math::real m_damping;
};

}  // namespace physics
