#include "script/Reflected.h"

#include <string>
#include <utility>

#include "script/Variable.h"

namespace script {

Reflected::Reflected(const util::String& name) : m_reflectedName(name) {}

Reflected::~Reflected() = default;

void Reflected::SetReflectedName(const util::String& name) {
    if (GetOwner().Get()) {
        ::AssertionFailed("!GetOwner()", true, true, __PRETTY_FUNCTION__, __FILE__, __LINE__);
    }
    m_reflectedName = name;
    m_namePending = false;
}

void Reflected::AddReflected(ReflectedPtr child) {
    if (const util::LockPtr<ClassObject> owner = child->GetOwner().Lock()) {
        owner->RemoveVariable(child->GetReflectedName());
    }
    const util::String base = child->GetReflectedName();
    util::String candidate = base;
    for (int counter = 2; HasVariable(candidate); ++counter) {
        candidate = base + "_" + std::to_string(counter);
    }
    child->SetReflectedName(candidate);
    AddConstant(candidate, std::move(child));
}

void Reflected::SetConstant(const util::String& name, const util::String& value) {
    SetConstantObject(name, ValueToObject(value));
}

void Reflected::SetConstant(const util::String& name, float value) {
    SetConstantObject(name, ValueToObject(value));
}

util::String Reflected::ToString() const {
    return GetReflectedName();
}

util::String Reflected::MakeReflectedName() const {
    return m_reflectedName;
}

void Reflected::ResolveReflectedName() const {
    m_namePending = false;
    m_reflectedName = MakeReflectedName();
}

void Reflected::AddConstant(const util::String& name, ObjectPtr value) {
    AddVariable(VariablePtr(new Variable(name, std::move(value), true)));
}

void Reflected::SetConstantObject(const util::String& name, ObjectPtr value) {
    if (const VariablePtr variable = GetVariable(name)) {
        variable->SetValue(std::move(value));
    } else {
        AddConstant(name, std::move(value));
    }
}

}  // namespace script
