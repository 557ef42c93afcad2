#include "script/Tokenizer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../util/LogCapture.h"
#include "script/Exceptions.h"

namespace {

using script::Token;
using script::TokenException;
using script::Tokenizer;
using script::TokenList;
using List = std::vector<std::string>;

// Each token as "<kind> <text>", so a whole list compares and prints in one line.
List Lex(const std::string& text) {
    static const char* const kNames[] = {"bool", "float", "int", "str", "sym"};
    List out;
    for (const Token& token : Tokenizer::Tokenize(text)) {
        out.push_back(std::string(kNames[token.kind]) + " " + token.text);
    }
    return out;
}

// The message of the TokenException the text raises, or a note that none came.
std::string ErrorOf(const std::string& text) {
    test::LogCapture quiet;
    try {
        Tokenizer::Tokenize(text);
    } catch (const TokenException& e) {
        return e.what();
    }
    return "<no exception>";
}

TEST(TokenizerToken, KindsHaveFixedValuesAndTokensCompareByValue) {
    EXPECT_EQ(0, Token::Bool);
    EXPECT_EQ(1, Token::Float);
    EXPECT_EQ(2, Token::Int);
    EXPECT_EQ(3, Token::String);
    EXPECT_EQ(4, Token::Symbol);
    EXPECT_EQ(1u, sizeof(Token::Kind));

    const Token a("x", Token::Symbol);
    EXPECT_EQ(a, Token("x", Token::Symbol));
    EXPECT_NE(a, Token("x", Token::String));
    EXPECT_NE(a, Token("y", Token::Symbol));

    const TokenList list = Tokenizer::Tokenize("x 1");
    ASSERT_EQ(2u, list.size());
    script::TokenIt it = list.begin();
    EXPECT_EQ(a, *it);
    EXPECT_EQ(Token("1", Token::Int), *++it);
}

TEST(TokenizerBasics, EmptyWhiteAndCommentOnlyTextsGiveNoTokens) {
    EXPECT_TRUE(Lex("").empty());
    EXPECT_TRUE(Lex(" \t\n\v\f\r  \n").empty());
    EXPECT_TRUE(Lex("// one\n// two\n   // three").empty());
    EXPECT_TRUE(Lex("//").empty());
    // A comment on the last line without a line feed simply ends the text.
    EXPECT_EQ((List{"sym x", "sym =", "int 1"}), Lex("x = 1 // trailing"));
    EXPECT_EQ((List{"sym a", "sym b"}), Lex("a// note\nb"));
}

TEST(TokenizerBasics, WordsAndBools) {
    EXPECT_EQ((List{"bool true", "bool false", "sym True", "sym FALSE", "sym truex", "sym _a1"}),
              Lex("true false True FALSE truex _a1"));
    EXPECT_EQ((List{"sym infix", "sym left", "sym right", "sym inf"}), Lex("infix left right inf"));
    // A word stops at the first character that is not a letter, digit or underscore.
    EXPECT_EQ((List{"sym a", "sym .", "sym b"}), Lex("a.b"));
}

TEST(TokenizerBasics, PunctuationIsAlwaysOneCharacter) {
    EXPECT_EQ((List{"sym {", "sym }", "sym (", "sym )", "sym [", "sym ]", "sym ,", "sym ,"}),
              Lex("{}()[],,"));
    EXPECT_EQ((List{"sym )", "sym =>", "sym {"}), Lex(")=>{"));
    EXPECT_EQ((List{"sym f", "sym (", "int 1", "sym ,", "str a", "sym )"}), Lex("f(1,\"a\")"));
}

TEST(TokenizerOperators, RunsAreGreedy) {
    EXPECT_EQ((List{"sym x", "sym =-", "sym y"}), Lex("x=-y"));
    EXPECT_EQ((List{"sym a", "sym ;;", "sym b"}), Lex("a;;b"));
    EXPECT_EQ((List{"sym a", "sym ;", "sym ;", "sym b"}), Lex("a; ;b"));
    EXPECT_EQ((List{"sym x", "sym +=", "str \"", "sym y"}), Lex("x += \"\\\"\" y"));
    // A run stops at a quote, punctuation, white space and identifier starts.
    EXPECT_EQ((List{"sym *", "str s", "sym +", "sym (", "sym <>", "sym z"}), Lex("*\"s\"+(<>z"));
}

TEST(TokenizerOperators, CommentsExistOnlyWhereATokenBegins) {
    EXPECT_EQ((List{"sym x", "sym =//", "sym note"}), Lex("x =// note"));
    EXPECT_EQ((List{"sym x", "sym /", "sym y"}), Lex("x / y"));
    EXPECT_EQ((List{"sym x"}), Lex("x //= y"));
    // The line feed after a comment still counts, so a later error reports the right line.
    EXPECT_EQ("Line 2: Unmatched quote (\")", ErrorOf("// \"not a string\n\"open"));
}

TEST(TokenizerOperators, HighBytesJoinOperatorRuns) {
    const std::string high = "\x80\xC3\xA9\xFF";
    EXPECT_EQ((List{"sym a", "sym =" + high, "sym b"}), Lex("a=" + high + "b"));
    EXPECT_EQ((List{"sym " + high}), Lex(high));
    // A high byte is no identifier character either, so it splits a word.
    EXPECT_EQ((List{"sym caf", "sym \xC3\xA9", "int 1"}), Lex("caf\xC3\xA9"
                                                              "1"));
    // Inside a string it is kept as it is.
    EXPECT_EQ((List{"str caf\xC3\xA9"}), Lex("\"caf\xC3\xA9\""));
}

TEST(TokenizerNumbers, IntsAndFloats) {
    EXPECT_EQ((List{"int 0", "int 42", "int 007", "float 3.25", "float .5", "float 10.0"}),
              Lex("0 42 007 3.25 .5 10.0"));
    EXPECT_EQ((List{"float -.5", "float +.5", "int -12", "int +3", "float -1.5"}),
              Lex("-.5 +.5 -12 +3 -1.5"));
    // A point not followed by a digit stays out of the number.
    EXPECT_EQ((List{"int 5", "sym ."}), Lex("5."));
    EXPECT_EQ((List{"int 5", "sym .", "sym x"}), Lex("5.x"));
    EXPECT_EQ((List{"int 1", "sym .", "float .5"}), Lex("1..5"));
    EXPECT_EQ((List{"sym a", "float .5"}), Lex("a.5"));
    EXPECT_EQ((List{"float 1.5", "float .5"}), Lex("1.5.5"));
}

TEST(TokenizerNumbers, ExponentsFollowOnlyAFraction) {
    EXPECT_EQ((List{"float 1.5e-3"}), Lex("1.5e-3"));
    EXPECT_EQ((List{"float 2.0E+10", "float 2.0e7"}), Lex("2.0E+10 2.0e7"));
    EXPECT_EQ((List{"int 1", "sym e5"}), Lex("1e5"));
    EXPECT_EQ((List{"int 5", "sym e3"}), Lex("5e3"));
    // Digits after the exponent are optional here; converting rejects these later.
    EXPECT_EQ((List{"float 1.5e"}), Lex("1.5e"));
    EXPECT_EQ((List{"float 1.5e+"}), Lex("1.5e+"));
    EXPECT_EQ((List{"float 1.5e", "sym x"}), Lex("1.5ex"));
    EXPECT_EQ((List{"float 1.5e-", "sym ;"}), Lex("1.5e-;"));
}

TEST(TokenizerNumbers, SignsInsideExpressions) {
    EXPECT_EQ((List{"sym x", "int -1"}), Lex("x-1"));
    EXPECT_EQ((List{"int 1", "int +2"}), Lex("1+2"));
    EXPECT_EQ((List{"sym x", "sym -", "int 1"}), Lex("x - 1"));
    EXPECT_EQ((List{"sym =", "int -5"}), Lex("=-5"));
    EXPECT_EQ((List{"sym x", "sym =", "float -.5"}), Lex("x=-.5"));
    EXPECT_EQ((List{"sym -", "sym x"}), Lex("-x"));
    EXPECT_EQ((List{"sym -", "sym ;"}), Lex("- ;"));
    EXPECT_EQ((List{"sym +-"}), Lex("+-"));
}

TEST(TokenizerNumbers, OnlyOneSignBelongsToANumber) {
    EXPECT_EQ((List{"int -", "int -5"}), Lex("--5"));
    EXPECT_EQ((List{"int +", "int -", "int +5"}), Lex("+-+5"));
    EXPECT_EQ((List{"sym =", "int -", "float -inf"}), Lex("=--inf"));
    // A long chain of signs is still split sign by sign.
    const TokenList list = Tokenizer::Tokenize(std::string(1000, '-') + "1");
    ASSERT_EQ(1000u, list.size());
    EXPECT_EQ(Token("-", Token::Int), list.front());
    EXPECT_EQ(Token("-1", Token::Int), list.back());
    // A chain that ends in no number is one operator run.
    EXPECT_EQ((List{"sym " + std::string(50, '-'), "sym x"}), Lex(std::string(50, '-') + "x"));
}

TEST(TokenizerNumbers, InfinityNeedsASign) {
    EXPECT_EQ((List{"float +Inf", "float -INF", "float +inf", "float -iNf"}),
              Lex("+Inf -INF +inf -iNf"));
    EXPECT_EQ((List{"sym inf", "sym Inf"}), Lex("inf Inf"));
    // The three letters are taken even when more letters follow.
    EXPECT_EQ((List{"float -inf", "sym inity"}), Lex("-infinity"));
    EXPECT_EQ((List{"sym x", "float -inf"}), Lex("x-inf"));
    EXPECT_EQ((List{"sym -", "sym in"}), Lex("-in"));
}

TEST(TokenizerStrings, LiteralsAndEscapes) {
    EXPECT_EQ((List{"str "}), Lex("\"\""));
    EXPECT_EQ((List{"str aqb"}), Lex("\"a\\qb\""));
    EXPECT_EQ((List{"str a\nb\tc"}), Lex("\"a\\nb\\tc\""));
    EXPECT_EQ((List{"str say \"hi\" \\ ok"}), Lex("\"say \\\"hi\\\" \\\\ ok\""));
    EXPECT_EQ((List{"str a  b // no comment"}), Lex("\"a  b // no comment\""));
    // Only n and t are escape letters.
    EXPECT_EQ((List{"str r0x"}), Lex("\"\\r\\0\\x\""));
    // Tabs and other white space inside are kept; strings follow other tokens directly.
    EXPECT_EQ((List{"sym x", "str \t\r", "sym y"}), Lex("x\"\t\r\"y"));
    // The string token's text is the value, not the source.
    const TokenList list = Tokenizer::Tokenize("\"a\\nb\"");
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ(Token("a\nb", Token::String), list[0]);
}

TEST(TokenizerStrings, EscapedLineFeedStaysInTheLiteralWithoutCountingALine) {
    EXPECT_EQ((List{"str a\nb", "sym c"}), Lex("\"a\\\nb\" c"));
    // The literal spans two source lines, yet the quote opened on the third reports line 2.
    EXPECT_EQ("Line 2: Unmatched quote (\")", ErrorOf("\"a\\\nb\"\n\"open"));
    EXPECT_EQ("Line 1: Newline in string literal", ErrorOf("\"a\\\nb\n\""));
}

TEST(TokenizerErrors, MessagesCarryTheLineWhereTheTokenBegan) {
    EXPECT_EQ("Line 1: Newline in string literal", ErrorOf("\"abc\ndef\""));
    EXPECT_EQ("Line 3: Newline in string literal", ErrorOf("a\n\nb \"x\n\""));
    EXPECT_EQ("Line 1: Bad \\-escape in string", ErrorOf("\"abc\\"));
    EXPECT_EQ("Line 2: Bad \\-escape in string", ErrorOf("x\n\"\\"));
    EXPECT_EQ("Line 1: Unmatched quote (\")", ErrorOf("\""));
    EXPECT_EQ("Line 1: Unmatched quote (\")", ErrorOf("\"abc"));
    EXPECT_EQ("Line 1: Unmatched quote (\")", ErrorOf("\"abc\\\""));
    // Opened on line 7 and running into the end, with escaped line feeds on the way.
    EXPECT_EQ("Line 7: Unmatched quote (\")", ErrorOf("1\n2\n3\n4\n5\n6\nx = \"open\\\n\\\nend"));
    EXPECT_EQ("Line 12: Newline in string literal", ErrorOf(std::string(11, '\n') + "\"x\n\""));
    // Carriage returns and other white space are no line feeds.
    EXPECT_EQ("Line 1: Unmatched quote (\")", ErrorOf("\r\r\v\f \""));
}

TEST(TokenizerErrors, ThrowsATokenExceptionThroughTheCommonPath) {
    test::LogCapture log;
    try {
        Tokenizer::Tokenize("ok\n\"bad");
        FAIL() << "no exception";
    } catch (const BadDataException& e) {
        EXPECT_NE(nullptr, dynamic_cast<const TokenException*>(&e));
        EXPECT_STREQ("Line 2: Unmatched quote (\")", e.what());
        EXPECT_NE(std::string::npos, e.Location().find("Tokenizer.cpp:"));
    }
    EXPECT_TRUE(log.Contains("Exception thrown: Line 2: Unmatched quote (\")")) << log.Text();
}

TEST(TokenizerMixed, AStatementAndAScene) {
    EXPECT_EQ((List{"sym set", "sym (", "str gravity", "sym ,", "float -9.81", "sym )", "sym ;",
                    "sym if", "bool true", "sym {", "sym x", "sym =", "int +2", "sym }"}),
              Lex("set(\"gravity\", -9.81);\nif true { x = +2 } // done\n"));
    EXPECT_EQ((List{"sym infix", "sym left", "int 6", "sym **", "sym (", "sym a", "sym ,", "sym b",
                    "sym )", "sym =>", "sym pow", "sym (", "sym a", "sym ,", "sym b", "sym )"}),
              Lex("infix left 6 ** (a, b) => pow(a, b)"));
}

TEST(TokenizerMixed, LargeTextKeepsEveryToken) {
    std::string text;
    for (int i = 0; i < 20000; ++i) {
        text += "obj_" + std::to_string(i) + ".pos = [1.5, -2] // c\n\"s\\n\" ";
    }
    const TokenList list = Tokenizer::Tokenize(text);
    ASSERT_EQ(20000u * 10u, list.size());
    EXPECT_EQ(Token("obj_19999", Token::Symbol), list[list.size() - 10]);
    EXPECT_EQ(Token("s\n", Token::String), list.back());
}

}  // namespace
