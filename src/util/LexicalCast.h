#pragma once

#include <ios>
#include <locale>
#include <sstream>
#include <string_view>
#include <type_traits>

#include "util/String.h"
#include "util/TypeName.h"

namespace util {

namespace lexical_cast_detail {

template <class T>
inline constexpr bool kIsStringLike = std::is_convertible_v<const T&, std::string_view>;

template <class T>
inline constexpr bool kIsCharacter =
    std::is_same_v<T, char> || std::is_same_v<T, signed char> || std::is_same_v<T, unsigned char>;

[[noreturn]] void ThrowBadCast();
[[noreturn]] void ThrowNotA(const String& text, const String& typeName);

// Infinite values print as "+inf" and "-inf"; finite ones in the shortest form that reads
// back as the same value.
String FloatToString(float value);
String FloatToString(double value);
String FloatToString(long double value);

// The infinities and NaN, which the stream conversion does not read: an optional sign and
// "inf", "infinity" or "nan", ignoring case.
bool ParseSpecialFloat(const String& text, float& value);
bool ParseSpecialFloat(const String& text, double& value);
bool ParseSpecialFloat(const String& text, long double& value);

template <class T>
String ToString(const T& value) {
    if constexpr (std::is_floating_point_v<T>) {
        return FloatToString(value);
    } else if constexpr (kIsCharacter<T>) {
        return String(1, static_cast<char>(value));
    } else {
        std::ostringstream out;
        out.imbue(std::locale::classic());
        out << value;
        if (out.fail()) {
            ThrowBadCast();
        }
        return out.str();
    }
}

// The whole text must be taken, without surrounding blanks for numbers and characters.
template <class T>
bool TryParse(const String& text, T& value) {
    if constexpr (std::is_same_v<T, String>) {
        value = text;
        return true;
    } else if constexpr (kIsCharacter<T>) {
        if (text.size() != 1) {
            return false;
        }
        value = static_cast<T>(text[0]);
        return true;
    } else {
        if constexpr (std::is_floating_point_v<T>) {
            if (ParseSpecialFloat(text, value)) {
                return true;
            }
        }
        if constexpr (std::is_unsigned_v<T>) {
            // The stream would wrap "-1" around to the largest value.
            if (!text.empty() && text[0] == '-') {
                return false;
            }
        }
        std::istringstream in(text);
        in.imbue(std::locale::classic());
        if constexpr (std::is_arithmetic_v<T>) {
            in >> std::noskipws;
        }
        in >> value;
        if (in.fail()) {
            return false;
        }
        if constexpr (!std::is_arithmetic_v<T>) {
            in >> std::ws;
        }
        return in.peek() == std::istringstream::traits_type::eof();
    }
}

}  // namespace lexical_cast_detail

// Conversion through the standard streams. From a string, a failure throws
// std::runtime_error "Bad lexical cast: \"<text>\" is not a <type>"; any other failed
// conversion throws "Bad lexical cast".
template <class Target, class Source>
Target LexicalCast(const Source& value) {
    using namespace lexical_cast_detail;
    if constexpr (kIsStringLike<Source>) {
        const String text{std::string_view(value)};
        Target result{};
        if (!TryParse(text, result)) {
            ThrowNotA(text, TypeName<Target>());
        }
        return result;
    } else if constexpr (std::is_same_v<Target, String>) {
        return ToString(value);
    } else if constexpr (std::is_same_v<Target, Source>) {
        return value;
    } else {
        Target result{};
        if (!TryParse(ToString(value), result)) {
            ThrowBadCast();
        }
        return result;
    }
}

}  // namespace util
