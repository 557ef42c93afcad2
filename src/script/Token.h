#pragma once

#include <utility>
#include <vector>

#include "util/String.h"

namespace script {

// One lexical unit of a script: plain values, copied freely.
struct Token {
    // The numeric values are stored and compared by the parser; keep them stable.
    enum Kind : unsigned char { Bool = 0, Float = 1, Int = 2, String = 3, Symbol = 4 };

    Token() = default;
    Token(util::String text, Kind kind) : text(std::move(text)), kind(kind) {}

    bool operator==(const Token& other) const = default;

    // Source characters as written (numbers keep their sign); for a string the text
    // with its escapes resolved and without the quotes.
    util::String text;
    Kind kind = Symbol;
};

using TokenList = std::vector<Token>;
using TokenIt = TokenList::const_iterator;

}  // namespace script
