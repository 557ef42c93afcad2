#pragma once

#include <stdexcept>
#include <type_traits>

#include "util/String.h"

// Root of the system's own exceptions: the message, and where it was thrown.
class Exception : public std::runtime_error {
public:
    explicit Exception(const util::String& message, const util::String& location = util::String())
        : std::runtime_error(message), m_location(location) {}

    util::String Message() const { return what(); }
    const util::String& Location() const { return m_location; }

private:
    util::String m_location;
};

// The machine cannot run the program at all.
class FatalException : public Exception {
public:
    using Exception::Exception;
};

// A programmer's mistake.
class BadCoderException : public Exception {
public:
    using Exception::Exception;
};

// Outside data is wrong.
class BadDataException : public Exception {
public:
    using Exception::Exception;
};

// A file is malformed.
class FileReadException : public BadDataException {
public:
    using BadDataException::BadDataException;
};

namespace util {

// "<source file>:<line>: <function>".
String MakeLocation(const char* file, long line, const char* function);

// Writes "Exception thrown: <message> from <location>" at Debug. Every throw of the
// system's own goes through here, so each appears in the log exactly once.
void LogThrow(const String& message, const String& location);

// Logs the throw line and throws E, giving it the location when it takes one.
template <class E>
[[noreturn]] void Throw(const String& message, const String& location) {
    LogThrow(message, location);
    if constexpr (std::is_constructible_v<E, const String&, const String&>) {
        throw E(message, location);
    } else {
        throw E(message);
    }
}

}  // namespace util

#define VORRA_LOCATION ::util::MakeLocation(__FILE__, __LINE__, __PRETTY_FUNCTION__)

// Throws an exception of the given type with the throw line in the log.
#define VORRA_THROW(ExceptionType, message) ::util::Throw<ExceptionType>((message), VORRA_LOCATION)
