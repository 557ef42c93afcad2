#pragma once

namespace util {

// The time source of the libraries that must run without SDL (physics, script). The
// program installs SDL's millisecond tick; without it the steady clock serves.
class Clock {
public:
    using Source = double (*)();

    // Seconds since an arbitrary start, from the installed source.
    static double Seconds();
    // Installs a source; null restores the steady clock.
    static void SetSource(Source source);
    // The steady clock at its full resolution, for profiling.
    static double PreciseSeconds();
};

}  // namespace util
