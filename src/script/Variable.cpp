#include "script/Variable.h"

#include <utility>

#include "script/ClassObject.h"
#include "script/Expressions.h"

namespace script {

Variable::Variable(const util::String& name, ObjectPtr value, bool constant)
    : m_name(name), m_value(std::move(value)), m_constant(constant) {
    if (m_value) {
        m_owner = m_value->GetOwner();
    }
}

Variable::~Variable() = default;

void Variable::SetValue(ObjectPtr value) {
    if (m_value && m_value->GetOwner() == m_owner) {
        m_value->SetOwner(nullptr);
    }
    m_value = std::move(value);
    if (m_value) {
        m_value->SetOwner(m_owner);
    }
}

void Variable::SetOwner(ClassObjectWeakPtr owner) {
    m_owner = owner;
    if (m_value) {
        m_value->SetOwner(std::move(owner));
    }
}

ExpressionPtr Variable::ToExpression() const {
    if (!m_value) {
        return nullptr;
    }
    // A nested object is flattened into statements that carry their own paths.
    if (const ClassObject* object = dynamic_cast<const ClassObject*>(m_value.Get())) {
        return object->ToExpression();
    }
    // A constant value could never be assigned back: printing it would only make a warning.
    if (m_constant) {
        return nullptr;
    }
    const ClassObject* owner = m_owner.Get();
    const IdentifierPtr target(
        new Identifier(owner ? ExpressionPtr(owner->GetIdentifier()) : nullptr, m_name));
    ExpressionPtr value = m_value->ToExpression();
    if (!value) {
        return nullptr;
    }
    return ExpressionPtr(new Assignment(target, std::move(value)));
}

}  // namespace script
