#include "util/LexicalCast.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "LogCapture.h"

namespace {

using util::LexicalCast;
using util::String;

// The message of the runtime_error that the conversion throws, or "" if none.
template <class Target>
String FailureOf(const String& text) {
    try {
        LexicalCast<Target>(text);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

template <class T>
bool SameBits(T a, T b) {
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

TEST(LexicalCastFromString, Numbers) {
    EXPECT_EQ(42, LexicalCast<int>("42"));
    EXPECT_EQ(-7, LexicalCast<int>(String("-7")));
    EXPECT_EQ(5, LexicalCast<int>("+5"));
    EXPECT_EQ(4000000000u, LexicalCast<unsigned>("4000000000"));
    EXPECT_EQ(1.5f, LexicalCast<float>("1.5"));
    EXPECT_EQ(-0.25, LexicalCast<double>("-2.5e-1"));
    EXPECT_EQ(100.0, LexicalCast<double>("1e2"));
    EXPECT_TRUE(LexicalCast<bool>("1"));
    EXPECT_FALSE(LexicalCast<bool>("0"));
    EXPECT_EQ('q', LexicalCast<char>("q"));
    EXPECT_EQ("as is", LexicalCast<String>("as is"));
}

TEST(LexicalCastFromString, FailureNamesTheTextAndTheType) {
    EXPECT_EQ("Bad lexical cast: \"abc\" is not a int", FailureOf<int>("abc"));
    EXPECT_EQ("Bad lexical cast: \"true\" is not a bool", FailureOf<bool>("true"));
    EXPECT_EQ("Bad lexical cast: \"1.5.2\" is not a float", FailureOf<float>("1.5.2"));
    EXPECT_EQ("Bad lexical cast: \"\" is not a double", FailureOf<double>(""));
}

TEST(LexicalCastFromString, TheWholeTextMustConvert) {
    EXPECT_NE("", FailureOf<int>("12x"));
    EXPECT_NE("", FailureOf<int>(" 12"));
    EXPECT_NE("", FailureOf<int>("12 "));
    EXPECT_NE("", FailureOf<int>("1.5"));
    EXPECT_NE("", FailureOf<int>("0x10"));
    EXPECT_NE("", FailureOf<double>("1.5e"));
    EXPECT_NE("", FailureOf<bool>("2"));
    EXPECT_NE("", FailureOf<char>("ab"));
    EXPECT_NE("", FailureOf<char>(""));
}

TEST(LexicalCastFromString, OutOfRangeFails) {
    EXPECT_NE("", FailureOf<int>("99999999999"));
    EXPECT_NE("", FailureOf<float>("1e40"));
    EXPECT_NE("", FailureOf<double>("1e400"));
    EXPECT_EQ("Bad lexical cast: \"-1\" is not a unsigned int", FailureOf<unsigned>("-1"));
    EXPECT_EQ(std::numeric_limits<int>::min(), LexicalCast<int>("-2147483648"));
}

TEST(LexicalCastFromString, Infinities) {
    EXPECT_EQ(std::numeric_limits<float>::infinity(), LexicalCast<float>("+inf"));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), LexicalCast<float>("-inf"));
    EXPECT_EQ(std::numeric_limits<float>::infinity(), LexicalCast<float>("inf"));
    EXPECT_EQ(-std::numeric_limits<double>::infinity(), LexicalCast<double>("-INF"));
    EXPECT_EQ(std::numeric_limits<double>::infinity(), LexicalCast<double>("Infinity"));
    EXPECT_TRUE(std::isnan(LexicalCast<float>("nan")));
    EXPECT_NE("", FailureOf<float>("infx"));
    EXPECT_NE("", FailureOf<float>("+-inf"));
    EXPECT_NE("", FailureOf<int>("inf"));
}

TEST(LexicalCastFromString, FailureWritesTheThrowLine) {
    test::LogCapture log;
    EXPECT_THROW(LexicalCast<int>("seven"), std::runtime_error);
    EXPECT_TRUE(log.Contains("Exception thrown: Bad lexical cast: \"seven\" is not a int from "))
        << log.Text();
}

TEST(LexicalCastToString, Numbers) {
    EXPECT_EQ("42", LexicalCast<String>(42));
    EXPECT_EQ("-7", LexicalCast<String>(-7L));
    EXPECT_EQ("1.5", LexicalCast<String>(1.5f));
    EXPECT_EQ("0.1", LexicalCast<String>(0.1));
    EXPECT_EQ("0.1", LexicalCast<String>(0.1f));
    EXPECT_EQ("100", LexicalCast<String>(100.0));
    EXPECT_EQ("1", LexicalCast<String>(true));
    EXPECT_EQ("0", LexicalCast<String>(false));
    EXPECT_EQ("x", LexicalCast<String>('x'));
}

TEST(LexicalCastToString, InfinitiesHaveASign) {
    EXPECT_EQ("+inf", LexicalCast<String>(std::numeric_limits<float>::infinity()));
    EXPECT_EQ("-inf", LexicalCast<String>(-std::numeric_limits<float>::infinity()));
    EXPECT_EQ("+inf", LexicalCast<String>(std::numeric_limits<double>::infinity()));
    EXPECT_EQ("-inf", LexicalCast<String>(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(std::numeric_limits<float>::infinity(),
              LexicalCast<float>(LexicalCast<String>(std::numeric_limits<float>::infinity())));
}

TEST(LexicalCastRoundTrip, SpecialFloats) {
    const float values[] = {0.0f,
                            -0.0f,
                            0.1f,
                            1.0f / 3.0f,
                            16777217.0f,
                            std::numeric_limits<float>::max(),
                            std::numeric_limits<float>::lowest(),
                            std::numeric_limits<float>::min(),
                            std::numeric_limits<float>::denorm_min(),
                            std::numeric_limits<float>::epsilon()};
    for (float value : values) {
        const String text = LexicalCast<String>(value);
        EXPECT_TRUE(SameBits(value, LexicalCast<float>(text))) << text;
    }
}

TEST(LexicalCastRoundTrip, ManyFloatsAndDoubles) {
    // A fixed pseudo-random walk over bit patterns, finite values only.
    uint64_t state = 12345;
    auto next = [&] {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return state;
    };
    for (int i = 0; i < 2000; ++i) {
        const uint32_t bits = static_cast<uint32_t>(next() >> 32);
        float f;
        std::memcpy(&f, &bits, sizeof f);
        if (std::isfinite(f)) {
            const String text = LexicalCast<String>(f);
            ASSERT_TRUE(SameBits(f, LexicalCast<float>(text))) << text;
        }
        const uint64_t wide = next();
        double d;
        std::memcpy(&d, &wide, sizeof d);
        if (std::isfinite(d)) {
            const String text = LexicalCast<String>(d);
            ASSERT_TRUE(SameBits(d, LexicalCast<double>(text))) << text;
        }
    }
}

TEST(LexicalCastGeneric, BetweenNonStrings) {
    EXPECT_EQ(3.0, LexicalCast<double>(3));
    EXPECT_EQ(7, LexicalCast<int>(7L));
    EXPECT_EQ(std::numeric_limits<float>::infinity(),
              LexicalCast<float>(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(5, LexicalCast<int>(5));
}

TEST(LexicalCastGeneric, FailureSaysOnlyBadLexicalCast) {
    try {
        LexicalCast<int>(2.5);
        FAIL() << "2.5 is not an int";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ("Bad lexical cast", e.what());
    }
}

struct Pair {
    int a = 0;
    int b = 0;
};
std::ostream& operator<<(std::ostream& out, const Pair& p) {
    return out << p.a << ' ' << p.b;
}
std::istream& operator>>(std::istream& in, Pair& p) {
    return in >> p.a >> p.b;
}

TEST(LexicalCastGeneric, TypesWithStreamOperators) {
    EXPECT_EQ("1 2", LexicalCast<String>(Pair{1, 2}));
    const Pair p = LexicalCast<Pair>("3 4");
    EXPECT_EQ(3, p.a);
    EXPECT_EQ(4, p.b);
    EXPECT_EQ("Bad lexical cast: \"3 4 5\" is not a (anonymous namespace)::Pair",
              FailureOf<Pair>("3 4 5"));
    EXPECT_NE("", FailureOf<Pair>("3"));
}

}  // namespace
