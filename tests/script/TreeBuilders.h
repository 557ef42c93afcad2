#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>
#include <vector>

#include "script/ClassObject.h"
#include "script/Closure.h"
#include "script/Expressions.h"
#include "script/Infix.h"
#include "script/Objects.h"
#include "script/ValueConversions.h"
#include "script/Variable.h"

// Short builders for expression trees written by hand, the way the parser would make
// them, and a root closure that tests evaluate against.
namespace trees {

using namespace script;

inline ExpressionPtr Int(int value) {
    return ExpressionPtr(new Literal<int>(value));
}
inline ExpressionPtr Dbl(double value) {
    return ExpressionPtr(new Literal<double>(value));
}
inline ExpressionPtr Str(const util::String& value) {
    return ExpressionPtr(new Literal<util::String>(value));
}
inline ExpressionPtr Bool(bool value) {
    return ExpressionPtr(new Literal<bool>(value));
}
inline IdentifierPtr Id(const util::String& name) {
    return IdentifierPtr(new Identifier(nullptr, name));
}
inline IdentifierPtr Id(ExpressionPtr owner, const util::String& name) {
    return IdentifierPtr(new Identifier(owner, name));
}
inline ExpressionPtr Assign(IdentifierPtr target, ExpressionPtr source) {
    return ExpressionPtr(new Assignment(target, source));
}
inline CodeBlockPtr Stmts(std::initializer_list<ExpressionPtr> elements) {
    return CodeBlockPtr(new CodeBlock(ExpressionList(elements)));
}
inline CodeBlockPtr Blk(std::initializer_list<ExpressionPtr> elements) {
    return CodeBlockPtr(new Block(ExpressionList(elements)));
}
inline CodeBlockPtr Lst(std::initializer_list<ExpressionPtr> elements) {
    return CodeBlockPtr(new ListDeclaration(ExpressionList(elements)));
}
// head(args...), as "f(a, b)".
inline ExpressionPtr Call(ExpressionPtr head, std::initializer_list<ExpressionPtr> args) {
    return ExpressionPtr(new FunctionCall(head, Blk(args)));
}
inline ExpressionPtr Fn(std::vector<util::String> names,
                        std::initializer_list<ExpressionPtr> body) {
    return ExpressionPtr(new FunctionDeclaration(names, Stmts(body)));
}

template <class T>
const T& ValueOf(const ObjectPtr& object) {
    const Value<T>* value = dynamic_cast<const Value<T>*>(object.Get());
    if (!value) {
        throw std::runtime_error("not a value of the expected type: " +
                                 (object ? object->ToString() : util::String("null")));
    }
    return value->GetValue();
}

template <class T>
bool Is(const ObjectPtr& object) {
    return dynamic_cast<const T*>(object.Get()) != nullptr;
}

// The message of the exception that the call throws, or "no exception".
template <class F>
util::String ThrownBy(F&& function) {
    try {
        function();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no exception";
}

// A fresh root environment. Functions hold their closure strongly and the closure holds
// them, so the variables are dropped at the end to let everything go.
class RootTest : public testing::Test {
protected:
    ~RootTest() noexcept override {
        for (const VariablePtr& variable : root->GetVariables()) {
            root->RemoveVariable(variable->GetName());
        }
    }

    ObjectPtr Eval(const ExpressionPtr& expression) { return expression->Evaluate(root); }

    ClosurePtr root{new Closure("[ROOT]", nullptr)};
};

}  // namespace trees
