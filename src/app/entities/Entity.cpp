#include "app/entities/Entity.h"

#include "app/Chain.h"
#include "app/FileInfo.h"
#include "app/entities/EntityColor.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "script/Variable.h"
#include "util/Prefetch.h"

namespace app {

namespace {

int s_nextID = 0;

}  // namespace

Entity::Entity(const util::String& reflectedName) : script::Reflected(reflectedName) {
    AddAttrib(entityID, "entityID", s_nextID++);
    AddAttrib(color, "color", EntityColorSource::Next());
    AddAttrib(zDepth, "zDepth", -1.0f);
}

Entity::~Entity() = default;

namespace {

// A value of the wrong type costs only its own key.
void SetGuarded(script::Variable& variable, const script::ObjectPtr& value) {
    // Most of a restore writes back the values the variables hold: no reference is taken
    // then, since the value to fall back to is the one written.
    const bool same = variable.GetValue() == value;
    const script::ObjectPtr previous = same ? script::ObjectPtr() : variable.GetValue();
    try {
        variable.SetValue(value);
    } catch (const std::exception& e) {
        if (!same) {
            variable.SetValue(previous);
        }
        Log(logging::Warning,
            "Bad value for " + variable.GetName() + ": " + util::String(e.what()));
    }
}

}  // namespace

bool StrokePassesNear(const physics::LineList& stroke, const math::Vec2& point, float radius) {
    for (const physics::Line& segment : stroke) {
        if (math::PointSegmentDist(point, segment.a, segment.b) <= radius) {
            return true;
        }
    }
    return false;
}

math::Vec4 Entity::GetBorderColor() const {
    if (selected && mouseOver) {
        return {0.8f, 0.8f, 0.8f, 1};
    }
    if (selected) {
        return {1, 1, 1, 1};
    }
    if (mouseOver) {
        return {0.2f, 0.2f, 0.2f, 1};
    }
    const math::Vec4 fill = color->Get();
    return {fill.x / 2, fill.y / 2, fill.z / 2, fill.w};
}

void Entity::SetChain(const ChainPtr& chain) {
    m_chain = chain;
}

int Entity::PeekNextID() {
    return s_nextID;
}

void Entity::Serialize(AttributeMap& out) const {
    // Every attribute as the script holds it, so that a formula stays a formula.
    // Walked in place: snapshots serialise every entity, and a copied list of variables
    // was a good part of their cost.
    // A few keys more come from the kinds.
    out.reserve(out.size() + GetVariableMap().size() + 4);
    for (const auto& [name, variable] : GetVariableMap()) {
        if (variable->IsAttribute()) {
            out[name] = variable->GetValue();
        }
    }
    if (m_chain) {
        out["chain"] = script::ValueToObject(m_chain->GetNumber());
        out["chainNr"] = script::ValueToObject(m_chain->GetIndex(this));
    }
}

bool Entity::IsSetByKey(const script::Variable* variable) const {
    // The colour's length depends on the file's version: read apart. The id is the
    // running program's; the file's id binds only within the file.
    return variable != color.Get() && variable != entityID.Get();
}

void Entity::Capture(AttributeMap& out, AttributeValues& values) const {
    Serialize(out);
    values.reserve(GetVariableMap().size());
    for (const auto& [name, variable] : GetVariableMap()) {
        const auto found = out.find(name);
        if (found != out.end() && IsSetByKey(variable.Get())) {
            values.emplace_back(variable.Get(), found->second);
        }
    }
}

void Entity::Restore(const AttributeMap& in, const AttributeValues& values) {
    m_restoring = &values;
    try {
        Deserialize(in);
    } catch (...) {
        m_restoring = nullptr;
        throw;
    }
    m_restoring = nullptr;
}

void Entity::Deserialize(const AttributeMap& in) {
    if (m_restoring) {
        // The variables lie far apart in memory: each is fetched a few entries ahead.
        using Entry = AttributeValues::value_type;
        util::VisitPrefetched(
            *m_restoring, 4, [](const Entry& entry) { return entry.first; },
            [](const Entry& entry) { SetGuarded(*entry.first, entry.second); });
    } else {
        for (const auto& [name, variable] : GetVariableMap()) {
            const auto found = in.find(name);
            if (found != in.end() && IsSetByKey(variable.Get())) {
                SetGuarded(*variable, found->second);
            }
        }
    }
    // Files before version 2 have opaque colours of three components. A restore finds
    // the colour it wrote mostly still there.
    const auto colour = in.find("color");
    if (colour != in.end() && !color->Holds(colour->second)) {
        if (FileInfo::Get().version->Get() < 2) {
            const auto rgb = script::ObjectToValue<math::Vec3>(colour->second);
            color->SetNative(math::Vec4(rgb.x, rgb.y, rgb.z, 1));
        } else {
            color->SetNative(script::ObjectToValue<math::Vec4>(colour->second));
        }
    }
}

void Entity::CopyAttributes(const Entity& source) {
    // An attribute name belongs to one level of the class tree, so copying by name takes
    // exactly what the two kinds share. The id stays the entity's own.
    for (const script::VariablePtr& from : source.GetVariables()) {
        if (!dynamic_cast<const script::AbstractAttrib*>(from.Get()) ||
            from->GetName() == "entityID") {
            continue;
        }
        if (const script::VariablePtr to = GetVariable(from->GetName())) {
            to->SetValue(from->GetValue());
        }
    }
}

}  // namespace app
