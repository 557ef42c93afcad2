// libFuzzer target for the script language: tokenize, parse, print, re-parse, execute.
// Built and run by scripts/fuzz.sh; not part of the normal test suite.
//
// Every input starts from the same root: what a run added to or changed in the root
// closure, the objects held there (math) or the root's infix functions is undone before
// the next one (RootBaseline), so that a finding reproduces from its own bytes.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "RootBaseline.h"
#include "logging/Logger.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "script/Tokenizer.h"
#include "util/Pointee.h"

namespace {

struct Baseline {
    fuzz::RootBaseline root;
    bool strictRoundTrip = false;
    // Objects alive after a restore; more after a later input means a reference cycle.
    bool countLive = false;
    size_t liveObjects = 0;
};

Baseline& Setup() {
    static Baseline* baseline = [] {
        // A logger without sinks: Log() goes nowhere, no file, no stdout.
        logging::Logger::Get();
        script::Parser::Get().SetErrorHandler([](const util::String&) {});
        auto* b = new Baseline();
        b->root.Capture();
        b->strictRoundTrip = std::getenv("VORRA_FUZZ_STRICT_ROUNDTRIP") != nullptr;
        b->countLive = std::getenv("VORRA_FUZZ_COUNT_LIVE") != nullptr;
        return b;
    }();
    return *baseline;
}

// Printed code that is known not to read back the same: a backslash in a string is
// written as it is, a double with an exponent gets ".0" appended after it, and a ";" or
// "." printed right after an operator name ("$") joins that name, and an identifier
// "infix" printed as an argument, "(infix)", reads back as a declaration.
bool KnownNotToRoundTrip(const util::String& code) {
    if (code.find('\\') != util::String::npos || code.find("(infix") != util::String::npos) {
        return true;
    }
    for (size_t i = 1; i < code.size(); ++i) {
        const unsigned char before = static_cast<unsigned char>(code[i - 1]);
        if ((code[i] == ';' || code[i] == '.') && !std::isalnum(before) && !std::isspace(before) &&
            util::String("_)]}\"").find(static_cast<char>(before)) == util::String::npos) {
            return true;
        }
    }
    for (size_t i = 1; i + 1 < code.size(); ++i) {
        const bool digitBefore = code[i - 1] >= '0' && code[i - 1] <= '9';
        const char next = code[i + 1];
        if (digitBefore && (code[i] == 'e' || code[i] == 'E') &&
            (next == '+' || next == '-' || (next >= '0' && next <= '9'))) {
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Baseline& baseline = Setup();
    const util::String text(reinterpret_cast<const char*>(data), size);

    try {
        script::Tokenizer::Tokenize(text);
    } catch (const std::exception&) {
        // A malformed string literal: the parser below reports the same.
    }

    script::Parser& parser = script::Parser::Get();
    {
        const script::CodeBlockPtr block = parser.Parse(text);
        if (block) {
            const util::String code = block->ToCode();
            // The first parse may have declared infix functions in the root scope; the
            // printed code declares them again.
            baseline.root.TruncateScopeInfixes();
            const bool strict = baseline.strictRoundTrip && !KnownNotToRoundTrip(code);
            if (const script::CodeBlockPtr again = parser.Parse(code)) {
                const util::String code2 = again->ToCode();
                if (strict && code2 != code) {
                    __builtin_trap();
                }
            } else if (strict) {
                __builtin_trap();
            }
            parser.Execute(script::ExpressionPtr(block));
        }
    }
    baseline.root.Restore();
    fuzz::EndFrames();
    if (baseline.countLive) {
        // The first input sets the mark: the logger's and profiler's own objects exist by
        // then.
        const size_t live = util::LivePointeeCount();
        if (baseline.liveObjects == 0) {
            baseline.liveObjects = live;
        } else if (live > baseline.liveObjects) {
            __builtin_trap();
        }
    }
    return 0;
}
