// Scene files at the size of a large scene: 5,000 entities (boxes, circles, polygons and the
// hinges between them) and 10,000 water particles, written to text and loaded back.
//   build/bin/vorra-scene-bench

#include <benchmark/benchmark.h>
#include <filesystem>

#include <chrono>
#include <cmath>

#include "BenchScene.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "util/Pointee.h"

namespace {

// 5,000 entities: 3,500 shapes and 1,500 hinges; the polygons take the place of boxes.
bench::SceneSize SizeWith(int polygons) {
    return {3500, 1500, polygons, 1500, 10000};
}

void BM_SaveScene(benchmark::State& state) {
    bench::MakeServices();
    bench::BuildScene(SizeWith(static_cast<int>(state.range(0))));
    size_t bytes = 0;
    for (auto _ : state) {
        const util::String text = app::Serializer::Get().Serialize();
        bytes = text.size();
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["entities"] = static_cast<double>(app::Scene::Get().GetEntities().size());
}

// The program's save: the text, parsed back so that a text that would not load never
// replaces the file, then written and renamed into place.
void BM_SaveSceneFile(benchmark::State& state) {
    bench::MakeServices();
    bench::BuildScene(SizeWith(static_cast<int>(state.range(0))));
    const util::String path = std::filesystem::temp_directory_path() / "vorra-scene-bench.vra";
    for (auto _ : state) {
        if (!app::Serializer::Get().Save(path)) {
            state.SkipWithError("the save failed");
            break;
        }
    }
    std::filesystem::remove(path);
}

void BM_LoadScene(benchmark::State& state) {
    bench::MakeServices();
    bench::BuildScene(SizeWith(static_cast<int>(state.range(0))));
    const util::String text = app::Serializer::Get().Serialize();
    for (auto _ : state) {
        app::Scene::Get().Clear();
        app::Serializer::Get().Deserialize(text);
        // What the next frame does after a load: free the handles of the objects gone.
        state.PauseTiming();
        util::SweepHandles();
        state.ResumeTiming();
    }
    state.counters["entities"] = static_cast<double>(app::Scene::Get().GetEntities().size());
    state.counters["particles"] =
        static_cast<double>(physics::Simulation::Get().GetParticles().size());
}

// The text alone: tokens and tree, made and freed, with nothing run.
void BM_ParseScene(benchmark::State& state) {
    bench::MakeServices();
    bench::BuildScene(SizeWith(static_cast<int>(state.range(0))));
    const util::String text = app::Serializer::Get().Serialize();
    for (auto _ : state) {
        benchmark::DoNotOptimize(script::Parser::Get().Parse(text).Get());
    }
}

// The load taken apart: clearing the scene before, parsing the text, running the tree,
// recalculating the attributes, and freeing the tree.
void BM_LoadScenePhases(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    bench::MakeServices();
    bench::BuildScene(SizeWith(static_cast<int>(state.range(0))));
    const util::String text = app::Serializer::Get().Serialize();
    double clear = 0, parse = 0, run = 0, calc = 0, free = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        app::Scene::Get().Clear();
        const auto t1 = Clock::now();
        script::CodeBlockPtr tree = script::Parser::Get().Parse(text);
        const auto t2 = Clock::now();
        app::Serializer::Get().Deserialize(tree);
        const auto t3 = Clock::now();
        tree = script::CodeBlockPtr();
        const auto t4 = Clock::now();
        const auto ms = [](auto d) { return std::chrono::duration<double, std::milli>(d).count(); };
        clear += ms(t1 - t0);
        parse += ms(t2 - t1);
        run += ms(t3 - t2);
        free += ms(t4 - t3);
        state.PauseTiming();
        const auto t5 = Clock::now();
        script::AbstractAttrib::CalcAll();
        calc += ms(Clock::now() - t5);
        util::SweepHandles();
        state.ResumeTiming();
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["clear_ms"] = clear / n;
    state.counters["parse_ms"] = parse / n;
    state.counters["run_ms"] = run / n;
    state.counters["free_ms"] = free / n;
    state.counters["calcall_ms"] = calc / n;
}

// The recalculation of every attribute that each frame does, over the loaded scene.
void BM_CalcAll(benchmark::State& state) {
    bench::MakeServices();
    bench::BuildScene(SizeWith(0));
    for (auto _ : state) {
        script::AbstractAttrib::CalcAll();
    }
    state.counters["attributes"] = static_cast<double>(script::AbstractAttrib::Instances().size());
}

// One polygon made, distance map and all: the bench scene's pentagon, and a drawn
// round stroke of 64 points, whose sides are split further as collision needs.
void BM_MakePolygon(benchmark::State& state) {
    math::Vec2List outline;
    if (state.range(0) == 5) {
        outline = {{-0.5f, -0.4f}, {0.5f, -0.3f}, {0.3f, 0.5f}, {-0.2f, 0.3f}, {-0.6f, 0.1f}};
    } else {
        for (int i = 0; i < state.range(0); ++i) {
            const float angle =
                6.2831853f * static_cast<float>(i) / static_cast<float>(state.range(0));
            const float radius = 1.5f + 0.3f * std::sin(5.0f * angle);
            outline.push_back(math::Vec2(radius * std::cos(angle), radius * std::sin(angle)));
        }
    }
    size_t vertices = 0;
    for (auto _ : state) {
        const physics::PolygonPtr polygon(new physics::Polygon(outline));
        vertices = polygon->GetVertices().size();
        benchmark::DoNotOptimize(polygon->GetDistMap().data());
    }
    state.counters["vertices"] = static_cast<double>(vertices);
}

// The argument is the number of polygons: each builds its distance map when it is made.
BENCHMARK(BM_SaveScene)->Arg(500)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_SaveSceneFile)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);
// Polygon maps build on helper threads during a load: the time is the wall clock.
BENCHMARK(BM_LoadScene)
    ->Arg(500)
    ->Arg(100)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0)
    ->UseRealTime();
BENCHMARK(BM_LoadScenePhases)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_MakePolygon)->Arg(5)->Arg(64)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CalcAll)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseScene)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace

BENCHMARK_MAIN();
