#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "util/Exception.h"
#include "util/Random.h"

namespace {

// A standard engine whose state is the given words, as if just seeded with them. The
// textual state of some libraries carries the position as well: copy it from a freshly
// seeded engine when it is there.
std::mt19937 EngineWithState(const std::vector<uint32_t>& words) {
    std::stringstream fresh;
    fresh << std::mt19937();
    std::vector<std::string> tokens;
    std::string token;
    while (fresh >> token) {
        tokens.push_back(token);
    }
    std::stringstream state;
    for (uint32_t word : words) {
        state << word << ' ';
    }
    if (tokens.size() > words.size()) {
        state << tokens.back();
    }
    std::mt19937 engine;
    state >> engine;
    EXPECT_FALSE(state.fail());
    return engine;
}

}  // namespace

TEST(MersenneTwister, TenThousandthOutputOfTheDefaultSeed) {
    util::MersenneTwister engine;
    uint32_t value = 0;
    for (int i = 0; i < 10000; ++i) {
        value = engine();
    }
    EXPECT_EQ(value, 4123659995u);
}

TEST(MersenneTwister, MatchesTheStandardEngine) {
    for (uint32_t seed : {0u, 1u, 12345u, 0xFFFFFFFFu}) {
        util::MersenneTwister mine(seed);
        std::mt19937 reference(seed);
        for (int i = 0; i < 2000; ++i) {
            ASSERT_EQ(mine(), reference()) << "seed " << seed << " output " << i;
        }
    }
}

TEST(MersenneTwister, LoadedStateMatchesTheStandardEngine) {
    std::mt19937 source(77);
    std::vector<uint32_t> words(util::MersenneTwister::StateSize);
    for (uint32_t& word : words) {
        word = source();
    }
    util::MersenneTwister mine;
    mine.SetState(words.data());
    std::mt19937 reference = EngineWithState(words);
    for (int i = 0; i < 1500; ++i) {
        ASSERT_EQ(mine(), reference()) << "output " << i;
    }
}

TEST(Random, IntegersComeFromTheUnadvancedFirstEngine) {
    // With a power-of-two range nothing is rejected: each draw is one output, reduced.
    util::Random random(4242);
    std::mt19937 reference(4242);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(random.GetUniformInt(0, 256), static_cast<int>(reference() % 256)) << i;
    }
}

TEST(Random, FullIntegerRange) {
    // Range 2^32 - 1: only the output 0 is rejected, and r maps to INT_MIN + r.
    util::Random random(9);
    std::mt19937 reference(9);
    for (int i = 0; i < 100; ++i) {
        uint32_t r = reference();
        while (r == 0) {
            r = reference();
        }
        const int64_t expected = static_cast<int64_t>(INT_MIN) + r % 0xFFFFFFFFu;
        ASSERT_EQ(random.GetUniformInt(INT_MIN, INT_MAX), expected);
    }
}

TEST(Random, FloatsComeFromTheSecondEngine) {
    const uint32_t seed = 31337;
    std::mt19937 first(seed);
    std::vector<uint32_t> words(624);
    for (uint32_t& word : words) {
        word = first();
    }
    std::mt19937 second = EngineWithState(words);
    util::Random random(seed);
    for (int i = 0; i < 1000; ++i) {
        const long double u = second();
        const float expected = static_cast<float>(-2.0L + 5.5L * u * 0x1p-32L);
        ASSERT_EQ(random.GetUniform(-2.0f, 3.5f), expected) << i;
    }
    // The integer stream was not touched by drawing floats.
    std::mt19937 reference(seed);
    EXPECT_EQ(random.GetUniformInt(0, 1 << 16), static_cast<int>(reference() % (1u << 16)));
}

TEST(Random, InstancesTakeSuccessiveSeeds) {
    const uint32_t next = util::Random::PeekNextSeed();
    util::Random a;
    util::Random b;
    EXPECT_EQ(a.GetSeed(), next);
    EXPECT_EQ(b.GetSeed(), next + 1);
    EXPECT_NE(a.GetSeed(), b.GetSeed());
    EXPECT_EQ(util::Random::PeekNextSeed(), next + 2);
    EXPECT_EQ(util::Random(5).GetSeed(), 5u);
    EXPECT_EQ(util::Random::PeekNextSeed(), next + 2);
}

TEST(Random, SameSeedSameStream) {
    util::Random a(100);
    util::Random b(100);
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(a.GetUniform(0, 1), b.GetUniform(0, 1));
        ASSERT_EQ(a.GetUniformInt(-7, 7), b.GetUniformInt(-7, 7));
    }
}

TEST(Random, SingleValueIntegerRange) {
    util::Random random(1);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(random.GetUniformInt(3, 4), 3);
    }
}

TEST(Random, EmptyIntegerRangeAsserts) {
    util::Random random(1);
    try {
        random.GetUniformInt(4, 4);
        FAIL() << "no exception";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"min < max\""), std::string::npos) << e.what();
    }
    EXPECT_THROW(random.GetUniformInt(5, 4), BadCoderException);
}

TEST(Random, EmptyFloatRangeIsItsOnlyValue) {
    util::Random random(1);
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(random.GetUniform(2, 2), 2.0f);
    }
}

TEST(Random, ReversedFloatRangeAsserts) {
    util::Random random(1);
    try {
        random.GetUniform(3, 2);
        FAIL() << "no exception";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"min <= max\""), std::string::npos) << e.what();
    }
}

TEST(Random, DrawsStayWithinBounds) {
    util::Random random(2024);
    std::set<int> seen;
    float low = 10;
    float high = -10;
    for (int i = 0; i < 20000; ++i) {
        const int n = random.GetUniformInt(-5, 5);
        ASSERT_GE(n, -5);
        ASSERT_LE(n, 4);
        seen.insert(n);
        const float f = random.GetUniform(-1.5f, 3.0f);
        ASSERT_GE(f, -1.5f);
        ASSERT_LE(f, 3.0f);
        low = std::min(low, f);
        high = std::max(high, f);
    }
    EXPECT_EQ(seen.size(), 10u);
    EXPECT_LT(low, -1.4f);
    EXPECT_GT(high, 2.9f);
}

TEST(Random, IntegersAreRoughlyUniform) {
    util::Random random(7);
    int counts[3] = {};
    const int draws = 30000;
    for (int i = 0; i < draws; ++i) {
        ++counts[random.GetUniformInt(0, 3)];
    }
    for (int count : counts) {
        EXPECT_NEAR(count, draws / 3, 500);
    }
}
