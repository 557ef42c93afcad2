#pragma once

#include "core/Subsystem.h"

namespace bench {

// The benchmarks' one window, 1024 by 768, made at first use with "System" and "Resources"
// published, shaders on and no frame cap.
core::Subsystem& BenchWindow();

// main of a benchmark that opens the window: the work directory from argv[0], the
// benchmarks, and the subsystem released before the process ends.
int RunWindowBenchmarks(int argc, char** argv);

}  // namespace bench
