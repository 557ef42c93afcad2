#pragma once

#include <typeinfo>

#include "util/String.h"

namespace util {

// The readable run-time name of a type ("app::Scene" rather than the mangled form).
String TypeName(const std::type_info& info);

template <class T>
String TypeName() {
    return TypeName(typeid(T));
}

}  // namespace util
