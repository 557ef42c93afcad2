#pragma once

#include <vector>

#include "app/entities/Entity.h"
#include "math/Vector2.h"
#include "script/Forward.h"
#include "util/String.h"

namespace app {

// The keys of one entity's line in a scene file, as the line's inline function left them,
// with typed getters. A missing key is a failure of the conversion, as is a wrong type.
class EntitySerializer {
public:
    EntitySerializer() = default;
    explicit EntitySerializer(AttributeMap keys) : m_keys(std::move(keys)) {}
    // Every variable of the closure, by name.
    static EntitySerializer FromClosure(const script::ClosurePtr& closure);

    bool Has(const util::String& key) const { return m_keys.find(key) != m_keys.end(); }
    int GetInt(const util::String& key) const;
    float GetFloat(const util::String& key) const;
    bool GetBool(const util::String& key) const;
    util::String GetString(const util::String& key) const;
    math::Vec2 GetVec2(const util::String& key) const;
    std::vector<int> GetInts(const util::String& key) const;
    math::Vec2List GetVec2s(const util::String& key) const;

    const AttributeMap& GetKeys() const { return m_keys; }

private:
    const script::ObjectPtr& Find(const util::String& key) const;

    AttributeMap m_keys;
};

}  // namespace app
