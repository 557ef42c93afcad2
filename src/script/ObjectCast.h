#pragma once

#include "script/ClassObject.h"
#include "script/Objects.h"

namespace script {

// Casts by the object's kind instead of dynamic_cast; null when the object is something
// else, or null itself.
template <class T>
const Value<T>* AsValue(const Object* object) {
    return object && object->GetKind() == ValueKind<T>() ? static_cast<const Value<T>*>(object)
                                                         : nullptr;
}
template <class T>
const Value<T>* AsValue(const ObjectPtr& object) {
    return AsValue<T>(object.Get());
}

inline List* AsList(const ObjectPtr& object) {
    return object && object->GetKind() == Object::Kind::List ? static_cast<List*>(object.Get())
                                                             : nullptr;
}

// Lists are functions too.
inline AbstractFunction* AsFunction(const ObjectPtr& object) {
    const bool callable = object && (object->GetKind() == Object::Kind::Function ||
                                     object->GetKind() == Object::Kind::List);
    return callable ? static_cast<AbstractFunction*>(object.Get()) : nullptr;
}

inline ClassObject* AsClassObject(const ObjectPtr& object) {
    return object && object->GetKind() == Object::Kind::ClassObject
               ? static_cast<ClassObject*>(object.Get())
               : nullptr;
}

}  // namespace script
