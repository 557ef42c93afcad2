#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

#include "math/Real.h"
#include "math/Vector2.h"

namespace math {

constexpr float Pi = 3.14159265358979323846f;

// The one threshold below which a length may not be divided by (the float 0x33D6BF95).
constexpr float NearZeroLimit = 1e-7f;

inline bool NearZero(float x) {
    return std::fabs(x) < NearZeroLimit;
}

// Unit length, or exactly (0, 0) for a vector too short to divide by: a zero-length
// direction must stay a harmless zero rather than become NaN.
inline Vec2 Normalized(const Vec2& v) {
    const float length = v.Length();
    if (NearZero(length)) {
        return Vec2(0, 0);
    }
    return v / length;
}

constexpr float Infinity() {
    return std::numeric_limits<float>::infinity();
}

inline bool IsFinite(float x) {
    return std::isfinite(x);
}
inline bool IsFinite(const Vec2& v) {
    return IsFinite(v.x) && IsFinite(v.y);
}

// The direction between the two points farthest apart, from the lower index to the
// higher; on a tie the pair met first wins. Quadratic, meant for small polygons.
Vec2 FindMainAxisSimple(const Vec2* points, size_t nPoints);

}  // namespace math
