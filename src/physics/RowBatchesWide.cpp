// Built with eight-lane vector instructions enabled (see the build file); only called once
// the processor is known to have them. Includes nothing but plain records, so that no
// shared inline code is compiled here with instructions that other callers may lack.
#include "physics/RowSweepKernel.h"

#if defined(VORRA_WIDE_SWEEP)

#include <immintrin.h>

namespace physics {
namespace {

struct WideLanes {
    using V = __m256;
    static constexpr int kWidth = 8;

    static V Zero() { return _mm256_setzero_ps(); }
    static V Load(const float* p) { return _mm256_loadu_ps(p); }
    static void Store(float* p, V v) { _mm256_storeu_ps(p, v); }
    static V Add(V a, V b) { return _mm256_add_ps(a, b); }
    static V Sub(V a, V b) { return _mm256_sub_ps(a, b); }
    static V Mul(V a, V b) { return _mm256_mul_ps(a, b); }
    static V Max(V a, V b) { return _mm256_max_ps(a, b); }
    static V Min(V a, V b) { return _mm256_min_ps(a, b); }
    static V Negate(V a) { return _mm256_xor_ps(a, _mm256_set1_ps(-0.0f)); }

    // Four rows of four in each half, turned into four columns; its own inverse.
    static void Transpose(V& a, V& b, V& c, V& d) {
        const V ab0 = _mm256_unpacklo_ps(a, b);
        const V ab1 = _mm256_unpackhi_ps(a, b);
        const V cd0 = _mm256_unpacklo_ps(c, d);
        const V cd1 = _mm256_unpackhi_ps(c, d);
        a = _mm256_shuffle_ps(ab0, cd0, _MM_SHUFFLE(1, 0, 1, 0));
        b = _mm256_shuffle_ps(ab0, cd0, _MM_SHUFFLE(3, 2, 3, 2));
        c = _mm256_shuffle_ps(ab1, cd1, _MM_SHUFFLE(1, 0, 1, 0));
        d = _mm256_shuffle_ps(ab1, cd1, _MM_SHUFFLE(3, 2, 3, 2));
    }
    // Lanes k and k + 4 share a register before the turn.
    static V Pair(const SolverBody* bodies, const uint32_t* offset, int k) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(BodyAt(bodies, offset[k]))),
                                    _mm_loadu_ps(BodyAt(bodies, offset[k + 4])), 1);
    }
    static void Unpair(SolverBody* bodies, const uint32_t* offset, int k, V v) {
        _mm_storeu_ps(BodyAt(bodies, offset[k]), _mm256_castps256_ps128(v));
        _mm_storeu_ps(BodyAt(bodies, offset[k + 4]), _mm256_extractf128_ps(v, 1));
    }
    static void LoadBodies(const SolverBody* bodies, const uint32_t* offset, V& x, V& y, V& w,
                           V& m) {
        x = Pair(bodies, offset, 0);
        y = Pair(bodies, offset, 1);
        w = Pair(bodies, offset, 2);
        m = Pair(bodies, offset, 3);
        Transpose(x, y, w, m);
    }
    static void StoreBodies(SolverBody* bodies, const uint32_t* offset, V x, V y, V w, V m) {
        Transpose(x, y, w, m);
        Unpair(bodies, offset, 0, x);
        Unpair(bodies, offset, 1, y);
        Unpair(bodies, offset, 2, w);
        Unpair(bodies, offset, 3, m);
    }
    static void StoreChanges(RowChange* out, V dN, V dT) {
        const V low = _mm256_unpacklo_ps(dN, dT);   // lanes 0, 1 and 4, 5
        const V high = _mm256_unpackhi_ps(dN, dT);  // lanes 2, 3 and 6, 7
        _mm_storeu_ps(&out[0].deltaN, _mm256_castps256_ps128(low));
        _mm_storeu_ps(&out[2].deltaN, _mm256_castps256_ps128(high));
        _mm_storeu_ps(&out[4].deltaN, _mm256_extractf128_ps(low, 1));
        _mm_storeu_ps(&out[6].deltaN, _mm256_extractf128_ps(high, 1));
    }
};

}  // namespace

void SweepRowBatchesWide(RowBatch* batches, size_t first, size_t last, SolverBody* bodies,
                         RowChange* changes) {
    SweepRowBatches<WideLanes>(batches, first, last, bodies, changes);
}

}  // namespace physics

#endif
