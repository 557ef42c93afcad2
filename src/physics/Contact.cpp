#include "physics/Contact.h"

#include <algorithm>

#include <cmath>
#include <cstdint>

#include "math/MathUtil.h"
#include "physics/AbstractBody.h"
#include "physics/Geom.h"
#include "physics/SolverParameters.h"
#include "util/Assert.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace physics {

namespace {

math::real MassInv(const AbstractBody* body) {
    return body ? body->SolverMassInv() : 0;
}

math::real InertiaInv(const AbstractBody* body) {
    return body ? body->SolverInertiaInv() : 0;
}

// The clamped impulse changes wanted, normal and tangent.
void Delta(const math::Vec2& dv, const math::Vec2& n, const math::Vec2& t, math::real massN,
           math::real massT, math::real targetN, math::real targetT, math::real accN,
           math::real accT, math::real friction, math::real& deltaN, math::real& deltaT) {
    math::real candN = accN + targetN - math::Dot(n, dv) * massN;
    if (candN < 0) {
        candN = 0;
    }
    deltaN = candN - accN;
    // Friction is bounded by this iteration's normal impulse; a negative mu gives none.
    math::real limit = friction * candN;
    if (limit < 0) {
        limit = 0;
    }
    math::real candT = accT + targetT - math::Dot(t, dv) * massT;
    if (candT > limit) {
        candT = limit;
    } else if (candT < -limit) {
        candT = -limit;
    }
    deltaT = candT - accT;
}

// 1 / a, 1 / b, 1 / c, 1 / d: each correctly rounded, as one by one.
void Reciprocals(math::real a, math::real b, math::real c, math::real d, math::real& ra,
                 math::real& rb, math::real& rc, math::real& rd) {
#ifdef __SSE2__
    alignas(16) float out[4];
    _mm_store_ps(out, _mm_div_ps(_mm_set1_ps(1), _mm_setr_ps(a, b, c, d)));
    ra = out[0];
    rb = out[1];
    rc = out[2];
    rd = out[3];
#else
    ra = 1 / a;
    rb = 1 / b;
    rc = 1 / c;
    rd = 1 / d;
#endif
}

}  // namespace

Contact::Contact(Geom* a, Geom* b, size_t index, const math::Vec2& p, const math::Vec2& n, float d)
    : Constraint(true), m_index(index), m_p(p), m_n(n), m_d(d), m_t(-n.y, n.x) {
    using math::IsFinite;
    CODE_ASSERT(IsFinite(p));
    CODE_ASSERT(IsFinite(n));
    CODE_ASSERT(IsFinite(d));
    const SolverParameters& params = SolverParameters::Current();
    m_creationTime = params.simulatedTime;

    const size_t idA = a->GetID();
    const size_t idB = b->GetID();
    m_lowerID = idA < idB ? idA : idB;
    m_higherID = idA < idB ? idB : idA;
    m_hash = HashKey(m_lowerID, m_higherID, m_index);

    bodies[0] = a->GetBody();
    bodies[1] = b->GetBody();
    CombineTwo(a->friction, b->friction, a->restitution, b->restitution, m_friction, m_restitution);
    r1 = bodies[0] ? p - bodies[0]->position : p;
    r2 = bodies[1] ? p - bodies[1]->position : p;

    math::real kN;
    math::real kT;
    KOfNormalAndTangent(kN, kT);
    const math::real e = params.contacts.e;
    Reciprocals(kN, kT, kN + e, kT + e, m_massN, m_massT, m_regMassN, m_regMassT);
    m_effMassN = m_massN;
    m_effMassT = m_massT;
}

size_t Contact::HashKey(size_t lowerID, size_t higherID, size_t index) {
    // 32-bit on every platform, so that bucket placement does not depend on size_t.
    const uint32_t hash = static_cast<uint32_t>(higherID) * 0xD8163841u +
                          static_cast<uint32_t>(lowerID) * 0x8DA6B343u +
                          static_cast<uint32_t>(index) * 0xCB1AB31Fu;
    return hash;
}

math::real Contact::Combine(math::real x, math::real y) {
    math::real combined;
    math::real unused;
    CombineTwo(x, y, 0, 0, combined, unused);
    return combined;
}

