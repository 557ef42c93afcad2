#pragma once

#include <cstddef>

#include "math/Vector2.h"

namespace math {

// An oriented box: centre, a unit first axis, the second axis a quarter turn
// counter-clockwise of it, and the half extents along each.
struct OBB2D {
    Vec2 centre;
    Vec2 axis1;
    Vec2 axis2;
    Vec2 halfExtents;

    float Area() const { return 4 * halfExtents.x * halfExtents.y; }

    // Corners counter-clockwise, starting at -axis1 -axis2.
    void GetCorners(Vec2 corners[4]) const;

    // The box with the given first axis that holds all points. The axis is taken as it is.
    static OBB2D Build(const Vec2* points, size_t nPoints, const Vec2& axis);
    // A tight box for a polygon: the box along the main axis, bettered by a few fixed
    // angles when one of them gives a smaller area.
    static OBB2D BuildBest(const Vec2* points, size_t nPoints);
    // The same with the main axis known already.
    static OBB2D BuildBest(const Vec2* points, size_t nPoints, const Vec2& mainAxis);
};

}  // namespace math
