#include "util/Clock.h"

#include <chrono>

namespace util {
namespace {

Clock::Source s_source = nullptr;

}  // namespace

double Clock::PreciseSeconds() {
    using namespace std::chrono;
    static const steady_clock::time_point start = steady_clock::now();
    return duration<double>(steady_clock::now() - start).count();
}

double Clock::Seconds() {
    return s_source ? s_source() : PreciseSeconds();
}

void Clock::SetSource(Source source) {
    s_source = source;
}

}  // namespace util
