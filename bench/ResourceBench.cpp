// What the data tree costs at start and when the window is made anew. Needs an X server:
//   xvfb-run -a build/bin/vorra-resource-bench
// Prefetch: every image of the tree read from the disk (the system's file cache is warm)
// and decoded, every texture uploaded with its mip-maps, every program compiled and linked.
// Recreate: a window with a new context (other anti-aliasing) and every resource that was
// loaded built again in it; Resize: the same window at another size, which still rebuilds.

#include <benchmark/benchmark.h>

#include "BenchWindow.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "rendering/ImageManager.h"

namespace {

core::Subsystem& Window() {
    return bench::BenchWindow();
}

void BM_Prefetch(benchmark::State& state) {
    Window();
    core::ResourceManager& resources = core::ResourceManager::Get();
    for (auto _ : state) {
        state.PauseTiming();
        resources.UnloadAll();
        rendering::ImageManager::Get().Flush();
        state.ResumeTiming();
        resources.Prefetch();
    }
    state.counters["vram_MB"] = static_cast<double>(resources.CalcVRamUsage()) / (1 << 20);
}
BENCHMARK(BM_Prefetch)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();

void BM_RecreateWindow(benchmark::State& state) {
    core::Subsystem& subsystem = Window();
    core::ResourceManager::Get().Prefetch();
    core::WindowParams params = subsystem.GetCurrentWindowParams();
    for (auto _ : state) {
        params.antiAliasSamples = params.antiAliasSamples == 1 ? 2 : 1;
        subsystem.CreateWindow(params);
    }
}
BENCHMARK(BM_RecreateWindow)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();

void BM_ResizeWindow(benchmark::State& state) {
    core::Subsystem& subsystem = Window();
    core::ResourceManager::Get().Prefetch();
    core::WindowParams params = subsystem.GetCurrentWindowParams();
    for (auto _ : state) {
        params.resolution.x = params.resolution.x == 1024 ? 1000 : 1024;
        subsystem.CreateWindow(params);
    }
}
BENCHMARK(BM_ResizeWindow)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    return bench::RunWindowBenchmarks(argc, argv);
}
