#include "logging/FunctionLogger.h"

#include "logging/Logger.h"

namespace logging {

void FunctionLogger::Log(const util::String& text) {
    GuardLogging(text, [&] { m_function(text); });
}

}  // namespace logging
