#pragma once

#include <cstddef>

#include "physics/SolverRows.h"

namespace physics {

// One pass of the contact sweep over batches [first, last), written once for any width of
// vector. Lanes supplies kWidth (a divisor of RowBatch::kLanes), the vector type V and its
// operations: Load, Store, Add, Sub, Mul, Max, Min, Negate, Zero, LoadBodies,
// StoreBodies and StoreChanges; the body functions take the batch's byte offsets. Max(a, b) and
// Min(a, b) must be a > b ? a : b and a < b ? a : b.
//
// The operations are those of Contact::Sweep, one for one and in the same order, so that each
// lane rounds as the sequential row does. Max(0, x) keeps x's NaN as std::max(x, 0) does;
// Min likewise.
// The body at a byte offset into the SolverBody array, as its first value.
inline float* BodyAt(SolverBody* bodies, uint32_t offset) {
    return reinterpret_cast<float*>(reinterpret_cast<char*>(bodies) + offset);
}
inline const float* BodyAt(const SolverBody* bodies, uint32_t offset) {
    return reinterpret_cast<const float*>(reinterpret_cast<const char*>(bodies) + offset);
}

template <class Lanes>
inline void SweepRowBatches(RowBatch* batches, size_t first, size_t last, SolverBody* bodies,
                            RowChange* changes) {
    using V = typename Lanes::V;
    constexpr int kWidth = Lanes::kWidth;
    static_assert(RowBatch::kLanes % kWidth == 0, "lanes must split the batch evenly");
    const V zero = Lanes::Zero();
    for (size_t b = first; b < last; ++b) {
        RowBatch& batch = batches[b];
        for (int lane = 0; lane < RowBatch::kLanes; lane += kWidth) {
            V v0x, v0y, w0, m0, v1x, v1y, w1, m1;
            Lanes::LoadBodies(bodies, batch.offset0 + lane, v0x, v0y, w0, m0);
            Lanes::LoadBodies(bodies, batch.offset1 + lane, v1x, v1y, w1, m1);

            const V nx = Lanes::Load(batch.nx + lane);
            const V ny = Lanes::Load(batch.ny + lane);
            const V tx = Lanes::Negate(ny);  // t = (-n.y, n.x)
            const V accN = Lanes::Load(batch.accN + lane);
            const V accT = Lanes::Load(batch.accT + lane);
            const V rn1 = Lanes::Load(batch.rn1 + lane);
            const V rt1 = Lanes::Load(batch.rt1 + lane);
            const V rn2 = Lanes::Load(batch.rn2 + lane);
            const V rt2 = Lanes::Load(batch.rt2 + lane);

            const V dvx = Lanes::Sub(v1x, v0x);
            const V dvy = Lanes::Sub(v1y, v0y);
            const V dotN = Lanes::Add(Lanes::Mul(nx, dvx), Lanes::Mul(ny, dvy));
            const V spinN = Lanes::Sub(Lanes::Mul(w1, rn2), Lanes::Mul(w0, rn1));
            const V candN = Lanes::Max(
                zero,
                Lanes::Sub(Lanes::Add(accN, Lanes::Load(batch.targetN + lane)),
                           Lanes::Mul(Lanes::Add(dotN, spinN), Lanes::Load(batch.massN + lane))));
            const V limit = Lanes::Max(zero, Lanes::Mul(Lanes::Load(batch.friction + lane), candN));
            const V dotT = Lanes::Add(Lanes::Mul(tx, dvx), Lanes::Mul(nx, dvy));
            const V spinT = Lanes::Sub(Lanes::Mul(w1, rt2), Lanes::Mul(w0, rt1));
            const V freeT =
                Lanes::Sub(Lanes::Add(accT, Lanes::Load(batch.targetT + lane)),
                           Lanes::Mul(Lanes::Add(dotT, spinT), Lanes::Load(batch.massT + lane)));
            const V candT = Lanes::Min(limit, Lanes::Max(Lanes::Negate(limit), freeT));

            const V dN = Lanes::Sub(candN, accN);
            const V dT = Lanes::Sub(candT, accT);
            const V ix = Lanes::Add(Lanes::Mul(nx, dN), Lanes::Mul(tx, dT));
            const V iy = Lanes::Add(Lanes::Mul(ny, dN), Lanes::Mul(nx, dT));
            v0x = Lanes::Sub(v0x, Lanes::Mul(ix, m0));
            v0y = Lanes::Sub(v0y, Lanes::Mul(iy, m0));
            w0 = Lanes::Sub(w0, Lanes::Mul(Lanes::Load(batch.inertiaInv0 + lane),
                                           Lanes::Add(Lanes::Mul(rn1, dN), Lanes::Mul(rt1, dT))));
            v1x = Lanes::Add(v1x, Lanes::Mul(ix, m1));
            v1y = Lanes::Add(v1y, Lanes::Mul(iy, m1));
            w1 = Lanes::Add(w1, Lanes::Mul(Lanes::Load(batch.inertiaInv1 + lane),
                                           Lanes::Add(Lanes::Mul(rn2, dN), Lanes::Mul(rt2, dT))));
            Lanes::Store(batch.accN + lane, candN);
            Lanes::Store(batch.accT + lane, candT);
            if (changes) {
                Lanes::StoreChanges(changes + b * RowBatch::kLanes + lane, dN, dT);
            }
            Lanes::StoreBodies(bodies, batch.offset0 + lane, v0x, v0y, w0, m0);
            Lanes::StoreBodies(bodies, batch.offset1 + lane, v1x, v1y, w1, m1);
        }
    }
}

// The sweep with eight-lane vectors, for processors that have them; built apart with those
// instructions enabled. Callers check HasWideVectors first.
void SweepRowBatchesWide(RowBatch* batches, size_t first, size_t last, SolverBody* bodies,
                         RowChange* changes);
bool HasWideVectors();

}  // namespace physics
