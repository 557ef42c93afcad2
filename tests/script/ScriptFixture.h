#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "logging/FunctionLogger.h"
#include "logging/Logger.h"
#include "script/Expressions.h"
#include "script/Objects.h"
#include "script/Parser.h"

// Runs script text through the parser as the console does, and keeps what the error
// handler and the console's log mask received.
class ScriptTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_parser.SetErrorHandler(
            [this](const util::String& message) { errors.push_back(message); });
        m_sink = new logging::FunctionLogger(
            23, [this](const util::String& line) { warnings.push_back(line); });
        logging::Logger::Get().Add(m_sink);
    }
    void TearDown() override {
        logging::Logger::Get().Remove(m_sink);
        m_parser.SetErrorHandler([](const util::String&) {});
    }

    // The result as the console would show it; messages of this run only.
    util::String Eval(const util::String& text) {
        errors.clear();
        warnings.clear();
        // A new frame, so that repeated warnings are not suppressed between runs.
        logging::Logger::Get().Update();
        logging::Logger::Get().Update();
        return m_parser.ExecuteToString(text);
    }

    // Text, parse, print.
    util::String Code(const util::String& text) {
        script::CodeBlockPtr block = m_parser.Parse(text);
        return block ? block->ToCode() : "<parse failed>";
    }

    bool WarnedWith(const util::String& part) const {
        for (const util::String& line : warnings) {
            if (line.find(part) != util::String::npos) {
                return true;
            }
        }
        return false;
    }

    script::Parser& m_parser = script::Parser::Get();
    std::vector<util::String> errors;
    std::vector<util::String> warnings;
    logging::ILoggerPtr m_sink;
};
