#pragma once

#include <vector>

#include "logging/Log.h"
#include "util/String.h"

namespace logging {

struct CapturedLine {
    LogLevel level;
    util::String text;
};

// While one is alive, what its thread logs is kept in it instead of reaching the logger.
// The logger and its sinks belong to the main thread; work done on a helper thread logs
// into a capture, and the main thread replays the lines when it takes the work over.
class LogCapture {
public:
    explicit LogCapture(std::vector<CapturedLine>& into);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The capture in force on this thread, or null.
    static std::vector<CapturedLine>* Current();

private:
    std::vector<CapturedLine>* m_outer;
};

// Logs the lines, in their order, on the calling thread.
void Replay(const std::vector<CapturedLine>& lines);

}  // namespace logging
