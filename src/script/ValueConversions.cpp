#include "script/ValueConversions.h"
#include "script/ObjectCast.h"

#include <algorithm>

#include "script/Exceptions.h"
#include "util/Assert.h"
#include "util/Exception.h"

namespace script {
namespace {}  // namespace

namespace conversion_detail {

const ObjectList& VectorElements(const ObjectPtr& object, size_t count) {
    const List* list = AsList(object);
    if (!list || list->GetElements().size() != count) {
        VORRA_THROW(ScriptException, "Not a vector");
    }
    return list->GetElements();
}

}  // namespace conversion_detail

template <>
bool ObjectToValue<bool>(ObjectPtr object) {
    if (const Value<bool>* value = AsValue<bool>(object)) {
        return value->GetValue();
    }
    VORRA_THROW(ScriptException, "Not a bool");
}

template <>
int ObjectToValue<int>(ObjectPtr object) {
    if (const Value<int>* value = AsValue<int>(object)) {
        return value->GetValue();
    }
    VORRA_THROW(ScriptException, "Not an integer");
}

template <>
unsigned int ObjectToValue<unsigned int>(ObjectPtr object) {
    return static_cast<unsigned int>(ObjectToValue<int>(std::move(object)));
}

template <>
long double ObjectToValue<long double>(ObjectPtr object) {
    if (const Value<double>* value = AsValue<double>(object)) {
        return value->GetValue();
    }
    if (const Value<int>* value = AsValue<int>(object)) {
        return value->GetValue();
    }
    VORRA_THROW(ScriptException, "Not a float");
}

template <>
double ObjectToValue<double>(ObjectPtr object) {
    return static_cast<float>(ObjectToValue<long double>(std::move(object)));
}

template <>
float ObjectToValue<float>(ObjectPtr object) {
    return static_cast<float>(ObjectToValue<long double>(std::move(object)));
}

template <>
util::String ObjectToValue<util::String>(ObjectPtr object) {
    if (const Value<util::String>* value = AsValue<util::String>(object)) {
        return value->GetValue();
    }
    VORRA_THROW(ScriptException, "Not a string");
}

template <>
ObjectList ObjectToValue<ObjectList>(ObjectPtr object) {
    if (const List* list = AsList(object)) {
        return list->GetElements();
    }
    VORRA_THROW(ScriptException, "Not a list");
}

template <>
std::vector<math::Vec2> ObjectToValue<std::vector<math::Vec2>>(ObjectPtr object) {
    const List* list = AsList(object);
    if (!list) {
        VORRA_THROW(ScriptException, "Not a list");
    }
    std::vector<math::Vec2> points;
    points.reserve(list->GetElements().size());
    for (const ObjectPtr& element : list->GetElements()) {
        points.push_back(ObjectToValue<math::Vec2>(element));
    }
    return points;
}

template <>
math::BoundingBox2f ObjectToValue<math::BoundingBox2f>(ObjectPtr object) {
    const List* list = AsList(object);
    if (!list || list->GetElements().size() != 2) {
        VORRA_THROW(ScriptException, "Not a bounding box");
    }
    const math::Vec2 position = ObjectToValue<math::Vec2>(list->GetElements()[0]);
    const math::Vec2 corner = position + ObjectToValue<math::Vec2>(list->GetElements()[1]);
    return math::BoundingBox2f(
        math::Vec2(std::min(position.x, corner.x), std::min(position.y, corner.y)),
        math::Vec2(std::max(position.x, corner.x), std::max(position.y, corner.y)));
}

template <>
FunctionPtr ObjectToValue<FunctionPtr>(ObjectPtr object) {
    const FunctionPtr ret = util::DynamicPointerCast<Function>(object);
    CODE_ASSERT(ret);
    return ret;
}

ObjectPtr ValueToObject(const util::String& value) {
    return ObjectPtr(new Value<util::String>(value));
}

ObjectPtr ValueToObject(const char* value) {
    return ObjectPtr(new Value<util::String>(util::String(value)));
}

ObjectPtr ValueToObject(int value) {
    return ObjectPtr(new Value<int>(value));
}

ObjectPtr ValueToObject(unsigned int value) {
    return ObjectPtr(new Value<int>(static_cast<int>(value)));
}

ObjectPtr ValueToObject(float value) {
    return ObjectPtr(new Value<double>(static_cast<double>(value)));
}

ObjectPtr ValueToObject(double value) {
    return ObjectPtr(new Value<double>(value));
}

ObjectPtr ValueToObject(long double value) {
    return ObjectPtr(new Value<double>(static_cast<double>(value)));
}

ObjectPtr ValueToObject(bool value) {
    return ObjectPtr(new Value<bool>(value));
}

ObjectPtr ValueToObject(const std::pair<ObjectPtr, ObjectPtr>& value) {
    return ObjectPtr(new List(ObjectList{value.first, value.second}));
}

ObjectPtr ValueToObject(const math::BoundingBox2f& value) {
    return ObjectPtr(new List(ObjectList{ValueToObject(value.min), ValueToObject(value.Size())}));
}

}  // namespace script
