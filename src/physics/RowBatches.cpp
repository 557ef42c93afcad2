#include "physics/RowBatches.h"

#include <algorithm>
#include <cstddef>
#include <thread>

#include "physics/RowSweepKernel.h"
#include "util/Prefetch.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace physics {

// The sweep loads a body's first four values as one vector and writes them back.
static_assert(sizeof(SolverBody) == 5 * sizeof(math::real) &&
                  offsetof(SolverBody, angularChange) == 2 * sizeof(math::real) &&
                  offsetof(SolverBody, massInv) == 3 * sizeof(math::real),
              "SolverBody must be packed floats: vx, vy, w, massInv, inertiaInv");

namespace {

constexpr int kLanes = RowBatch::kLanes;
// Batches per part of their filling: below this, handing them to another core costs more
// than it saves.
constexpr size_t kFillGrain = 512;
// How far ahead the level pass asks for the rows it will read.
constexpr size_t kLevelAhead = 32;

bool Moves(const SolverBody& body) {
    return body.massInv != 0 || body.inertiaInv != 0;
}

uint32_t OffsetOf(uint32_t body) {
    return body * static_cast<uint32_t>(sizeof(SolverBody));
}

}  // namespace

void RowBatches::Clear(uint32_t dummyBody, const SolverBody* bodies) {
    m_batches.clear();
    m_laneRows.clear();
    m_levelBatch.clear();
    m_levelBatch.push_back(0);
    m_dummyBody = dummyBody;
    // New places read as no level, as their values do not pass the base.
    m_bodyLevel.resize(dummyBody + 1, 0);
    m_moves.resize(dummyBody + 1);
    for (uint32_t b = 0; b <= dummyBody; ++b) {
        m_moves[b] = Moves(bodies[b]) ? 1 : 0;
    }
}

void RowBatches::Add(const ContactRow* rows, const uint32_t* order, size_t count,
                     const SolverBody* bodies) {
    if (count == 0) {
        return;
    }
    // A body's entry is the base plus its next free level; entries of earlier runs, and of
    // bodies that do not move, never pass the base and read as level 0. Bodies that do not
    // move are written to the padding slot instead, which no row reads.
    if (m_levelBase > UINT32_MAX - count - 1) {
        std::fill(m_bodyLevel.begin(), m_bodyLevel.end(), 0);
        m_levelBase = 0;
    }
    const uint32_t base = m_levelBase;
    m_rowLevel.resize(count);
    m_rowBody.resize(count);
    uint32_t levels = 0;
    for (size_t k = 0; k < count; ++k) {
        if (k + kLevelAhead < count) {
            __builtin_prefetch(&rows[order[k + kLevelAhead]]);
        }
        const ContactRow& row = rows[order[k]];
        const uint32_t b0 = row.body0;
        const uint32_t b1 = row.body1;
        const uint32_t v0 = m_bodyLevel[b0];
        const uint32_t v1 = m_bodyLevel[b1];
        const uint32_t level = std::max(v0 > base ? v0 - base : 0, v1 > base ? v1 - base : 0);
        const bool moves0 = m_moves[b0] != 0;
        m_bodyLevel[moves0 ? b0 : m_dummyBody] = base + level + 1;
        m_bodyLevel[m_moves[b1] ? b1 : m_dummyBody] = base + level + 1;
        m_rowLevel[k] = level;
        m_rowBody[k] = moves0 ? b0 : b1;
        levels = std::max(levels, level + 1);
    }
    m_levelBase = base + levels;

    // Rows by level: a counting sort. The rows of a level share no moving body, so their
    // order within it changes no result. One thread keeps the order given; where threads
    // share the sweep, each level is ordered by the rows' bodies, so that each thread's
    // part of every level works on bodies of its own part of the array and the threads
    // seldom write to the same cache lines.
    const uint32_t* placing = nullptr;
    if (SharedSweep(count, levels)) {
        placing = ByFirstMovingBody(count);
    }
    m_levelStart.resize(levels + 1);
    std::fill(m_levelStart.begin(), m_levelStart.end(), 0);
    for (size_t k = 0; k < count; ++k) {
        ++m_levelStart[m_rowLevel[k] + 1];
    }
    for (uint32_t l = 0; l < levels; ++l) {
        m_levelStart[l + 1] += m_levelStart[l];
    }
    m_byLevel.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const size_t k = placing ? placing[i] : i;
        m_byLevel[m_levelStart[m_rowLevel[k]]++] = order[k];
    }

    // Each level fills whole batches, its last one padded with rows of nothing on the
    // padding slot. The counts have moved each start to the next level's: walk the levels
    // by their ends.
    const size_t firstBatch = m_batches.size();
    const size_t firstLevel = m_levelBatch.size() - 1;
    size_t batchCount = firstBatch;
    for (uint32_t l = 0, begin = 0; l < levels; begin = m_levelStart[l++]) {
        batchCount += (m_levelStart[l] - begin + kLanes - 1) / kLanes;
        m_levelBatch.push_back(static_cast<uint32_t>(batchCount));
    }
    m_batches.resize(batchCount);
    m_laneRows.resize(batchCount * kLanes);
    // Each batch is filled from its own rows alone: the step's threads share them.
    StepWorkers::Get().ForParts(
        batchCount - firstBatch, kFillGrain, [&](size_t, size_t first, size_t last) {
            Fill(rows, bodies, firstLevel, firstBatch + first, firstBatch + last);
        });
}

