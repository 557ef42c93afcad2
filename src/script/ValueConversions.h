#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

#include "math/BoundingBox2.h"
#include "math/Vector2.h"
#include "math/Vector3.h"
#include "math/Vector4.h"
#include "script/Forward.h"
#include "script/Objects.h"

// The two directions between script values and native values. Reading is strict: no
// string becomes a number, no number a bool, and an int only comes from an int.
namespace script {

// Throws ScriptException ("Not a bool", "Not an integer", ...) for an object of the
// wrong class. The general form reads the math vectors, through ObjectToVec.
template <class T>
T ObjectToValue(ObjectPtr object);

template <>
bool ObjectToValue<bool>(ObjectPtr object);
template <>
int ObjectToValue<int>(ObjectPtr object);
// As int, then reinterpreted.
template <>
unsigned int ObjectToValue<unsigned int>(ObjectPtr object);
// A double or an int.
template <>
long double ObjectToValue<long double>(ObjectPtr object);
// As long double, through single precision on the way: about seven digits survive.
template <>
double ObjectToValue<double>(ObjectPtr object);
template <>
float ObjectToValue<float>(ObjectPtr object);
template <>
util::String ObjectToValue<util::String>(ObjectPtr object);
// The elements of a list.
template <>
ObjectList ObjectToValue<ObjectList>(ObjectPtr object);
template <>
std::vector<math::Vec2> ObjectToValue<std::vector<math::Vec2>>(ObjectPtr object);
// [position, size]; a negative size is allowed.
template <>
math::BoundingBox2f ObjectToValue<math::BoundingBox2f>(ObjectPtr object);
// Anything but a script function fails the assertion "ret".
template <>
FunctionPtr ObjectToValue<FunctionPtr>(ObjectPtr object);

namespace conversion_detail {

// The elements of a list of exactly this length; else "Not a vector".
const ObjectList& VectorElements(const ObjectPtr& object, size_t count);

template <class V>
constexpr size_t ComponentCount() {
    if constexpr (requires(V v) { v.w; }) {
        return 4;
    } else if constexpr (requires(V v) { v.z; }) {
        return 3;
    } else {
        return 2;
    }
}

}  // namespace conversion_detail

// A math vector from a list of as many elements as it has components, each converted to
// the component type: [1, 2.5] is a Vec2.
template <class V>
void ObjectToVec(V& out, ObjectPtr object) {
    using Component = std::remove_cvref_t<decltype(out.x)>;
    constexpr size_t count = conversion_detail::ComponentCount<V>();
    const ObjectList& elements = conversion_detail::VectorElements(object, count);
    out.x = ObjectToValue<Component>(elements[0]);
    out.y = ObjectToValue<Component>(elements[1]);
    if constexpr (count > 2) {
        out.z = ObjectToValue<Component>(elements[2]);
    }
    if constexpr (count > 3) {
        out.w = ObjectToValue<Component>(elements[3]);
    }
}

template <class T>
T ObjectToValue(ObjectPtr object) {
    T value{};
    ObjectToVec(value, std::move(object));
    return value;
}

// Each returns a new object.
ObjectPtr ValueToObject(const util::String& value);
ObjectPtr ValueToObject(const char* value);
ObjectPtr ValueToObject(int value);
ObjectPtr ValueToObject(unsigned int value);
ObjectPtr ValueToObject(float value);
ObjectPtr ValueToObject(double value);
ObjectPtr ValueToObject(long double value);
ObjectPtr ValueToObject(bool value);
// A list of the two.
ObjectPtr ValueToObject(const std::pair<ObjectPtr, ObjectPtr>& value);
// [position, size]: the minimum corner and the extent.
ObjectPtr ValueToObject(const math::BoundingBox2f& value);

// One element per component: doubles for float components, ints for int ones.
template <class C>
ObjectPtr ValueToObject(const math::TVector2<C>& value) {
    return ObjectPtr(new List(ObjectList{ValueToObject(value.x), ValueToObject(value.y)}));
}
template <class C>
ObjectPtr ValueToObject(const math::TVector3<C>& value) {
    return ObjectPtr(new List(
        ObjectList{ValueToObject(value.x), ValueToObject(value.y), ValueToObject(value.z)}));
}
template <class C>
ObjectPtr ValueToObject(const math::TVector4<C>& value) {
    return ObjectPtr(new List(ObjectList{ValueToObject(value.x), ValueToObject(value.y),
                                         ValueToObject(value.z), ValueToObject(value.w)}));
}

}  // namespace script
