#include "script/Expressions.h"

#include <algorithm>
#include "script/ObjectCast.h"

#include <charconv>
#include <cmath>
#include <exception>
#include <locale>
#include <sstream>
#include <utility>

#include "logging/Log.h"
#include "script/Closure.h"
#include "script/Exceptions.h"
#include "script/Infix.h"
#include "script/Objects.h"
#include "script/Variable.h"
#include "util/Assert.h"
#include "util/Exception.h"
#include "util/Profiler.h"
#include "util/StringUtil.h"

namespace script {
namespace {

const char* const kIndent = "    ";

// How deeply evaluations nest right now. Every node that evaluates others counts itself,
// so that a script recursing without end ("f = { f }; f") fails with an exception long
// before the native stack runs out.
int s_evaluationDepth = 0;
constexpr int kMaxEvaluationDepth = 1000;

class EvaluationDepth {
public:
    EvaluationDepth() {
        if (s_evaluationDepth >= kMaxEvaluationDepth) {
            VORRA_THROW(RecursionException, "Recursion too deep");
        }
        ++s_evaluationDepth;
    }
    ~EvaluationDepth() { --s_evaluationDepth; }
    EvaluationDepth(const EvaluationDepth&) = delete;
    EvaluationDepth& operator=(const EvaluationDepth&) = delete;
};

// For messages only: an element that cannot print itself must not hide the real failure,
// and one of a megabyte (a scene line of a huge polygon) is cut short so that the log and
// the console stay readable.
util::String CodeForMessage(const ExpressionPtr& expression) {
    constexpr size_t kLongest = 1000;
    if (!expression) {
        return util::String();
    }
    try {
        util::String code = expression->ToCode();
        if (code.size() > kLongest) {
            const size_t length = code.size();
            code.resize(kLongest);
            code += "... (" + std::to_string(length) + " characters)";
        }
        return code;
    } catch (...) {
        return util::String();
    }
}

// The body of a function on lines of its own, each indented one step.
util::String IndentBody(const util::String& body) {
    util::String text = "\n";
    text.reserve(body.size() + body.size() / 8 + 8);
    text += kIndent;
    for (size_t i = 0; i < body.size(); ++i) {
        text += body[i];
        if (body[i] == '\n' && i + 1 < body.size()) {
            text += kIndent;
        }
    }
    text += '\n';
    return text;
}

}  // namespace

Expression::~Expression() = default;

// Literals.

template <class T>
ObjectPtr Literal<T>::Evaluate(const ClosurePtr&) {
    return ObjectPtr(new Value<T>(m_value));
}

template <>
util::String Literal<bool>::ToCode() const {
    return m_value ? "true" : "false";
}

template <>
util::String Literal<int>::ToCode() const {
    return std::to_string(m_value);
}

// Sixteen significant digits, and always a point so that the text reads back as a double.
// Only the point is looked for: 1e+20 becomes "1e+20.0".
template <>
util::String Literal<double>::ToCode() const {
    if (std::isinf(m_value)) {
        return m_value > 0 ? "+inf" : "-inf";
    }
    // The shortest form of the default stream format at this precision, without a
    // locale: to_chars writes what printf's %.16g writes.
    char buffer[32];
    const std::to_chars_result written =
        std::to_chars(buffer, buffer + sizeof buffer, m_value, std::chars_format::general, 16);
    util::String text(buffer, written.ptr);
    if (text.find('.') == util::String::npos) {
        text += ".0";
    }
    return text;
}

// A backslash is written as it is: the tokenizer reads only \n, \t and \" back.
template <>
util::String Literal<util::String>::ToCode() const {
    util::String text;
    text.reserve(m_value.size() + 2);
    text += '"';
    for (char c : m_value) {
        switch (c) {
            case '\n':
                text += "\\n";
                break;
            case '\t':
                text += "\\t";
                break;
            case '"':
                text += "\\\"";
                break;
            default:
                text += c;
        }
    }
    text += '"';
    return text;
}

template class Literal<bool>;
template class Literal<int>;
template class Literal<double>;
template class Literal<util::String>;

// Identifier.

Identifier::Identifier(ExpressionPtr owner, const util::String& name)
    : m_owner(std::move(owner)), m_name(name) {}

Identifier::~Identifier() = default;

ClassObjectPtr Identifier::GetOwner(const ClosurePtr& closure) const {
    if (!m_owner) {
        return closure;
    }
    const EvaluationDepth depth;
    const ClassObjectPtr owner(AsClassObject(m_owner->Evaluate(closure)));
    CODE_ASSERT(owner);
    return owner;
}

ObjectPtr Identifier::GetValue(const ClosurePtr& closure) const {
    const ClassObjectPtr owner = GetOwner(closure);
    // The same owner and no binding changed anywhere: the same variable as last time.
    const Variable* variable = m_lookup.variable;
    if (owner.Get() != m_lookup.owner || ClassObject::BindingVersion() != m_lookup.version) {
        variable = owner->LookupVariable(m_name).Get();
        m_lookup = {owner.Get(), variable, ClassObject::BindingVersion()};
    }
    if (!variable->GetValue()) {
        VORRA_THROW(ScriptException,
                    "Cannot find identifier " + m_name + " in " + owner->ToString());
    }
    return variable->GetValue();
}

void Identifier::SetValue(const ClosurePtr& closure, ObjectPtr value) const {
    const ClassObjectPtr owner = GetOwner(closure);
    const VariablePtr variable = owner->GetVariable(m_name);
    if (!variable) {
        owner->AddVariable(VariablePtr(new Variable(m_name, std::move(value), false)));
    } else if (variable->IsConstant()) {
        VORRA_THROW(ScriptException, "Cannot set constant variable " + m_name);
    } else {
        variable->SetValue(std::move(value));
    }
}

ObjectPtr Identifier::Evaluate(const ClosurePtr& closure) {
    return CallIfNoArgs(GetValue(closure));
}

util::String Identifier::ToCode() const {
    if (!m_owner) {
        return m_name;
    }
    return m_owner->ToCode() + "." + m_name;
}

// Assignment.

Assignment::Assignment(IdentifierPtr id, ExpressionPtr ex) {
    CODE_ASSERT(id && ex);
    m_target = std::move(id);
    m_source = std::move(ex);
}

Assignment::~Assignment() = default;

// The source is evaluated before the target's owner.
ObjectPtr Assignment::Evaluate(const ClosurePtr& closure) {
    const EvaluationDepth depth;
    ObjectPtr value = m_source->Evaluate(closure);
    m_target->SetValue(closure, value);
    return value;
}

util::String Assignment::ToCode() const {
    return m_target->ToCode() + " = " + m_source->ToCode();
}

// FunctionCall.

FunctionCall::FunctionCall(ExpressionPtr head, CodeBlockPtr tail) {
    CODE_ASSERT(head);
    CODE_ASSERT(tail);
    m_head = std::move(head);
    m_tail = std::move(tail);
}

FunctionCall::~FunctionCall() = default;

ObjectPtr FunctionCall::Evaluate(const ClosurePtr& closure) {
    const EvaluationDepth depth;
    const ObjectPtr head = m_head->Evaluate(closure);
    AbstractFunction* function = AsFunction(head);
    if (!function) {
        VORRA_THROW(ScriptException, "Function call applied to non-function: " + ToCode());
    }
    ObjectList args;
    {
        VORRA_PROFILE("Argument eval");
        const ExpressionList& elements = m_tail->GetElements();
        args.reserve(elements.size());
        for (const ExpressionPtr& element : elements) {
            args.push_back(element->Evaluate(closure));
        }
    }
    VORRA_PROFILE("Actual call");
    return function->Call(args);
}

util::String FunctionCall::ToCode() const {
    const util::String tail = m_tail->ToCode();
    if (!tail.empty() && tail[0] == '(') {
        return m_head->ToCode() + tail;
    }
    return m_head->ToCode() + " " + tail;
}

// InfixFunctionCall.

InfixFunctionCall::InfixFunctionCall(InfixPtr infix, const ExpressionList& args)
    : m_infix(std::move(infix)), m_args(args) {
    CODE_ASSERT(m_infix->GetArgCount() == args.size());
}

InfixFunctionCall::~InfixFunctionCall() = default;

ObjectPtr InfixFunctionCall::Evaluate(const ClosurePtr& closure) {
    // The call of the body with the arguments; trees never change, so it is made once.
    if (!m_call) {
        m_call = new FunctionCall(m_infix->GetBody(), CodeBlockPtr(new Block(m_args)));
    }
    return m_call->Evaluate(closure);
}

util::String InfixFunctionCall::ToCode() const {
    const std::vector<util::String>& words = m_infix->GetWords();
    util::String code;
    size_t next = 0;
    for (const util::String& word : words) {
        if (!word.empty()) {
            code += " ";
            code += word;
            code += " ";
        } else if (next < m_args.size()) {
            code += m_args[next++]->ToCode();
        } else {
            VORRA_THROW(ParseException,
                        "Too few arguments to infix function " + util::Join(words, ""));
        }
    }
    if (next < m_args.size()) {
        VORRA_THROW(ParseException,
                    "Too many arguments to infix function " + util::Join(words, ""));
    }
    return code;
}

// FunctionDeclaration.

FunctionDeclaration::FunctionDeclaration(std::vector<util::String> names, CodeBlockPtr body)
    : m_names(std::move(names)), m_body(std::move(body)) {}

FunctionDeclaration::~FunctionDeclaration() = default;

// The function keeps this declaration for printing, and the closure in hand as its
// environment. A declaration that nobody holds (one on the stack) must not be shared, or
// the function would delete it.
ObjectPtr FunctionDeclaration::Evaluate(const ClosurePtr& closure) {
    const ExpressionPtr declaration = GetHandle()->strong > 0 ? ExpressionPtr(this) : nullptr;
    return ObjectPtr(new Function(m_names, m_body, closure, declaration));
}

util::String FunctionDeclaration::ToCode() const {
    util::String body = m_body->ToCode();
    if (body.find('\n') != util::String::npos) {
        body = IndentBody(body);
    }
    if (m_names.empty()) {
        return "{" + body + "}";
    }
    return "(" + util::Join(m_names, ", ") + ")=>{" + body + "}";
}

// InfixDeclaration.

InfixDeclaration::InfixDeclaration(InfixPtr infix) : m_infix(std::move(infix)) {}

InfixDeclaration::~InfixDeclaration() = default;

ObjectPtr InfixDeclaration::Evaluate(const ClosurePtr& closure) {
    closure->AddInfix(m_infix);
    return ObjectPtr(new Void());
}

util::String InfixDeclaration::ToCode() const {
    util::String priority;
    const double value = m_infix->GetPriority();
    if (std::isinf(value)) {
        priority = value > 0 ? "+inf" : "-inf";
    } else {
        std::ostringstream out;
        out.imbue(std::locale::classic());
        out << value;
        priority = out.str();
    }
    util::String code = "infix " + priority + " " + (m_infix->IsRight() ? "right" : "left") + ": ";
    for (const util::String& word : m_infix->GetWords()) {
        code += word.empty() ? util::String("_") : word;
        code += " ";
    }
    return code + "=> " + m_infix->GetBody()->ToCode() + ";\n";
}

// CodeBlock.

CodeBlock::CodeBlock() = default;

CodeBlock::CodeBlock(ExpressionList elements) : m_elements(std::move(elements)) {}

CodeBlock::~CodeBlock() = default;

ObjectPtr CodeBlock::Evaluate(const ClosurePtr& closure) {
    if (m_elements.empty()) {
        return ObjectPtr(new Void());
    }
    const EvaluationDepth depth;
    ObjectPtr result;
    for (const ExpressionPtr& element : m_elements) {
        try {
            result = element->Evaluate(closure);
        } catch (const std::exception& e) {
            // Caught at every level of a recursion, the statements after the failing one
            // would each run into the limit again, exponentially often. Only the outermost
            // block stops it.
            if (s_evaluationDepth > 1 && dynamic_cast<const RecursionException*>(&e)) {
                throw;
            }
            logging::LogCaughtException(e, VORRA_LOCATION);
            Log(logging::Warning,
                "Failed to evaluate: " + CodeForMessage(element) + ", " + e.what());
            result = ObjectPtr(new ErrorObject());
        }
    }
    return result;
}

util::String CodeBlock::ToCode() const {
    return ToCode(";\n");
}

util::String CodeBlock::ToCode(const util::String& separator) const {
    util::String text;
    for (const ExpressionPtr& element : m_elements) {
        try {
            const util::String code = element->ToCode();
            if (!code.empty()) {
                text += code;
                text += separator;
            }
        } catch (const std::exception& e) {
            Log(logging::Debug, "Error: " + util::String(e.what()) + ", " + VORRA_LOCATION);
        } catch (...) {
            Log(logging::Debug, "Fail, " + VORRA_LOCATION);
        }
    }
    // One separator only: an element's own code may end with the same characters.
    if (!separator.empty() && util::EndsWith(text, separator)) {
        text.resize(text.size() - separator.size());
    }
    return text;
}

ObjectList CodeBlock::EvaluateElements(const ClosurePtr& closure) const {
    ObjectList values;
    values.reserve(m_elements.size());
    for (const ExpressionPtr& element : m_elements) {
        values.push_back(element->Evaluate(closure));
    }
    return values;
}

// Block.

Block::~Block() = default;

ObjectPtr Block::Evaluate(const ClosurePtr& closure) {
    const EvaluationDepth depth;
    const ExpressionList& elements = GetElements();
    if (elements.size() == 1) {
        return elements[0]->Evaluate(closure);
    }
    return ObjectPtr(new List(EvaluateElements(closure)));
}

util::String Block::ToCode() const {
    return "(" + ToCode(", ") + ")";
}

// ListDeclaration.

ListDeclaration::~ListDeclaration() = default;

ObjectPtr ListDeclaration::Evaluate(const ClosurePtr& closure) {
    VORRA_PROFILE("ListDeclaration::Evaluate");
    const EvaluationDepth depth;
    return ObjectPtr(new List(EvaluateElements(closure)));
}

util::String ListDeclaration::ToCode() const {
    return "[" + ToCode(", ") + "]";
}

bool Identifier::WritesToScope() const {
    return m_owner && m_owner->WritesToScope();
}

bool FunctionCall::WritesToScope() const {
    return m_head->WritesToScope() || m_tail->WritesToScope();
}

bool InfixFunctionCall::WritesToScope() const {
    // The body runs in the closure of the call, like the arguments.
    if (m_infix->GetBody() && m_infix->GetBody()->WritesToScope()) {
        return true;
    }
    return std::any_of(m_args.begin(), m_args.end(),
                       [](const ExpressionPtr& arg) { return arg && arg->WritesToScope(); });
}

bool CodeBlock::WritesToScope() const {
    return std::any_of(m_elements.begin(), m_elements.end(),
                       [](const ExpressionPtr& e) { return e && e->WritesToScope(); });
}

}  // namespace script
