#include "util/VectorPOD.h"

#include <gtest/gtest.h>

#include "LogCapture.h"
#include "util/Exception.h"

namespace {

using util::VectorPOD;

TEST(VectorPOD, StartsEmpty) {
    VectorPOD<int> v;
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(0u, v.size());
    EXPECT_EQ(0u, v.capacity());
    EXPECT_EQ(v.begin(), v.end());
}

TEST(VectorPOD, PushOntoAFullVectorAllocatesTwiceTheNewSize) {
    VectorPOD<int> v;
    v.push_back(0);
    EXPECT_EQ(2u, v.capacity());
    v.push_back(1);
    EXPECT_EQ(2u, v.capacity());
    v.push_back(2);
    EXPECT_EQ(6u, v.capacity());
    for (int i = 3; i < 6; ++i) {
        v.push_back(i);
    }
    EXPECT_EQ(6u, v.capacity());
    v.push_back(6);
    EXPECT_EQ(14u, v.capacity());
    ASSERT_EQ(7u, v.size());
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(i, v[i]);
    }
}

TEST(VectorPOD, PushingOwnElementWhileFullIsSafe) {
    VectorPOD<int> v{7, 8};
    ASSERT_EQ(v.size(), v.capacity());
    v.push_back(v[0]);
    EXPECT_EQ((VectorPOD<int>{7, 8, 7}), v);
}

TEST(VectorPOD, PopBackOnEmptyIsACodeAssertion) {
    VectorPOD<int> v;
    test::LogCapture log;
    EXPECT_THROW(v.pop_back(), BadCoderException);
    EXPECT_TRUE(log.Contains("Code assertion failed: \"!empty()\"")) << log.Text();
    EXPECT_TRUE(v.empty());
}

TEST(VectorPOD, PopBackRemovesTheLast) {
    VectorPOD<int> v{1, 2, 3};
    v.pop_back();
    EXPECT_EQ((VectorPOD<int>{1, 2}), v);
    EXPECT_EQ(2, v.back());
    EXPECT_EQ(1, v.front());
}

TEST(VectorPOD, CopyAndMoveAreIndependent) {
    VectorPOD<int> a{1, 2, 3};
    VectorPOD<int> b(a);
    b[0] = 9;
    EXPECT_EQ(1, a[0]);
    VectorPOD<int> c(std::move(b));
    EXPECT_EQ((VectorPOD<int>{9, 2, 3}), c);
    VectorPOD<int> d;
    d = a;
    d = d;
    EXPECT_EQ(a, d);
    d = std::move(c);
    EXPECT_EQ((VectorPOD<int>{9, 2, 3}), d);
}

TEST(VectorPOD, ResizeWithValueFillsOnlyTheNewPart) {
    VectorPOD<int> v{1, 2};
    v.resize(4, 5);
    EXPECT_EQ((VectorPOD<int>{1, 2, 5, 5}), v);
    v.resize(1);
    EXPECT_EQ((VectorPOD<int>{1}), v);
    v.reserve(100);
    EXPECT_EQ(100u, v.capacity());
    EXPECT_EQ(1, v[0]);
}

TEST(VectorPOD, EraseUnorderedMovesTheLastIntoTheGap) {
    VectorPOD<int> v{1, 2, 3, 4};
    v.erase_unordered(1);
    EXPECT_EQ((VectorPOD<int>{1, 4, 3}), v);
    v.erase_unordered(2);
    EXPECT_EQ((VectorPOD<int>{1, 4}), v);
}

TEST(VectorPOD, ClearKeepsCapacity) {
    VectorPOD<int> v{1, 2, 3};
    const size_t capacity = v.capacity();
    v.clear();
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(capacity, v.capacity());
}

TEST(VectorPOD, HoldsPlainStructs) {
    struct Point {
        float x;
        float y;
    };
    VectorPOD<Point> points;
    for (int i = 0; i < 100; ++i) {
        points.push_back(Point{static_cast<float>(i), static_cast<float>(-i)});
    }
    float sum = 0;
    for (const Point& p : points) {
        sum += p.x + p.y;
    }
    EXPECT_EQ(0.0f, sum);
    EXPECT_EQ(99.0f, points.back().x);
}

}  // namespace

TEST(VectorPOD, GrowingByResizeIsGeometric) {
    // Growing one element at a time through resize must not copy the whole vector each
    // time: the capacity at least doubles whenever it runs out.
    util::VectorPOD<int> v;
    int reallocations = 0;
    size_t capacity = v.capacity();
    for (size_t n = 1; n <= 10000; ++n) {
        v.resize(n);
        v[n - 1] = static_cast<int>(n);
        if (v.capacity() != capacity) {
            EXPECT_GE(v.capacity(), 2 * capacity);
            capacity = v.capacity();
            ++reallocations;
        }
    }
    EXPECT_LE(reallocations, 15);
    EXPECT_EQ(v[9999], 10000);
    EXPECT_EQ(v[0], 1);
    // An explicit reserve still asks for exactly what it names.
    util::VectorPOD<int> w;
    w.reserve(7);
    EXPECT_EQ(w.capacity(), 7u);
}
