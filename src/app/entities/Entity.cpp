#include "app/entities/Entity.h"

#include "app/Chain.h"
#include "app/FileInfo.h"
#include "app/entities/EntityColor.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "script/Variable.h"

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

bool StrokePassesNear(const physics::LineList& stroke, const math::Vec2& point, float radius) {
    for (const physics::Line& segment : stroke) {
        if (math::PointSegmentDist(point, segment.a, segment.b) <= radius) {
            return true;
        }
    }
    return false;
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

void Entity::Deserialize(const AttributeMap& in) {
    for (const auto& [key, variable] : GetVariableMap()) {
        const util::String& name = variable->GetName();
        const auto found = in.find(name);
        // The colour's length depends on the file's version: read below. The id is the
        // running program's; the file's id binds only within the file.
        if (found == in.end() || name == "color" || name == "entityID") {
            continue;
        }
        // A value of the wrong type costs only its own key.
        const script::ObjectPtr previous = variable->GetValue();
        try {
            variable->SetValue(found->second);
        } catch (const std::exception& e) {
            variable->SetValue(previous);
            Log(logging::Warning, "Bad value for " + name + ": " + util::String(e.what()));
        }
    }
    // Files before version 2 have opaque colours of three components.
    if (FileInfo::Get().version->Get() < 2) {
        math::Vec3 rgb;
        if (ReadKey(in, "color", rgb)) {
            color->SetNative(math::Vec4(rgb.x, rgb.y, rgb.z, 1));
        }
    } else {
        math::Vec4 rgba;
        if (ReadKey(in, "color", rgba)) {
            color->SetNative(rgba);
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
