#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "logging/FunctionLogger.h"
#include "logging/Logger.h"
#include "util/String.h"

namespace test {

// Collects what is logged while it lives. Before the logger exists, lines go to standard
// output, so that is captured instead; if another test has made the logger, a sink is added.
class LogCapture {
public:
    // Warnings, checks and errors: what tells of a problem.
    static constexpr unsigned kProblems = 7;

    // A mask needs the logger's levels: the logger is made for it.
    explicit LogCapture(unsigned mask = ~0u) {
        if (logging::Logger::IsAlive() || mask != ~0u) {
            // Forget earlier texts so that the repeat suppression does not eat ours.
            logging::Logger::Get().Update();
            logging::Logger::Get().Update();
            m_sink = logging::ILoggerPtr(new logging::FunctionLogger(
                mask, [this](const util::String& line) { m_lines.push_back(line); }));
            logging::Logger::Get().Add(m_sink);
        } else {
            testing::internal::CaptureStdout();
            m_capturingStdout = true;
        }
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture() { Stop(); }

    const std::vector<util::String>& Lines() {
        Stop();
        return m_lines;
    }

    // Whether some line contains the text.
    bool Contains(const util::String& text) {
        for (const util::String& line : Lines()) {
            if (line.find(text) != util::String::npos) {
                return true;
            }
        }
        return false;
    }

    // The whole capture, for failure messages.
    util::String Text() {
        util::String all;
        for (const util::String& line : Lines()) {
            all += line + "\n";
        }
        return all;
    }

private:
    void Stop() {
        if (m_capturingStdout) {
            m_capturingStdout = false;
            std::istringstream out(testing::internal::GetCapturedStdout());
            util::String line;
            while (std::getline(out, line)) {
                m_lines.push_back(line);
            }
        }
        if (m_sink) {
            if (logging::Logger::IsAlive()) {
                logging::Logger::Get().Remove(m_sink);
            }
            m_sink.Reset();
        }
    }

    bool m_capturingStdout = false;
    logging::ILoggerPtr m_sink;
    std::vector<util::String> m_lines;
};

}  // namespace test
