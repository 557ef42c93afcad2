#include "util/Exception.h"

#include "logging/Log.h"

namespace util {

String MakeLocation(const char* file, long line, const char* function) {
    return String(file) + ":" + std::to_string(line) + ": " + function;
}

void LogThrow(const String& message, const String& location) {
    Log(logging::Debug, "Exception thrown: " + message + " from " + location);
}

}  // namespace util
