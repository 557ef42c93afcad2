#include "BenchWindow.h"

#include <benchmark/benchmark.h>

#include <limits>

#include "core/ResourceManager.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

namespace bench {

core::Subsystem& BenchWindow() {
    static core::Subsystem* subsystem = [] {
        core::Subsystem& s = core::Subsystem::Get();
        script::AddToRoot(&s);
        script::AddToRoot(&core::ResourceManager::Get());
        core::ResourceManager::Get().shaders->SetNative(true);
        core::WindowParams params;
        params.resolution = math::Vec2i(1024, 768);
        s.CreateWindow(params);
        s.SetMaxFPS(std::numeric_limits<float>::infinity());
        return &s;
    }();
    return *subsystem;
}

int RunWindowBenchmarks(int argc, char** argv) {
    util::FileSystem::Get().SetArgv0(argc > 0 ? argv[0] : "");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    core::Subsystem::Release();
    return 0;
}

}  // namespace bench
