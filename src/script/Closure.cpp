#include "script/Closure.h"

#include <utility>

#include "script/Expressions.h"

namespace script {

Closure::Closure(const util::String& name, ClosurePtr parent) : Scope(name, std::move(parent)) {}

Closure::~Closure() = default;

ClosurePtr Closure::MakeCallClosure(ClosurePtr parent, ExpressionPtr functionCode) {
    const ClosurePtr closure(new Closure(util::String(), std::move(parent)));
    closure->m_functionCode = std::move(functionCode);
    closure->DeferReflectedName();
    return closure;
}

util::String Closure::MakeReflectedName() const {
    const ExpressionPtr code = std::move(m_functionCode);
    m_functionCode.Reset();
    return "[function closure: " + code->ToCode() + "]";
}

}  // namespace script
