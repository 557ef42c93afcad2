#include "physics/CrowdLimit.h"

#include <algorithm>
#include <cmath>

#include "util/Hasher.h"

namespace physics {

namespace {

// Cells this far out are all one; no shape survives there anyway.
constexpr double kCellLimit = 1 << 30;

int32_t CellIndex(double position, double cell) {
    return static_cast<int32_t>(std::clamp(std::floor(position / cell), -kCellLimit, kCellLimit));
}

}  // namespace

bool CrowdLimit::Place(const Shape& shape, Key& key, float& fill) {
    const math::BoundingBox2f& box = shape.box;
    if (!box.IsFinite() || box.IsEmpty() || !(shape.area > 0) || !std::isfinite(shape.area)) {
        return false;
    }
    const double size = std::max(box.Width(), box.Height());
    if (!(size > 0)) {
        return false;
    }
    // size = m 2^level with m in [0.5, 1): the cell 2^level is the next power of two above.
    int level = 0;
    std::frexp(size, &level);
    const double cell = std::ldexp(1.0, level);
    const math::Vec2 centre = box.Centre();
    key = {level, CellIndex(centre.x, cell), CellIndex(centre.y, cell)};
    fill = static_cast<float>(shape.area / (cell * cell));
    return true;
}

uint32_t CrowdLimit::Slot(const Key& key) {
    const uint32_t mask = static_cast<uint32_t>(m_table.size() - 1);
    uint32_t slot =
        util::DefaultHasher::Combine(static_cast<uint32_t>(key.level), static_cast<uint32_t>(key.x),
                                     static_cast<uint32_t>(key.y)) &
        mask;
    while (m_table[slot].used && !(m_table[slot].key == key)) {
        slot = (slot + 1) & mask;
    }
    if (!m_table[slot].used) {
        m_table[slot] = Cell{key, 0, 0, 0, 1};
    }
    return slot;
}

size_t CrowdLimit::Mark(const Shape* shapes, size_t count, util::VectorPOD<uint8_t>& leftOut) {
    leftOut.resize(count);
    std::fill(leftOut.begin(), leftOut.end(), 0);
    // At most half full, so that a probe ends soon.
    size_t tableSize = 16;
    while (tableSize < 2 * count) {
        tableSize *= 2;
    }
    m_table.resize(tableSize);
    std::fill(m_table.begin(), m_table.end(), Cell{});
    m_slotOfShape.resize(count);
    m_fillOfShape.resize(count);

    float fullest = 0;
    for (size_t i = 0; i < count; ++i) {
        Key key{};
        float fill = 0;
        if (!Place(shapes[i], key, fill)) {
            m_slotOfShape[i] = kNoCell;
            continue;
        }
        const uint32_t slot = Slot(key);
        m_slotOfShape[i] = slot;
        m_fillOfShape[i] = fill;
        m_table[slot].fill += fill;
        fullest = std::max(fullest, m_table[slot].fill);
    }
    if (!(fullest > kCrowdFill)) {
        return 0;
    }

    size_t left = 0;
    for (size_t i = 0; i < count; ++i) {
        if (m_slotOfShape[i] == kNoCell) {
            continue;
        }
        Cell& cell = m_table[m_slotOfShape[i]];
        if (!(cell.fill > kCrowdFill)) {
            continue;
        }
        const float fill = m_fillOfShape[i];
        if (cell.shapes == 0 || (cell.shapes < kKeptShapes && cell.kept + fill <= kKeptFill)) {
            cell.kept += fill;
            ++cell.shapes;
        } else {
            leftOut[i] = 1;
            ++left;
        }
    }
    return left;
}

}  // namespace physics
