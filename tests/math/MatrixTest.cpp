#include <gtest/gtest.h>

#include <cmath>

#include "math/MathUtil.h"
#include "math/Matrix2.h"
#include "math/Matrix3.h"
#include "util/Exception.h"

using math::Mat2;
using math::Mat3;
using math::Vec2;

namespace {

void ExpectNear(const Vec2& a, const Vec2& b, float tolerance = 1e-5f) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
}

void ExpectIdentity(const Mat3& m) {
    for (size_t r = 0; r < 3; ++r) {
        for (size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(m(r, c), r == c ? 1.0f : 0.0f, 1e-5f) << r << "," << c;
        }
    }
}

}  // namespace

TEST(Matrix2, IdentityAndProduct) {
    const Mat2 m(1, 2, 3, 4);
    EXPECT_EQ(Mat2() * m, m);
    EXPECT_EQ(m * Mat2::Identity(), m);
    EXPECT_EQ(m * Mat2(0, 1, 1, 0), Mat2(2, 1, 4, 3));
    EXPECT_EQ(m * Vec2(1, 1), Vec2(3, 7));
    EXPECT_FLOAT_EQ(m.Determinant(), -2);
    EXPECT_EQ(m.Transposed(), Mat2(1, 3, 2, 4));
    EXPECT_EQ(m + m, m * 2.0f);
    EXPECT_EQ(m - m, Mat2(0, 0, 0, 0));
    EXPECT_EQ(Mat2::FromColumns(Vec2(1, 3), Vec2(2, 4)), m);
}

TEST(Matrix2, Rotation) {
    ExpectNear(Mat2::Rotation(math::Pi / 2) * Vec2(1, 0), Vec2(0, 1));
    ExpectNear(Mat2::Scale(2, 3) * Vec2(1, 1), Vec2(2, 3));
}

TEST(Matrix2, Inverted) {
    const Mat2 m(4, 7, 2, 6);
    const Mat2 product = m * math::Inverted(m);
    EXPECT_NEAR(product.a, 1, 1e-6f);
    EXPECT_NEAR(product.b, 0, 1e-6f);
    EXPECT_NEAR(product.c, 0, 1e-6f);
    EXPECT_NEAR(product.d, 1, 1e-6f);
}

TEST(Matrix2, InvertedOfSingularThrows) {
    try {
        math::Inverted(Mat2(1, 2, 2, 4));
        FAIL() << "no exception";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"det != 0\""), std::string::npos) << e.what();
    }
}

TEST(Matrix2, NearlySingularIsStillInverted) {
    // Only an exact zero is refused.
    EXPECT_NO_THROW(math::Inverted(Mat2(1e-20f, 0, 0, 1e-20f)));
}

TEST(Matrix3, TransformsPointsAndVectors) {
    const Mat3 t = Mat3::Translation(Vec2(5, -1));
    EXPECT_EQ(t.TransformPoint(Vec2(1, 1)), Vec2(6, 0));
    EXPECT_EQ(t.TransformVector(Vec2(1, 1)), Vec2(1, 1));
    ExpectNear(Mat3::Rotation(math::Pi / 2).TransformPoint(Vec2(2, 0)), Vec2(0, 2));
    EXPECT_EQ(Mat3::Scale(2, 3).TransformPoint(Vec2(1, 1)), Vec2(2, 3));
    EXPECT_EQ(Mat3::Scale(Vec2(2, 3)), Mat3::Scale(2, 3));
    const math::Vec3 h = t * math::Vec3(1, 1, 1);
    EXPECT_EQ(h, math::Vec3(6, 0, 1));
}

TEST(Matrix3, ProductAppliesRightFirst) {
    // Scale then translate.
    const Mat3 m = Mat3::Translation(Vec2(1, 0)) * Mat3::Scale(2, 2);
    EXPECT_EQ(m.TransformPoint(Vec2(1, 1)), Vec2(3, 2));
    EXPECT_EQ(Mat3() * m, m);
    EXPECT_EQ(m(0, 2), 1);
    EXPECT_EQ(m.Transposed()(2, 0), 1);
}

TEST(Matrix3, Inverted) {
    const Mat3 m = Mat3::Translation(Vec2(3, -2)) * Mat3::Rotation(0.7f) * Mat3::Scale(2, 0.5f);
    ExpectIdentity(m * math::Inverted(m));
    ExpectIdentity(math::Inverted(m) * m);
    const Mat3 general(2, 0, 1, 1, 3, 2, 1, 1, 2);
    ExpectIdentity(general * math::Inverted(general));
    EXPECT_FLOAT_EQ(general.Determinant(), 6);
}

TEST(Matrix3, InvertedOfSingularThrows) {
    const Mat3 singular(1, 2, 3, 2, 4, 6, 0, 0, 1);
    try {
        math::Inverted(singular);
        FAIL() << "no exception";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"det != 0\""), std::string::npos) << e.what();
    }
}
