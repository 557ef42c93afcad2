// libFuzzer target for the script language: tokenize, parse, print, re-parse, execute.
// Built and run by scripts/fuzz.sh; not part of the normal test suite.
//
// Every input starts from the same root: what a run added to the root closure, the math
// object or the root scope's infix functions is removed before the next one, so that a
// finding reproduces from its own bytes.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <vector>

#include "logging/Logger.h"
#include "script/ClassObject.h"
#include "script/Closure.h"
#include "script/Expressions.h"
#include "script/Infix.h"
#include "script/Parser.h"
#include "script/Scope.h"
#include "script/Tokenizer.h"
#include "util/Pointee.h"
#include "util/Profiler.h"

namespace {

struct Baseline {
    // Root variables as they were at start-up, and the members of each class object
    // held there (math).
    std::map<util::String, script::ObjectPtr> rootValues;
    std::map<util::String, std::set<util::String>> memberNames;
    size_t scopeInfixes = 0;
    size_t closureInfixes = 0;
    bool strictRoundTrip = false;
    // Objects alive after a restore; more after a later input means a reference cycle.
    bool countLive = false;
    size_t liveObjects = 0;
};

// The scope keeps its infix functions in a vector that it only exposes read-only. The
// vector itself is not const, so cutting it back to the start-up length is sound.
void TruncateInfixes(const script::Scope& scope, size_t count) {
    auto& infixes = const_cast<std::vector<script::InfixPtr>&>(scope.GetInfixes());
    if (infixes.size() > count) {
        infixes.resize(count);
    }
}

Baseline& Setup() {
    static Baseline* baseline = [] {
        // A logger without sinks: Log() goes nowhere, no file, no stdout.
        logging::Logger::Get();
        script::Parser& parser = script::Parser::Get();
        parser.SetErrorHandler([](const util::String&) {});
        auto* b = new Baseline();
        for (const auto& [name, variable] : parser.GetRootClosure()->GetVariableMap()) {
            b->rootValues[name] = variable->GetValue();
            if (const auto* object =
                    dynamic_cast<const script::ClassObject*>(variable->GetValue().Get())) {
                for (const auto& member : object->GetVariableMap()) {
                    b->memberNames[name].insert(member.first);
                }
            }
        }
        b->scopeInfixes = parser.GetRootScope()->GetInfixes().size();
        b->closureInfixes = parser.GetRootClosure()->GetInfixes().size();
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

void RemoveExtraVariables(script::ClassObject& object, const std::set<util::String>& keep) {
    std::vector<util::String> extra;
    for (const auto& entry : object.GetVariableMap()) {
        if (keep.find(entry.first) == keep.end()) {
            extra.push_back(entry.first);
        }
    }
    for (const util::String& name : extra) {
        object.RemoveVariable(name);
    }
}

// Back to the start-up state. User functions hold the root closure strongly, so removing
// them is also what lets their trees and closures go.
void Restore(const Baseline& baseline) {
    script::Parser& parser = script::Parser::Get();
    const script::ClosurePtr& root = parser.GetRootClosure();
    std::set<util::String> rootNames;
    for (const auto& entry : baseline.rootValues) {
        rootNames.insert(entry.first);
    }
    RemoveExtraVariables(*root, rootNames);
    for (const auto& [name, value] : baseline.rootValues) {
        const script::VariablePtr variable = root->GetVariable(name);
        if (!variable) {
            root->AddVariable(name, value);
        } else if (variable->GetValue() != value) {
            variable->SetValue(value);
        }
    }
    for (const auto& [name, members] : baseline.memberNames) {
        auto* object = dynamic_cast<script::ClassObject*>(root->GetValue(name).Get());
        if (object) {
            RemoveExtraVariables(*object, members);
        }
    }
    TruncateInfixes(*parser.GetRootScope(), baseline.scopeInfixes);
    TruncateInfixes(*root, baseline.closureInfixes);

    // Two frames, so that the logger's repeat suppression forgets this input's texts.
    logging::Logger::Get().Update();
    logging::Logger::Get().Update();
    util::Profiler::Get().Reset();
    util::SweepHandles();
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
            TruncateInfixes(*parser.GetRootScope(), baseline.scopeInfixes);
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
    Restore(baseline);
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
