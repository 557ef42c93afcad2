#include "script/Expressions.h"

#include <gtest/gtest.h>

#include <limits>

#include "../util/LogCapture.h"
#include "TreeBuilders.h"
#include "script/Exceptions.h"
#include "util/Exception.h"

namespace {

using namespace trees;

// An intrinsic that adds two ints, as the body of infix functions.
ObjectPtr AddInts() {
    return ObjectPtr(new IntrinsicCmd2([](ObjectPtr a, ObjectPtr b) {
        return ObjectPtr(new Value<int>(ValueOf<int>(a) + ValueOf<int>(b)));
    }));
}

class ExpressionTest : public RootTest {};

TEST(LiteralTest, EvaluatesToAValueOfItsType) {
    EXPECT_EQ(ValueOf<int>(Int(-5)->Evaluate(nullptr)), -5);
    EXPECT_EQ(ValueOf<double>(Dbl(2.5)->Evaluate(nullptr)), 2.5);
    EXPECT_EQ(ValueOf<bool>(Bool(true)->Evaluate(nullptr)), true);
    EXPECT_EQ(ValueOf<util::String>(Str("x")->Evaluate(nullptr)), "x");
    // Each evaluation makes a new object.
    const ExpressionPtr literal = Int(1);
    EXPECT_NE(literal->Evaluate(nullptr), literal->Evaluate(nullptr));
}

TEST(LiteralTest, PrintsNumbersAndBools) {
    EXPECT_EQ(Int(-42)->ToCode(), "-42");
    EXPECT_EQ(Bool(true)->ToCode(), "true");
    EXPECT_EQ(Bool(false)->ToCode(), "false");
    EXPECT_EQ(Dbl(2.0)->ToCode(), "2.0");
    EXPECT_EQ(Dbl(-3.0)->ToCode(), "-3.0");
    EXPECT_EQ(Dbl(0.5)->ToCode(), "0.5");
    EXPECT_EQ(Dbl(1.0 / 3.0)->ToCode(), "0.3333333333333333");
    // A float stored as a double shows all of its digits.
    EXPECT_EQ(Dbl(static_cast<double>(0.1f))->ToCode(), "0.1000000014901161");
    // Only a point is looked for, so an exponent gets ".0" behind it.
    EXPECT_EQ(Dbl(1e20)->ToCode(), "1e+20.0");
    EXPECT_EQ(Dbl(1.5e-7)->ToCode(), "1.5e-07");
    EXPECT_EQ(Dbl(std::numeric_limits<double>::infinity())->ToCode(), "+inf");
    EXPECT_EQ(Dbl(-std::numeric_limits<double>::infinity())->ToCode(), "-inf");
}

TEST(LiteralTest, PrintsStringsWithEscapesButBackslashesAsTheyAre) {
    EXPECT_EQ(Str("plain")->ToCode(), "\"plain\"");
    EXPECT_EQ(Str("")->ToCode(), "\"\"");
    EXPECT_EQ(Str("a\nb\tc\"d\"")->ToCode(), "\"a\\nb\\tc\\\"d\\\"\"");
    EXPECT_EQ(Str("C:\\dir")->ToCode(), "\"C:\\dir\"");
}

TEST_F(ExpressionTest, AssignmentStoresAndReturnsTheValue) {
    const ObjectPtr assigned = Eval(Assign(Id("x"), Int(1)));
    EXPECT_EQ(ValueOf<int>(assigned), 1);
    EXPECT_EQ(ValueOf<int>(Eval(Id("x"))), 1);
    EXPECT_EQ(root->GetValue("x"), assigned);
    EXPECT_FALSE(root->GetVariable("x")->IsConstant());
    // A second assignment replaces the value in the same variable.
    const VariablePtr variable = root->GetVariable("x");
    Eval(Assign(Id("x"), Str("two")));
    EXPECT_EQ(root->GetVariable("x"), variable);
    EXPECT_EQ(ValueOf<util::String>(Eval(Id("x"))), "two");
    EXPECT_EQ(Assign(Id("x"), Int(1))->ToCode(), "x = 1");
}

TEST_F(ExpressionTest, AssignmentNeedsTargetAndSource) {
    EXPECT_THROW(Assignment(nullptr, Int(1)), BadCoderException);
    const util::String message = ThrownBy([] { Assignment(Id("x"), nullptr); });
    EXPECT_NE(message.find("\"id && ex\""), util::String::npos) << message;
}

TEST_F(ExpressionTest, UnknownNamesAndNullValues) {
    EXPECT_EQ(ThrownBy([&] { Eval(Id("nothing")); }), "nothing not found in scope");
    root->AddVariable(VariablePtr(new Variable("empty", nullptr, false)));
    EXPECT_EQ(ThrownBy([&] { Eval(Id("empty")); }), "Cannot find identifier empty in [ROOT]");
}

TEST_F(ExpressionTest, IdentifierWithOwnerReadsAndWritesThatObject) {
    const ClassObjectPtr sim(new ClassObject());
    root->AddVariable("Sim", sim);
    Eval(Assign(Id(Id("Sim"), "g"), Dbl(9.5)));
    EXPECT_EQ(ValueOf<double>(sim->GetValue("g")), 9.5);
    EXPECT_FALSE(root->HasVariable("g"));
    EXPECT_EQ(ValueOf<double>(Eval(Id(Id("Sim"), "g"))), 9.5);
    // The name's search starts at the object and walks up from there.
    root->AddVariable("top", ValueToObject(3));
    EXPECT_EQ(ValueOf<int>(Eval(Id(Id("Sim"), "top"))), 3);
    EXPECT_EQ(Id(Id(Id("a"), "b"), "c")->ToCode(), "a.b.c");
    EXPECT_EQ(Id(Id("Sim"), "g")->GetOwner(root), sim);
    EXPECT_EQ(Id("g")->GetOwner(root), root);
}

TEST_F(ExpressionTest, OwnerThatIsNoObjectFailsTheOwnerAssertion) {
    Eval(Assign(Id("a"), Int(1)));
    try {
        Eval(Assign(Id(Id("a"), "b"), Int(1)));
        FAIL() << "no exception";
    } catch (const BadCoderException& e) {
        EXPECT_NE(util::String(e.what()).find("\"owner\""), util::String::npos) << e.what();
    }
}

TEST_F(ExpressionTest, AssignmentInAFunctionIsLocal) {
    Eval(Assign(Id("x"), Int(5)));
    Eval(Assign(Id("f"), Fn({}, {Assign(Id("x"), Int(1)), Id("x")})));
    // Naming a function of no arguments runs it.
    EXPECT_EQ(ValueOf<int>(Eval(Id("f"))), 1);
    EXPECT_EQ(ValueOf<int>(Eval(Id("x"))), 5);
    const FunctionPtr f = util::DynamicPointerCast<Function>(root->GetValue("f"));
    ASSERT_TRUE(f);
    EXPECT_EQ(ValueOf<int>(f->GetLastCallClosure()->GetValue("x")), 1);
    // Reading outer names works at any depth.
    Eval(Assign(Id("g"), Fn({}, {Id("x")})));
    EXPECT_EQ(ValueOf<int>(Eval(Id("g"))), 5);
}

TEST_F(ExpressionTest, ArgumentsAreConstant) {
    Eval(Assign(Id("f"), Fn({"a"}, {Assign(Id("a"), Int(2))})));
    test::LogCapture log;
    const ObjectPtr result = Eval(Call(Id("f"), {Int(1)}));
    EXPECT_TRUE(Is<ErrorObject>(result));
    EXPECT_TRUE(log.Contains("Cannot set constant variable a")) << log.Text();
}

TEST_F(ExpressionTest, AutomaticCallingAppliesToIdentifiersOnly) {
    Eval(Assign(Id("one"), Fn({}, {Int(1)})));
    // A declaration on the right is stored as it is, an identifier is called.
    EXPECT_TRUE(Is<Function>(root->GetValue("one")));
    Eval(Assign(Id("copy"), Id("one")));
    EXPECT_EQ(ValueOf<int>(root->GetValue("copy")), 1);
    // A function of arguments is not called by naming it.
    Eval(Assign(Id("id"), Fn({"a"}, {Id("a")})));
    EXPECT_TRUE(Is<Function>(Eval(Id("id"))));
    EXPECT_EQ(ValueOf<int>(Eval(Call(Id("id"), {Int(7)}))), 7);
}

TEST_F(ExpressionTest, CallsOfNonFunctions) {
    EXPECT_EQ(ThrownBy([&] { Eval(Call(Int(1), {Int(2)})); }),
              "Function call applied to non-function: 1(2)");
    // f() runs f by naming it, then calls what it returned.
    Eval(Assign(Id("f"), Fn({}, {Int(1)})));
    EXPECT_EQ(ThrownBy([&] { Eval(Call(Id("f"), {})); }),
              "Function call applied to non-function: f()");
}

TEST_F(ExpressionTest, FunctionCallPrintsItsTail) {
    EXPECT_EQ(Call(Id("f"), {Int(1), Str("a")})->ToCode(), "f(1, \"a\")");
    EXPECT_EQ(Call(Id(Id("Scene"), "addBox"), {Fn({}, {Assign(Id("density"), Dbl(2))})})->ToCode(),
              "Scene.addBox({density = 2.0})");
    // A tail that does not print with a parenthesis is set off by a blank.
    EXPECT_EQ(ExpressionPtr(new FunctionCall(Id("f"), Stmts({Id("x")})))->ToCode(), "f x");
    EXPECT_THROW(FunctionCall(nullptr, Blk({})), BadCoderException);
    EXPECT_THROW(FunctionCall(Id("f"), nullptr), BadCoderException);
}

TEST_F(ExpressionTest, FunctionsCaptureTheirClosure) {
    // mk = (n)=>{ (m)=>{ n } }: the inner function keeps seeing the call's n.
    Eval(Assign(Id("mk"), Fn({"n"}, {Fn({"m"}, {Id("n")})})));
    Eval(Assign(Id("five"), Call(Id("mk"), {Int(5)})));
    Eval(Assign(Id("six"), Call(Id("mk"), {Int(6)})));
    EXPECT_EQ(ValueOf<int>(Eval(Call(Id("five"), {Int(0)}))), 5);
    EXPECT_EQ(ValueOf<int>(Eval(Call(Id("six"), {Int(0)}))), 6);
    // Each evaluation of a declaration is a new function.
    const ExpressionPtr declaration = Fn({}, {});
    EXPECT_NE(Eval(declaration), Eval(declaration));
    EXPECT_EQ(util::DynamicPointerCast<Function>(Eval(declaration))->GetClosure(), root);
    // A declaration that nobody holds is not shared with its function.
    FunctionDeclaration loose({"a"}, Stmts({Id("a")}));
    const ObjectPtr made = loose.Evaluate(root);
    EXPECT_EQ(made->ToString(), "(a)=>{a}");
}

TEST_F(ExpressionTest, BlocksListsAndStatements) {
    EXPECT_EQ(ValueOf<int>(Eval(Blk({Int(1)}))), 1);
    const ObjectPtr empty = Eval(Blk({}));
    ASSERT_TRUE(Is<List>(empty));
    EXPECT_TRUE(util::StaticPointerCast<List>(empty)->GetElements().empty());
    EXPECT_EQ(Eval(Blk({Int(1), Int(2)}))->ToString(), "[1, 2]");
    EXPECT_EQ(Eval(Lst({Int(1)}))->ToString(), "[1]");
    EXPECT_EQ(Eval(Lst({}))->ToString(), "[]");
    EXPECT_TRUE(Is<Void>(Eval(Stmts({}))));
    EXPECT_EQ(ValueOf<int>(Eval(Stmts({Int(1), Int(2)}))), 2);

    EXPECT_EQ(Blk({Int(1), Int(2)})->ToCode(), "(1, 2)");
    EXPECT_EQ(Blk({})->ToCode(), "()");
    EXPECT_EQ(Lst({Int(1), Str("a")})->ToCode(), "[1, \"a\"]");
    EXPECT_EQ(Stmts({Assign(Id("a"), Int(1)), Id("a")})->ToCode(), "a = 1;\na");
}

TEST_F(ExpressionTest, AFailingStatementDoesNotStopTheNext) {
    test::LogCapture log;
    const ObjectPtr result = Eval(Stmts({Id("bad"), Assign(Id("good"), Int(2))}));
    EXPECT_EQ(ValueOf<int>(result), 2);
    EXPECT_EQ(ValueOf<int>(root->GetValue("good")), 2);
    EXPECT_TRUE(log.Contains("-- Warning: Failed to evaluate: bad, bad not found in scope"))
        << log.Text();
    // A failure at the end makes the result an error.
    EXPECT_TRUE(Is<ErrorObject>(Eval(Stmts({Int(1), Id("bad")}))));
}

TEST_F(ExpressionTest, ListsAndBlocksFailAsAWhole) {
    EXPECT_EQ(ThrownBy([&] { Eval(Blk({Int(1), Id("bad")})); }), "bad not found in scope");
    EXPECT_EQ(ThrownBy([&] { Eval(Lst({Int(1), Id("bad")})); }), "bad not found in scope");
    test::LogCapture log;
    const ObjectPtr result =
        Eval(Stmts({Assign(Id("before"), Int(1)), Blk({Int(1), Id("bad")}), Int(3)}));
    EXPECT_EQ(ValueOf<int>(result), 3);
    EXPECT_TRUE(log.Contains("Failed to evaluate: (1, bad), bad not found in scope")) << log.Text();
    // State changed by earlier statements stays.
    EXPECT_TRUE(root->HasVariable("before"));
}

TEST_F(ExpressionTest, NullElements) {
    // "[,]" parses to a list of one null item.
    EXPECT_EQ(ThrownBy([&] { Eval(Lst({nullptr})); }), "Tried to dereference a NULL SharedPtr");
    test::LogCapture log;
    EXPECT_TRUE(Is<ErrorObject>(Eval(Stmts({nullptr}))));
    EXPECT_TRUE(log.Contains("Tried to dereference a NULL SharedPtr")) << log.Text();
    // Printing leaves a null element out.
    EXPECT_EQ(Lst({nullptr, Int(1)})->ToCode(), "[1]");
}

TEST_F(ExpressionTest, ElementsWithoutCodeLeaveNoSeparator) {
    EXPECT_EQ(Stmts({Stmts({}), Int(1), Stmts({})})->ToCode(), "1");
    EXPECT_EQ(Blk({Int(1), Stmts({}), Int(2)})->ToCode(), "(1, 2)");
    // Only one separator is cut at the end, even when an element ends with the same text.
    const InfixPtr plus(new Infix(2, false, {"", "+", ""}, Id("add")));
    EXPECT_EQ(Stmts({ExpressionPtr(new InfixDeclaration(plus))})->ToCode(),
              "infix 2 left: _ + _ => add;\n");
}

TEST_F(ExpressionTest, FunctionDeclarationsPrintWithIndentation) {
    EXPECT_EQ(Fn({}, {Assign(Id("x"), Int(1))})->ToCode(), "{x = 1}");
    EXPECT_EQ(Fn({}, {})->ToCode(), "{}");
    EXPECT_EQ(Fn({"a", "b"}, {Id("a")})->ToCode(), "(a, b)=>{a}");
    EXPECT_EQ(Fn({}, {Assign(Id("a"), Int(1)), Assign(Id("b"), Int(2))})->ToCode(),
              "{\n    a = 1;\n    b = 2\n}");
    // Nested functions indent cumulatively.
    const ExpressionPtr inner = Fn({}, {Assign(Id("a"), Int(1)), Assign(Id("b"), Int(2))});
    EXPECT_EQ(Fn({"x"}, {Assign(Id("f"), inner), Id("f")})->ToCode(),
              "(x)=>{\n    f = {\n        a = 1;\n        b = 2\n    };\n    f\n}");
    // A line feed inside a string prints as an escape and keeps the function on one line.
    EXPECT_EQ(Fn({}, {Assign(Id("s"), Str("a\nb"))})->ToCode(), "{s = \"a\\nb\"}");
}

TEST_F(ExpressionTest, InfixCallsPrintTheirPattern) {
    const InfixPtr plus(new Infix(2, false, {"", "+", ""}, Id("add")));
    const InfixPtr bang(new Infix(5, true, {"!", ""}, Id("not")));
    EXPECT_EQ(ExpressionPtr(new InfixFunctionCall(plus, {Id("a"), Id("b")}))->ToCode(), "a + b");
    EXPECT_EQ(ExpressionPtr(new InfixFunctionCall(bang, {Id("a")}))->ToCode(), " ! a");
    const util::String message = ThrownBy([&] { InfixFunctionCall(plus, {Id("a")}); });
    EXPECT_NE(message.find("\"m_infix->GetArgCount() == args.size()\""), util::String::npos)
        << message;
}

TEST_F(ExpressionTest, InfixCallsEvaluateTheBodyInTheCallersClosure) {
    const InfixPtr plus(new Infix(2, false, {"", "+", ""}, Id("add")));
    const ExpressionPtr call(new InfixFunctionCall(plus, {Int(2), Int(3)}));
    EXPECT_EQ(ThrownBy([&] { Eval(call); }), "add not found in scope");
    const ClosurePtr inner(new Closure("inner", root));
    inner->AddVariable("add", AddInts());
    EXPECT_EQ(ValueOf<int>(call->Evaluate(inner)), 5);
    // A missing argument is a null element of the call.
    const ExpressionPtr half(new InfixFunctionCall(plus, {Int(2), nullptr}));
    EXPECT_EQ(ThrownBy([&] { half->Evaluate(inner); }), "Tried to dereference a NULL SharedPtr");
}

TEST_F(ExpressionTest, InfixDeclarations) {
    const InfixPtr plus(new Infix(2, false, {"", "+", ""}, Id(Id("math"), "add")));
    const ExpressionPtr declaration(new InfixDeclaration(plus));
    EXPECT_EQ(declaration->ToCode(), "infix 2 left: _ + _ => math.add;\n");
    EXPECT_TRUE(Is<Void>(Eval(declaration)));
    ASSERT_EQ(root->GetInfixes().size(), 1u);
    EXPECT_EQ(root->GetInfixes()[0], plus);

    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(
        ExpressionPtr(new InfixDeclaration(InfixPtr(new Infix(inf, true, {"!", ""}, Id("f")))))
            ->ToCode(),
        "infix +inf right: ! _ => f;\n");
    EXPECT_EQ(ExpressionPtr(
                  new InfixDeclaration(InfixPtr(new Infix(-inf, false, {"", "and", ""}, Id("f")))))
                  ->ToCode(),
              "infix -inf left: _ and _ => f;\n");
    EXPECT_EQ(ExpressionPtr(new InfixDeclaration(
                                InfixPtr(new Infix(2.123456789, false, {"", "x", ""}, Id("f")))))
                  ->ToCode(),
              "infix 2.12346 left: _ x _ => f;\n");
}

TEST(InfixTest, CountsArgumentPlaces) {
    const InfixPtr infix(new Infix(3, true, {"", "plus", "", "times", ""}, Id("f")));
    EXPECT_EQ(infix->GetArgCount(), 3u);
    EXPECT_EQ(infix->GetPriority(), 3);
    EXPECT_TRUE(infix->IsRight());
    EXPECT_EQ(infix->GetWords().size(), 5u);
    EXPECT_EQ(infix->GetBody()->ToCode(), "f");
}

}  // namespace
