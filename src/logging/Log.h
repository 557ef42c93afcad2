#pragma once

#include <exception>

#include "util/String.h"

namespace logging {

// Levels are bits; Error is the union of the two check levels.
enum LogLevel : unsigned {
    Warning = 1,
    CodeCheck = 2,
    DataCheck = 4,
    Error = 6,
    Debug = 8,
    Info = 16,
};

// Common reporters for caught exceptions, each with the location of the catch. They log
// at Debug: "Caught Exception: " for the system's own family, "Caught exception: " for
// any other std::exception, "Caught an unknown exception: " for anything else.
void LogCaughtException(const std::exception& e, const util::String& location);
void LogCaughtUnknownException(const util::String& location);

}  // namespace logging

// The entry all code logs through. Adds the "-- Warning: " and "!! ERROR: " prefixes and
// hands the line to the logger; before the logger exists, or after it is gone, the line
// goes to standard output and "Unlogged.txt".
void Log(logging::LogLevel level, const util::String& text);
