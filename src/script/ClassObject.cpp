#include "script/ClassObject.h"

#include <utility>

#include "script/Exceptions.h"
#include "script/Expressions.h"
#include "util/Assert.h"
#include "util/Exception.h"

namespace script {

ClassObject::ClassObject() : Object(Kind::ClassObject) {
    BindingsChanged();
}

ClassObject::~ClassObject() {
    BindingsChanged();
}

bool ClassObject::HasVariable(const util::String& name) const {
    return m_variables.find(name) != m_variables.end();
}

VariablePtr ClassObject::GetVariable(const util::String& name) const {
    const auto it = m_variables.find(name);
    return it != m_variables.end() ? it->second : nullptr;
}

ObjectPtr ClassObject::GetValue(const util::String& name) const {
    const auto it = m_variables.find(name);
    return it != m_variables.end() ? it->second->GetValue() : nullptr;
}

// Nothing runs during the walk, so the owners need no locking.
VariablePtr ClassObject::LookupVariable(const util::String& name) const {
    const ClassObject* object = this;
    while (true) {
        const auto it = object->m_variables.find(name);
        if (it != object->m_variables.end()) {
            return it->second;
        }
        object = object->GetOwner().Get();
        if (!object) {
            VORRA_THROW(ScriptException, name + " not found in scope");
        }
    }
}

ObjectPtr ClassObject::LookupValue(const util::String& name) const {
    return LookupVariable(name)->GetValue();
}

void ClassObject::AddVariable(VariablePtr var) {
    const auto [it, added] = m_variables.try_emplace(var->GetName(), var);
    if (!added) {
        ::AssertionFailed("!HasVariable(var->GetName())", true, true, __PRETTY_FUNCTION__, __FILE__,
                          __LINE__);
    }
    BindingsChanged();
    it->second->SetOwner(ClassObjectWeakPtr(this));
}

void ClassObject::AddVariable(const util::String& name, ObjectPtr value) {
    AddVariable(VariablePtr(new Variable(name, std::move(value), false)));
}

void ClassObject::RemoveVariable(const util::String& name) {
    const auto it = m_variables.find(name);
    if (it == m_variables.end()) {
        return;
    }
    // Keep the variable alive while its owner is cleared.
    const VariablePtr variable = it->second;
    m_variables.erase(it);
    BindingsChanged();
    if (variable->GetOwner().Get() == this) {
        variable->SetOwner(nullptr);
    }
}

std::vector<VariablePtr> ClassObject::GetVariables() const {
    std::vector<VariablePtr> variables;
    variables.reserve(m_variables.size());
    for (const auto& entry : m_variables) {
        variables.push_back(entry.second);
    }
    return variables;
}

VariablePtr ClassObject::FindVariable(ObjectPtr object) const {
    return FindVariable(object.Get());
}

VariablePtr ClassObject::FindVariable(const Object* object) const {
    for (const auto& entry : m_variables) {
        if (entry.second->GetValue().Get() == object) {
            return entry.second;
        }
    }
    return nullptr;
}

IdentifierPtr ClassObject::GetIdentifier() const {
    const util::LockPtr<ClassObject> owner = GetOwner().Lock();
    if (!owner) {
        return nullptr;
    }
    const VariablePtr variable = owner->FindVariable(this);
    CODE_ASSERT(variable);
    return IdentifierPtr(new Identifier(owner->GetIdentifier(), variable->GetName()));
}

ExpressionPtr ClassObject::ToExpression() const {
    const CodeBlockPtr block(new CodeBlock());
    for (const auto& entry : m_variables) {
        ExpressionPtr expression = entry.second->ToExpression();
        if (expression) {
            block->Add(std::move(expression));
        }
    }
    return block;
}

util::String ClassObject::ToString() const {
    return "ClassObject";
}

void ClassObject::SetOwner(ClassObjectWeakPtr owner) {
    const ClassObject* proposed = owner.Get();
    if (proposed) {
        const ClassObject* present = GetOwner().Get();
        if (present && present != proposed) {
            return;
        }
        for (const ClassObject* above = proposed; above; above = above->GetOwner().Get()) {
            if (above == this) {
                return;
            }
        }
    }
    Object::SetOwner(std::move(owner));
    BindingsChanged();
}

}  // namespace script
