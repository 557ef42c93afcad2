#pragma once

#include "script/Token.h"
#include "util/String.h"

namespace script {

// The lexical stage of the script language: a whole text in, a flat token list out.
class Tokenizer {
public:
    // Throws TokenException ("Line N: ...") on a malformed string literal; any other byte
    // sequence forms some token.
    static TokenList Tokenize(const util::String& text);
};

}  // namespace script
