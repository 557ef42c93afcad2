#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "script/Forward.h"

namespace script {

// Every value of the language. The owner is the class object that holds it, which makes
// the tree of named objects; it is weak, the holder's variable keeps the value alive.
class Object : public util::Pointee {
public:
    // What the object is, for the casts on the hot paths of evaluation (see ObjectCast.h):
    // there a dynamic_cast would cost more than the operation itself.
    enum class Kind : unsigned char {
        Other,
        Bool,
        Int,
        Double,
        String,
        List,
        Function,
        ClassObject
    };

    Object();
    ~Object() override;

    Kind GetKind() const { return m_kind; }

    // An expression that evaluates to an equal value, or null when the object cannot be
    // written down (commands, void): a variable holding one is left out of a save.
    virtual ExpressionPtr ToExpression() const;
    // The text shown to a person.
    virtual util::String ToString() const;
    virtual void SetOwner(ClassObjectWeakPtr owner);

    const ClassObjectWeakPtr& GetOwner() const { return m_owner; }

protected:
    explicit Object(Kind kind) : m_kind(kind) {}

private:
    ClassObjectWeakPtr m_owner;
    Kind m_kind = Kind::Other;
};

// The kind of each plain value type.
template <class T>
constexpr Object::Kind ValueKind();
template <>
constexpr Object::Kind ValueKind<bool>() {
    return Object::Kind::Bool;
}
template <>
constexpr Object::Kind ValueKind<int>() {
    return Object::Kind::Int;
}
template <>
constexpr Object::Kind ValueKind<double>() {
    return Object::Kind::Double;
}
template <>
constexpr Object::Kind ValueKind<util::String>() {
    return Object::Kind::String;
}

// A plain value: bool, int, double or util::String.
template <class T>
class Value : public Object {
public:
    explicit Value(const T& value) : Object(ValueKind<T>()), m_value(value) {}
    explicit Value(T&& value) : Object(ValueKind<T>()), m_value(std::move(value)) {}

    const T& GetValue() const { return m_value; }

    ExpressionPtr ToExpression() const override;
    // Shorter than the code for doubles: six significant digits, no ".0" added.
    util::String ToString() const override;

private:
    T m_value;
};

template <>
util::String Value<bool>::ToString() const;
template <>
util::String Value<int>::ToString() const;
template <>
util::String Value<double>::ToString() const;
template <>
util::String Value<util::String>::ToString() const;

extern template class Value<bool>;
extern template class Value<int>;
extern template class Value<double>;
extern template class Value<util::String>;

// Anything that can be called with a list of arguments.
class AbstractFunction : public Object {
public:
    AbstractFunction();
    explicit AbstractFunction(ClosurePtr closure);
    ~AbstractFunction() override;

    virtual ObjectPtr Call(const ObjectList& args) = 0;
    virtual size_t GetArgCount() const = 0;

    // The captured environment; null for all but script functions.
    const ClosurePtr& GetClosure() const { return m_closure; }

protected:
    // For lists, which are functions of their index.
    explicit AbstractFunction(Kind kind);

    ClosurePtr m_closure;
};

// A list is a function of one argument, its index: "list(2)" or "list 2".
class List : public AbstractFunction {
public:
    explicit List(ObjectList elements);
    ~List() override;

    const ObjectList& GetElements() const { return m_elements; }

    ObjectPtr Call(const ObjectList& args) override;
    size_t GetArgCount() const override { return 1; }
    ExpressionPtr ToExpression() const override;
    util::String ToString() const override;

private:
    ObjectList m_elements;
};

// A function written in the language. Each call runs the body in a new closure under the
// captured one, with the arguments as constants.
class Function : public AbstractFunction {
public:
    // The declaration, when given, is what ToExpression returns; otherwise one is made of
    // the names and the body.
    Function(std::vector<util::String> names, CodeBlockPtr body, ClosurePtr closure,
             ExpressionPtr declaration = nullptr);
    ~Function() override;

    const std::vector<util::String>& GetNames() const { return m_names; }
    const CodeBlockPtr& GetBody() const { return m_body; }
    // The closure of the latest call. It outlives that call until the next one, so that
    // callers can read what the body assigned.
    const ClosurePtr& GetLastCallClosure() const { return m_lastCall; }

    ObjectPtr Call(const ObjectList& args) override;
    size_t GetArgCount() const override { return m_names.size(); }
    ExpressionPtr ToExpression() const override;
    // The source, as printed code.
    util::String ToString() const override;

private:
    std::vector<util::String> m_names;
    CodeBlockPtr m_body;
    ClosurePtr m_lastCall;
    ExpressionPtr m_declaration;
    bool m_needsCallClosure;
};

// A command of the program. The arity is fixed by the class; a wrong number of arguments
// is the registering code's mistake, not the script's.
class AbstractIntrinsic : public AbstractFunction {
public:
    util::String ToString() const override;
};

class IntrinsicCmd : public AbstractIntrinsic {
public:
    using FunctionType = std::function<ObjectPtr()>;
    explicit IntrinsicCmd(FunctionType function);
    ~IntrinsicCmd() override;

    ObjectPtr Call(const ObjectList& args) override;
    size_t GetArgCount() const override { return 0; }

private:
    FunctionType m_function;
};

class IntrinsicCmd1 : public AbstractIntrinsic {
public:
    using FunctionType = std::function<ObjectPtr(ObjectPtr)>;
    explicit IntrinsicCmd1(FunctionType function);
    ~IntrinsicCmd1() override;

    ObjectPtr Call(const ObjectList& args) override;
    size_t GetArgCount() const override { return 1; }

private:
    FunctionType m_function;
};

class IntrinsicCmd2 : public AbstractIntrinsic {
public:
    using FunctionType = std::function<ObjectPtr(ObjectPtr, ObjectPtr)>;
    explicit IntrinsicCmd2(FunctionType function);
    ~IntrinsicCmd2() override;

    ObjectPtr Call(const ObjectList& args) override;
    size_t GetArgCount() const override { return 2; }

private:
    FunctionType m_function;
};

// The absence of a value. The console shows nothing for these.
class BadObject : public Object {
public:
    util::String ToString() const override;
};

// The result of a command that returns nothing, and of an empty block.
class Void : public BadObject {
public:
    util::String ToString() const override;
};

// Fills the argument names of a function's parse-time scope.
class Unbound : public BadObject {
public:
    util::String ToString() const override;
};

// The result of a failed statement. It carries no message: that went to the log.
class ErrorObject : public BadObject {
public:
    util::String ToString() const override;
};

// The rule of automatic calling: a function of no arguments is replaced by the result of
// calling it; anything else is returned as it is.
ObjectPtr CallIfNoArgs(ObjectPtr object);

}  // namespace script
