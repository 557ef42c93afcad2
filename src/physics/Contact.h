#pragma once

#include <cstddef>
#include <cstdint>

#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/Constraint.h"
#include "physics/Forward.h"
#include "physics/SolverRows.h"

namespace physics {

// One point of touching between two geoms in one step, and the solver row that keeps them
// apart. Rebuilt every step; impulses and the time of first touch carry over through the
// contact cache. A contact found again counts as resting (a soft constraint), a new one
// as an impact.
class Contact final : public Constraint {
public:
    // Point p, unit normal n from a to b, depth d (positive means overlap). Reads the
    // simulated time and the contact regularisation of the last solve.
    Contact(Geom* a, Geom* b, size_t index, const math::Vec2& p, const math::Vec2& n, float d);
    ~Contact() override = default;

    // Takes the time of first touch and the accumulated impulses; the contact is no
    // longer new.
    void CopyCached(const Contact& old);
    // The bodies' present velocities move the two apart at the point.
    bool IsSeparating() const;

    bool SolveInit() override;
    void CalcDelta() override;
    void ApplyDelta() override;
    void SolveExit() override;

    // The solver state as a packed row, after SolveInit, with the bodies' places in the
    // SolverBody array; and back, the accumulated impulses, and the last changes and the
    // priority if the sweep computed any.
    void ToRow(ContactRow& row, uint32_t body0, uint32_t body1) const;
    void TakeResults(math::real accN, math::real accT, const RowChange* change);
    // CalcDelta and ApplyDelta of each packed row in turn; with changes given, each row's
    // changes are recorded there.
    static void Sweep(ContactRow* first, ContactRow* last, SolverBody* bodies, RowChange* changes);
    // The priority that CalcDelta would give the row, applying nothing.
    static math::real RowPriority(const ContactRow& row, const SolverBody* bodies);

    // invM1 + invM2 + invI1 cross(r1, u)^2 + invI2 cross(r2, u)^2, static bodies as 0.
    math::real K(const math::Vec2& u) const;

    // The hash of a key, wrapping at 32 bits.
    static size_t HashKey(size_t lowerID, size_t higherID, size_t index);
    // The geometric mean, keeping the sign where exactly one value is negative.
    static math::real Combine(math::real x, math::real y);
    // Combine(x1, y1) and Combine(x2, y2) at once.
    static void CombineTwo(math::real x1, math::real y1, math::real x2, math::real y2,
                           math::real& first, math::real& second);

    double GetCreationTime() const { return m_creationTime; }
    const math::Vec2& GetPoint() const { return m_p; }
    const math::Vec2& GetNormal() const { return m_n; }
    const math::Vec2& GetTangent() const { return m_t; }
    math::real GetDepth() const { return m_d; }
    math::real GetFriction() const { return m_friction; }
    math::real GetRestitution() const { return m_restitution; }
    bool IsNew() const { return m_new; }
    const math::Vec2& GetRelativeVelocity() const { return m_relativeVelocity; }

    math::real GetMassNormal() const { return m_massN; }
    math::real GetMassTangent() const { return m_massT; }
    math::real GetRegularizedMassNormal() const { return m_regMassN; }
    math::real GetRegularizedMassTangent() const { return m_regMassT; }
    math::real GetEffectiveMassNormal() const { return m_effMassN; }
    math::real GetEffectiveMassTangent() const { return m_effMassT; }
    math::real GetTargetImpulseNormal() const { return m_targetN; }
    math::real GetTargetImpulseTangent() const { return m_targetT; }
    math::real GetImpulseNormal() const { return m_accN; }
    math::real GetImpulseTangent() const { return m_accT; }
    math::real GetDeltaNormal() const { return m_deltaN; }
    math::real GetDeltaTangent() const { return m_deltaT; }

    size_t GetLowerID() const { return m_lowerID; }
    size_t GetHigherID() const { return m_higherID; }
    size_t GetIndex() const { return m_index; }
    size_t GetHash() const { return m_hash; }
    bool SameKey(const Contact& other) const {
        return m_hash == other.m_hash && m_lowerID == other.m_lowerID &&
               m_higherID == other.m_higherID && m_index == other.m_index;
    }

private:
    // K(u) from the bodies' values, and K of the normal and the tangent together.
    math::real KFrom(const math::Vec2& u, math::real m0, math::real m1, math::real i0,
                     math::real i1) const;
    void KOfNormalAndTangent(math::real& kN, math::real& kT) const;

    // What the cache reads and writes of each contact, side by side, so that a match
    // touches as few cache lines as possible.
    double m_creationTime;
    size_t m_lowerID;
    size_t m_higherID;
    size_t m_index;
    size_t m_hash;
    math::real m_accN = 0;
    math::real m_accT = 0;
    math::real m_deltaN = 0;  // with the impulses, as the solve hands them back together
    math::real m_deltaT = 0;
    bool m_new = true;

    math::Vec2 m_p;
    math::Vec2 m_n;
    math::real m_d;
    math::real m_friction;
    math::real m_restitution;
    math::Vec2 m_t;
    math::Vec2 m_relativeVelocity{0, 0};
    math::real m_massN;
    math::real m_massT;
    math::real m_regMassN;
    math::real m_regMassT;
    math::real m_effMassN;
    math::real m_effMassT;
    math::real m_targetN = 0;
    math::real m_targetT = 0;
};

}  // namespace physics
