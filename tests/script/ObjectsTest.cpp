#include "script/Objects.h"

#include <gtest/gtest.h>

#include <limits>

#include "TreeBuilders.h"
#include "util/Exception.h"

namespace {

using namespace trees;

class ObjectsTest : public RootTest {};

ListPtr MakeList(ObjectList elements) {
    return ListPtr(new List(std::move(elements)));
}

TEST(ValueTest, PrintsForPeopleAndForCode) {
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        ObjectPtr value;
        const char* text;
        const char* code;
    } cases[] = {
        {ValueToObject(true), "true", "true"},
        {ValueToObject(-3), "-3", "-3"},
        {ValueToObject(2.0), "2", "2.0"},
        {ValueToObject(0.1), "0.1", "0.1"},
        {ValueToObject(1.0 / 3.0), "0.333333", "0.3333333333333333"},
        {ValueToObject(1e20), "1e+20", "1e+20.0"},
        {ValueToObject(inf), "+inf", "+inf"},
        {ValueToObject(-inf), "-inf", "-inf"},
        {ValueToObject("say \"hi\"\n"), "say \"hi\"\n", "\"say \\\"hi\\\"\\n\""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.value->ToString(), c.text);
        ASSERT_TRUE(c.value->ToExpression()) << c.text;
        EXPECT_EQ(c.value->ToExpression()->ToCode(), c.code);
    }
}

TEST(BadObjectTest, PrintAndCannotBeWritten) {
    EXPECT_EQ(Void().ToString(), "void");
    EXPECT_EQ(Unbound().ToString(), "unbound");
    EXPECT_EQ(ErrorObject().ToString(), "error");
    EXPECT_FALSE(Void().ToExpression());
    EXPECT_FALSE(Unbound().ToExpression());
    EXPECT_FALSE(ErrorObject().ToExpression());
}

TEST(ListTest, IsAFunctionOfItsIndex) {
    const ListPtr list = MakeList({ValueToObject(10), ValueToObject(20), ValueToObject(30)});
    EXPECT_EQ(list->GetArgCount(), 1u);
    EXPECT_EQ(ValueOf<int>(list->Call({ValueToObject(0)})), 10);
    EXPECT_EQ(ValueOf<int>(list->Call({ValueToObject(2)})), 30);
    // The element itself, not a copy; further arguments are ignored.
    EXPECT_EQ(list->Call({ValueToObject(1), ValueToObject(7)}), list->GetElements()[1]);
    EXPECT_EQ(ThrownBy([&] { list->Call({ValueToObject(-1)}); }), "List index out of bounds");
    EXPECT_EQ(ThrownBy([&] { list->Call({ValueToObject(3)}); }), "List index out of bounds");
    EXPECT_EQ(ThrownBy([&] { list->Call({ValueToObject(1.0)}); }), "Not an integer");
    EXPECT_EQ(ThrownBy([&] { MakeList({})->Call({ValueToObject(0)}); }),
              "List index out of bounds");
}

TEST(ListTest, PrintsItsElements) {
    const ListPtr list = MakeList(
        {ValueToObject(1), ValueToObject("a"), MakeList({ValueToObject(2.5)}), ValueToObject(2.0)});
    EXPECT_EQ(list->ToString(), "[1, a, [2.5], 2]");
    EXPECT_EQ(list->ToExpression()->ToCode(), "[1, \"a\", [2.5], 2.0]");
    EXPECT_EQ(MakeList({})->ToString(), "[]");
    // A command cannot be written: its place in the expression is null, and printing
    // leaves it out.
    const ObjectPtr command(new IntrinsicCmd([] { return ObjectPtr(new Void()); }));
    const ExpressionPtr expression = MakeList({command, ValueToObject(1)})->ToExpression();
    const auto* declaration = dynamic_cast<const ListDeclaration*>(expression.Get());
    ASSERT_TRUE(declaration);
    ASSERT_EQ(declaration->GetElements().size(), 2u);
    EXPECT_FALSE(declaration->GetElements()[0]);
    EXPECT_EQ(expression->ToCode(), "[1]");
}

TEST(IntrinsicTest, CallsWithTheirFixedArity) {
    IntrinsicCmd zero([] { return ValueToObject(0); });
    IntrinsicCmd1 one([](ObjectPtr a) { return a; });
    IntrinsicCmd2 two(
        [](ObjectPtr a, ObjectPtr b) { return ValueToObject(ValueOf<int>(a) - ValueOf<int>(b)); });
    EXPECT_EQ(zero.GetArgCount(), 0u);
    EXPECT_EQ(one.GetArgCount(), 1u);
    EXPECT_EQ(two.GetArgCount(), 2u);
    EXPECT_EQ(ValueOf<int>(zero.Call({})), 0);
    EXPECT_EQ(ValueOf<int>(one.Call({ValueToObject(4)})), 4);
    EXPECT_EQ(ValueOf<int>(two.Call({ValueToObject(5), ValueToObject(3)})), 2);
    EXPECT_EQ(zero.ToString(), "intrinsic function");
    EXPECT_EQ(two.ToString(), "intrinsic function");
    EXPECT_FALSE(one.ToExpression());
    EXPECT_FALSE(one.GetClosure());
    // The wrong number of arguments is the caller's mistake.
    const util::String message = ThrownBy([&] { one.Call({}); });
    EXPECT_NE(message.find("\"args.size() == 1\""), util::String::npos) << message;
    EXPECT_THROW(zero.Call({ValueToObject(1)}), BadCoderException);
    EXPECT_THROW(two.Call({ValueToObject(1)}), BadCoderException);
}