void RowBatches::Fill(const ContactRow* rows, const SolverBody* bodies, size_t firstLevel,
                      size_t first, size_t last) {
    ContactRow padding{};
    padding.body0 = padding.body1 = m_dummyBody;
    // The level of the first batch; the levels of this run begin at firstLevel, and their
    // rows end where m_levelStart says.
    size_t level = static_cast<size_t>(std::upper_bound(m_levelBatch.begin() + firstLevel,
                                                        m_levelBatch.end(), first) -
                                       m_levelBatch.begin()) -
                   1;
    for (size_t batch = first; batch < last; ++batch) {
        while (m_levelBatch[level + 1] <= batch) {
            ++level;
        }
        const size_t l = level - firstLevel;
        const uint32_t levelRows = l == 0 ? 0 : m_levelStart[l - 1];
        const uint32_t end = m_levelStart[l];
        const uint32_t at =
            levelRows + static_cast<uint32_t>((batch - m_levelBatch[level]) * kLanes);
        for (int lane = 0; lane < kLanes; ++lane) {
            const uint32_t place = at + static_cast<uint32_t>(lane);
            // Rows are read out of order here: ask for the ones a little ahead.
            if (place + kLanes < end) {
                util::PrefetchSpan(&rows[m_byLevel[place + kLanes]], sizeof(ContactRow));
            }
            const uint32_t row = place < end ? m_byLevel[place] : kNoRow;
            Put(m_batches[batch], lane, row == kNoRow ? padding : rows[row], bodies);
            m_laneRows[batch * kLanes + static_cast<size_t>(lane)] = row;
        }
    }
}

const uint32_t* RowBatches::ByFirstMovingBody(size_t count) {
    // A counting sort of the places by the body that the level pass noted for each row.
    m_bodyStart.resize(m_dummyBody + 2);
    std::fill(m_bodyStart.begin(), m_bodyStart.end(), 0);
    for (size_t k = 0; k < count; ++k) {
        ++m_bodyStart[m_rowBody[k] + 1];
    }
    for (uint32_t b = 0; b <= m_dummyBody; ++b) {
        m_bodyStart[b + 1] += m_bodyStart[b];
    }
    m_byBody.resize(count);
    for (size_t k = 0; k < count; ++k) {
        m_byBody[m_bodyStart[m_rowBody[k]]++] = static_cast<uint32_t>(k);
    }
    return m_byBody.begin();
}

void RowBatches::Put(RowBatch& batch, int lane, const ContactRow& row, const SolverBody* bodies) {
    batch.offset0[lane] = OffsetOf(row.body0);
    batch.offset1[lane] = OffsetOf(row.body1);
    batch.nx[lane] = row.n.x;
    batch.ny[lane] = row.n.y;
    batch.rn1[lane] = row.rn1;
    batch.rt1[lane] = row.rt1;
    batch.rn2[lane] = row.rn2;
    batch.rt2[lane] = row.rt2;
    batch.massN[lane] = row.massN;
    batch.massT[lane] = row.massT;
    batch.targetN[lane] = row.targetN;
    batch.targetT[lane] = row.targetT;
    batch.accN[lane] = row.accN;
    batch.accT[lane] = row.accT;
    batch.friction[lane] = row.friction;
    batch.inertiaInv0[lane] = bodies[row.body0].inertiaInv;
    batch.inertiaInv1[lane] = bodies[row.body1].inertiaInv;
}

