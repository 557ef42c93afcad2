#pragma once

#include <functional>
#include <vector>

#include "logging/ILogger.h"
#include "logging/Log.h"
#include "util/HashSet.h"
#include "util/Singleton.h"

namespace logging {

// Where all text of the system goes. Suppresses warnings and errors that repeat from one
// frame to the next, so that a per-frame problem reaches the sinks once.
class Logger : public util::Pointee, public util::Singleton<Logger> {
public:
    void Log(LogLevel level, const util::String& text);
    // Adds a sink; sinks are called in the order they were added.
    void Add(const ILoggerPtr& sink);
    void Remove(const ILoggerPtr& sink);
    // Once a frame: this frame's texts become the previous frame's.
    void Update();

private:
    std::vector<ILoggerPtr> m_sinks;
    util::HashSet<util::String> m_previous;
    util::HashSet<util::String> m_current;
};

// Runs a logging action so that nothing it throws escapes: logging happens inside error
// handling. A failure is reported and "ERROR - Failed to log text: " goes to stderr.
void GuardLogging(const util::String& text, const std::function<void()>& action);

}  // namespace logging
