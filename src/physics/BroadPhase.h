#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "math/BoundingBox2.h"
#include "util/VectorPOD.h"

namespace physics {

// The pairs of bounding boxes that overlap (touching counts), found through a uniform grid
// built for the search. The cells are about the size of an average box, so a pile
// compares each box with its neighbours only, whichever way the pile stands. A pair is
// reported by the one cell that holds the lower corner of the overlap, so once. Boxes that
// would cover too many cells, or are not finite, are tested against every other box.
// Pairs come sorted by (first, second), the order of the double loop that they replace.
//
// Between calls the search keeps the pairs of boxes grown by a margin. While each box of
// a call of the same kind and size lies inside its grown box, the pairs of the boxes are
// among those, and are picked out of them without a new search: a pile at rest costs a
// test per pair. Searches with a box left out of a crowd go through the grid every time.
//
// Boxes may carry flags. A box left out of a crowd (see CrowdLimit) pairs only with
// immovable boxes that are not left out themselves: it takes no place in the cells, and
// looks up the immovable boxes of the cells it covers instead.
class BroadPhase {
public:
    using PairList = std::vector<std::pair<uint32_t, uint32_t>>;
    enum Flags : uint8_t { kImmovable = 1, kLeftOut = 2 };

    // Pairs (i, j), i < j, within one list. Without flags no box is left out.
    void Within(const std::vector<math::BoundingBox2f>& boxes, PairList& pairs,
                const uint8_t* flags = nullptr);
    // Pairs (i, j) of a box of the first list and one of the second.
    void Across(const std::vector<math::BoundingBox2f>& first,
                const std::vector<math::BoundingBox2f>& second, PairList& pairs,
                const uint8_t* firstFlags = nullptr, const uint8_t* secondFlags = nullptr);

private:
    // A box's place in a cell; boxes are numbered across both lists, the first list first.
    struct Entry {
        int32_t cellX;
        int32_t cellY;
        int32_t minCellX;  // the cell of the box's lower corner
        int32_t minCellY;
        uint32_t box;
    };

    // A left-out box's cells.
    struct Query {
        int32_t x0;
        int32_t y0;
        int32_t x1;
        int32_t y1;
        uint32_t box;
    };

    // The flags of one list, or none, after those already taken.
    void TakeFlags(const uint8_t* flags, size_t count);
    // The pairs of m_boxes, through the grown boxes where no box is left out.
    void Search(uint32_t split, bool across, PairList& pairs);
    // Whether the grown boxes were made for a call of this kind and still hold m_boxes.
    bool GrownBoxesHold(uint32_t split, bool across) const;
    // Boxes [0, split) against [split, size) when across, all against all otherwise.
    void Find(uint32_t split, bool across, PairList& pairs);
    // Left-out boxes against the immovable boxes in their cells.
    void FindForLeftOut(uint32_t split, bool across, PairList& pairs);
    void Report(uint32_t a, uint32_t b, uint32_t split, bool across, PairList& pairs) const;
    void SortPairs(PairList& pairs);

    util::VectorPOD<math::BoundingBox2f> m_boxes;
    util::VectorPOD<uint8_t> m_flags;
    bool m_anyLeftOut = false;
    util::VectorPOD<Query> m_queries;
    uint32_t m_bucketMask = 0;
    util::VectorPOD<Entry> m_entries;
    util::VectorPOD<Entry> m_sorted;
    util::VectorPOD<uint32_t> m_bucketStart;
    util::VectorPOD<uint32_t> m_large;
    util::VectorPOD<uint8_t> m_isLarge;
    util::VectorPOD<uint32_t> m_counts;
    PairList m_scratch;

    // The grown boxes of the last search made through them, and their pairs, sorted.
    util::VectorPOD<math::BoundingBox2f> m_grown;
    PairList m_grownPairs;
    bool m_grownValid = false;
    bool m_grownAcross = false;
    uint32_t m_grownSplit = 0;
};

}  // namespace physics
