// Inputs found by fuzzing the language (scripts/fuzz.sh) that once crashed or hung.

#include <chrono>

#include "ScriptFixture.h"

namespace {

util::String Repeat(const util::String& part, int count) {
    util::String text;
    for (int i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

}  // namespace

// Used to overflow the native stack.
TEST_F(ScriptTest, EndlessRecursionFailsOnlyItsStatement) {
    EXPECT_EQ(Eval("fzr = { fzr }; fzr; 2"), "2");
    EXPECT_TRUE(WarnedWith("Failed to evaluate: fzr, Recursion too deep"));

    EXPECT_EQ(Eval("fzr1 = (x)=>{ fzr1 (x + 1) }; fzr1 1"), "");
    EXPECT_TRUE(WarnedWith("Recursion too deep"));

    EXPECT_EQ(Eval("fzr2 = { [fzr2] }; fzr2"), "");
    EXPECT_TRUE(WarnedWith("Recursion too deep"));

    // The limit is reset once the recursion has unwound.
    EXPECT_EQ(Eval("fzr3 = (x)=>{ x + 1 }; fzr3 1"), "2");
}

// Each level calls itself twice: were the failure caught at every level, the statements
// after it would run into the limit again, 2^depth times.
TEST_F(ScriptTest, RecursionFailureUnwindsAtOnce) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Eval("fzw = { fzw; fzw; fzw }; fzw; 3"), "3");
    EXPECT_TRUE(WarnedWith("Failed to evaluate: fzw, Recursion too deep"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));

    // An ordinary failure inside a function still costs only its own statement.
    EXPECT_EQ(Eval("fzok = { fz_missing; 4 }; fzok"), "4");
}

// An infix function without keywords applies to every row, its own argument included:
// parsing that argument used to recurse without end. Declared inside a function, so that
// the infix function stays out of the root scope.
TEST_F(ScriptTest, KeywordlessInfixFunctionFailsToParse) {
    EXPECT_EQ(Code("fzi = { infix 1 left: _ => math.negate; fzx }"), "<parse failed>");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors.front(), "Parse error: Expression nested too deeply");
    EXPECT_EQ(Eval("1 + 2"), "3");
}

// Used to overflow the native stack while parsing.
TEST_F(ScriptTest, DeeplyNestedBracketsFailToParse) {
    for (const char* open : {"(", "[", "{"}) {
        const char* close = open[0] == '(' ? ")" : open[0] == '[' ? "]" : "}";
        errors.clear();
        EXPECT_EQ(Code(Repeat(open, 5000) + "1" + Repeat(close, 5000)), "<parse failed>");
        ASSERT_EQ(errors.size(), 1u) << open;
        EXPECT_EQ(errors.front(), "Parse error: Expression nested too deeply");
    }
    // Nesting of a sensible depth is fine.
    EXPECT_EQ(Eval(Repeat("(", 100) + "7" + Repeat(")", 100)), "7");
    EXPECT_EQ(Eval(Repeat("[", 100) + "7" + Repeat("]", 100)),
              Repeat("[", 100) + "7" + Repeat("]", 100));
}

// A long row of infix calls nests one level per keyword.
TEST_F(ScriptTest, LongInfixRowsParseUpToTheLimit) {
    EXPECT_EQ(Eval("1" + Repeat(" + 1", 199)), "200");
    errors.clear();
    EXPECT_EQ(Code("1" + Repeat(" + 1", 3000)), "<parse failed>");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors.front(), "Parse error: Expression nested too deeply");
}
