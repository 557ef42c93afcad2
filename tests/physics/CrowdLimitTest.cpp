#include "physics/CrowdLimit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using math::BoundingBox2f;
using math::Vec2;
using physics::CrowdLimit;

constexpr float kPi = 3.1415927f;

CrowdLimit::Shape Square(const Vec2& centre, float side, float angle = 0) {
    // The box around a square turned by the angle.
    const float half = 0.5f * side * (std::fabs(std::cos(angle)) + std::fabs(std::sin(angle)));
    return {BoundingBox2f(centre - Vec2(half, half), centre + Vec2(half, half)), side * side};
}

CrowdLimit::Shape Disc(const Vec2& centre, float radius) {
    return {BoundingBox2f(centre - Vec2(radius, radius), centre + Vec2(radius, radius)),
            kPi * radius * radius};
}

// A stick of the given length and width along the angle.
CrowdLimit::Shape Stick(const Vec2& centre, float length, float width, float angle) {
    const Vec2 half(
        0.5f * (length * std::fabs(std::cos(angle)) + width * std::fabs(std::sin(angle))),
        0.5f * (length * std::fabs(std::sin(angle)) + width * std::fabs(std::cos(angle))));
    return {BoundingBox2f(centre - half, centre + half), length * width};
}

size_t LeftOut(const std::vector<CrowdLimit::Shape>& shapes, util::VectorPOD<uint8_t>& flags) {
    CrowdLimit crowds;
    return crowds.Mark(shapes.data(), shapes.size(), flags);
}

// Scenes packed as tightly as shapes lie, whatever their sizes and turns, are never a
// crowd: nothing changes for them.
TEST(CrowdLimit, PackedScenesAreNoCrowd) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> turn(0, kPi);
    std::vector<CrowdLimit::Shape> shapes;
    // A wall of touching unit boxes, and one of boxes at random turns in the same grid.
    for (int x = 0; x < 60; ++x) {
        for (int y = 0; y < 60; ++y) {
            shapes.push_back(Square(Vec2(x + 0.5f, y + 0.5f), 1));
            shapes.push_back(Square(Vec2(x * 1.5f + 100, y * 1.5f), 1, turn(random)));
        }
    }
    // A heap of thin planks, fifty times longer than wide, crossing at all angles as a
    // pile of sticks does without passing through one another.
    for (int i = 0; i < 2000; ++i) {
        const float angle = turn(random);
        shapes.push_back(Stick(Vec2(300 + 0.02f * static_cast<float>(i % 50), 0.5f * (i / 50)), 1,
                               0.02f, angle));
    }
    // Marbles between large boxes, which set a large average size.
    for (int x = 0; x < 100; ++x) {
        for (int y = 0; y < 100; ++y) {
            shapes.push_back(Disc(Vec2(500 + 0.1f * x, 0.1f * y), 0.05f));
        }
    }
    for (int i = 0; i < 50; ++i) {
        shapes.push_back(Square(Vec2(600 + 12.0f * i, 5), 10));
    }
    util::VectorPOD<uint8_t> flags;
    EXPECT_EQ(LeftOut(shapes, flags), 0u);
    ASSERT_EQ(flags.size(), shapes.size());
    for (uint8_t flag : flags) {
        ASSERT_EQ(flag, 0);
    }
}

// Thousands at one point: the first ones, in the given order, up to four cells' worth of
// area or 32 shapes, stay; the others are left out. Big shapes among them do not hide a
// crowd of small ones, nor the other way round.
TEST(CrowdLimit, PilesLeaveAllButTheirFirstShapesOut) {
    std::vector<CrowdLimit::Shape> shapes;
    for (int i = 0; i < 3000; ++i) {
        shapes.push_back(Square(Vec2(0, 3), 1));  // a cell of 2: a quarter each
    }
    util::VectorPOD<uint8_t> flags;
    EXPECT_EQ(LeftOut(shapes, flags), 3000u - 16u);
    for (size_t i = 0; i < shapes.size(); ++i) {
        ASSERT_EQ(flags[i], i < 16 ? 0 : 1) << i;
    }

    // Marbles heaped at one point among large boxes elsewhere (a cell of 1/32, about a
    // third each), then a pile of large boxes among marbles that lie apart (a cell of 16,
    // about 0.4 each), then slim sticks, of which 32 stay.
    shapes.clear();
    for (int i = 0; i < 40; ++i) {
        shapes.push_back(Square(Vec2(20.0f * i, 0), 10));
    }
    for (int i = 0; i < 2000; ++i) {
        shapes.push_back(Disc(Vec2(5, 30), 0.01f));
    }
    EXPECT_EQ(LeftOut(shapes, flags), 2000u - 12u);
    EXPECT_EQ(flags[39], 0);
    EXPECT_EQ(flags[40 + 11], 0);
    EXPECT_EQ(flags[40 + 12], 1);

    shapes.clear();
    for (int i = 0; i < 1000; ++i) {
        shapes.push_back(Disc(Vec2(0.1f * static_cast<float>(i % 40), 0.1f * (i / 40)), 0.05f));
        shapes.push_back(Square(Vec2(50, 50), 10));
    }
    EXPECT_EQ(LeftOut(shapes, flags), 1000u - 10u);

    shapes.assign(2000, Stick(Vec2(0, 0), 1, 0.1f, 0));
    EXPECT_EQ(LeftOut(shapes, flags), 2000u - 32u);

    // Shapes that lost their numbers are no part of any crowd.
    const float nan = std::nanf("");
    shapes.assign(100, CrowdLimit::Shape{BoundingBox2f(Vec2(nan, 0), Vec2(1, 1)), 1});
    shapes.push_back(Disc(Vec2(0, 0), 0));
    EXPECT_EQ(LeftOut(shapes, flags), 0u);
}

}  // namespace