void RowBatches::Scatter(ContactRow* rows, const RowChange* laneChanges,
                         RowChange* rowChanges) const {
    ForEachResult(laneChanges,
                  [&](uint32_t row, math::real accN, math::real accT, const RowChange* change) {
                      rows[row].accN = accN;
                      rows[row].accT = accT;
                      if (change) {
                          rowChanges[row] = *change;
                      }
                  });
}

namespace {

// The lane operations for the sweep's kernel. Max and Min keep the kernel's operand rule,
// which the vector instructions follow by themselves.
#if defined(__SSE2__)

struct NarrowLanes {
    using V = __m128;
    static constexpr int kWidth = 4;

    static V Zero() { return _mm_setzero_ps(); }
    static V Load(const float* p) { return _mm_loadu_ps(p); }
    static void Store(float* p, V v) { _mm_storeu_ps(p, v); }
    static V Add(V a, V b) { return _mm_add_ps(a, b); }
    static V Sub(V a, V b) { return _mm_sub_ps(a, b); }
    static V Mul(V a, V b) { return _mm_mul_ps(a, b); }
    static V Max(V a, V b) { return _mm_max_ps(a, b); }
    static V Min(V a, V b) { return _mm_min_ps(a, b); }
    static V Negate(V a) { return _mm_xor_ps(a, _mm_set1_ps(-0.0f)); }

    // A body's first four values (vx, vy, w, massInv) as one row each, turned into columns.
    static void LoadBodies(const SolverBody* bodies, const uint32_t* offset, V& x, V& y, V& w,
                           V& m) {
        x = _mm_loadu_ps(BodyAt(bodies, offset[0]));
        y = _mm_loadu_ps(BodyAt(bodies, offset[1]));
        w = _mm_loadu_ps(BodyAt(bodies, offset[2]));
        m = _mm_loadu_ps(BodyAt(bodies, offset[3]));
        _MM_TRANSPOSE4_PS(x, y, w, m);
    }
    static void StoreBodies(SolverBody* bodies, const uint32_t* offset, V x, V y, V w, V m) {
        _MM_TRANSPOSE4_PS(x, y, w, m);
        _mm_storeu_ps(BodyAt(bodies, offset[0]), x);
        _mm_storeu_ps(BodyAt(bodies, offset[1]), y);
        _mm_storeu_ps(BodyAt(bodies, offset[2]), w);
        _mm_storeu_ps(BodyAt(bodies, offset[3]), m);
    }
    static void StoreChanges(RowChange* out, V dN, V dT) {
        _mm_storeu_ps(&out[0].deltaN, _mm_unpacklo_ps(dN, dT));
        _mm_storeu_ps(&out[2].deltaN, _mm_unpackhi_ps(dN, dT));
    }
};

#else

// Without vector instructions, one lane at a time.
struct NarrowLanes {
    using V = float;
    static constexpr int kWidth = 1;

    static V Zero() { return 0.0f; }
    static V Load(const float* p) { return *p; }
    static void Store(float* p, V v) { *p = v; }
    static V Add(V a, V b) { return a + b; }
    static V Sub(V a, V b) { return a - b; }
    static V Mul(V a, V b) { return a * b; }
    static V Max(V a, V b) { return a > b ? a : b; }
    static V Min(V a, V b) { return a < b ? a : b; }
    static V Negate(V a) { return -a; }

    static void LoadBodies(const SolverBody* bodies, const uint32_t* offset, V& x, V& y, V& w,
                           V& m) {
        const float* body = BodyAt(bodies, *offset);
        x = body[0];
        y = body[1];
        w = body[2];
        m = body[3];
    }
    static void StoreBodies(SolverBody* bodies, const uint32_t* offset, V x, V y, V w, V) {
        float* body = BodyAt(bodies, *offset);
        body[0] = x;
        body[1] = y;
        body[2] = w;
    }
    static void StoreChanges(RowChange* out, V dN, V dT) { *out = RowChange{dN, dT}; }
};

#endif

bool g_wideVectorsAllowed = true;

}  // namespace

#if defined(VORRA_WIDE_SWEEP)
bool HasWideVectors() {
    return __builtin_cpu_supports("avx");
}
#endif

namespace {

// Batches per thread in an average level below which a sweep stays on one thread: the
// threads meet after every level, which costs about as much as a few batches.
constexpr size_t kBatchesPerPart = 64;

void Spin(unsigned& spins) {
    if ((++spins & 1023) == 0) {
        std::this_thread::yield();
    } else {
#if defined(__SSE2__)
        _mm_pause();
#endif
    }
}

}  // namespace

