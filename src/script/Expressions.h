#pragma once

#include <utility>
#include <vector>

#include "script/Forward.h"

namespace script {

// A node of a parsed tree. Trees are immutable and stateless, so one tree may be
// evaluated any number of times, recursively too. Every node can print itself back as
// source code: saving, key bindings and the printing of functions rest on that.
class Expression : public util::Pointee {
public:
    ~Expression() override;

    virtual ObjectPtr Evaluate(const ClosurePtr& closure) = 0;
    virtual util::String ToCode() const = 0;
    // Whether evaluating it can create or change names in the closure it runs in
    // (assignments and declarations). A call of a function whose body cannot needs no
    // closure of its own.
    virtual bool WritesToScope() const { return false; }
};

// A constant of one of the four value types: bool, int, double, util::String.
template <class T>
class Literal : public Expression {
public:
    explicit Literal(const T& value) : m_value(value) {}

    const T& GetValue() const { return m_value; }

    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;

private:
    T m_value;
};

// The code of each type is its own: see the definitions.
template <>
util::String Literal<bool>::ToCode() const;
template <>
util::String Literal<int>::ToCode() const;
template <>
util::String Literal<double>::ToCode() const;
template <>
util::String Literal<util::String>::ToCode() const;

extern template class Literal<bool>;
extern template class Literal<int>;
extern template class Literal<double>;
extern template class Literal<util::String>;

// A name, looked up from the closure or, with an owner expression, from the object that
// expression gives ("owner.name").
class Identifier : public Expression {
public:
    Identifier(ExpressionPtr owner, const util::String& name);
    ~Identifier() override;

    const util::String& GetName() const { return m_name; }
    const ExpressionPtr& GetOwnerExpression() const { return m_owner; }

    // The closure itself without an owner expression, otherwise the object it evaluates to.
    ClassObjectPtr GetOwner(const ClosurePtr& closure) const;
    // Walks up from the owner; throws if the name is nowhere.
    ObjectPtr GetValue(const ClosurePtr& closure) const;
    // Writes into the owner only: a plain name assigned in a function becomes local.
    void SetValue(const ClosurePtr& closure, ObjectPtr value) const;

    // Reading a name runs a function of no arguments.
    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
    bool WritesToScope() const override;

private:
    // The last lookup; see ClassObject::BindingVersion.
    struct Lookup {
        const ClassObject* owner = nullptr;
        const Variable* variable = nullptr;
        unsigned long long version = 0;
    };

    ExpressionPtr m_owner;
    util::String m_name;
    mutable Lookup m_lookup;
};

class Assignment : public Expression {
public:
    Assignment(IdentifierPtr id, ExpressionPtr ex);
    ~Assignment() override;

    const IdentifierPtr& GetTarget() const { return m_target; }
    const ExpressionPtr& GetSource() const { return m_source; }

    // The assigned value is the result.
    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
    bool WritesToScope() const override { return true; }

private:
    IdentifierPtr m_target;
    ExpressionPtr m_source;
};

// head(tail...): the head must evaluate to a function, the tail holds the arguments.
class FunctionCall : public Expression {
public:
    FunctionCall(ExpressionPtr head, CodeBlockPtr tail);
    ~FunctionCall() override;

    const ExpressionPtr& GetHead() const { return m_head; }
    const CodeBlockPtr& GetTail() const { return m_tail; }

    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
    bool WritesToScope() const override;

private:
    ExpressionPtr m_head;
    CodeBlockPtr m_tail;
};

// A use of an infix function: one argument per empty word of its pattern.
class InfixFunctionCall : public Expression {
public:
    InfixFunctionCall(InfixPtr infix, const ExpressionList& args);
    ~InfixFunctionCall() override;

    const InfixPtr& GetInfix() const { return m_infix; }
    const ExpressionList& GetArgs() const { return m_args; }

    // The body is evaluated in the closure of the call, not of the declaration.
    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
    bool WritesToScope() const override;

private:
    InfixPtr m_infix;
    ExpressionList m_args;
    ExpressionPtr m_call;
};

// "(a, b)=>{...}" or "{...}": evaluates to a new function bound to the closure in hand.
class FunctionDeclaration : public Expression {
public:
    FunctionDeclaration(std::vector<util::String> names, CodeBlockPtr body);
    ~FunctionDeclaration() override;

    const std::vector<util::String>& GetNames() const { return m_names; }
    const CodeBlockPtr& GetBody() const { return m_body; }

    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
    bool WritesToScope() const override { return true; }

private:
    std::vector<util::String> m_names;
    CodeBlockPtr m_body;
};

// "infix 2 left: _ + _ => math.add;". The parser has already added the infix function to
// its scope; evaluation adds it to the closure as well.
class InfixDeclaration : public Expression {
public:
    explicit InfixDeclaration(InfixPtr infix);
    ~InfixDeclaration() override;

    const InfixPtr& GetInfix() const { return m_infix; }

    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
    bool WritesToScope() const override { return true; }

private:
    InfixPtr m_infix;
};

// Statements. Each one runs under its own guard: a failing statement is logged and the
// next one still runs, so a broken line costs that line only.
class CodeBlock : public Expression {
public:
    CodeBlock();
    explicit CodeBlock(ExpressionList elements);
    ~CodeBlock() override;

    void Add(ExpressionPtr expression) { m_elements.push_back(std::move(expression)); }
    const ExpressionList& GetElements() const { return m_elements; }

    // The value of the last statement, void when there is none.
    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
    bool WritesToScope() const override;
    // The elements' code joined by the separator. An element that fails to print is
    // logged and left out.
    util::String ToCode(const util::String& separator) const;

protected:
    // Without guards: a failure passes to the enclosing block.
    ObjectList EvaluateElements(const ClosurePtr& closure) const;

private:
    ExpressionList m_elements;
};

// "(a, b)": the arguments of a call, or grouping. One element gives its value, any other
// number a list.
class Block : public CodeBlock {
public:
    using CodeBlock::CodeBlock;
    using CodeBlock::ToCode;
    ~Block() override;

    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
};

// "[a, b]": always a list.
class ListDeclaration : public CodeBlock {
public:
    using CodeBlock::CodeBlock;
    using CodeBlock::ToCode;
    ~ListDeclaration() override;

    ObjectPtr Evaluate(const ClosurePtr& closure) override;
    util::String ToCode() const override;
};

}  // namespace script
