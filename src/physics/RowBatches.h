#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "math/Real.h"
#include "physics/SolverRows.h"
#include "physics/StepWorkers.h"
#include "util/VectorPOD.h"

namespace physics {

// The contact rows of a sweep regrouped into batches of four that can be solved at once.
// Each row goes into the first level after the last one that touched one of its movable
// bodies, so every body sees its rows' changes in the order of the list and a batched
// sweep gives, bit for bit, what the sequential one gives. Bodies that neither move nor
// turn take only zeros and order nothing. A level's last batch is padded with rows of
// nothing on a body slot of their own.
class RowBatches {
public:
    static constexpr uint32_t kNoRow = UINT32_MAX;

    // Starts over for a sweep whose padding rows use the body slot dummyBody, which must
    // hold zeros and be used by no row, as must the StepWorkers::kMaxThreads slots after it.
    // Which bodies move is taken from bodies now: their inverse values must stay until the
    // sweep.
    void Clear(uint32_t dummyBody, const SolverBody* bodies);
    // Schedules the rows order[0], ..., order[count - 1], in that order, after everything
    // scheduled before; the batch count afterwards marks the end of this run.
    void Add(const ContactRow* rows, const uint32_t* order, size_t count, const SolverBody* bodies);
    size_t BatchCount() const { return m_batches.size(); }
    // The row in each lane, batch by batch, kNoRow for padding.
    const util::VectorPOD<uint32_t>& LaneRows() const { return m_laneRows; }

    // One pass over batches [first, last). With changes given, each lane's changes are
    // recorded at batch * RowBatch::kLanes + lane.
    void Sweep(size_t first, size_t last, SolverBody* bodies, RowChange* changes);
    // Passes over batches [first, last), which must begin and end with runs that Add made,
    // the changes of the last one recorded if given. Each level's batches are cut between
    // the step's threads, which meet after every level: the rows of a level share no
    // moving body, so the result is the sequential one, bit for bit.
    void SweepPasses(size_t first, size_t last, int passes, SolverBody* bodies,
                     RowChange* lastChanges);
    // Hands each row its accumulated impulses, and its last changes if recorded; rows and
    // rowChanges are indexed alike.
    void Scatter(ContactRow* rows, const RowChange* laneChanges, RowChange* rowChanges) const;
    // Hands each row's results to take(row, accN, accT, change) in batch order, change being
    // null unless laneChanges is given.
    template <class Take>
    void ForEachResult(const RowChange* laneChanges, Take take) const {
        for (size_t b = 0; b < m_batches.size(); ++b) {
            const RowBatch& batch = m_batches[b];
            for (int lane = 0; lane < RowBatch::kLanes; ++lane) {
                const size_t slot = b * RowBatch::kLanes + static_cast<size_t>(lane);
                const uint32_t row = m_laneRows[slot];
                if (row != kNoRow) {
                    take(row, batch.accN[lane], batch.accT[lane],
                         laneChanges ? &laneChanges[slot] : nullptr);
                }
            }
        }
    }

    // Whether the sweep may use eight-lane vectors where the processor has them (it may by
    // default); the result is the same either way. Returns the setting before.
    static bool AllowWideVectors(bool allowed);

private:
    static void Put(RowBatch& batch, int lane, const ContactRow& row, const SolverBody* bodies);
    // Fills batches [first, last) of the run whose levels begin at firstLevel in
    // m_levelBatch, from the rows as the last Add placed them by level.
    void Fill(const ContactRow* rows, const SolverBody* bodies, size_t firstLevel, size_t first,
              size_t last);
    // The number of threads that share the passes over levels of this many batches.
    static size_t PartsOfLevels(size_t batches, size_t levels);
    // Whether a run of rows in this many levels is to be swept on several threads, by the
    // batches it fills without padding: a misjudged run costs time, never a result.
    static bool SharedSweep(size_t rows, size_t levels);
    // The places 0 .. count - 1 of the last run, by a moving body of each row (its first,
    // where both move), in order of places where that is the same.
    const uint32_t* ByFirstMovingBody(size_t count);

    // The threads' progress through the levels of a parallel sweep, a cache line each.
    struct alignas(64) Progress {
        std::atomic<uint32_t> levels{0};
    };
    void SweepPart(size_t part, size_t parts, size_t firstLevel, size_t lastLevel, int passes,
                   SolverBody* bodies, RowChange* lastChanges);

    util::VectorPOD<RowBatch> m_batches;
    // The batch at which each level begins, over all runs, and the end of the last.
    util::VectorPOD<uint32_t> m_levelBatch;
    Progress m_progress[StepWorkers::kMaxThreads];
    util::VectorPOD<uint32_t> m_laneRows;  // the row in each lane, or kNoRow
    uint32_t m_dummyBody = 0;

    // Scheduling scratch, kept to spare the allocations.
    util::VectorPOD<uint32_t> m_bodyLevel;  // a body's next free level, over the base
    uint32_t m_levelBase = 0;
    util::VectorPOD<uint8_t> m_moves;  // whether each body moves or turns
    util::VectorPOD<uint32_t> m_rowLevel;
    util::VectorPOD<uint32_t> m_rowBody;  // a moving body of each row, its first where both move
    util::VectorPOD<uint32_t> m_levelStart;
    util::VectorPOD<uint32_t> m_byLevel;
    util::VectorPOD<uint32_t> m_bodyStart;
    util::VectorPOD<uint32_t> m_byBody;
};

}  // namespace physics
