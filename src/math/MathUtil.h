#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

#include "math/Matrix3.h"
#include "math/Real.h"
#include "math/Vector2.h"

namespace math {

constexpr float Pi = 3.14159265358979323846f;

// The one threshold below which a length may not be divided by (the float 0x33D6BF95).
constexpr float NearZeroLimit = 1e-7f;

inline bool NearZero(float x) {
    return std::fabs(x) < NearZeroLimit;
}

// Each component times the matching one of the scale.
inline Vec2 ScaledBy(const Vec2& v, const Vec2& scale) {
    return Vec2(v.x * scale.x, v.y * scale.y);
}

// Distance from the point to the segment from a to b.
inline float PointSegmentDist(const Vec2& p, const Vec2& a, const Vec2& b) {
    const Vec2 d = b - a;
    const float lengthSq = d.SquaredLength();
    float t = lengthSq > 0 ? Dot(p - a, d) / lengthSq : 0;
    t = t < 0 ? 0 : (t > 1 ? 1 : t);
    return (a + d * t - p).Length();
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
inline bool IsFinite(const Mat3& m) {
    for (float x : m.m) {
        if (!IsFinite(x)) {
            return false;
        }
    }
    return true;
}

// The two points farthest apart, the lower index first: of the pairs at the greatest squared
// distance, the one a double loop over i and then j above i meets first, as that loop finds
// it to the bit. Points in runs of neighbours that lie too close together to hold a pair as
// far apart as one already known are passed over, so an outline of thousands of points
// costs little more than a pass over it. Needs two points at least.
struct PointPair {
    size_t first;
    size_t second;
};
PointPair FarthestPair(const Vec2* points, size_t nPoints);

// The direction between the two points farthest apart, from the lower index to the
// higher; on a tie the pair met first wins.
Vec2 FindMainAxisSimple(const Vec2* points, size_t nPoints);

}  // namespace math
