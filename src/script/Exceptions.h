#pragma once

#include "util/Exception.h"

namespace script {

// A script ran into a wrong value or a missing object while executing.
class ScriptException : public BadDataException {
public:
    using BadDataException::BadDataException;
};

// An attribute refused a value outside its limits; it keeps the value it had.
class RefusedValueException : public ScriptException {
public:
    using ScriptException::ScriptException;
};

// Evaluation nested deeper than the native stack allows, as endless recursion does.
// Statements let it pass on the way up, so that the whole recursion unwinds at once.
class RecursionException : public ScriptException {
public:
    using ScriptException::ScriptException;
};

// A token list does not form a valid statement or expression.
class ParseException : public BadDataException {
public:
    using BadDataException::BadDataException;
};

// The text could not be split into tokens (a malformed string literal).
class TokenException : public BadDataException {
public:
    using BadDataException::BadDataException;
};

}  // namespace script
