#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/Forward.h"
#include "util/VectorPOD.h"

namespace physics {

// The particles sorted into the square cells of a grid, the occupied cells found through a
// hash table. The table keeps its buckets, and they their capacity, from one step to the
// next, and the members of all cells share one array, so a steady flow allocates nothing.
// A member's place in that array, its slot, numbers it for the step: neighbours in space
// are mostly near in slot order too.
//
// Cell coordinates truncate toward zero, so the row and column of cells along each axis are
// twice as wide as the others. Cells are visited in table order: buckets in ascending order,
// and within a bucket in the order the cells were first met.
class ParticleHash {
public:
    using Key = math::TVector2<int>;
    struct Cell {
        Key key;
        uint32_t first;  // into the member array
        uint32_t count;
        // The bounds of the members' coordinates; NaN coordinates are left out, and a cell
        // of none but those has min above max.
        math::real minX;
        math::real minY;
        math::real maxX;
        math::real maxY;
    };

    // Sorts the particles into cells of the given size, each cell's members in list order.
    // The first call sizes the table for the number of particles; later calls grow it when
    // the cells outnumber its buckets.
    void Build(Particle* const* particles, size_t count, math::real cellSize);

    // The cell of a point, with cells of 1 / inverseSize.
    static Key KeyOf(const math::Vec2& point, math::real inverseSize);
    // The cell under the key, or null where it holds no particle.
    const Cell* Find(const Key& key) const;
    // Coordinates are readable this far past the last member.
    static constexpr size_t kPadding = 4;

    // All members, cell after cell, and their coordinates when the cells were built, x and
    // y apart so that loops over them vectorise.
    Particle* const* Members() const { return m_members.data(); }
    // Each particle's place when the cells were built, in list order.
    const math::Vec2* Places() const { return m_points.data(); }
    const math::real* Xs() const { return m_xs.data(); }
    const math::real* Ys() const { return m_ys.data(); }
    size_t MemberCount() const { return m_members.size(); }
    // The slot of the particle at the given place in the list that was built.
    uint32_t SlotOf(size_t listIndex) const { return m_slotOfParticle[listIndex]; }

    template <class F>
    void ForEachCell(F visit) const {
        for (uint32_t index : m_tableOrder) {
            visit(m_cells[index]);
        }
    }
    // The cells in table order, for loops that take them in ranges.
    const Cell& CellInTableOrder(size_t position) const { return m_cells[m_tableOrder[position]]; }

    size_t CellCount() const { return m_cells.size(); }
    size_t BucketCount() const { return m_buckets.size(); }
    size_t LargestBucket() const;
    uint32_t LargestCell() const;

    // The table's first size for n entries: n taken to the next odd number and on to the
    // next prime, at least 3.
    static size_t InitialBucketCount(size_t n);
    // value % divisor without a division, for a divisor from 1 to 2^32 - 1 and the factor
    // that RemainderFactor gives for it.
    static uint64_t RemainderFactor(size_t divisor);
    static size_t Remainder(uint32_t value, size_t divisor, uint64_t factor);

private:
    size_t BucketOf(const Key& key) const;
    uint32_t CellIndex(const Key& key);
    void Grow();
    // The cells' indices in a plain array over the keys' bounding rectangle, where that is
    // not much larger than the cells themselves, for Find.
    void BuildGrid();

    // Calls visit(bucket) for each bucket that has held a cell since the last build, in
    // ascending order: all others are empty.
    template <class F>
    void ForEachUsedBucket(F visit) const {
        for (size_t word = 0; word < m_used.size(); ++word) {
            for (uint64_t bits = m_used[word]; bits != 0; bits &= bits - 1) {
                visit(word * 64 + static_cast<size_t>(__builtin_ctzll(bits)));
            }
        }
    }

    std::vector<util::VectorPOD<uint32_t>> m_buckets;
    uint64_t m_bucketFactor = 0;  // of the bucket count, for Remainder
    std::vector<util::VectorPOD<uint32_t>> m_spareBuckets;
    // A bit for each bucket that has held a cell since the last build.
    util::VectorPOD<uint64_t> m_used;
    util::VectorPOD<uint64_t> m_spareUsed;
    std::vector<Cell> m_cells;
    // The cells' indices by key, row by row from m_gridOrigin, kNoCell where no cell is:
    // finding a neighbouring cell there takes no hashing and one look. Empty where the
    // cells lie too far apart for it.
    static constexpr uint32_t kNoCell = ~0u;
    util::VectorPOD<uint32_t> m_grid;
    Key m_gridOrigin{0, 0};
    int64_t m_gridWidth = 0;
    int64_t m_gridHeight = 0;
    util::VectorPOD<uint32_t> m_tableOrder;
    // Each particle's cell while the cells fill, then its slot.
    util::VectorPOD<uint32_t> m_slotOfParticle;
    // Each particle's place and cell, in list order.
    util::VectorPOD<math::Vec2> m_points;
    util::VectorPOD<Key> m_keys;
    util::VectorPOD<Particle*> m_members;
    util::VectorPOD<math::real> m_xs;
    util::VectorPOD<math::real> m_ys;
};

}  // namespace physics
