#include "script/Tokenizer.h"

#include <array>
#include <cstring>
#include <string>

#include "script/Exceptions.h"
#include "util/Exception.h"

namespace script {

namespace {

// Character classes as bit flags, one table lookup per byte. ASCII only on purpose:
// bytes from 128 up belong to no class and so end up in operator runs.
enum CharClass : unsigned char {
    Space = 1,
    IdentStart = 2,
    Digit = 4,
    Punct = 8,
    Quote = 16,
    // '+', '-' and '.': may begin a number, which only a look further ahead decides.
    MaybeNumber = 32,
};

constexpr std::array<unsigned char, 256> MakeClassTable() {
    std::array<unsigned char, 256> table{};
    // The members of isspace in the C locale.
    for (unsigned char c : {' ', '\t', '\n', '\v', '\f', '\r'}) {
        table[c] = Space;
    }
    for (int c = 'a'; c <= 'z'; ++c) {
        table[c] = IdentStart;
        table[c - 'a' + 'A'] = IdentStart;
    }
    table['_'] = IdentStart;
    for (int c = '0'; c <= '9'; ++c) {
        table[c] = Digit;
    }
    for (unsigned char c : {'{', '}', '(', ')', '[', ']', ','}) {
        table[c] = Punct;
    }
    table['"'] = Quote;
    table['+'] = MaybeNumber;
    table['-'] = MaybeNumber;
    table['.'] = MaybeNumber;
    return table;
}

constexpr std::array<unsigned char, 256> kClass = MakeClassTable();

inline unsigned char ClassOf(char c) {
    return kClass[static_cast<unsigned char>(c)];
}
inline bool IsDigit(char c) {
    return ClassOf(c) & Digit;
}
inline bool IsIdentChar(char c) {
    return ClassOf(c) & (IdentStart | Digit);
}
inline bool IsSign(char c) {
    return c == '+' || c == '-';
}

// "inf" in any letter case; the caller guarantees three readable characters. Or-ing in
// 0x20 folds exactly the upper-case letters onto the lower-case ones.
inline bool IsInf(const char* p) {
    return (p[0] | 0x20) == 'i' && (p[1] | 0x20) == 'n' && (p[2] | 0x20) == 'f';
}

class Lexer {
public:
    explicit Lexer(const util::String& text)
        : m_begin(text.data()), m_pos(text.data()), m_end(text.data() + text.size()) {}

    TokenList Run() {
        TokenList tokens;
        // Dense script code averages a little over three bytes per token with its separator;
        // an underestimate costs one regrowth, and short token texts stay within SSO.
        tokens.reserve((m_end - m_begin) / 3);
        m_tokens = &tokens;
        for (;;) {
            SkipSpace();
            if (m_pos == m_end) {
                return tokens;
            }
            const char c = *m_pos;
            const unsigned char cls = ClassOf(c);
            if (cls & Quote) {
                ReadString();
            } else if (cls & IdentStart) {
                ReadWord();
            } else if (NumberStartsAt(m_pos)) {
                ReadNumber();
            } else if (cls & Punct) {
                Emit(m_pos, m_pos + 1, Token::Symbol);
                ++m_pos;
            } else if (c == '/' && m_end - m_pos >= 2 && m_pos[1] == '/') {
                // The line feed stays for SkipSpace, which is the only place lines are counted.
                const void* lf = std::memchr(m_pos, '\n', m_end - m_pos);
                m_pos = lf ? static_cast<const char*>(lf) : m_end;
            } else {
                ReadOperatorRun();
            }
        }
    }

private:
    void SkipSpace() {
        while (m_pos != m_end && (ClassOf(*m_pos) & Space)) {
            if (*m_pos == '\n') {
                ++m_line;
            }
            ++m_pos;
        }
    }

    void Emit(const char* from, const char* to, Token::Kind kind) {
        m_tokens->emplace_back(util::String(from, to), kind);
    }

    // Any number of signs, then a digit, a point and a digit, or "inf". A chain of signs
    // is scanned once and its verdict remembered, so a long run of signs stays linear.
    bool NumberStartsAt(const char* p) {
        if (IsSign(*p)) {
            if (p < m_signChainEnd) {
                return m_signChainNumber;
            }
            const char* q = p;
            while (q != m_end && IsSign(*q)) {
                ++q;
            }
            m_signChainEnd = q;
            m_signChainNumber = q != m_end && NumberBodyStartsAt(q);
            return m_signChainNumber;
        }
        return NumberBodyStartsAt(p);
    }