TEST_F(ObjectsTest, FunctionCallsRunTheBodyInANewClosure) {
    Eval(Assign(Id("f"), Fn({"a", "b"}, {Assign(Id("local"), Id("b")), Id("a")})));
    const FunctionPtr f = util::DynamicPointerCast<Function>(root->GetValue("f"));
    ASSERT_TRUE(f);
    EXPECT_EQ(f->GetArgCount(), 2u);
    EXPECT_EQ(f->GetClosure(), root);
    EXPECT_FALSE(f->GetLastCallClosure());

    EXPECT_EQ(ValueOf<int>(f->Call({ValueToObject(1), ValueToObject(2)})), 1);
    const ClosurePtr first = f->GetLastCallClosure();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->GetOwner().Get(), root.Get());
    EXPECT_TRUE(first->GetVariable("a")->IsConstant());
    EXPECT_TRUE(first->GetVariable("b")->IsConstant());
    EXPECT_EQ(ValueOf<int>(first->GetValue("local")), 2);
    EXPECT_FALSE(root->HasVariable("local"));
    EXPECT_EQ(first->GetReflectedName(), "[function closure: (a, b)=>{\n    local = b;\n    a\n}]");
    EXPECT_EQ(first->ToString(), first->GetReflectedName());

    // The next call replaces the closure.
    f->Call({ValueToObject(3), ValueToObject(4)});
    EXPECT_NE(f->GetLastCallClosure(), first);
    EXPECT_EQ(ValueOf<int>(f->GetLastCallClosure()->GetValue("local")), 4);

    EXPECT_EQ(ThrownBy([&] { f->Call({ValueToObject(1)}); }),
              "Wrong number of arguments to function");
}

TEST_F(ObjectsTest, FunctionsPrintTheirSource) {
    Eval(Assign(Id("f"), Fn({}, {Assign(Id("a"), Int(1)), Assign(Id("b"), Dbl(2))})));
    const ObjectPtr f = root->GetValue("f");
    EXPECT_EQ(f->ToString(), "{\n    a = 1;\n    b = 2.0\n}");
    EXPECT_EQ(f->ToExpression()->ToCode(), f->ToString());
    // Made without a declaration, it makes one of its names and body.
    const Function made({"x"}, Stmts({Id("x")}), nullptr);
    EXPECT_EQ(made.ToString(), "(x)=>{x}");
    EXPECT_TRUE(dynamic_cast<const FunctionDeclaration*>(made.ToExpression().Get()));
}

TEST_F(ObjectsTest, RecursionKeepsEachCallsClosure) {
    // count = (n)=>{ inner = n; rec n; inner }, where rec calls count once with 0.
    root->AddVariable("rec", ObjectPtr(new IntrinsicCmd1([this](ObjectPtr n) -> ObjectPtr {
                          if (ValueOf<int>(n) > 0) {
                              return Eval(Call(Id("count"), {Int(0)}));
                          }
                          return ObjectPtr(new Void());
                      })));
    Eval(Assign(Id("count"), Fn({"n"}, {Assign(Id("inner"), Id("n")), Call(Id("rec"), {Id("n")}),
                                        Id("inner")})));
    EXPECT_EQ(ValueOf<int>(Eval(Call(Id("count"), {Int(5)}))), 5);
}

TEST_F(ObjectsTest, CallIfNoArgs) {
    int calls = 0;
    const ObjectPtr command(new IntrinsicCmd([&calls] {
        ++calls;
        return ValueToObject(9);
    }));
    EXPECT_EQ(ValueOf<int>(CallIfNoArgs(command)), 9);
    EXPECT_EQ(calls, 1);
    const ObjectPtr one(new IntrinsicCmd1([](ObjectPtr a) { return a; }));
    EXPECT_EQ(CallIfNoArgs(one), one);
    const ObjectPtr value = ValueToObject(1);
    EXPECT_EQ(CallIfNoArgs(value), value);
    EXPECT_FALSE(CallIfNoArgs(nullptr));
    // A list has one argument, so it stays a list.
    const ObjectPtr list = MakeList({});
    EXPECT_EQ(CallIfNoArgs(list), list);
}

}  // namespace
