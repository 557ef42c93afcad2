#include "ScriptFixture.h"
#include "script/Expressions.h"

using Strings = std::vector<util::String>;

TEST_F(ScriptTest, EmptyTextsAndBareSemicolonsGiveVoid) {
    EXPECT_EQ(Eval(""), "");
    EXPECT_EQ(Eval(";"), "");
    EXPECT_TRUE(errors.empty());
    script::CodeBlockPtr block = m_parser.Parse(";;");  // one operator token: a call of ";;"
    ASSERT_TRUE(block);
    EXPECT_EQ(block->GetElements().size(), 1u);
    EXPECT_EQ(m_parser.Parse(";")->GetElements().size(), 0u);
    EXPECT_EQ(m_parser.Parse("; ;")->GetElements().size(), 0u);
}

TEST_F(ScriptTest, ListsAndBlocks) {
    EXPECT_EQ(Eval("[1, 2,]"), "[1, 2]");
    EXPECT_EQ(Eval("(1)"), "1");
    EXPECT_EQ(Eval("(1, 2)"), "[1, 2]");
    EXPECT_EQ(Eval("()"), "[]");
    EXPECT_EQ(Eval("[]"), "[]");
    EXPECT_EQ(Eval("[[1], [2, [3]]]"), "[[1], [2, [3]]]");
    // The comma ends an empty expression: one null item.
    ASSERT_TRUE(m_parser.Parse("[,]"));
    EXPECT_EQ(Eval("[,]"), "");
    EXPECT_TRUE(WarnedWith("Tried to dereference a NULL SharedPtr"));
    EXPECT_EQ(Code("[1, 2,]"), "[1, 2]");
    EXPECT_EQ(Code("(1, 2)"), "(1, 2)");
}

TEST_F(ScriptTest, FunctionsAndTheirParseErrors) {
    EXPECT_EQ(Eval("pf1 = (a)=>{a}; pf1 5"), "5");
    EXPECT_EQ(Eval("pf2 = {}; pf2"), "");
    EXPECT_EQ(Eval("(a) => 5"), "");
    EXPECT_EQ(errors, (Strings{"Parse error: Missing {",
                               "Tree evaluation error: Tried to dereference a NULL SharedPtr"}));
    Eval("(a, 1)=>{a}");
    EXPECT_EQ(errors.front(), "Parse error: Argument list must consist of Identifiers");
    Eval("(a, a)=>{a}");
    EXPECT_NE(errors.front().find("!HasVariable(var->GetName())"), util::String::npos);
    Eval("{ 1");
    EXPECT_EQ(errors.front(), "Parse error: Missing }");
}

TEST_F(ScriptTest, AssignmentParseErrors) {
    const std::pair<const char*, const char*> cases[] = {
        {"1 = 2", "Parse error: You can only assign to an identifier"},
        {"a b = 2", "Parse error: Bad placement of = (info: 2)"},
        {"a. = 2", "Parse error: General parse error"},
        {". a", "Parse error: General parse error"},
        {"x = \"=\";", "Parse error: Bad placement of = (info: ;)"},
        {"= 1", "Parse error: Bad placement of = (info: 1)"},
        {"a = 1 }", "Parse error: Unexpected token: }"},
        {"[1; 2]", "Parse error: Missing ]"},
        {"(1", "Parse error: Missing )"},
        {"a, b", "Parse error: Missing ;"},
        {"x = 99999999999", "Parse error: Bad lexical cast: \"99999999999\" is not a i"},
        {"x = 1.5e", "Parse error: Bad lexical cast: \"1.5e\" is not a d"},
        {"x = \"open", "Tokenizer error: Line 1: Unmatched quote (\")"},
        {"infix 2 up: _ ++ _ => math.add", "Parse error: Bad infix function"},
        {"infix 2 left _ ++ _ => math.add", "Parse error: Missing :"},
        {"infix 2 left: _ ++ _", "Parse error: Missing =>"},
    };
    for (const auto& [text, message] : cases) {
        Eval(text);
        ASSERT_FALSE(errors.empty()) << text << " gave no error";
        EXPECT_EQ(errors.front(), message) << text;
    }
    Eval("x = ;");
    ASSERT_FALSE(errors.empty());
    EXPECT_NE(errors.front().find("\"id && ex\""), util::String::npos);
}

TEST_F(ScriptTest, StrayCloserLoadsNothingAndReportsTwice) {
    EXPECT_EQ(Eval("stray = 1; }"), "");
    EXPECT_EQ(errors, (Strings{"Parse error: Unexpected token: }",
                               "Tree evaluation error: Tried to dereference a NULL SharedPtr"}));
    Eval("stray");
    EXPECT_NE(errors.empty() ? util::String() : errors.front(), "1");
}

