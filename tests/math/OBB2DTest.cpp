#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

#include "math/MathUtil.h"
#include "math/OBB2D.h"
#include "util/Exception.h"

using math::OBB2D;
using math::Vec2;

namespace {

void ExpectNear(const Vec2& a, const Vec2& b, float tolerance = 1e-5f) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
}

}  // namespace

TEST(OBB2D, LayoutIsFourVectors) {
    EXPECT_EQ(sizeof(OBB2D), 4 * sizeof(Vec2));
    EXPECT_EQ(offsetof(OBB2D, centre), 0u);
    EXPECT_EQ(offsetof(OBB2D, axis1), sizeof(Vec2));
    EXPECT_EQ(offsetof(OBB2D, axis2), 2 * sizeof(Vec2));
    EXPECT_EQ(offsetof(OBB2D, halfExtents), 3 * sizeof(Vec2));
}

TEST(OBB2D, BuildAlongXAxis) {
    const Vec2 points[] = {Vec2(1, 1), Vec2(5, 2), Vec2(3, 4)};
    const OBB2D box = OBB2D::Build(points, 3, Vec2(1, 0));
    EXPECT_EQ(box.centre, Vec2(3, 2.5f));
    EXPECT_EQ(box.axis1, Vec2(1, 0));
    EXPECT_EQ(box.axis2, Vec2(0, 1));
    EXPECT_EQ(box.halfExtents, Vec2(2, 1.5f));
    EXPECT_FLOAT_EQ(box.Area(), 12);
}

TEST(OBB2D, BuildAlongDiagonal) {
    const Vec2 points[] = {Vec2(0, 0), Vec2(2, 2), Vec2(1, 2), Vec2(2, 1)};
    const Vec2 axis = math::Normalized(Vec2(1, 1));
    const OBB2D box = OBB2D::Build(points, 4, axis);
    EXPECT_EQ(box.axis2, Vec2(-axis.y, axis.x));
    ExpectNear(box.centre, Vec2(1, 1));
    EXPECT_NEAR(box.halfExtents.x, std::sqrt(2.0f), 1e-5f);
    EXPECT_NEAR(box.halfExtents.y, std::sqrt(2.0f) / 2, 1e-5f);
    Vec2 corners[4];
    box.GetCorners(corners);
    for (const Vec2& p : points) {
        // Every point lies inside the box.
        const Vec2 d = p - box.centre;
        EXPECT_LE(std::fabs(math::Dot(d, box.axis1)), box.halfExtents.x + 1e-5f);
        EXPECT_LE(std::fabs(math::Dot(d, box.axis2)), box.halfExtents.y + 1e-5f);
    }
    ExpectNear(corners[0] + corners[2], box.centre * 2.0f);
}

TEST(OBB2D, BuildNeedsTwoPoints) {
    const Vec2 points[] = {Vec2(0, 0)};
    try {
        OBB2D::Build(points, 1, Vec2(1, 0));
        FAIL() << "no exception";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"nPoints > 1\""), std::string::npos) << e.what();
    }
}

TEST(OBB2D, BuildBestFindsARotatedSquare) {
    const float angle = 12 * math::Pi / 180;
    const Vec2 u(std::cos(angle), std::sin(angle));
    const Vec2 v(-u.y, u.x);
    const Vec2 centre(10, -4);
    const Vec2 square[] = {centre - u - v, centre + u - v, centre + u + v, centre - u + v};
    const OBB2D box = OBB2D::BuildBest(square, 4);
    // The main axis is a diagonal, which gives twice the area; the 12 degree try fits.
    EXPECT_NEAR(box.Area(), 4.0f, 1e-3f);
    ExpectNear(box.centre, centre, 1e-4f);
    EXPECT_NEAR(std::fabs(math::Dot(box.axis1, u)), 1.0f, 1e-5f);
}

TEST(OBB2D, BuildBestKeepsTheMainAxisWhenNothingIsSmaller) {
    // A thin rod at 45 degrees: the main axis gives zero area, no fixed angle can beat it.
    const Vec2 rod[] = {Vec2(0, 0), Vec2(1, 1), Vec2(3, 3)};
    const OBB2D box = OBB2D::BuildBest(rod, 3);
    ExpectNear(box.axis1, math::Normalized(Vec2(1, 1)));
    EXPECT_NEAR(box.Area(), 0.0f, 1e-5f);
}
