#pragma once

#include <ostream>

#include "logging/ILogger.h"

namespace logging {

// Writes each line to a stream it does not own, and flushes.
class StreamLogger : public ILogger {
public:
    StreamLogger(unsigned mask, std::ostream* stream) : ILogger(mask), m_stream(stream) {}
    void Log(const util::String& text) override;

private:
    std::ostream* m_stream;
};

}  // namespace logging
