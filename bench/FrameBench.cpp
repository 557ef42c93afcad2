// Cost of the idle frame (no scene), of the frame's own stages, and of whole frames of
// scenes drawn in a 1024 by 768 window. Needs an X server:
//   xvfb-run -a -s "-screen 0 1280x1024x24" build/bin/vorra-frame-bench
// First it draws three scenes, each with shaders on and off, with the simulation paused so
// that the figures are the drawing's: the welcome scene, 2,000 entities (boxes, circles,
// polygons and hinges) and 10,000 water particles, each fitted into the window. For each
// it prints the frames a second and the profiler's split of the frame by stage. Then the
// idle frame's profile, then the benchmarks. --scenes=TEXT draws only the scenes whose
// names contain TEXT.

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <functional>
#include <iostream>
#include <limits>
#include <vector>

#include "BenchScene.h"
#include "BenchWindow.h"
#include "app/App.h"
#include "app/Background.h"
#include "app/Scene.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "gui/GUI.h"
#include "logging/Logger.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/Callback.h"
#include "util/CallbackSet.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"

namespace {

class Owner : public util::Pointee {};

// The shared window with what main publishes, the application root among it.
core::Subsystem& Window() {
    static core::Subsystem* subsystem = [] {
        core::Subsystem& s = bench::BenchWindow();
        bench::MakeServices();
        gui::GUI& gui = gui::GUI::Get();
        script::AddToRoot(&gui);
        app::App* application = new app::App();
        gui.GetMainLayer()->Add(gui::ComponentPtr(application));
        script::AddToRoot(application);
        script::AddToRoot(script::ReflectedPtr(application->GetBackground()));
        core::ResourceManager::Get().Prefetch();
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

// Runs frames for the given wall time and gives the rate.
double MeasureFrames(double seconds) {
    core::Subsystem& subsystem = Window();
    const Uint64 frequency = SDL_GetPerformanceFrequency();
    const Uint64 start = SDL_GetPerformanceCounter();
    int frames = 0;
    while (static_cast<double>(SDL_GetPerformanceCounter() - start) / frequency < seconds) {
        subsystem.RunFrame();
        ++frames;
    }
    return frames / (static_cast<double>(SDL_GetPerformanceCounter() - start) / frequency);
}

// The profiler's report over the frames since the last one.
util::String FrameProfile() {
    util::Profiler& profiler = util::Profiler::Get();
    profiler.RequestReport();
    Window().RunFrame();
    return profiler.GetOutput();
}

// The frame's split, a second of frames for each level down to the scene's own stages.
util::String FrameSplit() {
    util::Profiler& profiler = util::Profiler::Get();
    util::String out;
    for (const char* level : {"", "Draw", "GUI::Draw", "App::DrawComp", "DrawMetaTex"}) {
        const std::vector<util::Profiler::Node*>& children = profiler.GetDisplayed().children;
        for (size_t i = 0; i < children.size(); ++i) {
            if (util::String(children[i]->name) == level) {
                profiler.ShowChild(i);
            }
        }
        if (*level && profiler.GetDisplayed().name != util::String(level)) {
            continue;
        }
        FrameProfile();
        MeasureFrames(1.0);
        out += FrameProfile();
    }
    while (profiler.ShowParent()) {
    }
    return out;
}

void FitSceneIntoWindow() {
    app::Scene& scene = app::Scene::Get();
    math::BoundingBox2f box;
    for (const app::EntityPtr& entity : scene.GetEntities()) {
        box.Add(entity->GetBoundingBox());
    }
    for (const physics::ParticlePtr& particle : physics::Simulation::Get().GetParticles()) {
        box.Add(particle->position);
    }
    scene.GetCamera().SetViewport(math::Vec2(0, 0), math::Vec2(1024, 768));
    scene.GetCamera().FitBox(box);
}

void ProfileScene(const char* name, const std::function<void()>& build) {
    Window();
    build();
    physics::Simulation::Get().running->SetNative(false);
    util::Profiler& profiler = util::Profiler::Get();
    profiler.SetOutputOn(true);
    for (const bool shaders : {true, false}) {
        core::ResourceManager::Get().shaders->SetNative(shaders);
        // Shaders and textures are built, and the first frames' caches filled; the
        // profiler's tree then holds the frame's stages only.
        MeasureFrames(0.5);
        profiler.Reset();
        profiler.SetOutputOn(true);
        MeasureFrames(0.2);
        FrameProfile();
        const double fps = MeasureFrames(4.0);
        std::cout << "\n"
                  << name << ", shaders " << (shaders ? "on" : "off") << ": " << fps
                  << " frames a second\n"
                  << FrameSplit() << std::endl;
    }
    profiler.SetOutputOn(false);
    core::ResourceManager::Get().shaders->SetNative(true);
}

// Only the scenes whose names contain the filter are drawn; an empty filter draws all.
void ProfileScenes(const util::String& filter) {
    const auto profile = [&filter](const char* name, const std::function<void()>& build) {
        if (filter.empty() || util::String(name).find(filter) != util::String::npos) {
            ProfileScene(name, build);
        }
    };
    profile("Welcome scene", [] {
        app::App::Get().GetAppGUI()->LoadScene("welcome", true);
        FitSceneIntoWindow();
    });
    profile("2,000 entities", [] {
        bench::BuildScene({2000, 500, 500, 500, 0});
        FitSceneIntoWindow();
    });
    profile("10,000 water particles", [] {
        bench::BuildScene({0, 0, 0, 0, 10000});
        FitSceneIntoWindow();
    });
    app::Scene::Get().Clear();
}

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
    profiler.SetOutputOn(false);
}

}  // namespace

int main(int argc, char** argv) {
    util::FileSystem::Get().SetArgv0(argc > 0 ? argv[0] : "");
    benchmark::Initialize(&argc, argv);
    // --scenes=TEXT draws only the scenes whose names contain TEXT, and skips the idle frame.
    util::String filter;
    for (int i = 1; i < argc; ++i) {
        const util::String arg(argv[i]);
        if (arg.rfind("--scenes=", 0) == 0) {
            filter = arg.substr(9);
        }
    }
    ProfileScenes(filter);
    if (filter.empty()) {
        PrintFrameProfile();
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    app::App::Release();
    core::Subsystem::Release();
    return 0;
}
