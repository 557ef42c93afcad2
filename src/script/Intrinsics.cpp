#include "script/Intrinsics.h"
#include "script/ObjectCast.h"

#include <cmath>
#include <functional>

#include "script/Closure.h"
#include "script/Exceptions.h"
#include "script/Expressions.h"
#include "script/Infix.h"
#include "script/Objects.h"
#include "script/Parser.h"
#include "script/ValueConversions.h"
#include "util/Exception.h"

namespace script {
namespace {

using Operation = ObjectPtr (*)(const ObjectPtr&, const ObjectPtr&);

template <class T>
const Value<T>* As(const ObjectPtr& object) {
    return AsValue<T>(object);
}

util::String Describe(const ObjectPtr& object) {
    return object ? object->ToString() : "null";
}

[[noreturn]] void Fail(const char* name, const ObjectPtr& a, const ObjectPtr& b) {
    VORRA_THROW(ScriptException,
                util::String("Failed: ") + name + "(" + Describe(a) + ", " + Describe(b) + ")");
}

// Numbers with promotion: int op int stays int, anything with a double is a double.
template <class IntOp, class FloatOp>
ObjectPtr NumFun(const ObjectPtr& a, const ObjectPtr& b, IntOp intFunction, FloatOp floatFunction,
                 const char* name) {
    if (const Value<Int>* left = As<Int>(a)) {
        if (const Value<Int>* right = As<Int>(b)) {
            return new Value<Int>(intFunction(left->GetValue(), right->GetValue()));
        }
        if (const Value<Float>* right = As<Float>(b)) {
            return new Value<Float>(
                floatFunction(static_cast<Float>(left->GetValue()), right->GetValue()));
        }
        VORRA_THROW(ScriptException, util::String("Cannot ") + name + " an int to a non-number");
    }
    if (const Value<Float>* left = As<Float>(a)) {
        return new Value<Float>(floatFunction(left->GetValue(), ObjectToValue<double>(b)));
    }
    return nullptr;
}

ObjectPtr MakeList(ObjectList&& elements) {
    return new List(std::move(elements));
}

// Element by element; nested lists recurse through the operation itself.
ObjectPtr ListRecurse(const ObjectPtr& a, const ObjectPtr& b, Operation operation,
                      const char* name) {
    const List* left = AsList(a);
    if (!left) {
        return nullptr;
    }
    const List* right = AsList(b);
    if (!right) {
        VORRA_THROW(ScriptException, util::String("Cannot ") + name + " list and no-list");
    }
    const ObjectList& l = left->GetElements();
    const ObjectList& r = right->GetElements();
    if (l.size() != r.size()) {
        VORRA_THROW(ScriptException, util::String("Cannot ") + name + " lists of different size");
    }
    ObjectList result;
    result.reserve(l.size());
    for (size_t i = 0; i < l.size(); ++i) {
        if (ObjectPtr element = operation(l[i], r[i])) {
            result.push_back(std::move(element));
        }
    }
    return MakeList(std::move(result));
}

// The scalar is always the operation's second argument, wherever it stood in the source.
ObjectPtr MapWithScalar(const List& list, const ObjectPtr& scalar, Operation operation) {
    ObjectList result;
    result.reserve(list.GetElements().size());
    for (const ObjectPtr& element : list.GetElements()) {
        if (ObjectPtr value = operation(element, scalar)) {
            result.push_back(std::move(value));
        }
    }
    return MakeList(std::move(result));
}

// Numbers first, then lists element by element.
template <class IntOp, class FloatOp>
ObjectPtr NumbersThenLists(const ObjectPtr& a, const ObjectPtr& b, IntOp intFunction,
                           FloatOp floatFunction, Operation operation, const char* name) {
    if (ObjectPtr number = NumFun(a, b, intFunction, floatFunction, name)) {
        return number;
    }
    return ListRecurse(a, b, operation, name);
}

// A one-argument function of doubles, applied through lists recursively.
ObjectPtr MapUnary(const ObjectPtr& argument, double (*function)(double)) {
    if (const List* list = AsList(argument)) {
        ObjectList result;
        for (const ObjectPtr& element : list->GetElements()) {
            if (ObjectPtr value = MapUnary(element, function)) {
                result.push_back(std::move(value));
            }
        }
        return MakeList(std::move(result));
    }
    return new Value<Float>(function(ObjectToValue<double>(argument)));
}

ExpressionPtr MathMember(const char* name) {
    return new Identifier(new Identifier(nullptr, "math"), name);
}

void AddBuiltinInfix(Parser& parser, double priority, bool right, std::vector<util::String> words,
                     const char* body) {
    parser.AddInfix(new Infix(priority, right, std::move(words), MathMember(body)));
}

}  // namespace

Int DivInt(Int a, Int b) {
    if (b == 0) {
        VORRA_THROW(ScriptException, "Division by zero");
    }
    return a / b;
}

ObjectPtr Add(const ObjectPtr& a, const ObjectPtr& b) {
    if (const Value<util::String>* text = As<util::String>(a)) {
        return new Value<util::String>(text->GetValue() + Describe(b));
    }
    if (const Value<util::String>* text = As<util::String>(b)) {
        return new Value<util::String>(Describe(a) + text->GetValue());
    }
    if (ObjectPtr result = NumbersThenLists(
            a, b, [](Int x, Int y) { return x + y; }, [](Float x, Float y) { return x + y; }, &Add,
            "add")) {
        return result;
    }
    Fail("Add", a, b);
}

ObjectPtr Subtract(const ObjectPtr& a, const ObjectPtr& b) {
    if (ObjectPtr result = NumbersThenLists(
            a, b, [](Int x, Int y) { return x - y; }, [](Float x, Float y) { return x - y; },
            &Subtract, "subtract")) {
        return result;
    }
    Fail("Subtract", a, b);
}

ObjectPtr Multiply(const ObjectPtr& a, const ObjectPtr& b) {
    const List* left = AsList(a);
    const List* right = AsList(b);
    if (left && right) {
        return ListRecurse(a, b, &Multiply, "multiply");
    }
    if (right) {
        return MapWithScalar(*right, a, &Multiply);
    }
    if (left) {
        return MapWithScalar(*left, b, &Multiply);
    }
    if (ObjectPtr result = NumFun(
            a, b, [](Int x, Int y) { return x * y; }, [](Float x, Float y) { return x * y; },
            "multiply")) {
        return result;
    }
    Fail("Multiply", a, b);
}

ObjectPtr Divide(const ObjectPtr& a, const ObjectPtr& b) {
    const List* left = AsList(a);
    if (left && AsList(b)) {
        return ListRecurse(a, b, &Divide, "divide");
    }
    if (left) {
        return MapWithScalar(*left, b, &Divide);
    }
    if (ObjectPtr result = NumFun(
            a, b, &DivInt, [](Float x, Float y) { return x / y; }, "divide")) {
        return result;
    }
    Fail("Divide", a, b);
}

void RegisterIntrinsics(Parser& parser) {
    ClosurePtr math(new Closure("[closure]", nullptr));
    math->AddCommand("add", std::function<ObjectPtr(ObjectPtr, ObjectPtr)>(
                                [](ObjectPtr a, ObjectPtr b) { return Add(a, b); }));
    math->AddCommand("subtract", std::function<ObjectPtr(ObjectPtr, ObjectPtr)>(
                                     [](ObjectPtr a, ObjectPtr b) { return Subtract(a, b); }));
    math->AddCommand("multiply", std::function<ObjectPtr(ObjectPtr, ObjectPtr)>(
                                     [](ObjectPtr a, ObjectPtr b) { return Multiply(a, b); }));
    math->AddCommand("divide", std::function<ObjectPtr(ObjectPtr, ObjectPtr)>(
                                   [](ObjectPtr a, ObjectPtr b) { return Divide(a, b); }));
    math->AddCommand("negate", std::function<ObjectPtr(ObjectPtr)>([](ObjectPtr a) -> ObjectPtr {
                         return new Value<bool>(!ObjectToValue<bool>(a));
                     }));
    const std::pair<const char*, double (*)(double)> unary[] = {
        {"sin", [](double x) { return std::sin(x); }},
        {"cos", [](double x) { return std::cos(x); }},
        {"tan", [](double x) { return std::tan(x); }},
        {"asin", [](double x) { return std::asin(x); }},
        {"acos", [](double x) { return std::acos(x); }},
        {"atan", [](double x) { return std::atan(x); }},
    };
    for (const auto& [name, function] : unary) {
        math->AddCommand(name,
                         std::function<ObjectPtr(ObjectPtr)>(
                             [function = function](ObjectPtr a) { return MapUnary(a, function); }));
    }
    math->AddCommand(
        "pi", std::function<ObjectPtr()>([]() -> ObjectPtr { return new Value<Float>(M_PI); }));
    parser.GetRootClosure()->AddVariable("math", math);

    AddBuiltinInfix(parser, 2, false, {"", "+", ""}, "add");
    AddBuiltinInfix(parser, 2, false, {"", "-", ""}, "subtract");
    AddBuiltinInfix(parser, 2, false, {"", "*", ""}, "multiply");
    AddBuiltinInfix(parser, 2, false, {"", "/", ""}, "divide");
    AddBuiltinInfix(parser, 5, true, {"!", ""}, "negate");
}

}  // namespace script
