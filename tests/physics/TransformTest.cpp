#include "physics/Transform.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

void ExpectNear(const math::Vec2& a, const math::Vec2& b) {
    EXPECT_NEAR(a.x, b.x, 1e-5f);
    EXPECT_NEAR(a.y, b.y, 1e-5f);
}

}  // namespace

TEST(Transform, ComposesAndInverts) {
    const physics::Transform quarter = physics::Transform::FromAngle(1.5707964f, {1, 2});
    ExpectNear(quarter.Apply({1, 0}), {1, 3});
    ExpectNear(quarter.ApplyToVector({1, 0}), {0, 1});
    ExpectNear(quarter.Inverted().Apply(quarter.Apply({3, -4})), {3, -4});
    const physics::Transform shift{{1, 0}, {5, 0}};
    // The product applies the right operand first.
    ExpectNear((shift * quarter).Apply({1, 0}), {6, 3});
    ExpectNear((quarter * shift).Apply({0, 0}), {1, 7});
    EXPECT_NEAR(quarter.Angle(), 1.5707964f, 1e-6f);
}
