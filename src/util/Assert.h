#pragma once

// The one entry behind all internal checks. A "check" logs and returns; an "assertion"
// logs, writes the throw line and throws (BadCoderException for code, BadDataException
// for data).
void AssertionFailed(const char* expression, bool isAssertion, bool isCode, const char* function,
                     const char* file, long line);

#define VORRA_ASSERTION_(expr, isAssertion, isCode)                                      \
    do {                                                                                 \
        if (!(expr)) {                                                                   \
            ::AssertionFailed(#expr, isAssertion, isCode, __PRETTY_FUNCTION__, __FILE__, \
                              __LINE__);                                                 \
        }                                                                                \
    } while (false)

// A programmer's contract: throws BadCoderException when broken.
#define CODE_ASSERT(expr) VORRA_ASSERTION_(expr, true, true)
// A programmer's contract that can be survived: logs at CodeCheck.
#define CODE_CHECK(expr) VORRA_ASSERTION_(expr, false, true)
// Outside data must hold this: throws BadDataException when broken.
#define DATA_ASSERT(expr) VORRA_ASSERTION_(expr, true, false)
// Outside data should hold this: logs at DataCheck.
#define DATA_CHECK(expr) VORRA_ASSERTION_(expr, false, false)
