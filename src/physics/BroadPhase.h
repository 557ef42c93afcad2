#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "math/BoundingBox2.h"
#include "util/VectorPOD.h"

namespace physics {

// The pairs of bounding boxes that overlap (touching counts), found through a uniform grid
// rebuilt for each query. The cells are about the size of an average box, so a pile
// compares each box with its neighbours only, whichever way the pile stands. A pair is
// reported by the one cell that holds the lower corner of the overlap, so once. Boxes that
// would cover too many cells, or are not finite, are tested against every other box.
// Pairs come sorted by (first, second), the order of the double loop that they replace.
class BroadPhase {
public:
    using PairList = std::vector<std::pair<uint32_t, uint32_t>>;

    // Pairs (i, j), i < j, within one list.
    void Within(const std::vector<math::BoundingBox2f>& boxes, PairList& pairs);
    // Pairs (i, j) of a box of the first list and one of the second.
    void Across(const std::vector<math::BoundingBox2f>& first,
                const std::vector<math::BoundingBox2f>& second, PairList& pairs);

private:
    // A box's place in a cell; boxes are numbered across both lists, the first list first.
    struct Entry {
        int32_t cellX;
        int32_t cellY;
        int32_t minCellX;  // the cell of the box's lower corner
        int32_t minCellY;
        uint32_t box;
    };

    // Boxes [0, split) against [split, size) when across, all against all otherwise.
    void Find(uint32_t split, bool across, PairList& pairs);
    void Report(uint32_t a, uint32_t b, uint32_t split, bool across, PairList& pairs) const;
    void SortPairs(PairList& pairs);

    util::VectorPOD<math::BoundingBox2f> m_boxes;
    util::VectorPOD<Entry> m_entries;
    util::VectorPOD<Entry> m_sorted;
    util::VectorPOD<uint32_t> m_bucketStart;
    util::VectorPOD<uint32_t> m_large;
    util::VectorPOD<uint8_t> m_isLarge;
    util::VectorPOD<uint32_t> m_counts;
    PairList m_scratch;
};

}  // namespace physics
