#include <gtest/gtest.h>

#include <limits>

#include "math/BoundingBox2.h"

using math::BoundingBox2f;
using math::Vec2;

TEST(BoundingBox2f, EmptyBoxRunsFromPlusToMinusInfinity) {
    const BoundingBox2f box;
    EXPECT_EQ(box.min, Vec2(math::Infinity(), math::Infinity()));
    EXPECT_EQ(box.max, Vec2(-math::Infinity(), -math::Infinity()));
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_FALSE(box.IsFinite());
    EXPECT_FALSE(box.Contains(Vec2(0, 0)));
    EXPECT_FALSE(box.Overlaps(BoundingBox2f(Vec2(-1, -1), Vec2(1, 1))));
}

TEST(BoundingBox2f, FirstPointMakesASinglePoint) {
    BoundingBox2f box;
    box.Add(Vec2(2, -3));
    EXPECT_EQ(box.min, Vec2(2, -3));
    EXPECT_EQ(box.max, Vec2(2, -3));
    EXPECT_FALSE(box.IsEmpty());
    EXPECT_TRUE(box.IsFinite());
    EXPECT_EQ(box.Width(), 0);
}

TEST(BoundingBox2f, GrowsComponentWise) {
    BoundingBox2f box;
    box.Add(Vec2(1, 5));
    box.Add(Vec2(4, 2));
    box.Add(Vec2(-1, 3));
    EXPECT_EQ(box.min, Vec2(-1, 2));
    EXPECT_EQ(box.max, Vec2(4, 5));
    EXPECT_EQ(box.Width(), 5);
    EXPECT_EQ(box.Height(), 3);
    EXPECT_EQ(box.Size(), Vec2(5, 3));
    EXPECT_EQ(box.Centre(), Vec2(1.5f, 3.5f));
    EXPECT_TRUE(box.Contains(Vec2(4, 5)));
    EXPECT_FALSE(box.Contains(Vec2(4.5f, 5)));
    EXPECT_EQ(box.Expanded(1), BoundingBox2f(Vec2(-2, 1), Vec2(5, 6)));
}

TEST(BoundingBox2f, BoxesCombineAndOverlap) {
    const BoundingBox2f a(Vec2(0, 0), Vec2(2, 2));
    const BoundingBox2f b(Vec2(2, 1), Vec2(3, 3));
    const BoundingBox2f c(Vec2(2.5f, 0), Vec2(3, 0.5f));
    EXPECT_TRUE(a.Overlaps(b));
    EXPECT_TRUE(b.Overlaps(a));
    EXPECT_FALSE(a.Overlaps(c));
    BoundingBox2f all = a;
    all.Add(b);
    all.Add(BoundingBox2f());
    EXPECT_EQ(all, BoundingBox2f(Vec2(0, 0), Vec2(3, 3)));
    EXPECT_TRUE(all.Contains(c));
    EXPECT_FALSE(a.Contains(all));
    const Vec2 points[] = {Vec2(1, 1), Vec2(-1, 2)};
    EXPECT_EQ(BoundingBox2f::FromPoints(points, 2), BoundingBox2f(Vec2(-1, 1), Vec2(1, 2)));
}

TEST(BoundingBox2f, NotFiniteWithNaNOrInfinity) {
    EXPECT_FALSE(BoundingBox2f(Vec2(0, 0), Vec2(math::Infinity(), 1)).IsFinite());
    EXPECT_FALSE(
        BoundingBox2f(Vec2(std::numeric_limits<float>::quiet_NaN(), 0), Vec2(1, 1)).IsFinite());
}
