#include <gtest/gtest.h>

#include <type_traits>

#include "math/Real.h"
#include "math/Vector2.h"
#include "math/Vector3.h"
#include "math/Vector4.h"

using math::Vec2;
using math::Vec3;
using math::Vec4;

TEST(Vector, RealIsSinglePrecision) {
    EXPECT_TRUE((std::is_same_v<math::real, float>));
    EXPECT_EQ(sizeof(math::real), 4u);
}

TEST(Vector, LayoutIsComponentsInOrder) {
    EXPECT_EQ(sizeof(Vec2), 2 * sizeof(float));
    EXPECT_EQ(sizeof(Vec3), 3 * sizeof(float));
    EXPECT_EQ(sizeof(Vec4), 4 * sizeof(float));
    EXPECT_EQ(sizeof(math::Pixel), 4u);
    EXPECT_TRUE(std::is_trivially_copyable_v<Vec2>);
    Vec4 v(1, 2, 3, 4);
    const float* raw = &v.x;
    EXPECT_EQ(raw[3], 4.0f);
}

TEST(Vector, DefaultIsZero) {
    EXPECT_EQ(Vec2(), Vec2(0, 0));
    EXPECT_EQ(Vec3(), Vec3(0, 0, 0));
}

TEST(Vector, Vec2Arithmetic) {
    const Vec2 a(1, 2);
    const Vec2 b(3, -4);
    EXPECT_EQ(a + b, Vec2(4, -2));
    EXPECT_EQ(a - b, Vec2(-2, 6));
    EXPECT_EQ(a * 2.0f, Vec2(2, 4));
    EXPECT_EQ(2.0f * a, Vec2(2, 4));
    EXPECT_EQ(b / 2.0f, Vec2(1.5f, -2));
    EXPECT_EQ(-a, Vec2(-1, -2));
    EXPECT_FLOAT_EQ(math::Dot(a, b), -5);
    EXPECT_FLOAT_EQ(math::Cross(a, b), -10);
    EXPECT_FLOAT_EQ(math::Cross(Vec2(1, 0), Vec2(0, 1)), 1);
    EXPECT_FLOAT_EQ(b.Length(), 5);
    EXPECT_FLOAT_EQ(b.SquaredLength(), 25);
    EXPECT_EQ(math::Perpendicular(Vec2(1, 0)), Vec2(0, 1));
    EXPECT_EQ(math::Cross(Vec2(1, 2), 2.0f), Vec2(4, -2));
    EXPECT_EQ(math::Cross(2.0f, Vec2(1, 2)), Vec2(-4, 2));
    EXPECT_TRUE(a != b);
}

TEST(Vector, Vec2CompoundAndIndex) {
    Vec2 v(1, 1);
    v += Vec2(1, 2);
    v -= Vec2(0, 1);
    v *= 3;
    v /= 2;
    EXPECT_EQ(v, Vec2(3, 3));
    v[0] = 7;
    EXPECT_EQ(v.x, 7);
    EXPECT_EQ(v[1], 3);
}

TEST(Vector, IntegerVectorsAndConversion) {
    const math::TVector2<int> p(3, -4);
    EXPECT_EQ(p + p, math::TVector2<int>(6, -8));
    EXPECT_EQ(Vec2(p), Vec2(3, -4));
    EXPECT_EQ(math::TVector2<int>(Vec2(2.7f, -1.2f)), math::TVector2<int>(2, -1));
}

TEST(Vector, Vec3) {
    const Vec3 a(1, 0, 0);
    const Vec3 b(0, 1, 0);
    EXPECT_EQ(math::Cross(a, b), Vec3(0, 0, 1));
    EXPECT_FLOAT_EQ(math::Dot(Vec3(1, 2, 3), Vec3(4, 5, 6)), 32);
    EXPECT_FLOAT_EQ(Vec3(2, 3, 6).Length(), 7);
    EXPECT_EQ(Vec3(1, 2, 3) * 2.0f - Vec3(1, 1, 1), Vec3(1, 3, 5));
    EXPECT_EQ(Vec3(1, 2, 3)[2], 3);
}

TEST(Vector, Vec4AndPixels) {
    const Vec4 c(0.5f, 0.25f, 1, 1);
    EXPECT_EQ(c * 2.0f, Vec4(1, 0.5f, 2, 2));
    EXPECT_FLOAT_EQ(math::Dot(c, Vec4(1, 1, 1, 1)), 2.75f);
    EXPECT_FLOAT_EQ(Vec4(1, 1, 1, 1).Length(), 2);
    const math::Pixel p(10, 20, 30, 255);
    const math::Pixel q = p + math::Pixel(1, 1, 1, 0);
    EXPECT_EQ(q, math::Pixel(11, 21, 31, 255));
    EXPECT_EQ(q[3], 255);
}

TEST(Vector, Vec2ListHoldsPoints) {
    math::Vec2List list;
    list.push_back(Vec2(1, 2));
    list.push_back(Vec2(3, 4));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[1], Vec2(3, 4));
}
