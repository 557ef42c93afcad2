#include "ScriptFixture.h"
#include "script/Closure.h"

TEST_F(ScriptTest, VariablesAndLocalAssignment) {
    EXPECT_EQ(Eval("lx = 1; lx"), "1");
    // Assignment inside a function makes a local; the outer one stays.
    EXPECT_EQ(Eval("ly = 5; lg = { ly = 1; ly }; lg"), "1");
    EXPECT_EQ(Eval("ly"), "5");
    // Arguments are constant.
    Eval("lf = (a)=>{ a = 2 }; lf 1");
    EXPECT_TRUE(WarnedWith("Cannot set constant variable a"));
    Eval("ln = 3; ln.b = 1");
    EXPECT_TRUE(WarnedWith("\"owner\""));
    EXPECT_EQ(Eval("lmissing"), "");
    EXPECT_TRUE(WarnedWith("lmissing not found in scope"));
}

TEST_F(ScriptTest, AutomaticCallingAndClosures) {
    EXPECT_EQ(Eval("ax = 2; ad = { ax * 3 }; ad"), "6");
    EXPECT_EQ(Eval("ax = 4; ad"), "12");  // a computed value follows its input
    // A stored function is not called; an identifier on the right side is.
    EXPECT_EQ(Eval("ac = ad; ac"), "12");
    EXPECT_EQ(Eval("mk = (n)=>{ (m)=>{ n + m } }; add5 = mk 5; add5 3"), "8");
    EXPECT_EQ(Eval("add7 = mk 7; add5 1 + add7 1"), "14");
    EXPECT_EQ(Eval("fact = (n)=>{ n }; fact 3"), "3");
    EXPECT_EQ(Eval("twice = (f, x)=>{ f (f x) }; twice(add5, 1)"), "11");
    EXPECT_EQ(Eval("pr = (q)=>{ a = 1; b = 2 }; pr"), "(q)=>{\n    a = 1;\n    b = 2\n}");
    EXPECT_EQ(Eval("lst = [10, 20, 30]; lst 1"), "20");
    EXPECT_EQ(Eval("lst(2)"), "30");
    Eval("lst(3)");
    EXPECT_TRUE(WarnedWith("List index out of bounds"));
    Eval("lst(1.0)");
    EXPECT_TRUE(WarnedWith("Not an integer"));
}

TEST_F(ScriptTest, FailingStatementCostsOnlyItself) {
    EXPECT_EQ(Eval("fs1 = 1; fs2 = nothing; fs3 = 3; fs3"), "3");
    EXPECT_TRUE(WarnedWith("Failed to evaluate: fs2 = nothing, nothing not found in scope"));
    EXPECT_EQ(Eval("fs1"), "1");
    EXPECT_EQ(Eval("fb = { bad_name; 42 }; fb"), "42");
    // A list fails as a whole.
    EXPECT_EQ(Eval("(1, bad_name)"), "");
}

TEST_F(ScriptTest, Arithmetic) {
    const std::pair<const char*, const char*> cases[] = {
        {"1 + 2", "3"},
        {"1 + 2.0", "3"},
        {"7 / 2", "3"},
        {"7 / 2.0", "3.5"},
        {"\"a\" + 1", "a1"},
        {"1 + \"a\"", "1a"},
        {"[1] + \"a\"", "[1]a"},
        {"[1, 2] + [3, 4]", "[4, 6]"},
        {"2 * [1, 2]", "[2, 4]"},
        {"[1, 2] * 2", "[2, 4]"},
        {"[1, 2] * [3, 4]", "[3, 8]"},
        {"[2, 4] / 2", "[1, 2]"},
        {"1.0 / 0", "+inf"},
        {"-1.0 / 0", "-inf"},
        {"1 - 2 - 3", "2"},
        {"math.sin [0, 0]", "[0, 0]"},
        {"!false", "true"},
        {"0.1 + 0", "0.1"},
        {"[[1, 2], [3]] + [[1, 1], [1]]", "[[2, 3], [4]]"},
        {"math.pi", "3.14159"},
        {"-7 / 2", "-3"},
    };
    for (const auto& [text, result] : cases) {
        EXPECT_EQ(Eval(text), result) << text;
        EXPECT_TRUE(warnings.empty()) << text << ": " << (warnings.empty() ? "" : warnings[0]);
    }
    const std::pair<const char*, const char*> failures[] = {
        {"[1, 2] + [3]", "Cannot add lists of different size"},
        {"[1] + 2", "Cannot add list and no-list"},
        {"2 / [1, 2]", "Cannot divide an int to a non-number"},
        {"1 / 0", "Division by zero"},
        {"1 - true", "Cannot subtract an int to a non-number"},
        {"true + 1", "Failed: Add(true, 1)"},
        {"!1", "Not a bool"},
        {"2.0 * \"x\"", "Not a float"},
    };
    for (const auto& [text, message] : failures) {
        EXPECT_EQ(Eval(text), "") << text;
        EXPECT_TRUE(WarnedWith(message)) << text;
    }
}

TEST_F(ScriptTest, NamesResolveAfreshWhenBindingsChange) {
    // A name first found in the root is shadowed by a later local of the same name.
    EXPECT_EQ(Eval("shadow = 1; outer = (p)=>{ reader = { shadow }; r1 = reader; shadow = 2; "
                   "r2 = reader; [r1, r2] }; outer 0"),
              "[1, 2]");
    // The same expression evaluated in different closures finds each closure's own name.
    EXPECT_EQ(Eval("show = (v)=>{ { v } }; s1 = show 1; s2 = show 2; [s1, s2]"), "[1, 2]");
    // A removed name is gone, and a new one of the same name is found.
    EXPECT_EQ(Eval("gone = 3; readGone = { gone }; readGone"), "3");
    m_parser.GetRootClosure()->RemoveVariable("gone");
    Eval("readGone");
    EXPECT_TRUE(WarnedWith("gone not found in scope"));
    EXPECT_EQ(Eval("gone = 4; readGone"), "4");
}
