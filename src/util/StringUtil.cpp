#include "util/StringUtil.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <locale>

namespace util {
namespace {

// Compares length bytes of a from offsetA with b from its start.
bool EqualRangeIgnoreCase(const String& a, size_t offsetA, const String& b, size_t length) {
    const std::locale locale;
    for (size_t i = 0; i < length; ++i) {
        if (std::tolower(a[offsetA + i], locale) != std::tolower(b[i], locale)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool StartsWith(const String& text, const String& prefix) {
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

bool EndsWith(const String& text, const String& suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool EqualsIgnoreCase(const String& a, const String& b) {
    return a.size() == b.size() && EqualRangeIgnoreCase(a, 0, b, b.size());
}

bool StartsWithIgnoreCase(const String& text, const String& prefix) {
    return text.size() >= prefix.size() && EqualRangeIgnoreCase(text, 0, prefix, prefix.size());
}

bool EndsWithIgnoreCase(const String& text, const String& suffix) {
    return text.size() >= suffix.size() &&
           EqualRangeIgnoreCase(text, text.size() - suffix.size(), suffix, suffix.size());
}

String ToLower(const String& text) {
    String result = text;
    for (char& c : result) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return result;
}

String Utf8ToLatin1(const String& text) {
    String result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        // U+0080 to U+00FF are the two-byte sequences led by 0xC2 and 0xC3.
        if ((lead == 0xC2 || lead == 0xC3) && (next & 0xC0) == 0x80) {
            result += static_cast<char>(((lead & 0x03) << 6) | (next & 0x3F));
            ++i;
        } else {
            result += static_cast<char>(lead);
        }
    }
    return result;
}

String ToUpper(const String& text) {
    String result = text;
    for (char& c : result) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return result;
}

String TrimBlanks(const String& text) {
    const size_t begin = text.find_first_not_of(' ');
    if (begin == String::npos) {
        return "";
    }
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

String Join(const std::vector<String>& pieces, const String& separator) {
    String result;
    for (size_t i = 0; i < pieces.size(); ++i) {
        if (i != 0) {
            result += separator;
        }
        result += pieces[i];
    }
    return result;
}

std::vector<String> Split(const String& text, char separator) {
    std::vector<String> pieces;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == separator) {
            pieces.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

void AppendFormatted(String& out, const char* format, ...) {
    char piece[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(piece, sizeof(piece), format, args);
    va_end(args);
    out += piece;
}

}  // namespace util
