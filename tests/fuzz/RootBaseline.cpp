#include "RootBaseline.h"

#include <set>

#include "logging/Logger.h"
#include "script/ClassObject.h"
#include "script/Closure.h"
#include "script/Infix.h"
#include "script/Parser.h"
#include "script/Scope.h"
#include "script/Variable.h"
#include "util/Pointee.h"
#include "util/Profiler.h"

namespace fuzz {
namespace {

// The scope keeps its infix functions in a vector that it only exposes read-only. The
// vector itself is not const, so cutting it back to the captured length is sound.
void TruncateInfixes(const script::Scope& scope, size_t count) {
    auto& infixes = const_cast<std::vector<script::InfixPtr>&>(scope.GetInfixes());
    if (infixes.size() > count) {
        infixes.resize(count);
    }
}

template <class Map>
void RemoveExtraVariables(script::ClassObject& object, const Map& keep) {
    std::vector<util::String> extra;
    for (const auto& entry : object.GetVariableMap()) {
        if (keep.find(entry.first) == keep.end()) {
            extra.push_back(entry.first);
        }
    }
    for (const util::String& name : extra) {
        object.RemoveVariable(name);
    }
}

}  // namespace

void RootBaseline::Capture() {
    const script::Parser& parser = script::Parser::Get();
    m_rootValues.clear();
    m_objects.clear();
    for (const auto& [name, variable] : parser.GetRootClosure()->GetVariableMap()) {
        m_rootValues[name] = variable->GetValue();
        if (const auto object =
                util::DynamicPointerCast<script::ClassObject>(variable->GetValue())) {
            CaptureObject(object);
        }
    }
    m_scopeInfixes = parser.GetRootScope()->GetInfixes().size();
    m_closureInfixes = parser.GetRootClosure()->GetInfixes().size();
}

void RootBaseline::CaptureObject(const script::ClassObjectPtr& object) {
    for (const ObjectState& state : m_objects) {
        if (state.object == object) {
            return;
        }
    }
    m_objects.push_back({object, {}});
    const size_t index = m_objects.size() - 1;
    std::vector<script::ClassObjectPtr> children;
    for (const auto& [name, variable] : object->GetVariableMap()) {
        const script::ObjectPtr& value = variable->GetValue();
        m_objects[index].members[name] = value;
        // Only what the object owns: a member that merely refers to an object elsewhere
        // is no part of this one.
        const auto child = util::DynamicPointerCast<script::ClassObject>(value);
        if (child && child->GetOwner().Get() == object.Get()) {
            children.push_back(child);
        }
    }
    for (const script::ClassObjectPtr& child : children) {
        CaptureObject(child);
    }
}

void RootBaseline::Restore() const {
    script::Parser& parser = script::Parser::Get();
    const script::ClosurePtr& root = parser.GetRootClosure();
    // User functions hold the root closure strongly, so removing them is also what lets
    // their trees and closures go.
    RemoveExtraVariables(*root, m_rootValues);
    for (const auto& [name, value] : m_rootValues) {
        const script::VariablePtr variable = root->GetVariable(name);
        if (!variable) {
            root->AddVariable(name, value);
        } else if (variable->GetValue() != value) {
            variable->SetValue(value);
        }
    }
    for (const ObjectState& state : m_objects) {
        RemoveExtraVariables(*state.object, state.members);
        for (const auto& [name, value] : state.members) {
            const script::VariablePtr variable = state.object->GetVariable(name);
            if (variable && variable->GetValue() != value) {
                variable->SetValue(value);
            }
        }
    }
    TruncateInfixes(*parser.GetRootScope(), m_scopeInfixes);
    TruncateInfixes(*root, m_closureInfixes);
}

void RootBaseline::TruncateScopeInfixes() const {
    TruncateInfixes(*script::Parser::Get().GetRootScope(), m_scopeInfixes);
}

void EndFrames() {
    logging::Logger::Get().Update();
    logging::Logger::Get().Update();
    util::Profiler::Get().Reset();
    util::SweepHandles();
}

}  // namespace fuzz