void Contact::CombineTwo(math::real x1, math::real y1, math::real x2, math::real y2,
                         math::real& first, math::real& second) {
    const math::real xy1 = x1 * y1;
    const math::real xy2 = x2 * y2;
    const auto signOf = [](math::real xy) { return xy > 0 ? 1.0f : (xy < 0 ? -1.0f : 0.0f); };
    math::real root1;
    math::real root2;
#ifdef __SSE2__
    // Both roots in one instruction, each correctly rounded as std::sqrt's.
    alignas(16) float roots[4];
    _mm_store_ps(roots, _mm_sqrt_ps(_mm_setr_ps(std::fabs(xy1), std::fabs(xy2), 0, 0)));
    root1 = roots[0];
    root2 = roots[1];
#else
    root1 = std::sqrt(std::fabs(xy1));
    root2 = std::sqrt(std::fabs(xy2));
#endif
    first = signOf(xy1) * root1;
    second = signOf(xy2) * root2;
}

math::real Contact::K(const math::Vec2& u) const {
    return KFrom(u, MassInv(bodies[0]), MassInv(bodies[1]), InertiaInv(bodies[0]),
                 InertiaInv(bodies[1]));
}

math::real Contact::KFrom(const math::Vec2& u, math::real m0, math::real m1, math::real i0,
                          math::real i1) const {
    const math::real c1 = math::Cross(r1, u);
    const math::real c2 = math::Cross(r2, u);
    return m0 + m1 + i0 * c1 * c1 + i1 * c2 * c2;
}

void Contact::KOfNormalAndTangent(math::real& kN, math::real& kT) const {
    // The bodies' values read once for both.
    const math::real m0 = MassInv(bodies[0]);
    const math::real m1 = MassInv(bodies[1]);
    const math::real i0 = InertiaInv(bodies[0]);
    const math::real i1 = InertiaInv(bodies[1]);
    kN = KFrom(m_n, m0, m1, i0, i1);
    kT = KFrom(m_t, m0, m1, i0, i1);
}

void Contact::CopyCached(const Contact& old) {
    m_creationTime = old.m_creationTime;
    m_accN = old.m_accN;
    m_accT = old.m_accT;
    m_new = false;
}

bool Contact::IsSeparating() const {
    const math::Vec2 v = VelocityAt(bodies[1], m_p) - VelocityAt(bodies[0], m_p);
    return math::Dot(v, m_n) > 0;
}

bool Contact::SolveInit() {
    AbstractBody* b0 = bodies[0];
    AbstractBody* b1 = bodies[1];
    // Also keeps a row of two static bodies, whose masses are infinite, out of the solve.
    if (!b0 || !b1 || (b0->IsImmovable() && b1->IsImmovable())) {
        return false;
    }
    const SolverParameters& params = SolverParameters::Current();
    const SolverParameterBlock& block = params.contacts;

    const math::Vec2 v = VelocityAt(b1, m_p) - VelocityAt(b0, m_p);
    m_relativeVelocity = v;
    const math::Vec2 u = AccelerationAt(*b1, r2) - AccelerationAt(*b0, r1);
    // A body that went bad within this step (a force of NaN, say) is dropped at the next;
    // its rows stay out of this solve, so that the bad numbers reach no other body through
    // them, nor through the static bodies that all rows of a pile share.
    if (!math::IsFinite(v) || !math::IsFinite(u)) {
        return false;
    }

    math::real rhsN;
    if (m_new) {
        // First touch: an impact law, with neither position term nor regularisation.
        m_effMassN = m_massN;
        m_effMassT = m_massT;
        rhsN = math::Dot(m_n, v) * (1 + m_restitution);
    } else {
        // Resting: a soft constraint pulling the depth towards the target.
        m_effMassN = m_regMassN;
        m_effMassT = m_regMassT;
        const math::real wanted = block.targetPenetration - m_d;
        const math::real corr =
            params.maxPositionCorrection < wanted ? params.maxPositionCorrection : wanted;
        rhsN = math::Dot(m_n, u) * block.c + block.a * corr * positionFactor +
               math::Dot(m_n, v) * block.b;
    }
    const math::real rhsT = math::Dot(m_t, u) * block.c + math::Dot(m_t, v) * block.b;
    m_targetN = -m_effMassN * rhsN;
    m_targetT = -m_effMassT * rhsT;

    if (!m_new && params.warmStart) {
        m_accN *= params.warmStartFactor;
        m_accT *= params.warmStartFactor;
        ApplyImpulse(m_n * m_accN + m_t * m_accT);
    } else {
        m_accN = 0;
        m_accT = 0;
    }
    return true;
}

