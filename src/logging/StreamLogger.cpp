#include "logging/StreamLogger.h"

namespace logging {

void StreamLogger::Log(const util::String& text) {
    *m_stream << text << std::endl;
}

}  // namespace logging
