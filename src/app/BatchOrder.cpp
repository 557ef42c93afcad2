#include "app/BatchOrder.h"

#include <algorithm>
#include <cmath>

namespace app {

namespace {

// Cell coordinates stay far inside int's range; a box beyond them counts as everywhere.
constexpr float kMaxCellCoordinate = 1 << 24;

}  // namespace

BatchOrder::BatchOrder() : m_heads(kCells, -1) {}

void BatchOrder::Reset(float cellSize) {
    m_cellSize = cellSize > 0 && std::isfinite(cellSize) ? cellSize : 1;
    for (int slot = 0; slot < kMaxSlots; ++slot) {
        if (IsPending(slot)) {
            Done(slot);
        }
    }
    m_pieces.clear();
    m_entries.clear();
    std::fill(m_heads.begin(), m_heads.end(), -1);
}

BatchOrder::Cells BatchOrder::CellsOf(const math::BoundingBox2f& box) const {
    Cells cells;
    const math::Vec2 lo = box.min / m_cellSize;
    const math::Vec2 hi = box.max / m_cellSize;
    // NaN fails every comparison and lands here too.
    if (!(lo.x >= -kMaxCellCoordinate && lo.y >= -kMaxCellCoordinate &&
          hi.x <= kMaxCellCoordinate && hi.y <= kMaxCellCoordinate && lo.x <= hi.x &&
          lo.y <= hi.y)) {
        cells.everywhere = true;
        return cells;
    }
    cells.x0 = static_cast<int>(std::floor(lo.x));
    cells.y0 = static_cast<int>(std::floor(lo.y));
    cells.x1 = static_cast<int>(std::floor(hi.x));
    cells.y1 = static_cast<int>(std::floor(hi.y));
    const long long count =
        static_cast<long long>(cells.x1 - cells.x0 + 1) * (cells.y1 - cells.y0 + 1);
    cells.everywhere = count > kMaxCellsOfPiece;
    return cells;
}

size_t BatchOrder::CellIndex(int x, int y) {
    const uint32_t h = static_cast<uint32_t>(x) * 73856093u ^ static_cast<uint32_t>(y) * 19349663u;
    return static_cast<size_t>(h % kCells);
}

uint32_t BatchOrder::Overlapping(const Cells& cells, const math::BoundingBox2f& box) const {
    if (cells.everywhere) {
        return m_pending;
    }
    uint32_t found = m_everywhere & m_pending;
    for (int y = cells.y0; y <= cells.y1; ++y) {
        for (int x = cells.x0; x <= cells.x1; ++x) {
            for (int e = m_heads[CellIndex(x, y)]; e >= 0; e = m_entries[e].next) {
                const Piece& piece = m_pieces[static_cast<size_t>(m_entries[e].piece)];
                if (piece.generation == m_generation[piece.slot] && piece.box.Overlaps(box)) {
                    found |= 1u << piece.slot;
                }
            }
        }
    }
    return found & m_pending;
}

void BatchOrder::Mark(int slot, const Cells& cells, const math::BoundingBox2f& box) {
    if (cells.everywhere) {
        m_everywhere |= 1u << slot;
        return;
    }
    const int piece = static_cast<int>(m_pieces.size());
    m_pieces.push_back({box, slot, m_generation[slot]});
    for (int y = cells.y0; y <= cells.y1; ++y) {
        for (int x = cells.x0; x <= cells.x1; ++x) {
            int& head = m_heads[CellIndex(x, y)];
            m_entries.push_back({piece, head});
            head = static_cast<int>(m_entries.size()) - 1;
        }
    }
}

bool BatchOrder::Order(int first, int slot) {
    if ((m_before[first] >> slot) & 1u) {
        return false;
    }
    const uint32_t added = (1u << first) | m_before[first];
    m_before[slot] |= added;
    // Whatever follows the slot follows its new predecessors too.
    for (int later = 0; later < kMaxSlots; ++later) {
        if ((m_before[later] >> slot) & 1u) {
            m_before[later] |= added;
        }
    }
    return true;
}

void BatchOrder::Done(int slot) {
    const uint32_t bit = 1u << slot;
    m_pending &= ~bit;
    m_everywhere &= ~bit;
    m_before[slot] = 0;
    for (uint32_t& before : m_before) {
        before &= ~bit;
    }
    // Pieces of the old generation are drawn.
    ++m_generation[slot];
}

}  // namespace app
