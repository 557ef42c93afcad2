#pragma once

#include <cstdint>

#include "math/Real.h"
#include "math/Vector2.h"

// The plain records of the contact sweep. Kept apart from the classes, with nothing but data,
// so that code built for other vector instructions can include them safely.

namespace physics {

// A body as the Gauss-Seidel sweep sees it: its velocity changes and its solver inverse
// values side by side in one small array, so that the rows' random accesses to their
// bodies stay in cache.
struct SolverBody {
    math::Vec2 velocityChange;
    math::real angularChange;
    math::real massInv;
    math::real inertiaInv;
};

// A contact as the sweep sees it: one compact record with the lever arms and effective
// masses at hand and its bodies as indices into the SolverBody array. The arithmetic is
// that of CalcDelta followed by ApplyDelta, regrouped: equal up to rounding.
struct ContactRow {
    uint32_t body0;
    uint32_t body1;
    math::Vec2 n;    // the tangent is (-n.y, n.x)
    math::real rn1;  // cross(r1, n), cross(r1, t), ...
    math::real rt1;
    math::real rn2;
    math::real rt2;
    math::real massN;
    math::real massT;
    math::real targetN;
    math::real targetT;
    math::real accN;
    math::real accT;
    math::real friction;
};

// The last changes of a row's two impulses, kept apart from the rows: only the last pass
// writes them.
struct RowChange {
    math::real deltaN;
    math::real deltaT;
};

// Eight contact rows side by side, one in each lane, that share no movable body. Kept as
// arrays of floats, so that one layout serves vectors of four lanes and of eight.
struct alignas(16) RowBatch {
    static constexpr int kLanes = 8;

    // The rows' bodies as byte offsets into the SolverBody array: the sweep addresses them
    // without multiplying an index first. 32 bits reach some 200 million bodies.
    uint32_t offset0[kLanes];
    uint32_t offset1[kLanes];
    math::real nx[kLanes];
    math::real ny[kLanes];
    math::real rn1[kLanes];
    math::real rt1[kLanes];
    math::real rn2[kLanes];
    math::real rt2[kLanes];
    math::real massN[kLanes];
    math::real massT[kLanes];
    math::real targetN[kLanes];
    math::real targetT[kLanes];
    math::real accN[kLanes];
    math::real accT[kLanes];
    math::real friction[kLanes];
    math::real inertiaInv0[kLanes];  // the masses come with the bodies' velocities
    math::real inertiaInv1[kLanes];
};

}  // namespace physics
