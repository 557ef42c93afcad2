#pragma once

#include "util/Pointee.h"
#include "util/String.h"

namespace logging {

// A sink of log lines. It receives the lines whose level shares a bit with its mask.
class ILogger : public util::Pointee {
public:
    explicit ILogger(unsigned mask) : mask(mask) {}
    virtual void Log(const util::String& text) = 0;

    unsigned mask;
};

using ILoggerPtr = util::SharedPtr<ILogger>;

}  // namespace logging