void Contact::CalcDelta() {
    const math::Vec2 dv = RelativeVelocityChange();
    Delta(dv, m_n, m_t, m_effMassN, m_effMassT, m_targetN, m_targetT, m_accN, m_accT, m_friction,
          m_deltaN, m_deltaT);
    priority = m_deltaN * m_deltaN + m_deltaT * m_deltaT;
}

void Contact::ApplyDelta() {
    ApplyImpulse(m_n * m_deltaN + m_t * m_deltaT);
    m_accN += m_deltaN;
    m_accT += m_deltaT;
}

void Contact::SolveExit() {}

namespace {

struct Candidates {
    math::real n;
    math::real t;
};

// CalcDelta on a packed row: the clamped impulses that the row wants, given its bodies'
// present velocity changes.
inline Candidates RowCandidates(const ContactRow& row, const SolverBody& b0, const SolverBody& b1) {
    const math::Vec2 n = row.n;
    const math::Vec2 t(-n.y, n.x);
    const math::Vec2 dv = b1.velocityChange - b0.velocityChange;
    const math::real w0 = b0.angularChange;
    const math::real w1 = b1.angularChange;
    // Branch-free clamps: whether a row pushes, holds or slides changes from pass to pass,
    // and a mispredicted branch costs more than the row.
    const math::real candN = std::max(
        row.accN + row.targetN - (math::Dot(n, dv) + (w1 * row.rn2 - w0 * row.rn1)) * row.massN,
        math::real(0));
    const math::real limit = std::max(row.friction * candN, math::real(0));
    const math::real candT =
        std::min(std::max(row.accT + row.targetT -
                              (math::Dot(t, dv) + (w1 * row.rt2 - w0 * row.rt1)) * row.massT,
                          -limit),
                 limit);
    return {candN, candT};
}

}  // namespace

math::real Contact::RowPriority(const ContactRow& row, const SolverBody* bodies) {
    const Candidates c = RowCandidates(row, bodies[row.body0], bodies[row.body1]);
    const math::real dN = c.n - row.accN;
    const math::real dT = c.t - row.accT;
    return dN * dN + dT * dT;
}

void Contact::Sweep(ContactRow* first, ContactRow* last, SolverBody* bodies, RowChange* changes) {
    for (ContactRow* r = first; r != last; ++r) {
        ContactRow& row = *r;
        SolverBody& b0 = bodies[row.body0];
        SolverBody& b1 = bodies[row.body1];
        const Candidates c = RowCandidates(row, b0, b1);
        const math::real dN = c.n - row.accN;
        const math::real dT = c.t - row.accT;
        const math::Vec2 n = row.n;
        const math::Vec2 impulse = n * dN + math::Vec2(-n.y, n.x) * dT;
        b0.velocityChange -= impulse * b0.massInv;
        b0.angularChange -= b0.inertiaInv * (row.rn1 * dN + row.rt1 * dT);
        b1.velocityChange += impulse * b1.massInv;
        b1.angularChange += b1.inertiaInv * (row.rn2 * dN + row.rt2 * dT);
        row.accN = c.n;
        row.accT = c.t;
        if (changes) {
            changes[r - first] = RowChange{dN, dT};
        }
    }
}

void Contact::ToRow(ContactRow& row, uint32_t body0, uint32_t body1) const {
    row.body0 = body0;
    row.body1 = body1;
    row.n = m_n;
    row.rn1 = math::Cross(r1, m_n);
    row.rt1 = math::Cross(r1, m_t);
    row.rn2 = math::Cross(r2, m_n);
    row.rt2 = math::Cross(r2, m_t);
    row.massN = m_effMassN;
    row.massT = m_effMassT;
    row.targetN = m_targetN;
    row.targetT = m_targetT;
    row.accN = m_accN;
    row.accT = m_accT;
    row.friction = m_friction;
}

void Contact::TakeResults(math::real accN, math::real accT, const RowChange* change) {
    m_accN = accN;
    m_accT = accT;
    if (change) {
        m_deltaN = change->deltaN;
        m_deltaT = change->deltaT;
        priority = m_deltaN * m_deltaN + m_deltaT * m_deltaT;
    }
}

}  // namespace physics
