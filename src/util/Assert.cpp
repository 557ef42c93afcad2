#include "util/Assert.h"

#include <cstdio>
#include <vector>

#include "logging/Log.h"
#include "util/Exception.h"

void AssertionFailed(const char* expression, bool isAssertion, bool isCode, const char* function,
                     const char* file, long line) {
    const char* format = "%s %s failed: \"%s\" in function %s inf %s:%i";
    const char* kind = isCode ? "Code" : "Data";
    const char* what = isAssertion ? "assertion" : "check";
    const int length = std::snprintf(nullptr, 0, format, kind, what, expression, function, file,
                                     static_cast<int>(line));
    std::vector<char> buffer(static_cast<size_t>(length > 0 ? length : 0) + 1);
    std::snprintf(buffer.data(), buffer.size(), format, kind, what, expression, function, file,
                  static_cast<int>(line));
    const util::String message(buffer.data());

    if (!isAssertion) {
        Log(isCode ? logging::CodeCheck : logging::DataCheck, message);
        return;
    }
    Log(logging::Debug, message);
    const util::String location = util::MakeLocation(file, line, function);
    if (isCode) {
        util::Throw<BadCoderException>(message, location);
    }
    util::Throw<BadDataException>(message, location);
}
