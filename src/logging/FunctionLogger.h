#pragma once

#include <functional>

#include "logging/ILogger.h"

namespace logging {

// Hands each line to a function, such as the console's. Nothing it throws escapes.
class FunctionLogger : public ILogger {
public:
    using Function = std::function<void(const util::String&)>;

    FunctionLogger(unsigned mask, Function function)
        : ILogger(mask), m_function(std::move(function)) {}
    void Log(const util::String& text) override;

private:
    Function m_function;
};

}  // namespace logging
