#pragma once

#include <cstdint>

#include "math/MathUtil.h"
#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/AbstractBody.h"
#include "physics/Forward.h"

namespace physics {

// One row (or a few) of the velocity solver: contacts and hinges alike. The solver only
// ever sees this interface and the bodies' velocity changes.
class Constraint {
public:
    Constraint() = default;
    // May throw, as the shared objects' destructors may: a hinge is both. Inline and empty,
    // so that dropping a step's contacts costs nothing.
    virtual ~Constraint() noexcept(false) = default;

    // Prepares this solve and applies any warm-start impulse; false drops the constraint
    // from this solve.
    virtual bool SolveInit() = 0;
    // Computes the impulse change wanted from the bodies' present velocity changes, with
    // its clamps, and stores it and the priority. Applies nothing.
    virtual void CalcDelta() = 0;
    // Applies the change computed last and adds it to the accumulated impulse.
    virtual void ApplyDelta() = 0;
    virtual void SolveExit() {}

    // Equal and opposite impulse j on the bodies at r1 and r2, pushing body 1 along j.
    // Static bodies take nothing: their inverse values count as 0.
    void ApplyImpulse(const math::Vec2& j) {
        AbstractBody& b0 = *bodies[0];
        AbstractBody& b1 = *bodies[1];
        const math::real m0 = b0.SolverMassInv();
        const math::real m1 = b1.SolverMassInv();
        const math::real i0 = b0.SolverInertiaInv();
        const math::real i1 = b1.SolverInertiaInv();
        b0.velocityChange -= j * m0;
        b0.angularChange -= i0 * math::Cross(r1, j);
        b1.velocityChange += j * m1;
        b1.angularChange += i1 * math::Cross(r2, j);
    }

    // Velocity of the body's material at a world point; a missing body stands still.
    static math::Vec2 VelocityAt(const AbstractBody* body, const math::Vec2& point) {
        return body ? body->velocity + math::Cross(body->angularVelocity, point - body->position)
                    : math::Vec2(0, 0);
    }
    // Acceleration from the accumulated force and torque, at offset r.
    static math::Vec2 AccelerationAt(const AbstractBody& body, const math::Vec2& r) {
        return body.force * body.SolverMassInv() +
               math::Cross(body.torque * body.SolverInertiaInv(), r);
    }
    // Velocity change of body 1 at r2 against that of body 0 at r1, in this solve.
    math::Vec2 RelativeVelocityChange() const {
        const AbstractBody& b0 = *bodies[0];
        const AbstractBody& b1 = *bodies[1];
        return (b1.velocityChange + math::Cross(b1.angularChange, r2)) -
               (b0.velocityChange + math::Cross(b0.angularChange, r1));
    }

    // Contacts are swept as packed rows; a plain flag, as it is asked of every constraint
    // of every solve.
    bool IsContact() const { return m_isContact; }

    math::real positionFactor = 1;   // scales the position term of this constraint
    math::real warmStartFactor = 1;  // scales the reuse of impulses in hinges
    // Plain pointers: constraints live for one step, in which no body goes away.
    AbstractBody* bodies[2] = {nullptr, nullptr};
    math::Vec2 r1{0, 0};  // from each body's centre to the constraint point
    math::Vec2 r2{0, 0};
    math::real priority = 0;  // squared size of the last computed change
    // Place in this solve's list; orders neighbours the same way in every run, where
    // addresses would not.
    uint32_t solveOrder = 0;

protected:
    explicit Constraint(bool isContact) : m_isContact(isContact) {}

private:
    bool m_isContact = false;
};

}  // namespace physics
