#pragma once

#include <cstdint>
#include <vector>

#include "math/BoundingBox2.h"

namespace app {

// Which batches of drawing must be drawn before which, so that batching changes nothing on
// screen: of any two pieces that may cover the same pixel, the earlier one is drawn first.
//
// Pieces go into slots (one slot per batch: one program, texture and state). A slot draws its
// pieces in the order they came. When a piece overlaps pieces that another slot holds,
// that slot must be drawn before this one; when the orders would go round in a circle, the
// slot is drawn at once instead. Overlap is decided on the pieces' boxes, found through a
// hashed grid of cells: shapes packed close but apart stay in their batches.
//
// The caller draws a slot when told to, through the callback it passes: flush(slot).
class BatchOrder {
public:
    static constexpr int kMaxSlots = 16;
    // Cells of the hashed grid; a piece covering more is taken to cover everything.
    static constexpr int kCells = 4096;
    static constexpr int kMaxCellsOfPiece = 64;

    BatchOrder();

    // Starts a pass with nothing held; cellSize is the side of a grid cell in the pieces'
    // frame.
    void Reset(float cellSize);

    // Readies the slot for a piece over the box: the slots that must come first and would
    // otherwise end in a circle are drawn now. selfOrdered: the slot keeps its pieces' order
    // only where they do not overlap (it draws them in passes), so a piece overlapping one of
    // its own draws the slot first.
    template <class Flush>
    void Add(int slot, const math::BoundingBox2f& box, bool selfOrdered, Flush&& flush);

    // Draws every slot holding a piece over the box, for something drawn at once there.
    template <class Flush>
    void Before(const math::BoundingBox2f& box, Flush&& flush);

    // Draws every slot that holds anything, each after those it must follow.
    template <class Flush>
    void FlushAll(Flush&& flush);

    // Draws the slot now, after the slots it must follow.
    template <class Flush>
    void FlushSlot(int slot, Flush&& flush);

    bool IsPending(int slot) const { return (m_pending >> slot) & 1u; }

private:
    struct Cells {
        int x0 = 0, y0 = 0, x1 = -1, y1 = -1;
        bool everywhere = false;
    };
    struct Piece {
        math::BoundingBox2f box;
        int slot;
        // The slot's generation when it came: it is pending while the two are equal.
        uint32_t generation;
    };
    // One piece in one cell's list.
    struct Entry {
        int piece;
        int next;
    };

    Cells CellsOf(const math::BoundingBox2f& box) const;
    uint32_t Overlapping(const Cells& cells, const math::BoundingBox2f& box) const;
    void Mark(int slot, const Cells& cells, const math::BoundingBox2f& box);
    // Records that `first` must be drawn before `slot`; false if that closes a circle.
    bool Order(int first, int slot);
    void Done(int slot);
    static size_t CellIndex(int x, int y);

    float m_cellSize = 1;
    uint32_t m_pending = 0;
    // Slots with a pending piece too large for the grid: they overlap everything.
    uint32_t m_everywhere = 0;
    // For each slot, the slots that must be drawn before it, closed over the chains.
    uint32_t m_before[kMaxSlots] = {};
    // Drawing a slot moves its generation on, which retires all its pieces at once.
    uint32_t m_generation[kMaxSlots] = {};
    // The pieces of the pass, and for each cell the first of its list of entries.
    std::vector<Piece> m_pieces;
    std::vector<Entry> m_entries;
    std::vector<int> m_heads;
};

template <class Flush>
void BatchOrder::Add(int slot, const math::BoundingBox2f& box, bool selfOrdered, Flush&& flush) {
    const Cells cells = CellsOf(box);
    uint32_t overlapping = Overlapping(cells, box);
    const uint32_t self = 1u << slot;
    if (selfOrdered && (overlapping & self)) {
        FlushSlot(slot, flush);
        overlapping &= m_pending;
    }
    overlapping &= ~self;
    for (int first = 0; first < kMaxSlots; ++first) {
        if ((overlapping >> first) & 1u && IsPending(first) && !Order(first, slot)) {
            // The slot's pieces so far must precede `first`, this piece must follow it.
            FlushSlot(slot, flush);
            Order(first, slot);
        }
    }
    m_pending |= self;
    Mark(slot, cells, box);
}

template <class Flush>
void BatchOrder::Before(const math::BoundingBox2f& box, Flush&& flush) {
    const uint32_t overlapping = Overlapping(CellsOf(box), box);
    for (int slot = 0; slot < kMaxSlots; ++slot) {
        if ((overlapping >> slot) & 1u) {
            FlushSlot(slot, flush);
        }
    }
}

template <class Flush>
void BatchOrder::FlushAll(Flush&& flush) {
    for (int slot = 0; slot < kMaxSlots; ++slot) {
        FlushSlot(slot, flush);
    }
}

template <class Flush>
void BatchOrder::FlushSlot(int slot, Flush&& flush) {
    if (!IsPending(slot)) {
        return;
    }
    // The closure of the order lists every slot that must come first; each of those draws
    // its own predecessors first.
    const uint32_t before = m_before[slot];
    for (int first = 0; first < kMaxSlots; ++first) {
        if ((before >> first) & 1u) {
            FlushSlot(first, flush);
        }
    }
    flush(slot);
    Done(slot);
}

}  // namespace app
