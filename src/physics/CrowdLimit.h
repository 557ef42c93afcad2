#pragma once

#include <cstddef>
#include <cstdint>

#include "math/BoundingBox2.h"
#include "util/VectorPOD.h"

namespace physics {

// Finds shapes piled up at one place far beyond what any scene can hold, so that the
// collider need not pair each of them with all the others: thousands of shapes at one point
// would make millions of contacts in a step.
//
// Each shape is filed under a square cell of its own scale: the smallest power of two at
// least as wide as its bounding box, at the place of the box's centre. Shapes that do not
// overlap and whose centres share such a cell lie within a square of twice its side, so
// their areas add up to at most four cells. A cell whose shapes add up to more than eight
// cells of area is a crowd: in it, shapes in the given order take part up to four cells of
// area or 32 shapes, and the others are left out. Scenes whose shapes overlap little never
// come near the limit, so nothing changes for them.
class CrowdLimit {
public:
    // A crowd's cell holds more than this, in cells of area.
    static constexpr float kCrowdFill = 8;
    // What of a crowd takes part: up to this much area, in cells, and this many shapes.
    static constexpr float kKeptFill = 4;
    static constexpr uint32_t kKeptShapes = 32;

    struct Shape {
        math::BoundingBox2f box;
        float area;
    };

    // Sets leftOut[i] to 1 for each shape left out and 0 for the others; returns how many
    // were left out. Shapes with no finite box or area are never part of a crowd.
    size_t Mark(const Shape* shapes, size_t count, util::VectorPOD<uint8_t>& leftOut);

private:
    struct Key {
        int32_t level;
        int32_t x;
        int32_t y;
        bool operator==(const Key& o) const { return level == o.level && x == o.x && y == o.y; }
    };
    struct Cell {
        Key key;
        float fill;       // the area of its shapes, in cells
        float kept;       // what of it takes part so far
        uint32_t shapes;  // how many take part so far
        uint32_t used;
    };
    static constexpr uint32_t kNoCell = ~0u;

    // The cell of a shape and its area in cells; false for a shape that has none.
    static bool Place(const Shape& shape, Key& key, float& fill);
    // The slot of the key in the table, taken if new.
    uint32_t Slot(const Key& key);

    util::VectorPOD<Cell> m_table;
    util::VectorPOD<uint32_t> m_slotOfShape;
    util::VectorPOD<float> m_fillOfShape;
};

}  // namespace physics
