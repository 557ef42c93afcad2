#include "physics/BroadPhase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using math::BoundingBox2f;
using math::Vec2;
using physics::BroadPhase;

BroadPhase::PairList AllWithin(const std::vector<BoundingBox2f>& boxes) {
    BroadPhase::PairList pairs;
    for (uint32_t i = 0; i < boxes.size(); ++i) {
        for (uint32_t j = i + 1; j < boxes.size(); ++j) {
            if (boxes[i].Overlaps(boxes[j])) {
                pairs.emplace_back(i, j);
            }
        }
    }
    return pairs;
}

BroadPhase::PairList AllAcross(const std::vector<BoundingBox2f>& first,
                               const std::vector<BoundingBox2f>& second) {
    BroadPhase::PairList pairs;
    for (uint32_t i = 0; i < first.size(); ++i) {
        for (uint32_t j = 0; j < second.size(); ++j) {
            if (first[i].Overlaps(second[j])) {
                pairs.emplace_back(i, j);
            }
        }
    }
    return pairs;
}

// A scene's worth of boxes: mostly small and near each other, some sharing edges exactly,
// a few huge (a floor), points, and the odd one that has blown up.
std::vector<BoundingBox2f> MakeBoxes(size_t count, std::mt19937& random) {
    std::uniform_real_distribution<float> place(-20, 20);
    std::uniform_real_distribution<float> size(0, 2);
    std::uniform_int_distribution<int> kind(0, 19);
    constexpr float kInf = std::numeric_limits<float>::infinity();
    std::vector<BoundingBox2f> boxes;
    for (size_t i = 0; i < count; ++i) {
        const Vec2 at(place(random), place(random));
        switch (kind(random)) {
            case 0:  // a floor
                boxes.emplace_back(Vec2(-500, at.y), Vec2(500, at.y + 1));
                break;
            case 1:  // a point
                boxes.emplace_back(at, at);
                break;
            case 2:  // exactly on the grid of unit boxes, touching its neighbours
                boxes.emplace_back(Vec2(std::floor(at.x), std::floor(at.y)),
                                   Vec2(std::floor(at.x) + 1, std::floor(at.y) + 1));
                break;
            case 3:  // blown up
                boxes.emplace_back(Vec2(-kInf, at.y), Vec2(at.x, kInf));
                break;
            case 4:
                boxes.emplace_back(Vec2(std::nanf(""), at.y), at + Vec2(1, 1));
                break;
            case 5:  // far away
                boxes.emplace_back(at * 1e7f, at * 1e7f + Vec2(1, 1));
                break;
            default:
                boxes.emplace_back(at, at + Vec2(size(random), size(random)));
        }
    }
    return boxes;
}

TEST(BroadPhase, FindsExactlyTheOverlappingPairsInLoopOrder) {
    BroadPhase broadPhase;  // one instance throughout: its buffers are reused
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        const std::vector<BoundingBox2f> boxes = MakeBoxes(150 + seed * 10, random);
        const std::vector<BoundingBox2f> others = MakeBoxes(60 + seed, random);

        BroadPhase::PairList pairs;
        broadPhase.Within(boxes, pairs);
        EXPECT_EQ(AllWithin(boxes), pairs) << "seed " << seed;
        broadPhase.Across(boxes, others, pairs);
        EXPECT_EQ(AllAcross(boxes, others), pairs) << "seed " << seed;
        broadPhase.Across(others, boxes, pairs);
        EXPECT_EQ(AllAcross(others, boxes), pairs) << "seed " << seed;
    }
}

TEST(BroadPhase, EmptyListsAndSingleBoxesGiveNoPairs) {
    BroadPhase broadPhase;
    BroadPhase::PairList pairs{{1, 2}};
    broadPhase.Within({}, pairs);
    EXPECT_TRUE(pairs.empty());
    const std::vector<BoundingBox2f> one{BoundingBox2f(Vec2(0, 0), Vec2(1, 1))};
    broadPhase.Within(one, pairs);
    EXPECT_TRUE(pairs.empty());
    broadPhase.Across(one, {}, pairs);
    EXPECT_TRUE(pairs.empty());
    broadPhase.Across({}, one, pairs);
    EXPECT_TRUE(pairs.empty());
    // The same box twice overlaps itself; touching corners count.
    const std::vector<BoundingBox2f> twins{one[0], one[0], BoundingBox2f(Vec2(1, 1), Vec2(2, 2))};
    broadPhase.Within(twins, pairs);
    EXPECT_EQ((BroadPhase::PairList{{0, 1}, {0, 2}, {1, 2}}), pairs);
}

}  // namespace
