// Cost of the idle frame (no scene) and of the frame's own stages. Needs an X server:
//   xvfb-run -a build/bin/vorra-frame-bench
// After the benchmarks it runs a few thousand frames and prints the profiler's report,
// which splits the frame by stage.

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <iostream>
#include <limits>
#include <vector>

#include "core/Subsystem.h"
#include "logging/Logger.h"
#include "util/Callback.h"
#include "util/CallbackSet.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"

namespace {

class Owner : public util::Pointee {};

core::Subsystem& Window() {
    static core::Subsystem* subsystem = [] {
        core::Subsystem& s = core::Subsystem::Get();
        core::WindowParams params;
        params.resolution.x = 640;
        params.resolution.y = 480;
        s.CreateWindow(params);
        // Never sleep: measure the frame itself. Any finite cap still sleeps a millisecond
        // whenever two frames fall within one tick of the millisecond clock (dt = 0).
        s.SetMaxFPS(std::numeric_limits<float>::infinity());
        s.BeginRun();
        return &s;
    }();
    return *subsystem;
}

void BM_IdleFrame(benchmark::State& state) {
    core::Subsystem& subsystem = Window();
    for (auto _ : state) {
        subsystem.RunFrame();
    }
    state.counters["fps"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
// Wall time: the swap waits for the software rasteriser and the X server.
BENCHMARK(BM_IdleFrame)->MinTime(2.0)->UseRealTime();

// The sweep as a frame sees it: a steady population with a few new objects a frame.
void BM_Stage_GC(benchmark::State& state) {
    std::vector<util::SharedPtr<Owner>> population;
    for (int i = 0; i < state.range(0); ++i) {
        population.emplace_back(new Owner());
    }
    util::SweepHandles();
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i) {
            util::SharedPtr<Owner> temporary(new Owner());
        }
        util::SweepHandles();
    }
}
BENCHMARK(BM_Stage_GC)->Arg(0)->Arg(10000)->Arg(100000);

void BM_Stage_FlushCallbackSets(benchmark::State& state) {
    util::SharedPtr<Owner> owner(new Owner());
    std::vector<util::CallbackSet> sets(static_cast<size_t>(state.range(0)));
    for (util::CallbackSet& set : sets) {
        set.Add(util::MakeCallback(owner, [] {}));
    }
    for (auto _ : state) {
        for (util::AbstractCallbackSet* set :
             util::ClassTracker<util::AbstractCallbackSet>::Snapshot()) {
            set->Flush();
        }
    }
}
BENCHMARK(BM_Stage_FlushCallbackSets)->Arg(10)->Arg(1000);

void BM_Stage_Events(benchmark::State& state) {
    Window();
    SDL_Event event;
    for (auto _ : state) {
        while (SDL_PollEvent(&event)) {
        }
    }
}
BENCHMARK(BM_Stage_Events);

void BM_Stage_LoggerUpdate(benchmark::State& state) {
    for (auto _ : state) {
        logging::Logger::Get().Update();
    }
}
BENCHMARK(BM_Stage_LoggerUpdate);

void BM_ProfilerScope(benchmark::State& state) {
    util::Profiler& profiler = util::Profiler::Get();
    for (auto _ : state) {
        profiler.Begin("Scope");
        profiler.End();
    }
}
BENCHMARK(BM_ProfilerScope);

void PrintFrameProfile() {
    core::Subsystem& subsystem = Window();
    util::Profiler& profiler = util::Profiler::Get();
    profiler.SetOutputOn(true);
    for (int i = 0; i < 3000; ++i) {
        subsystem.RunFrame();
    }
    profiler.RequestReport();
    subsystem.RunFrame();
    std::cout << "\nProfile of the idle frame over the last report interval:\n"
              << profiler.GetOutput() << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
    util::FileSystem::Get().SetArgv0(argc > 0 ? argv[0] : "");
    benchmark::Initialize(&argc, argv);
    // First, while the profiler's tree holds only the frame's own stages.
    PrintFrameProfile();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
