#pragma once

#include <cstdint>

#include "math/Matrix2.h"
#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/AnchorPair.h"
#include "physics/Constraint.h"
#include "physics/Forward.h"

namespace physics {

// Holds an anchor of each of two geoms together in the solver, can drive their relative
// rotation with a motor, and breaks past an impulse or a distance limit.
class Hinge : public Constraint, public util::Pointee, public AnchorPair {
public:
    // Anchors at the world point, through each geom's present transform.
    Hinge(GeomPtr a, GeomPtr b, const math::Vec2& worldPoint);
    Hinge(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA, const math::Vec2& localAnchorB);
    ~Hinge() override;

    bool SolveInit() override;
    void CalcDelta() override;
    void ApplyDelta() override;

    // Each geom counts the other as one it must not collide with, once per registration.
    void RegisterNoCollide();
    void UnregisterNoCollide();
    // Both owners are bodies of the world and the hinge holds.
    bool IsValid() const;

    bool GetMotor() const { return m_motor; }
    void SetMotor(bool on) { m_motor = on; }
    // Target angular velocity of geom B relative to geom A.
    math::real GetMotorSpeed() const { return m_motorSpeed; }
    void SetMotorSpeed(math::real speed) { m_motorSpeed = speed; }
    math::real GetMotorTorque() const { return m_motorTorque; }
    void SetMotorTorque(math::real torque) { m_motorTorque = torque; }
    math::real GetImpulseLimit() const { return m_impulseLimit; }
    void SetImpulseLimit(math::real limit) { m_impulseLimit = limit; }
    math::real GetDistanceLimit() const { return m_distanceLimit; }
    void SetDistanceLimit(math::real limit) { m_distanceLimit = limit; }
    // What carries from one step into the next: the warm start and whether it broke.
    struct WarmState {
        math::Vec2 impulse{0, 0};
        math::real motorImpulse = 0;
        bool broken = false;
    };
    WarmState GetWarmState() const { return {m_accumulated, m_motorImpulse, m_broken}; }
    void SetWarmState(const WarmState& state) {
        m_accumulated = state.impulse;
        m_motorImpulse = state.motorImpulse;
        m_broken = state.broken;
    }

    bool IsBroken() const { return m_broken; }

    const math::Vec2& GetImpulse() const { return m_accumulated; }
    void SetImpulse(const math::Vec2& impulse) { m_accumulated = impulse; }
    math::real GetMotorImpulse() const { return m_motorImpulse; }

private:
    void ApplyMotorImpulse(math::real impulse);

    bool m_motor = false;
    math::real m_motorSpeed = 0;
    math::real m_motorTorque = 1;
    math::real m_impulseLimit;
    math::real m_distanceLimit;
    bool m_broken = false;
    math::Mat2 m_massInverse;  // inverse of the effective mass matrix
    math::real m_motorMass = 0;
    math::real m_maxMotorImpulse = 0;
    math::Vec2 m_target{0, 0};
    math::Vec2 m_change{0, 0};
    math::Vec2 m_accumulated{0, 0};
    math::real m_motorTarget = 0;
    math::real m_motorChange = 0;
    math::real m_motorImpulse = 0;
};

}  // namespace physics
