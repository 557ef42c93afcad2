#include "util/StringUtil.h"

#include <gtest/gtest.h>

namespace {

using util::String;
using Pieces = std::vector<String>;

TEST(StringUtil, StartsAndEndsWithCompareExactly) {
    EXPECT_TRUE(util::StartsWith("scene.vra", "scene"));
    EXPECT_TRUE(util::StartsWith("scene", ""));
    EXPECT_TRUE(util::StartsWith("scene", "scene"));
    EXPECT_FALSE(util::StartsWith("scene", "Scene"));
    EXPECT_FALSE(util::StartsWith("sc", "scene"));
    EXPECT_TRUE(util::EndsWith("scene.vra", ".vra"));
    EXPECT_TRUE(util::EndsWith("", ""));
    EXPECT_FALSE(util::EndsWith("scene.vra", ".VRA"));
    EXPECT_FALSE(util::EndsWith("vra", ".vra"));
}

TEST(StringUtil, IgnoringCase) {
    EXPECT_TRUE(util::EqualsIgnoreCase("Hello", "hELLO"));
    EXPECT_FALSE(util::EqualsIgnoreCase("Hello", "Hell"));
    EXPECT_FALSE(util::EqualsIgnoreCase("Hello", "Hellp"));
    EXPECT_TRUE(util::EqualsIgnoreCase("", ""));
    EXPECT_TRUE(util::StartsWithIgnoreCase("Sim.timeStep", "sim."));
    EXPECT_FALSE(util::StartsWithIgnoreCase("Si", "sim"));
    EXPECT_TRUE(util::EndsWithIgnoreCase("My Scene.VRA", ".vra"));
    EXPECT_FALSE(util::EndsWithIgnoreCase("scene.vrb", ".vra"));
    EXPECT_FALSE(util::EndsWithIgnoreCase("ra", ".vra"));
    // Letters only: digits and punctuation must still match exactly.
    EXPECT_FALSE(util::EqualsIgnoreCase("a1", "a2"));
    EXPECT_FALSE(util::EqualsIgnoreCase("[", "{"));
}

TEST(StringUtil, ToLowerAndToUpperConvertACopy) {
    const String text = "MiXeD 123 _!";
    EXPECT_EQ("mixed 123 _!", util::ToLower(text));
    EXPECT_EQ("MIXED 123 _!", util::ToUpper(text));
    EXPECT_EQ("MiXeD 123 _!", text);
    EXPECT_EQ("", util::ToLower(""));
    // Bytes above 127 pass through in the C locale.
    EXPECT_EQ("\xc3\x84", util::ToLower("\xc3\x84"));
}

TEST(StringUtil, Utf8BecomesLatin1WhereLatin1HasTheCharacter) {
    // The micro sign, a-umlaut and sharp s; the euro sign has no Latin-1 byte and stays.
    EXPECT_EQ("\xb5s \xe4\xdf \xe2\x82\xac",
              util::Utf8ToLatin1("\xc2\xb5s \xc3\xa4\xc3\x9f \xe2\x82\xac"));
    // Latin-1 text already, and a lead byte at the end, pass through.
    EXPECT_EQ("\xe4\xf6 \xc3", util::Utf8ToLatin1("\xe4\xf6 \xc3"));
}

TEST(StringUtil, Join) {
    EXPECT_EQ("", util::Join(Pieces{}, ", "));
    EXPECT_EQ("a", util::Join(Pieces{"a"}, ", "));
    EXPECT_EQ("a, b, c", util::Join(Pieces{"a", "b", "c"}, ", "));
    EXPECT_EQ("ab", util::Join(Pieces{"a", "b"}, ""));
    EXPECT_EQ(",", util::Join(Pieces{"", ""}, ","));
}

TEST(StringUtil, SplitKeepsEmptyPiecesAndTheRest) {
    EXPECT_EQ((Pieces{"a", "b", ""}), util::Split("a,b,", ','));
    EXPECT_EQ((Pieces{"a", "", "b"}), util::Split("a,,b", ','));
    EXPECT_EQ((Pieces{""}), util::Split("", ','));
    EXPECT_EQ((Pieces{"", ""}), util::Split(",", ','));
    EXPECT_EQ((Pieces{"", "a"}), util::Split(",a", ','));
    EXPECT_EQ((Pieces{"no separator"}), util::Split("no separator", ','));
    EXPECT_EQ((Pieces{"Sim", "timeStep"}), util::Split("Sim.timeStep", '.'));
}

TEST(StringUtil, SplitAndJoinAreInverse) {
    for (const String text : {"", ",", "a,b,", ",,x,,", "one"}) {
        EXPECT_EQ(text, util::Join(util::Split(text, ','), ",")) << text;
    }
}

}  // namespace
