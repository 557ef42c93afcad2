#include "script/Objects.h"
#include "script/ObjectCast.h"

#include <cmath>
#include <locale>
#include <sstream>

#include "script/ClassObject.h"
#include "script/Closure.h"
#include "script/Exceptions.h"
#include "script/Expressions.h"
#include "script/ValueConversions.h"
#include "script/Variable.h"
#include "util/Assert.h"
#include "util/Exception.h"
#include "util/Profiler.h"

namespace script {

// Object.

Object::Object() = default;

Object::~Object() = default;

ExpressionPtr Object::ToExpression() const {
    return nullptr;
}

util::String Object::ToString() const {
    return "object";
}

void Object::SetOwner(ClassObjectWeakPtr owner) {
    m_owner = owner;
}

// Value.

template <class T>
ExpressionPtr Value<T>::ToExpression() const {
    return ExpressionPtr(new Literal<T>(m_value));
}

template <>
util::String Value<bool>::ToString() const {
    return m_value ? "true" : "false";
}

template <>
util::String Value<int>::ToString() const {
    return std::to_string(m_value);
}

template <>
util::String Value<double>::ToString() const {
    if (std::isinf(m_value)) {
        return m_value > 0 ? "+inf" : "-inf";
    }
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << m_value;
    return out.str();
}

template <>
util::String Value<util::String>::ToString() const {
    return m_value;
}

template class Value<bool>;
template class Value<int>;
template class Value<double>;
template class Value<util::String>;

// AbstractFunction.

AbstractFunction::AbstractFunction() : Object(Kind::Function) {}

AbstractFunction::AbstractFunction(Kind kind) : Object(kind) {}

AbstractFunction::AbstractFunction(ClosurePtr closure)
    : Object(Kind::Function), m_closure(std::move(closure)) {}

AbstractFunction::~AbstractFunction() = default;

// List.

List::List(ObjectList elements) : AbstractFunction(Kind::List), m_elements(std::move(elements)) {}

List::~List() = default;

ObjectPtr List::Call(const ObjectList& args) {
    VORRA_PROFILE("List::Call");
    CODE_ASSERT(!args.empty());
    const int index = ObjectToValue<int>(args[0]);
    if (index < 0 || static_cast<size_t>(index) >= m_elements.size()) {
        VORRA_THROW(ScriptException, "List index out of bounds");
    }
    return m_elements[static_cast<size_t>(index)];
}

ExpressionPtr List::ToExpression() const {
    ExpressionList elements;
    elements.reserve(m_elements.size());
    for (const ObjectPtr& element : m_elements) {
        elements.push_back(element->ToExpression());
    }
    return ExpressionPtr(new ListDeclaration(std::move(elements)));
}

util::String List::ToString() const {
    util::String text = "[";
    for (size_t i = 0; i < m_elements.size(); ++i) {
        if (i > 0) {
            text += ", ";
        }
        text += m_elements[i]->ToString();
    }
    return text + "]";
}

// Function.

Function::Function(std::vector<util::String> names, CodeBlockPtr body, ClosurePtr closure,
                   ExpressionPtr declaration)
    : AbstractFunction(std::move(closure)),
      m_names(std::move(names)),
      m_body(std::move(body)),
      m_declaration(std::move(declaration)),
      m_needsCallClosure(!m_names.empty() || !m_body || m_body->WritesToScope()) {}

Function::~Function() = default;

ObjectPtr Function::Call(const ObjectList& args) {
    VORRA_PROFILE("Function::Call");
    if (args.size() != m_names.size()) {
        VORRA_THROW(ScriptException, "Wrong number of arguments to function");
    }
    // A call without arguments whose body writes no name would only add an empty level
    // to the lookup: formulas, evaluated every frame, run straight in their closure.
    if (!m_needsCallClosure && m_closure) {
        return m_body->Evaluate(m_closure);
    }
    // The closure's name holds this function's code; it is printed only if someone asks.
    const ClosurePtr closure = Closure::MakeCallClosure(m_closure, ToExpression());
    m_lastCall = closure;
    for (size_t i = 0; i < args.size(); ++i) {
        closure->AddVariable(VariablePtr(new Variable(m_names[i], args[i], true)));
    }
    return m_body->Evaluate(closure);
}

ExpressionPtr Function::ToExpression() const {
    if (m_declaration) {
        return m_declaration;
    }
    return ExpressionPtr(new FunctionDeclaration(m_names, m_body));
}

util::String Function::ToString() const {
    return ToExpression()->ToCode();
}

// Intrinsics.

util::String AbstractIntrinsic::ToString() const {
    return "intrinsic function";
}

IntrinsicCmd::IntrinsicCmd(FunctionType function) : m_function(std::move(function)) {}

IntrinsicCmd::~IntrinsicCmd() = default;

ObjectPtr IntrinsicCmd::Call(const ObjectList& args) {
    CODE_ASSERT(args.size() == 0);
    return m_function();
}

IntrinsicCmd1::IntrinsicCmd1(FunctionType function) : m_function(std::move(function)) {}

IntrinsicCmd1::~IntrinsicCmd1() = default;

ObjectPtr IntrinsicCmd1::Call(const ObjectList& args) {
    CODE_ASSERT(args.size() == 1);
    return m_function(args[0]);
}

IntrinsicCmd2::IntrinsicCmd2(FunctionType function) : m_function(std::move(function)) {}

IntrinsicCmd2::~IntrinsicCmd2() = default;

ObjectPtr IntrinsicCmd2::Call(const ObjectList& args) {
    CODE_ASSERT(args.size() == 2);
    return m_function(args[0], args[1]);
}

// Bad objects.

util::String BadObject::ToString() const {
    return "bad object";
}

util::String Void::ToString() const {
    return "void";
}

util::String Unbound::ToString() const {
    return "unbound";
}

util::String ErrorObject::ToString() const {
    return "error";
}

ObjectPtr CallIfNoArgs(ObjectPtr object) {
    AbstractFunction* function = AsFunction(object);
    if (function && function->GetArgCount() == 0) {
        return function->Call(ObjectList());
    }
    return object;
}

}  // namespace script
