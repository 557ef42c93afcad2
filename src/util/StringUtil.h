#pragma once

#include <vector>

#include "util/String.h"

namespace util {

bool StartsWith(const String& text, const String& prefix);
bool EndsWith(const String& text, const String& suffix);

// Case is folded with the global locale, byte by byte.
bool EqualsIgnoreCase(const String& a, const String& b);
bool StartsWithIgnoreCase(const String& text, const String& prefix);
// The file loader compares file extensions this way.
bool EndsWithIgnoreCase(const String& text, const String& suffix);

// Byte by byte with the C library.
String ToLower(const String& text);
String ToUpper(const String& text);

// The program's text is Latin-1, one byte a character. UTF-8 sequences of the characters
// Latin-1 has become their byte; every other byte, a stray one included, stays as it is.
String Utf8ToLatin1(const String& text);

// Without the blanks at either end.
String TrimBlanks(const String& text);

// An empty list gives "".
String Join(const std::vector<String>& pieces, const String& separator);
// Splits at every separator. Empty pieces are kept and the rest after the last separator is
// always added: "a,,b" gives three pieces, "a,b," gives "a", "b" and "", "" gives one "".
std::vector<String> Split(const String& text, char separator);

// Appends printf-formatted text; one piece is cut at 255 bytes, enough for report lines.
__attribute__((format(printf, 2, 3))) void AppendFormatted(String& out, const char* format, ...);

}  // namespace util
