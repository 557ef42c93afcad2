#include "math/OBB2D.h"

#include <cmath>

#include "math/MathUtil.h"
#include "util/Assert.h"

namespace math {

void OBB2D::GetCorners(Vec2 corners[4]) const {
    const Vec2 u = axis1 * halfExtents.x;
    const Vec2 v = axis2 * halfExtents.y;
    corners[0] = centre - u - v;
    corners[1] = centre + u - v;
    corners[2] = centre + u + v;
    corners[3] = centre - u + v;
}

OBB2D OBB2D::Build(const Vec2* points, size_t nPoints, const Vec2& axis) {
    CODE_ASSERT(nPoints > 1);
    const Vec2 perpendicular(-axis.y, axis.x);
    float minA = Infinity();
    float maxA = -Infinity();
    float minP = Infinity();
    float maxP = -Infinity();
    for (size_t i = 0; i < nPoints; ++i) {
        const float a = Dot(points[i], axis);
        const float p = Dot(points[i], perpendicular);
        minA = a < minA ? a : minA;
        maxA = a > maxA ? a : maxA;
        minP = p < minP ? p : minP;
        maxP = p > maxP ? p : maxP;
    }
    OBB2D box;
    box.centre = axis * ((minA + maxA) / 2) + perpendicular * ((minP + maxP) / 2);
    box.axis1 = axis;
    box.axis2 = perpendicular;
    box.halfExtents = Vec2((maxA - minA) / 2, (maxP - minP) / 2);
    return box;
}

OBB2D OBB2D::BuildBest(const Vec2* points, size_t nPoints) {
    return BuildBest(points, nPoints, FindMainAxisSimple(points, nPoints));
}

OBB2D OBB2D::BuildBest(const Vec2* points, size_t nPoints, const Vec2& mainAxis) {
    OBB2D best = Build(points, nPoints, mainAxis);
    float bestArea = best.Area();
    // A box repeats itself every quarter turn: eight angles 12 degrees apart sample it.
    const float step = 0.20943952f;
    float angle = 0;
    for (int i = 0; i < 8; ++i, angle += step) {
        const OBB2D box = Build(points, nPoints, Vec2(std::cos(angle), std::sin(angle)));
        const float area = box.Area();
        if (area < bestArea) {
            best = box;
            bestArea = area;
        }
    }
    return best;
}

}  // namespace math
