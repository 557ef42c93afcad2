#pragma once

#include <exception>

#include "logging/Log.h"
#include "util/Exception.h"
#include "util/TypeName.h"

namespace util {

// Deletes through the virtual destructor and never lets an exception out, so a release
// always completes.
template <class T>
void SafeDelete(const T* object) {
    if (!object) {
        return;
    }
    // The type is taken before the delete, but only made readable on failure: deletes
    // are frequent, failures rare.
    const std::type_info& type = typeid(*object);
    try {
        delete object;
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        Log(logging::Warning,
            "Exception caught when deleting a " + TypeName(type) + ": " + e.what());
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
        Log(logging::Warning, "Unknown exception caught when deleting a " + TypeName(type));
    }
}

}  // namespace util
