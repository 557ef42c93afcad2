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

using Flags = std::vector<uint8_t>;

// A box left out of a crowd meets only immovable boxes that are not left out.
bool MayPair(uint8_t a, uint8_t b) {
    const auto leftOutMeets = [](uint8_t other) {
        return (other & (BroadPhase::kLeftOut | BroadPhase::kImmovable)) == BroadPhase::kImmovable;
    };
    return (!(a & BroadPhase::kLeftOut) || leftOutMeets(b)) &&
           (!(b & BroadPhase::kLeftOut) || leftOutMeets(a));
}

uint8_t FlagOf(const Flags& flags, size_t i) {
    return flags.empty() ? 0 : flags[i];
}

BroadPhase::PairList AllWithin(const std::vector<BoundingBox2f>& boxes, const Flags& flags = {}) {
    BroadPhase::PairList pairs;
    for (uint32_t i = 0; i < boxes.size(); ++i) {
        for (uint32_t j = i + 1; j < boxes.size(); ++j) {
            if (boxes[i].Overlaps(boxes[j]) && MayPair(FlagOf(flags, i), FlagOf(flags, j))) {
                pairs.emplace_back(i, j);
            }
        }
    }
    return pairs;
}

BroadPhase::PairList AllAcross(const std::vector<BoundingBox2f>& first,
                               const std::vector<BoundingBox2f>& second,
                               const Flags& firstFlags = {}, const Flags& secondFlags = {}) {
    BroadPhase::PairList pairs;
    for (uint32_t i = 0; i < first.size(); ++i) {
        for (uint32_t j = 0; j < second.size(); ++j) {
            if (first[i].Overlaps(second[j]) &&
                MayPair(FlagOf(firstFlags, i), FlagOf(secondFlags, j))) {
                pairs.emplace_back(i, j);
            }
        }
    }
    return pairs;
}

// Most boxes as they come, some immovable, some left out, a few both.
Flags MakeFlags(size_t count, std::mt19937& random) {
    std::uniform_int_distribution<int> kind(0, 9);
    Flags flags(count);
    for (uint8_t& flag : flags) {
        const int k = kind(random);
        flag = static_cast<uint8_t>((k < 3 ? BroadPhase::kImmovable : 0) |
                                    (k >= 2 && k < 6 ? BroadPhase::kLeftOut : 0));
    }
    return flags;
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

        // Left out of a crowd, a box meets the immovable ones alone, whichever list holds it.
        const Flags flags = MakeFlags(boxes.size(), random);
        const Flags otherFlags = MakeFlags(others.size(), random);
        broadPhase.Within(boxes, pairs, flags.data());
        EXPECT_EQ(AllWithin(boxes, flags), pairs) << "seed " << seed;
        broadPhase.Across(boxes, others, pairs, flags.data(), otherFlags.data());
        EXPECT_EQ(AllAcross(boxes, others, flags, otherFlags), pairs) << "seed " << seed;
        broadPhase.Across(others, boxes, pairs, otherFlags.data(), nullptr);
        EXPECT_EQ(AllAcross(others, boxes, otherFlags), pairs) << "seed " << seed;
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

// Searches keep what they found for the next call: boxes that drift a little, jump, blow up
// or change in number, call after call, still give exactly the overlapping pairs.
TEST(BroadPhase, RepeatedSearchesFollowMovingBoxes) {
    BroadPhase within;
    BroadPhase across;
    std::mt19937 random(7);
    std::vector<BoundingBox2f> boxes = MakeBoxes(300, random);
    std::vector<BoundingBox2f> others = MakeBoxes(80, random);
    std::uniform_real_distribution<float> drift(-0.02f, 0.02f);
    std::uniform_int_distribution<int> event(0, 99);
    std::uniform_int_distribution<size_t> pick(0, 299);
    for (int call = 0; call < 60; ++call) {
        for (BoundingBox2f& box : boxes) {
            const Vec2 move(drift(random), drift(random));
            box = BoundingBox2f(box.min + move, box.max + move);
        }
        const int e = event(random);
        if (e < 20) {  // one box jumps across the scene
            BoundingBox2f& box = boxes[pick(random)];
            box = BoundingBox2f(box.min + Vec2(7, -5), box.max + Vec2(7, -5));
        } else if (e < 25) {
            boxes[pick(random)].min.x = std::nanf("");
        } else if (e < 30) {
            boxes.push_back(boxes[pick(random)]);
        }
        BroadPhase::PairList pairs;
        within.Within(boxes, pairs);
        ASSERT_EQ(AllWithin(boxes), pairs) << "call " << call;
        across.Across(boxes, others, pairs);
        ASSERT_EQ(AllAcross(boxes, others), pairs) << "call " << call;
        if (e >= 90) {  // the same finder turned to the other kind of search and back
            across.Within(others, pairs);
            ASSERT_EQ(AllWithin(others), pairs) << "call " << call;
        }
    }
}

}  // namespace
