#include "script/KeyBinder.h"

#include <algorithm>

#include "logging/Log.h"
#include "script/Exceptions.h"
#include "script/Expressions.h"
#include "script/Parser.h"

namespace script {

KeyBinder::KeyBinder() : Reflected("Keys") {
    AddCommand("bind", [this](ObjectPtr buttons, ObjectPtr function) {
        Bind(std::move(buttons), std::move(function));
    });
    AddCommand("unbind", [this](ObjectPtr buttons) { Unbind(std::move(buttons)); });
}

KeyBinder::~KeyBinder() = default;

void KeyBinder::SetKeySource(std::unique_ptr<KeySource> source) {
    m_source = std::move(source);
    m_listened.clear();
    for (const KeyCombination& combination : m_order) {
        m_source->Listen(combination, *this);
        m_listened.push_back(combination);
    }
}

const KeyBinder::KeySource& KeyBinder::Source() const {
    if (!m_source) {
        VORRA_THROW(ScriptException, "Key bindings need the input system");
    }
    return *m_source;
}

size_t KeyBinder::CombinationHash::operator()(const KeyCombination& combination) const {
    size_t hash = 0;
    for (const int key : combination.keys) {
        hash ^= static_cast<size_t>(key);
    }
    return hash;
}

KeyCombination KeyBinder::ReadCombination(ObjectPtr buttons) const {
    return Source().Read(ObjectToValue<util::String>(std::move(buttons)));
}

void KeyBinder::Bind(ObjectPtr buttons, ObjectPtr function) {
    const KeyCombination combination = ReadCombination(std::move(buttons));
    if (combination.keys.empty()) {
        VORRA_THROW(ScriptException, "Bad button");
    }
    const auto* callable = dynamic_cast<const AbstractFunction*>(function.Get());
    if (!callable || callable->GetArgCount() != 0) {
        VORRA_THROW(ScriptException,
                    "The second argument should be a function taking no arguments");
    }
    // A combination bound before keeps its callback; a second bind replaces the function.
    if (std::find(m_listened.begin(), m_listened.end(), combination) == m_listened.end()) {
        m_source->Listen(combination, *this);
        m_listened.push_back(combination);
    }
    if (std::find(m_order.begin(), m_order.end(), combination) == m_order.end()) {
        m_order.push_back(combination);
    }
    m_bindings[combination] = std::move(function);
}

void KeyBinder::Unbind(ObjectPtr buttons) {
    const KeyCombination combination = ReadCombination(std::move(buttons));
    m_bindings.erase(combination);
    m_order.erase(std::remove(m_order.begin(), m_order.end(), combination), m_order.end());
}

void KeyBinder::Fire(const KeyCombination& combination) {
    const auto it = m_bindings.find(combination);
    const util::String printed = m_source ? m_source->Print(combination) : util::String();
    if (it == m_bindings.end()) {
        Log(logging::Error,
            "Button combination \"" + printed + "\" failed to execute its command.");
        return;
    }
    // The function may rebind its own keys: it is held here for the call.
    const ObjectPtr function = it->second;
    try {
        static_cast<AbstractFunction&>(*function).Call(ObjectList());
    } catch (const std::exception& e) {
        Log(logging::Error,
            "Button combination \"" + printed + "\" bound to bad command: " + e.what());
    }
}

ExpressionPtr KeyBinder::ToExpression() const {
    const CodeBlockPtr block(new CodeBlock());
    if (!m_source) {
        return block;
    }
    const CodeBlockPtr head = Parser::Get().Parse("Keys.bind");
    if (!head || head->GetElements().empty()) {
        return block;
    }
    for (const KeyCombination& combination : m_order) {
        const ExpressionPtr function = m_bindings.at(combination)->ToExpression();
        CODE_ASSERT(function);
        const CodeBlockPtr tail(new Block());
        tail->Add(ExpressionPtr(new Literal<util::String>(m_source->Print(combination))));
        tail->Add(function);
        block->Add(ExpressionPtr(new FunctionCall(head->GetElements().front(), tail)));
    }
    return block;
}

}  // namespace script
