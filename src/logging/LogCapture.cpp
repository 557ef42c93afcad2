#include "logging/LogCapture.h"

namespace logging {
namespace {

thread_local std::vector<CapturedLine>* t_capture = nullptr;

}  // namespace

LogCapture::LogCapture(std::vector<CapturedLine>& into) : m_outer(t_capture) {
    t_capture = &into;
}

LogCapture::~LogCapture() {
    t_capture = m_outer;
}

std::vector<CapturedLine>* LogCapture::Current() {
    return t_capture;
}

void Replay(const std::vector<CapturedLine>& lines) {
    for (const CapturedLine& line : lines) {
        ::Log(line.level, line.text);
    }
}

}  // namespace logging