size_t RowBatches::PartsOfLevels(size_t batches, size_t levels) {
    return levels == 0 ? 1 : StepWorkers::Get().PartsFor(batches / levels, kBatchesPerPart);
}

bool RowBatches::SharedSweep(size_t rows, size_t levels) {
    return PartsOfLevels((rows + kLanes - 1) / kLanes, levels) > 1;
}

void RowBatches::SweepPasses(size_t first, size_t last, int passes, SolverBody* bodies,
                             RowChange* lastChanges) {
    const uint32_t* levelsBegin = m_levelBatch.begin();
    const uint32_t* levelsEnd = m_levelBatch.end() - 1;
    const size_t firstLevel =
        static_cast<size_t>(std::lower_bound(levelsBegin, levelsEnd, first) - levelsBegin);
    const size_t lastLevel =
        static_cast<size_t>(std::lower_bound(levelsBegin, levelsEnd, last) - levelsBegin);
    const size_t levels = lastLevel - firstLevel;
    StepWorkers& workers = StepWorkers::Get();
    const size_t parts = PartsOfLevels(last - first, levels);
    if (parts <= 1 || passes <= 0) {
        for (int pass = 0; pass < passes; ++pass) {
            Sweep(first, last, bodies, pass + 1 == passes ? lastChanges : nullptr);
        }
        return;
    }
    for (size_t part = 0; part < parts; ++part) {
        m_progress[part].levels.store(0, std::memory_order_relaxed);
    }
    workers.ForParts(parts, 1, [&](size_t part, size_t, size_t) {
        SweepPart(part, parts, firstLevel, lastLevel, passes, bodies, lastChanges);
    });
}

void RowBatches::SweepPart(size_t part, size_t parts, size_t firstLevel, size_t lastLevel,
                           int passes, SolverBody* bodies, RowChange* lastChanges) {
    // A body that does not move reads as zeros and is written back unchanged; the rows of
    // a level may share one, so each thread's rows take a zero slot of the thread's own
    // instead, and no slot is written by two threads. The bits are the same either way.
    const uint32_t zeros = m_dummyBody + 1 + static_cast<uint32_t>(part);
    for (size_t level = firstLevel; level < lastLevel; ++level) {
        size_t from = 0;
        size_t to = 0;
        StepWorkers::PartRange(m_levelBatch[level + 1] - m_levelBatch[level], parts, part, from,
                               to);
        for (size_t b = m_levelBatch[level] + from; b < m_levelBatch[level] + to; ++b) {
            for (uint32_t* offsets : {m_batches[b].offset0, m_batches[b].offset1}) {
                for (int lane = 0; lane < kLanes; ++lane) {
                    if (!Moves(bodies[offsets[lane] / sizeof(SolverBody)])) {
                        offsets[lane] = OffsetOf(zeros);
                    }
                }
            }
        }
    }
    // The levels' count starts after that.
    uint32_t done = 1;
    m_progress[part].levels.store(done, std::memory_order_release);
    for (int pass = 0; pass < passes; ++pass) {
        RowChange* changes = pass + 1 == passes ? lastChanges : nullptr;
        for (size_t level = firstLevel; level < lastLevel; ++level) {
            // A level starts once every thread is through the one before.
            for (size_t other = 0; other < parts; ++other) {
                unsigned spins = 0;
                while (m_progress[other].levels.load(std::memory_order_acquire) < done) {
                    Spin(spins);
                }
            }
            const size_t begin = m_levelBatch[level];
            const size_t count = m_levelBatch[level + 1] - begin;
            size_t from = 0;
            size_t to = 0;
            StepWorkers::PartRange(count, parts, part, from, to);
            if (from < to) {
                Sweep(begin + from, begin + to, bodies, changes);
            }
            m_progress[part].levels.store(++done, std::memory_order_release);
        }
    }
}

bool RowBatches::AllowWideVectors(bool allowed) {
    const bool was = g_wideVectorsAllowed;
    g_wideVectorsAllowed = allowed;
    return was;
}

void RowBatches::Sweep(size_t first, size_t last, SolverBody* bodies, RowChange* changes) {
#if defined(VORRA_WIDE_SWEEP)
    static const bool wide = HasWideVectors();
    if (wide && g_wideVectorsAllowed) {
        SweepRowBatchesWide(m_batches.begin(), first, last, bodies, changes);
        return;
    }
#endif
    SweepRowBatches<NarrowLanes>(m_batches.begin(), first, last, bodies, changes);
}

}  // namespace physics
