#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>

#include "math/MathUtil.h"
#include "util/Exception.h"

using math::Vec2;

TEST(MathUtil, NearZeroThresholdIsTheExpectedFloat) {
    EXPECT_EQ(std::bit_cast<uint32_t>(math::NearZeroLimit), 0x33D6BF95u);
    EXPECT_TRUE(math::NearZero(0));
    EXPECT_TRUE(math::NearZero(-9.9e-8f));
    EXPECT_TRUE(math::NearZero(std::nextafter(1e-7f, 0.0f)));
    EXPECT_FALSE(math::NearZero(1e-7f));
    EXPECT_FALSE(math::NearZero(-1e-7f));
}

TEST(MathUtil, NormalizedOfZeroIsExactlyZero) {
    const Vec2 n = math::Normalized(Vec2(0, 0));
    EXPECT_EQ(n.x, 0.0f);
    EXPECT_EQ(n.y, 0.0f);
    EXPECT_FALSE(std::signbit(n.x));
}

TEST(MathUtil, NormalizedOfTinyVectorIsExactlyZero) {
    EXPECT_EQ(math::Normalized(Vec2(5e-8f, 0)), Vec2(0, 0));
    EXPECT_EQ(math::Normalized(Vec2(3e-8f, 4e-8f)), Vec2(0, 0));
}

TEST(MathUtil, NormalizedHasUnitLength) {
    const Vec2 n = math::Normalized(Vec2(3, 4));
    EXPECT_FLOAT_EQ(n.x, 0.6f);
    EXPECT_FLOAT_EQ(n.y, 0.8f);
    EXPECT_NEAR(math::Normalized(Vec2(2e-7f, 0)).x, 1.0f, 1e-6f);
}

TEST(MathUtil, IsFinite) {
    EXPECT_FALSE(math::IsFinite(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_FALSE(math::IsFinite(math::Infinity()));
    EXPECT_FALSE(math::IsFinite(-math::Infinity()));
    EXPECT_TRUE(math::IsFinite(FLT_MAX));
    EXPECT_TRUE(math::IsFinite(-FLT_MAX));
    EXPECT_TRUE(math::IsFinite(0.0f));
    EXPECT_TRUE(math::IsFinite(Vec2(1, FLT_MAX)));
    EXPECT_FALSE(math::IsFinite(Vec2(1, std::numeric_limits<float>::quiet_NaN())));
    EXPECT_FALSE(math::IsFinite(Vec2(math::Infinity(), 0)));
}

TEST(MathUtil, Infinity) {
    EXPECT_TRUE(std::isinf(math::Infinity()));
    EXPECT_GT(math::Infinity(), 0);
}

TEST(MathUtil, FindMainAxisTakesTheFarthestPair) {
    const Vec2 points[] = {Vec2(0, 0), Vec2(1, 0), Vec2(0, 1)};
    const Vec2 axis = math::FindMainAxisSimple(points, 3);
    const Vec2 expected = math::Normalized(Vec2(0, 1) - Vec2(1, 0));
    EXPECT_EQ(axis, expected);
}

TEST(MathUtil, FindMainAxisKeepsTheFirstPairOnTies) {
    // Pairs (0,2) and (1,2) are equally far apart: (0,2) is met first.
    const Vec2 three[] = {Vec2(0, 0), Vec2(2, 0), Vec2(1, 5)};
    EXPECT_EQ(math::FindMainAxisSimple(three, 3), math::Normalized(Vec2(1, 5)));
    // The two diagonals of a square: (0,2) before (1,3).
    const Vec2 square[] = {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1)};
    EXPECT_EQ(math::FindMainAxisSimple(square, 4), math::Normalized(Vec2(1, 1)));
    // All pairs equally far: the very first pair.
    const Vec2 two[] = {Vec2(3, 3), Vec2(3, 1)};
    EXPECT_EQ(math::FindMainAxisSimple(two, 2), Vec2(0, -1));
}

TEST(MathUtil, FindMainAxisOfCoincidentPointsIsZero) {
    const Vec2 points[] = {Vec2(2, 2), Vec2(2, 2), Vec2(2, 2)};
    EXPECT_EQ(math::FindMainAxisSimple(points, 3), Vec2(0, 0));
}

TEST(MathUtil, FindMainAxisNeedsTwoPoints) {
    const Vec2 points[] = {Vec2(0, 0)};
    try {
        math::FindMainAxisSimple(points, 1);
        FAIL() << "no exception";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"nPoints > 1\""), std::string::npos) << e.what();
    }
}