    bool NumberBodyStartsAt(const char* p) const {
        if (IsDigit(*p)) {
            return true;
        }
        const auto left = m_end - p;
        if (left >= 3 && IsInf(p)) {
            return true;
        }
        return *p == '.' && left >= 2 && IsDigit(p[1]);
    }

    void ReadWord() {
        const char* start = m_pos;
        ++m_pos;
        while (m_pos != m_end && IsIdentChar(*m_pos)) {
            ++m_pos;
        }
        const auto length = m_pos - start;
        const bool isBool = (length == 4 && std::memcmp(start, "true", 4) == 0) ||
                            (length == 5 && std::memcmp(start, "false", 5) == 0);
        Emit(start, m_pos, isBool ? Token::Bool : Token::Symbol);
    }

    // Only one sign belongs to the number, so "--5" yields "-" and "-5". An exponent is
    // recognised only after a fraction, and needs no digits here; conversion rejects "1.5e".
    void ReadNumber() {
        const char* start = m_pos;
        if (IsSign(*m_pos)) {
            ++m_pos;
        }
        if (m_end - m_pos >= 3 && IsInf(m_pos)) {
            m_pos += 3;
            Emit(start, m_pos, Token::Float);
            return;
        }
        SkipDigits();
        if (m_end - m_pos < 2 || *m_pos != '.' || !IsDigit(m_pos[1])) {
            Emit(start, m_pos, Token::Int);
            return;
        }
        ++m_pos;
        SkipDigits();
        if (m_pos != m_end && (*m_pos == 'e' || *m_pos == 'E')) {
            ++m_pos;
            if (m_pos != m_end && IsSign(*m_pos)) {
                ++m_pos;
            }
            SkipDigits();
        }
        Emit(start, m_pos, Token::Float);
    }

    void SkipDigits() {
        while (m_pos != m_end && IsDigit(*m_pos)) {
            ++m_pos;
        }
    }

    // Runs on until something else could begin a token. A "//" inside a run is no comment.
    void ReadOperatorRun() {
        const char* start = m_pos;
        ++m_pos;
        while (m_pos != m_end) {
            const unsigned char cls = ClassOf(*m_pos);
            if (cls & (Space | IdentStart | Digit | Punct | Quote)) {
                break;
            }
            if ((cls & MaybeNumber) && NumberStartsAt(m_pos)) {
                break;
            }
            ++m_pos;
        }
        Emit(start, m_pos, Token::Symbol);
    }

    // Plain stretches are appended whole; only quote, backslash and line feed stop the scan.
    void ReadString() {
        ++m_pos;
        util::String value;
        for (;;) {
            const char* chunk = m_pos;
            while (m_pos != m_end && *m_pos != '"' && *m_pos != '\\' && *m_pos != '\n') {
                ++m_pos;
            }
            value.append(chunk, m_pos);
            if (m_pos == m_end) {
                Fail("Unmatched quote (\")");
            }
            if (*m_pos == '"') {
                break;
            }
            if (*m_pos == '\n') {
                Fail("Newline in string literal");
            }
            // A backslash: the next character is taken literally unless it is n or t. An
            // escaped real line feed stands in the literal without counting as a new line.
            if (m_end - m_pos < 2) {
                Fail("Bad \\-escape in string");
            }
            const char escaped = m_pos[1];
            value.push_back(escaped == 'n' ? '\n' : escaped == 't' ? '\t' : escaped);
            m_pos += 2;
        }
        ++m_pos;
        m_tokens->emplace_back(std::move(value), Token::String);
    }

    [[noreturn]] void Fail(const char* what) const {
        VORRA_THROW(TokenException, "Line " + std::to_string(m_line) + ": " + what);
    }

    const char* m_begin;
    const char* m_pos;
    const char* m_end;
    long m_line = 1;
    TokenList* m_tokens = nullptr;
    const char* m_signChainEnd = nullptr;
    bool m_signChainNumber = false;
};

}  // namespace

TokenList Tokenizer::Tokenize(const util::String& text) {
    return Lexer(text).Run();
}

}  // namespace script