TEST_F(ScriptTest, RowsWithoutInfixAreCallChains) {
    // Every argument is a block, so a chain prints with parentheses.
    EXPECT_EQ(Code("f x y"), "f(x)(y)");
    EXPECT_EQ(Code("f (1, 2)"), "f(1, 2)");
    EXPECT_EQ(Code("f [1, 2]"), "f([1, 2])");
    EXPECT_EQ(Code("a;;b"), "a(;;)(b)");
    EXPECT_EQ(m_parser.Parse("a; ;b")->GetElements().size(), 2u);
    Eval("1 2");
    EXPECT_TRUE(WarnedWith("Function call applied to non-function: 1(2)"));
    // A function of no arguments is called by naming it; parentheses call its result.
    Eval("pf3 = { 1 }; pf3()");
    EXPECT_TRUE(WarnedWith("Function call applied to non-function: pf3()"));
}

TEST_F(ScriptTest, InfixFunctionsSplitAtTheLowestPriorityFromTheLeft) {
    EXPECT_EQ(Eval("1 - 2 - 3"), "2");  // 1 - (2 - 3)
    EXPECT_EQ(Eval("1 + !true"), "");
    EXPECT_TRUE(WarnedWith("Cannot add an int to a non-number"));
    EXPECT_EQ(Eval("!true"), "false");
    EXPECT_EQ(Eval("(1 + 2) * 3"), "9");
    Eval("1 + 2 * 3");
    EXPECT_EQ(errors.front(), "Parse error: Multiple mathcing infix functions found");
    EXPECT_EQ(Eval("infix 3 left: _ plus _ => math.add; 2 plus 3"), "5");
    EXPECT_EQ(Eval("infix 1 left: _ plus _ => math.multiply; 2 plus 3"), "6");  // lower wins
    // An argument place at the end takes an empty range: the call gets a null argument.
    Eval("1 +");
    EXPECT_TRUE(WarnedWith("Tried to dereference a NULL SharedPtr"));
    // Applies only where all its keywords stand in the row.
    EXPECT_EQ(Code("infix 4 left: _ between _ and _ => math.add; 1 between 2"),
              "infix 4 left: _ between _ and _ => math.add;\n;\n1(between)(2)");
    Eval("1 and 2 between 3");
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.front(), "Parse error: Could not find infix function keyword and");
}

TEST_F(ScriptTest, InfixDeclaredInsideAFunctionStaysThere) {
    EXPECT_EQ(Eval("pf4 = { infix 3 left: _ times _ => math.multiply; 4 times 5 }; pf4"), "20");
    Eval("4 times 5");
    EXPECT_TRUE(WarnedWith("Function call applied to non-function: 4(times)"));
}

TEST_F(ScriptTest, DeclaringABuiltinAgainMakesItAmbiguous) {
    EXPECT_EXIT(
        {
            script::Parser& parser = script::Parser::Get();
            std::vector<util::String> messages;
            parser.SetErrorHandler([&](const util::String& m) { messages.push_back(m); });
            parser.Execute("infix 2 left: _ + _ => math.add");
            parser.Execute("1 + 1");
            std::exit(!messages.empty() &&
                              messages[0] == "Parse error: Multiple mathcing infix functions found"
                          ? 0
                          : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(ScriptTest, ToCodeRoundTrips) {
    const char* texts[] = {
        "Scene.addBox {size = [1.0, 2.0]; density = 2.0}",
        "x = 1;\ny = \"a\\nb\\t\\\"q\\\"\";\nz = [1, 2.5, [true, false]]",
        "f = (a, b)=>{\n    c = a + b;\n    c * 2\n}",
        "g = {\n    h = {\n        1;\n        2\n    };\n    h\n}",
        "infix 3 left: _ plus _ => math.add;\n",
        "a.b.c = -inf",
        "v = +inf",
        "n = !true",
        "q = 0.1",
        "s = f(1, 2) x",
    };
    for (const char* text : texts) {
        const util::String first = Code(text);
        const util::String second = Code(first);
        EXPECT_EQ(first, second) << text;
        EXPECT_EQ(Code(second), second) << text;
    }
    // A double that prints with an exponent gets ".0" all the same; that text does not read
    // back as one number.
    EXPECT_EQ(Code("w = 100000000000000000000.0"), "w = 1e+20.0");
    EXPECT_EQ(Code("x = 2."), "<parse failed>");
    EXPECT_EQ(Code("n = !true"), "n =  ! true");
    EXPECT_EQ(Code("f = (a, b)=>{ c = a + b; c * 2 }"),
              "f = (a, b)=>{\n    c = a + b;\n    c * 2\n}");
}
