#include "script/ClassObject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "TreeBuilders.h"
#include "script/Exceptions.h"
#include "script/Reflected.h"
#include "script/Scope.h"
#include "util/Exception.h"

namespace {

using namespace trees;

ReflectedPtr MakeReflected(const util::String& name) {
    return ReflectedPtr(new Reflected(name));
}

// Whether the message names the failed assertion's expression.
bool Asserted(const util::String& message, const util::String& expression) {
    return message.find("\"" + expression + "\"") != util::String::npos;
}

// A reflected class with members to register as commands.
class Counter : public Reflected {
public:
    Counter() : Reflected("Counter") {
        AddMemberCmd("inc", &Counter::Inc);
        AddMemberCmd("count", &Counter::Count);
        AddMemberCmd("peek", &Counter::Peek);
        AddMemberCmd("self", &Counter::Self);
        AddMemberCmd("touch", &Counter::Touch);
    }
    void Inc() { ++count; }
    int Count() { return count; }
    util::String Peek() const { return "peeked"; }
    ObjectPtr Self() { return ObjectPtr(this); }
    void Touch() const { ++touched; }

    int count = 0;
    mutable int touched = 0;
};

class Other : public Reflected {
public:
    Other() : Reflected("Other") {}
    void RegisterForeign() { AddMemberCmd("inc", &Counter::Inc); }
};

TEST(VariableTest, OwnerRules) {
    const ClassObjectPtr a(new ClassObject());
    const ClassObjectPtr b(new ClassObject());
    const ObjectPtr value = ValueToObject(1);
    value->SetOwner(a);
    // A new variable takes over the value's present owner.
    const VariablePtr variable(new Variable("v", value, false));
    EXPECT_EQ(variable->GetOwner().Get(), a.Get());
    EXPECT_EQ(variable->GetName(), "v");
    EXPECT_FALSE(variable->IsConstant());
    // Its owner is passed on to the value.
    variable->SetOwner(b);
    EXPECT_EQ(value->GetOwner().Get(), b.Get());
    // A replaced value loses its owner only if it was the variable's.
    const ObjectPtr second = ValueToObject(2);
    variable->SetValue(second);
    EXPECT_FALSE(value->GetOwner().Get());
    EXPECT_EQ(second->GetOwner().Get(), b.Get());
    second->SetOwner(a);
    variable->SetValue(ValueToObject(3));
    EXPECT_EQ(second->GetOwner().Get(), a.Get());
    EXPECT_EQ(ValueOf<int>(variable->GetValue()), 3);
}

TEST(ClassObjectTest, VariablesAreKeptInByteOrder) {
    const ClassObjectPtr object(new ClassObject());
    object->AddVariable("b", ValueToObject(2));
    object->AddVariable("a", ValueToObject(1));
    object->AddVariable("Z", ValueToObject(3));
    EXPECT_TRUE(object->HasVariable("a"));
    EXPECT_FALSE(object->HasVariable("A"));
    EXPECT_EQ(ValueOf<int>(object->GetValue("b")), 2);
    EXPECT_FALSE(object->GetValue("c"));
    EXPECT_FALSE(object->GetVariable("c"));
    std::vector<util::String> names;
    for (const VariablePtr& variable : object->GetVariables()) {
        names.push_back(variable->GetName());
        EXPECT_EQ(variable->GetOwner().Get(), object.Get());
        EXPECT_EQ(variable->GetValue()->GetOwner().Get(), object.Get());
    }
    EXPECT_EQ(names, (std::vector<util::String>{"Z", "a", "b"}));
    EXPECT_EQ(object->ToString(), "ClassObject");

    const util::String message = ThrownBy([&] { object->AddVariable("a", ValueToObject(0)); });
    EXPECT_TRUE(Asserted(message, "!HasVariable(var->GetName())")) << message;
    EXPECT_EQ(ValueOf<int>(object->GetValue("a")), 1);

    const VariablePtr a = object->GetVariable("a");
    object->RemoveVariable("a");
    EXPECT_FALSE(object->HasVariable("a"));
    EXPECT_FALSE(a->GetOwner().Get());
    EXPECT_FALSE(a->GetValue()->GetOwner().Get());
    object->RemoveVariable("nothing");
}

TEST(ClassObjectTest, FindVariableGivesTheFirstInMapOrder) {
    const ClassObjectPtr object(new ClassObject());
    const ObjectPtr shared = ValueToObject(1);
    object->AddVariable("y", shared);
    object->AddVariable("x", shared);
    object->AddVariable("w", ValueToObject(1));
    EXPECT_EQ(object->FindVariable(shared)->GetName(), "x");
    EXPECT_FALSE(object->FindVariable(ValueToObject(1)));
}

TEST(ClassObjectTest, LookupWalksUpTheOwners) {
    const ClassObjectPtr top(new ClassObject());
    const ClassObjectPtr middle(new ClassObject());
    const ClassObjectPtr bottom(new ClassObject());
    top->AddVariable("middle", middle);
    middle->AddVariable("bottom", bottom);
    top->AddVariable("name", ValueToObject("top"));
    middle->AddVariable("name", ValueToObject("middle"));
    top->AddVariable("deep", ValueToObject(1));
    EXPECT_EQ(ValueOf<util::String>(bottom->LookupValue("name")), "middle");
    EXPECT_EQ(ValueOf<int>(bottom->LookupValue("deep")), 1);
    EXPECT_EQ(bottom->LookupVariable("deep"), top->GetVariable("deep"));
    EXPECT_EQ(ThrownBy([&] { bottom->LookupVariable("none"); }), "none not found in scope");
    EXPECT_THROW(bottom->LookupVariable("none"), ScriptException);
}

TEST(ClassObjectTest, LookupEndsAtAnExpiredOwner) {
    const ClassObjectPtr child(new ClassObject());
    {
        const ClassObjectPtr holder(new ClassObject());
        holder->AddVariable("child", child);
        holder->AddVariable("up", ValueToObject(1));
        EXPECT_EQ(ValueOf<int>(child->LookupValue("up")), 1);
    }
    EXPECT_FALSE(child->GetOwner().Get());
    EXPECT_EQ(ThrownBy([&] { child->LookupValue("up"); }), "up not found in scope");
}

TEST(ClassObjectTest, KeepsItsPlaceInTheTree) {
    const ClassObjectPtr home(new ClassObject());
    const ClassObjectPtr elsewhere(new ClassObject());
    const ClassObjectPtr object(new ClassObject());
    home->AddVariable("object", object);
    // A second variable elsewhere refers to it without moving it.
    elsewhere->AddVariable("alias", object);
    EXPECT_EQ(object->GetOwner().Get(), home.Get());
    EXPECT_EQ(object->GetIdentifier()->ToCode(), "object");
    // An owner below itself would make lookup endless.
    const ClassObjectPtr loose(new ClassObject());
    const ClassObjectPtr inner(new ClassObject());
    loose->AddVariable("inner", inner);
    inner->AddVariable("outer", loose);
    EXPECT_FALSE(loose->GetOwner().Get());
    loose->AddVariable("self", loose);
    EXPECT_FALSE(loose->GetOwner().Get());
    EXPECT_EQ(ThrownBy([&] { inner->LookupVariable("none"); }), "none not found in scope");
    // Cleared, it may move.
    home->RemoveVariable("object");
    elsewhere->RemoveVariable("alias");
    elsewhere->AddVariable("object", object);
    EXPECT_EQ(object->GetOwner().Get(), elsewhere.Get());
    inner->RemoveVariable("outer");
    loose->RemoveVariable("self");
}

TEST(ReflectedTest, ChildrenGetFreeNames) {
    const ReflectedPtr holder = MakeReflected("Holder");
    const ReflectedPtr first = MakeReflected("Foo");
    const ReflectedPtr second = MakeReflected("Foo");
    const ReflectedPtr third = MakeReflected("Foo");
    holder->AddReflected(first);
    holder->AddReflected(second);
    holder->AddReflected(third);
    EXPECT_EQ(first->GetReflectedName(), "Foo");
    EXPECT_EQ(second->GetReflectedName(), "Foo_2");
    EXPECT_EQ(third->ToString(), "Foo_3");
    EXPECT_EQ(holder->GetValue("Foo_2"), second);
    EXPECT_TRUE(holder->GetVariable("Foo")->IsConstant());
    EXPECT_EQ(first->GetOwner().Get(), holder.Get());
    // A freed name is taken again.
    holder->RemoveVariable("Foo");
    EXPECT_FALSE(first->GetOwner().Get());
    const ReflectedPtr fourth = MakeReflected("Foo");
    holder->AddReflected(fourth);
    EXPECT_EQ(fourth->GetReflectedName(), "Foo");
}

TEST(ReflectedTest, AddingMovesTheChild) {
    const ReflectedPtr a = MakeReflected("A");
    const ReflectedPtr b = MakeReflected("B");
    const ReflectedPtr child = MakeReflected("Child");
    a->AddReflected(child);
    b->AddReflected(MakeReflected("Child"));
    b->AddReflected(child);
    EXPECT_FALSE(a->HasVariable("Child"));
    EXPECT_EQ(child->GetReflectedName(), "Child_2");
    EXPECT_EQ(child->GetOwner().Get(), b.Get());
}

TEST(ReflectedTest, RenamingOnlyOutOfTheTree) {
    const ReflectedPtr holder = MakeReflected("Holder");
    const ReflectedPtr child = MakeReflected("Child");
    child->SetReflectedName("Renamed");
    EXPECT_EQ(child->GetReflectedName(), "Renamed");
    holder->AddReflected(child);
    const util::String message = ThrownBy([&] { child->SetReflectedName("Again"); });
    EXPECT_TRUE(Asserted(message, "!GetOwner()")) << message;
    EXPECT_EQ(child->GetReflectedName(), "Renamed");
}

TEST(ReflectedTest, IsTrackedWhileAlive) {
    Reflected* raw = nullptr;
    {
        const ReflectedPtr object = MakeReflected("Tracked");
        raw = object.Get();
        const auto all = util::ClassTracker<Reflected>::Snapshot();
        EXPECT_NE(std::find(all.begin(), all.end(), raw), all.end());
    }
    const auto all = util::ClassTracker<Reflected>::Snapshot();
    EXPECT_EQ(std::find(all.begin(), all.end(), raw), all.end());
}

TEST(ReflectedTest, MemberCommands) {
    const util::SharedPtr<Counter> counter(new Counter());
    const ObjectPtr inc = counter->GetValue("inc");
    ASSERT_TRUE(Is<IntrinsicCmd>(inc));
    EXPECT_TRUE(counter->GetVariable("inc")->IsConstant());
    EXPECT_TRUE(Is<Void>(CallIfNoArgs(inc)));
    CallIfNoArgs(inc);
    EXPECT_EQ(counter->count, 2);
    EXPECT_EQ(ValueOf<int>(CallIfNoArgs(counter->GetValue("count"))), 2);
    EXPECT_EQ(ValueOf<util::String>(CallIfNoArgs(counter->GetValue("peek"))), "peeked");
    EXPECT_EQ(CallIfNoArgs(counter->GetValue("self")), counter);
    EXPECT_TRUE(Is<Void>(CallIfNoArgs(counter->GetValue("touch"))));
    EXPECT_EQ(counter->touched, 1);

    const util::SharedPtr<Other> other(new Other());
    const util::String message = ThrownBy([&] { other->RegisterForeign(); });
    EXPECT_TRUE(Asserted(message, "ptr")) << message;
}

TEST(ReflectedTest, Commands) {
    const ReflectedPtr object = MakeReflected("Object");
    int calls = 0;
    ObjectPtr seen;
    object->AddCommand("zero", [&calls] { ++calls; });
    object->AddCommand("value", [] { return ValueToObject(1); });
    object->AddCommand("one", [&seen](ObjectPtr a) { seen = a; });
    object->AddCommand("echo", std::function<ObjectPtr(ObjectPtr)>([](ObjectPtr a) { return a; }));
    object->AddCommand("two", [](ObjectPtr a, const ObjectPtr& b) {
        return ValueToObject(ValueOf<int>(a) * ValueOf<int>(b));
    });
    object->AddCommand("pair", [&seen](ObjectPtr, ObjectPtr b) { seen = b; });

    EXPECT_TRUE(Is<IntrinsicCmd>(object->GetValue("zero")));
    EXPECT_TRUE(Is<IntrinsicCmd1>(object->GetValue("one")));
    EXPECT_TRUE(Is<IntrinsicCmd2>(object->GetValue("two")));
    EXPECT_TRUE(object->GetVariable("two")->IsConstant());

    EXPECT_TRUE(Is<Void>(CallIfNoArgs(object->GetValue("zero"))));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(ValueOf<int>(CallIfNoArgs(object->GetValue("value"))), 1);
    const auto call = [&](const char* name, ObjectList args) {
        return util::StaticPointerCast<AbstractFunction>(object->GetValue(name))->Call(args);
    };
    const ObjectPtr argument = ValueToObject(4);
    EXPECT_TRUE(Is<Void>(call("one", {argument})));
    EXPECT_EQ(seen, argument);
    EXPECT_EQ(call("echo", {argument}), argument);
    EXPECT_EQ(ValueOf<int>(call("two", {ValueToObject(3), argument})), 12);
    EXPECT_TRUE(Is<Void>(call("pair", {ValueToObject(0), ValueToObject(5)})));
    EXPECT_EQ(ValueOf<int>(seen), 5);
}

class ReflectedRootTest : public RootTest {};

TEST_F(ReflectedRootTest, CommandsAndChildrenCannotBeAssigned) {
    root->AddReflected(MakeReflected("Sim"));
    EXPECT_EQ(ThrownBy([&] { Eval(Assign(Id("Sim"), Int(1))); }),
              "Cannot set constant variable Sim");
    EXPECT_THROW(Eval(Assign(Id("Sim"), Int(1))), ScriptException);
}

TEST(ReflectedTest, Constants) {
    const ReflectedPtr object = MakeReflected("Object");
    object->SetConstant("version", util::String("1.0"));
    object->SetConstant("ratio", 0.5f);
    EXPECT_TRUE(object->GetVariable("version")->IsConstant());
    EXPECT_EQ(ValueOf<util::String>(object->GetValue("version")), "1.0");
    EXPECT_EQ(ValueOf<double>(object->GetValue("ratio")), 0.5);
    const VariablePtr ratio = object->GetVariable("ratio");
    object->SetConstant("ratio", 2.0f);
    EXPECT_EQ(object->GetVariable("ratio"), ratio);
    EXPECT_EQ(ValueOf<double>(ratio->GetValue()), 2.0);
}

TEST(ReflectedTest, IdentifiersArePaths) {
    const ClosurePtr root(new Closure("[ROOT]", nullptr));
    const ReflectedPtr sim = MakeReflected("Sim");
    const ReflectedPtr child = MakeReflected("child");
    root->AddReflected(sim);
    sim->AddReflected(child);
    EXPECT_FALSE(root->GetIdentifier());
    EXPECT_EQ(sim->GetIdentifier()->ToCode(), "Sim");
    EXPECT_EQ(child->GetIdentifier()->ToCode(), "Sim.child");
    // An object held twice in its owner is known by the first name in map order.
    sim->AddVariable("a_alias", child);
    EXPECT_EQ(child->GetIdentifier()->ToCode(), "Sim.a_alias");
    // The path evaluates back to the object.
    EXPECT_EQ(child->GetIdentifier()->Evaluate(root), child);
}

TEST(ReflectedTest, ToExpressionFlattensNestedObjects) {
    const ClosurePtr root(new Closure("[ROOT]", nullptr));
    const ReflectedPtr sim = MakeReflected("Sim");
    const ReflectedPtr sub = MakeReflected("sub");
    const ReflectedPtr mathObject = MakeReflected("math");
    root->AddReflected(sim);
    root->AddReflected(mathObject);
    sim->AddReflected(sub);
    root->AddVariable("z", ValueToObject(2.0));
    sim->AddVariable("gravity", ValueToObject(math::Vec2(0, -9.5f)));
    sim->AddVariable("Name", ValueToObject("world"));
    sub->AddVariable("on", ValueToObject(true));
    sim->AddCommand("reset", [] {});
    mathObject->AddCommand("sin", [](ObjectPtr a) { return a; });
    // Capitals come first; commands and an object of commands only give nothing.
    EXPECT_EQ(root->ToExpression()->ToCode(),
              "Sim.Name = \"world\";\n"
              "Sim.gravity = [0.0, -9.5];\n"
              "Sim.sub.on = true;\n"
              "z = 2.0");
    EXPECT_EQ(sim->GetVariable("gravity")->ToExpression()->ToCode(), "Sim.gravity = [0.0, -9.5]");
    EXPECT_FALSE(sim->GetVariable("reset")->ToExpression());
}

TEST(ClosureTest, NamesAndParents) {
    const ClosurePtr parent(new Closure("parent", nullptr));
    const ClosurePtr closure(new Closure("child", parent));
    EXPECT_EQ(closure->GetReflectedName(), "child");
    EXPECT_EQ(closure->GetOwner().Get(), parent.Get());
    parent->AddVariable("x", ValueToObject(1));
    EXPECT_EQ(ValueOf<int>(closure->LookupValue("x")), 1);
    // A call closure prints its function only when asked.
    const ClosurePtr call = Closure::MakeCallClosure(parent, Fn({"a"}, {Id("a")}));
    EXPECT_EQ(call->GetOwner().Get(), parent.Get());
    EXPECT_EQ(call->ToString(), "[function closure: (a)=>{a}]");
    EXPECT_EQ(call->GetReflectedName(), "[function closure: (a)=>{a}]");
}

class GetInfixTest : public testing::Test {
protected:
    InfixPtr Make(double priority, std::vector<util::String> words) {
        return InfixPtr(new Infix(priority, false, std::move(words), Id("f")));
    }
    static util::StringSet Words(std::initializer_list<const char*> words) {
        util::StringSet set;
        for (const char* word : words) {
            set.insert(word);
        }
        return set;
    }
};

TEST_F(GetInfixTest, LowestPriorityWhoseKeywordsAreAllThere) {
    const ScopePtr scope(new Scope("ROOT_SCOPE"));
    const InfixPtr plus = Make(2, {"", "+", ""});
    const InfixPtr times = Make(3, {"", "*", ""});
    const InfixPtr between = Make(1, {"", "from", "", "to", ""});
    scope->AddInfix(plus);
    scope->AddInfix(times);
    scope->AddInfix(between);
    EXPECT_EQ(scope->GetInfixes().size(), 3u);
    EXPECT_FALSE(scope->GetInfix(Words({"a", "b"})));
    EXPECT_EQ(scope->GetInfix(Words({"a", "*", "b"})), times);
    EXPECT_EQ(scope->GetInfix(Words({"a", "*", "b", "+"})), plus);
    EXPECT_EQ(scope->GetInfix(Words({"x", "from", "+", "*"})), plus);
    EXPECT_EQ(scope->GetInfix(Words({"x", "from", "to", "+"})), between);
    EXPECT_FALSE(scope->GetInfix(Words({})));
}

TEST_F(GetInfixTest, EqualCandidatesInOneScopeAreAmbiguous) {
    const ScopePtr scope(new Scope("ROOT_SCOPE"));
    scope->AddInfix(Make(2, {"", "+", ""}));
    scope->AddInfix(Make(2, {"", "-", ""}));
    EXPECT_EQ(ThrownBy([&] {
                  scope->GetInfix(Words({"+", "-"}));
              }),
              "Multiple mathcing infix functions found");
    EXPECT_THROW(scope->GetInfix(Words({"+", "-"})), ParseException);
    // A lower one still wins over the tie.
    const InfixPtr low = Make(1, {"", "-", ""});
    scope->AddInfix(low);
    EXPECT_EQ(scope->GetInfix(Words({"+", "-"})), low);
}

TEST_F(GetInfixTest, InnerScopesHideOuterOnesAtEqualPriority) {
    const ScopePtr outer(new Scope("ROOT_SCOPE"));
    const ScopePtr inner(new Scope("[function scope]", outer));
    const InfixPtr outerPlus = Make(2, {"", "+", ""});
    const InfixPtr innerPlus = Make(2, {"", "+", ""});
    const InfixPtr outerLow = Make(1, {"", "and", ""});
    const InfixPtr innerHigh = Make(4, {"", "*", ""});
    outer->AddInfix(outerPlus);
    outer->AddInfix(outerLow);
    inner->AddInfix(innerPlus);
    inner->AddInfix(innerHigh);
    EXPECT_EQ(inner->GetInfix(Words({"+"})), innerPlus);
    EXPECT_EQ(outer->GetInfix(Words({"+"})), outerPlus);
    // The lowest number of all scopes wins.
    EXPECT_EQ(inner->GetInfix(Words({"*", "and"})), outerLow);
    EXPECT_EQ(inner->GetInfix(Words({"*", "+"})), innerPlus);
    EXPECT_EQ(inner->GetInfix(Words({"*"})), innerHigh);
}

TEST_F(GetInfixTest, PatternsWithoutKeywordsAndInfinitePriorities) {
    const ScopePtr scope(new Scope("ROOT_SCOPE"));
    const double inf = std::numeric_limits<double>::infinity();
    const InfixPtr any = Make(inf, {"", ""});
    scope->AddInfix(any);
    EXPECT_EQ(scope->GetInfix(Words({"a"})), any);
    EXPECT_EQ(scope->GetInfix(Words({})), any);
    const InfixPtr lowest = Make(-inf, {"", "or", ""});
    scope->AddInfix(lowest);
    EXPECT_EQ(scope->GetInfix(Words({"or"})), lowest);
}

TEST_F(GetInfixTest, OwnerOfAScopeMustBeAScope) {
    const ClassObjectPtr notAScope(new ClassObject());
    const ScopePtr scope(new Scope("inner"));
    notAScope->AddVariable("scope", scope);
    const util::String message = ThrownBy([&] { scope->GetInfix(Words({"+"})); });
    EXPECT_TRUE(Asserted(message, "superscope")) << message;
}

}  // namespace
