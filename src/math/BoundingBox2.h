#pragma once

#include "math/MathUtil.h"
#include "math/Vector2.h"

namespace math {

// An axis-aligned box. The empty box runs from +infinity to -infinity, so that the first
// point added makes it exactly that point without a first-time branch.
struct BoundingBox2f {
    Vec2 min{Infinity(), Infinity()};
    Vec2 max{-Infinity(), -Infinity()};

    constexpr BoundingBox2f() = default;
    constexpr BoundingBox2f(const Vec2& min_, const Vec2& max_) : min(min_), max(max_) {}

    static BoundingBox2f FromPoints(const Vec2* points, size_t nPoints) {
        BoundingBox2f box;
        for (size_t i = 0; i < nPoints; ++i) {
            box.Add(points[i]);
        }
        return box;
    }

    void Add(const Vec2& p) {
        min.x = p.x < min.x ? p.x : min.x;
        min.y = p.y < min.y ? p.y : min.y;
        max.x = p.x > max.x ? p.x : max.x;
        max.y = p.y > max.y ? p.y : max.y;
    }
    void Add(const BoundingBox2f& other) {
        if (!other.IsEmpty()) {
            Add(other.min);
            Add(other.max);
        }
    }

    // True while nothing was added (min above max on some axis).
    bool IsEmpty() const { return min.x > max.x || min.y > max.y; }
    bool IsFinite() const { return math::IsFinite(min) && math::IsFinite(max); }

    float Width() const { return max.x - min.x; }
    float Height() const { return max.y - min.y; }
    Vec2 Size() const { return max - min; }
    Vec2 Centre() const { return (min + max) * 0.5f; }

    // Boundaries count as inside.
    bool Contains(const Vec2& p) const {
        return p.x >= min.x && p.x <= max.x && p.y >= min.y && p.y <= max.y;
    }
    bool Contains(const BoundingBox2f& o) const {
        return o.min.x >= min.x && o.max.x <= max.x && o.min.y >= min.y && o.max.y <= max.y;
    }
    // Touching boxes overlap; an empty box overlaps nothing.
    bool Overlaps(const BoundingBox2f& o) const {
        return min.x <= o.max.x && o.min.x <= max.x && min.y <= o.max.y && o.min.y <= max.y;
    }

    // Grown by the margin on every side.
    BoundingBox2f Expanded(float margin) const {
        return BoundingBox2f(min - Vec2(margin, margin), max + Vec2(margin, margin));
    }

    bool operator==(const BoundingBox2f& o) const { return min == o.min && max == o.max; }
    bool operator!=(const BoundingBox2f& o) const { return !(*this == o); }
};

}  // namespace math
