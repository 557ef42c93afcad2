// Scene files at the size of a large scene: 5,000 entities (boxes, circles, polygons and the
// hinges between them) and 10,000 water particles, written to text and loaded back.
//   build/bin/vorra-scene-bench

#include <benchmark/benchmark.h>

#include "BenchScene.h"
#include "app/Scene.h"
#include "app/Serializer.h"
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

// The argument is the number of polygons: each builds its distance map when it is made.
BENCHMARK(BM_SaveScene)->Arg(500)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_LoadScene)->Arg(500)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_ParseScene)->Arg(0)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace

BENCHMARK_MAIN();
