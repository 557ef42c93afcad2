#include "physics/Hinge.h"

#include <utility>

#include "math/MathUtil.h"
#include "physics/AbstractBody.h"
#include "physics/Geom.h"
#include "physics/SolverParameters.h"

namespace physics {
namespace {

// The part of the effective mass matrix that a body's turning adds at lever r.
math::Mat2 TurnMatrix(const math::Vec2& r) {
    return math::Mat2(r.y * r.y, -r.x * r.y, -r.x * r.y, r.x * r.x);
}

}  // namespace

Hinge::Hinge(GeomPtr a, GeomPtr b, const math::Vec2& worldPoint)
    : Hinge(a, b, a->GetInverseTransform().Apply(worldPoint),
            b->GetInverseTransform().Apply(worldPoint)) {}

Hinge::Hinge(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA, const math::Vec2& localAnchorB)
    : Constraint(false),
      AnchorPair(std::move(a), std::move(b), localAnchorA, localAnchorB),
      m_impulseLimit(math::Infinity()),
      m_distanceLimit(math::Infinity()) {}

Hinge::~Hinge() = default;

void Hinge::RegisterNoCollide() {
    GetGeomA()->AddNoCollide(GetGeomB().Get());
    GetGeomB()->AddNoCollide(GetGeomA().Get());
}

void Hinge::UnregisterNoCollide() {
    GetGeomA()->RemoveNoCollide(GetGeomB().Get());
    GetGeomB()->RemoveNoCollide(GetGeomA().Get());
}

bool Hinge::IsValid() const {
    const AbstractBody* a = GetGeomA()->GetBody();
    const AbstractBody* b = GetGeomB()->GetBody();
    return !m_broken && a && b && a->IsInWorld() && b->IsInWorld();
}

bool Hinge::SolveInit() {
    AbstractBody* b0 = GetGeomA()->GetBody();
    AbstractBody* b1 = GetGeomB()->GetBody();
    bodies[0] = b0;
    bodies[1] = b1;
    if (!b0 || !b1 || b0 == b1 || (b0->IsImmovable() && b1->IsImmovable())) {
        return false;
    }
    const SolverParameters& params = SolverParameters::Current();
    const SolverParameterBlock& block = params.hinges;
    const math::Vec2 wA = GetWorldAnchorA();
    const math::Vec2 wB = GetWorldAnchorB();
    math::Vec2 d = wB - wA;
    if (d.SquaredLength() > m_distanceLimit * m_distanceLimit) {
        m_broken = true;
        return false;
    }
    r1 = wA - b0->position;
    r2 = wB - b1->position;

    const math::real m0 = b0->SolverMassInv();
    const math::real m1 = b1->SolverMassInv();
    const math::real i0 = b0->SolverInertiaInv();
    const math::real i1 = b1->SolverInertiaInv();
    const math::Mat2 k = math::Mat2() * (m0 + m1) + TurnMatrix(r1) * i0 + TurnMatrix(r2) * i1 +
                         math::Mat2() * block.e;
    m_massInverse = math::Inverted(k);

    // The position error, bounded like a contact's.
    const math::real length = d.Length();
    if (length > 0 && length > params.maxPositionCorrection) {
        d = d * (params.maxPositionCorrection / length);
    }
    const math::Vec2 v = VelocityAt(b1, wB) - VelocityAt(b0, wA);
    const math::Vec2 u = AccelerationAt(*b1, r2) - AccelerationAt(*b0, r1);
    m_target = -(v * block.b + d * (block.a * positionFactor) + u * block.c);

    if (m_motor) {
        m_motorMass = 1 / (i0 + i1 + block.e);
        m_maxMotorImpulse = block.h * m_motorTorque * m_motorMass;
        m_motorTarget = (m_motorSpeed - (b1->angularVelocity - b0->angularVelocity)) * block.b -
                        (i1 * b1->torque - i0 * b0->torque) * block.c;
    }

    if (!params.warmStart) {
        m_accumulated = {0, 0};
        m_motorImpulse = 0;
        return true;
    }
    const math::real f = params.warmStartFactor * warmStartFactor;
    m_accumulated = m_accumulated * f;
    ApplyImpulse(m_accumulated);
    if (m_motor && m_motorImpulse != 0) {
        m_motorImpulse *= f;
        ApplyMotorImpulse(m_motorImpulse);
    }
    return true;
}

void Hinge::CalcDelta() {
    if (m_broken) {
        priority = 0;
        return;
    }
    m_change = m_massInverse * (m_target - RelativeVelocityChange());
    priority = m_change.SquaredLength();
    if (m_motor) {
        const math::real turn = bodies[1]->angularChange - bodies[0]->angularChange;
        math::real candidate = (m_motorTarget - turn) * m_motorMass + m_motorImpulse;
        if (candidate > m_maxMotorImpulse) {
            candidate = m_maxMotorImpulse;
        } else if (candidate < -m_maxMotorImpulse) {
            candidate = -m_maxMotorImpulse;
        }
        m_motorChange = candidate - m_motorImpulse;
        priority += m_motorChange * m_motorChange;
    }
}

void Hinge::ApplyDelta() {
    if (m_broken) {
        return;
    }
    m_accumulated += m_change;
    if (m_accumulated.SquaredLength() > m_impulseLimit * m_impulseLimit) {
        // Breaks within this very iteration; what broke it is not applied.
        m_broken = true;
        return;
    }
    ApplyImpulse(m_change);
    if (m_motor && m_motorChange != 0) {
        ApplyMotorImpulse(m_motorChange);
        m_motorImpulse += m_motorChange;
    }
}

void Hinge::ApplyMotorImpulse(math::real impulse) {
    bodies[0]->angularChange -= bodies[0]->SolverInertiaInv() * impulse;
    bodies[1]->angularChange += bodies[1]->SolverInertiaInv() * impulse;
}

}  // namespace physics
