#include "util/LexicalCast.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "util/Exception.h"
#include "util/StringUtil.h"

namespace util::lexical_cast_detail {
namespace {

template <class T>
String FloatToStringImpl(T value) {
    if (std::isinf(value)) {
        return value > 0 ? "+inf" : "-inf";
    }
    char buffer[128];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    if (result.ec != std::errc()) {
        ThrowBadCast();
    }
    return String(buffer, result.ptr);
}

template <class T>
bool ParseSpecialFloatImpl(const String& text, T& value) {
    size_t start = 0;
    bool negative = false;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        start = 1;
    }
    const String word = ToLower(text.substr(start));
    T magnitude;
    if (word == "inf" || word == "infinity") {
        magnitude = std::numeric_limits<T>::infinity();
    } else if (word == "nan") {
        magnitude = std::numeric_limits<T>::quiet_NaN();
    } else {
        return false;
    }
    value = negative ? -magnitude : magnitude;
    return true;
}

}  // namespace

void ThrowBadCast() {
    VORRA_THROW(std::runtime_error, "Bad lexical cast");
}

void ThrowNotA(const String& text, const String& typeName) {
    VORRA_THROW(std::runtime_error, "Bad lexical cast: \"" + text + "\" is not a " + typeName);
}

String FloatToString(float value) {
    return FloatToStringImpl(value);
}
String FloatToString(double value) {
    return FloatToStringImpl(value);
}
String FloatToString(long double value) {
    return FloatToStringImpl(value);
}

bool ParseSpecialFloat(const String& text, float& value) {
    return ParseSpecialFloatImpl(text, value);
}
bool ParseSpecialFloat(const String& text, double& value) {
    return ParseSpecialFloatImpl(text, value);
}
bool ParseSpecialFloat(const String& text, long double& value) {
    return ParseSpecialFloatImpl(text, value);
}

}  // namespace util::lexical_cast_detail
