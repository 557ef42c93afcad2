#pragma once

#include <fstream>

#include "logging/ILogger.h"

namespace logging {

// The log file: a header at opening, then each line with a time stamp, flushed at once so
// that the file is useful after a crash. A file that cannot be opened is silently skipped.
class FileLogger : public ILogger {
public:
    FileLogger(unsigned mask, const util::String& path, bool append);
    void Log(const util::String& text) override;

    bool IsOpen() const { return m_file.is_open() && m_file.good(); }

private:
    std::ofstream m_file;
};

// The local time formatted with strftime.
util::String FormatLocalTime(const char* format);

}  // namespace logging
