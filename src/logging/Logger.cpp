#include "logging/Logger.h"

#include <algorithm>
#include <fstream>
#include <iostream>

#include "logging/LogCapture.h"
#include "util/Exception.h"
#include "util/FileSystem.h"

namespace logging {

void GuardLogging(const util::String& text, const std::function<void()>& action) {
    // A failing sink is reported through the log again; the report must not recurse into
    // the same failure.
    static bool s_reporting = false;
    auto report = [&](auto&& logCaught) {
        if (!s_reporting) {
            s_reporting = true;
            logCaught();
            s_reporting = false;
        }
        std::cerr << "ERROR - Failed to log text: " << text << std::endl;
    };
    try {
        action();
    } catch (const std::exception& e) {
        report([&] { LogCaughtException(e, VORRA_LOCATION); });
    } catch (...) {
        report([&] { LogCaughtUnknownException(VORRA_LOCATION); });
    }
}

void Logger::Log(LogLevel level, const util::String& text) {
    GuardLogging(text, [&] {
        const bool suppressible = level == Warning || level == Error;
        if (suppressible && m_current.Contains(text)) {
            return;
        }
        m_current.insert(text);
        if (suppressible && m_previous.Contains(text)) {
            return;
        }
        for (const ILoggerPtr& sink : m_sinks) {
            if (sink->mask & level) {
                sink->Log(text);
            }
        }
    });
}

void Logger::Add(const ILoggerPtr& sink) {
    if (std::find(m_sinks.begin(), m_sinks.end(), sink) == m_sinks.end()) {
        m_sinks.push_back(sink);
    }
}

void Logger::Remove(const ILoggerPtr& sink) {
    m_sinks.erase(std::remove(m_sinks.begin(), m_sinks.end(), sink), m_sinks.end());
}

void Logger::Update() {
    std::swap(m_previous, m_current);
    m_current.clear();
}

void LogCaughtException(const std::exception& e, const util::String& location) {
    const char* prefix =
        dynamic_cast<const Exception*>(&e) ? "Caught Exception: " : "Caught exception: ";
    ::Log(Debug, prefix + util::String(e.what()) + ", " + location);
}

void LogCaughtUnknownException(const util::String& location) {
    ::Log(Debug, "Caught an unknown exception: " + location);
}

}  // namespace logging

void Log(logging::LogLevel level, const util::String& text) {
    if (std::vector<logging::CapturedLine>* capture = logging::LogCapture::Current()) {
        capture->push_back({level, text});
        return;
    }
    util::String line;
    if (level == logging::Warning) {
        line = "-- Warning: " + text;
    } else if (level == logging::Error) {
        line = "!! ERROR: " + text;
    } else {
        line = text;
    }
    if (logging::Logger::IsAlive()) {
        logging::Logger::Get().Log(level, line);
        return;
    }
    std::cout << line << std::endl;
    std::ofstream unlogged(util::FileSystem::WorkDirectoryOrCurrent() + "Unlogged.txt",
                           std::ios::out | std::ios::app);
    unlogged << line << "\n";
}
