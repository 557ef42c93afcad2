#include "physics/Joint.h"

#include <cmath>
#include <utility>

#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Constraint.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

namespace physics {
namespace {

Body* OwnerBody(const Geom& geom) {
    return dynamic_cast<Body*>(geom.GetBody());
}

}  // namespace

Joint::Joint(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA, const math::Vec2& localAnchorB)
    : AnchorPair(std::move(a), std::move(b), localAnchorA, localAnchorB) {}

Joint::~Joint() = default;

Body* Joint::GetBodyA() const {
    return OwnerBody(*GetGeomA());
}

Body* Joint::GetBodyB() const {
    return OwnerBody(*GetGeomB());
}

bool Joint::IsValid() const {
    if (GetGeomA() == GetGeomB()) {
        return false;
    }
    const Body* a = GetBodyA();
    const Body* b = GetBodyB();
    return a && b && a->IsInWorld() && b->IsInWorld();
}

SpringJoint::SpringJoint(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA,
                         const math::Vec2& localAnchorB, math::real restLength, math::real strength,
                         math::real damping)
    : Joint(std::move(a), std::move(b), localAnchorA, localAnchorB),
      m_restLength(restLength),
      m_strength(strength),
      m_damping(damping) {}

SpringJoint::Law SpringJoint::GetLaw(const Body& body0, const Body& body1) const {
    Law law;
    law.anchor0 = GetWorldAnchorA();
    law.anchor1 = GetWorldAnchorB();
    const math::Vec2 dir = math::Normalized(law.anchor1 - law.anchor0);
    // The levers are the local anchors, not the world ones: the spring's own choice.
    const math::real c0 = math::Cross(GetLocalAnchorA(), dir);
    const math::real c1 = math::Cross(GetLocalAnchorB(), dir);
    const math::real massEff =
        1 / (body0.SolverMassInv() + body1.SolverMassInv() + body0.SolverInertiaInv() * c0 * c0 +
             body1.SolverInertiaInv() * c1 * c1);
    law.stiffness = Simulation::Get().springForce->Get() * massEff * m_strength;
    law.damping = 2 * std::sqrt(law.stiffness * massEff) * m_damping;
    return law;
}

void SpringJoint::ApplyForce() {
    Body* body0 = GetBodyA();
    Body* body1 = GetBodyB();
    if (!body0 || !body1) {
        return;
    }
    const Law law = GetLaw(*body0, *body1);
    const math::Vec2 v0 = Constraint::VelocityAt(body0, law.anchor0);
    const math::Vec2 v1 = Constraint::VelocityAt(body1, law.anchor1);
    math::real length = (law.anchor1 - law.anchor0).Length();
    math::Vec2 direction(1, 0);
    if (math::NearZero(length) || length == 0) {
        length = 1e-6f;
    } else {
        direction = (law.anchor1 - law.anchor0) / length;
    }
    const math::real f =
        math::Dot(v1 - v0, direction) * law.damping + (length - m_restLength) * law.stiffness;
    const math::Vec2 force = direction * f;
    if (!body0->IsImmovable()) {
        body0->force += force;
        body0->torque += math::Cross(law.anchor0 - body0->position, force);
    }
    if (!body1->IsImmovable()) {
        body1->force -= force;
        body1->torque += math::Cross(law.anchor1 - body1->position, -force);
    }
}

math::real SpringJoint::GetEnergy() const {
    const Body* body0 = GetBodyA();
    const Body* body1 = GetBodyB();
    if (!body0 || !body1) {
        return 0;
    }
    const Law law = GetLaw(*body0, *body1);
    const math::real stretch = (law.anchor1 - law.anchor0).Length() - m_restLength;
    return 0.5f * law.stiffness * stretch * stretch;
}

}  // namespace physics
