#include "app/EntitySerializer.h"

#include "script/Closure.h"
#include "script/Exceptions.h"
#include "script/ValueConversions.h"
#include "script/Variable.h"

namespace app {

EntitySerializer EntitySerializer::FromClosure(const script::ClosurePtr& closure) {
    AttributeMap keys;
    if (closure) {
        for (const script::VariablePtr& variable : closure->GetVariables()) {
            keys[variable->GetName()] = variable->GetValue();
        }
    }
    return EntitySerializer(std::move(keys));
}

const script::ObjectPtr& EntitySerializer::Find(const util::String& key) const {
    const auto found = m_keys.find(key);
    if (found == m_keys.end()) {
        throw script::ScriptException("Missing key: " + key);
    }
    return found->second;
}

int EntitySerializer::GetInt(const util::String& key) const {
    return script::ObjectToValue<int>(Find(key));
}

float EntitySerializer::GetFloat(const util::String& key) const {
    return script::ObjectToValue<float>(Find(key));
}

bool EntitySerializer::GetBool(const util::String& key) const {
    return script::ObjectToValue<bool>(Find(key));
}

util::String EntitySerializer::GetString(const util::String& key) const {
    return script::ObjectToValue<util::String>(Find(key));
}

math::Vec2 EntitySerializer::GetVec2(const util::String& key) const {
    return script::ObjectToValue<math::Vec2>(Find(key));
}

std::vector<int> EntitySerializer::GetInts(const util::String& key) const {
    std::vector<int> values;
    for (const script::ObjectPtr& element : script::ObjectToValue<script::ObjectList>(Find(key))) {
        values.push_back(script::ObjectToValue<int>(element));
    }
    return values;
}

math::Vec2List EntitySerializer::GetVec2s(const util::String& key) const {
    math::Vec2List values;
    for (const script::ObjectPtr& element : script::ObjectToValue<script::ObjectList>(Find(key))) {
        values.push_back(script::ObjectToValue<math::Vec2>(element));
    }
    return values;
}

}  // namespace app
