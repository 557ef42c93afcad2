// Scene files at the size of a large scene: 5,000 entities (boxes, circles, polygons and the
// hinges between them) and 10,000 water particles, written to text and loaded back.
//   build/bin/vorra-scene-bench

#include <benchmark/benchmark.h>

#include <cmath>

#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PolyEntity.h"
#include "logging/Logger.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "util/Pointee.h"

namespace {

constexpr int kShapeColumns = 50;
constexpr int kShapes = 3500;
constexpr int kCircles = 1500;
constexpr int kHinges = 1500;
constexpr int kParticles = 10000;

void MakeServices() {
    static bool made = false;
    if (made) {
        return;
    }
    made = true;
    // Only the figures go to the terminal.
    logging::Logger::Get();
    physics::Simulation::Get();
    physics::SPH::Get();
    app::FileInfo::Get();
    script::AddToRoot(&physics::Simulation::Get());
    script::AddToRoot(&physics::SPH::Get());
    script::AddToRoot(&app::Scene::Get());
    app::Serializer::Get();
}

math::Vec2 Slot(int index) {
    return math::Vec2(static_cast<float>(index % kShapeColumns) * 1.5f,
                      static_cast<float>(index / kShapeColumns) * 1.5f);
}

// Shapes on a grid, the first 1,500 hinged to the one above each; the polygons take the
// place of boxes.
void BuildScene(int polygons) {
    const int boxes = kShapes - kCircles - polygons;
    app::Scene& scene = app::Scene::Get();
    scene.Clear();
    std::vector<physics::GeomPtr> geoms;
    int slot = 0;
    for (int i = 0; i < boxes; ++i, ++slot) {
        util::SharedPtr<physics::Box> box(new physics::Box(math::Vec2(0.5f, 0.3f)));
        box->SetTransform(physics::Transform::FromAngle(0.1f * static_cast<float>(i), Slot(slot)));
        scene.AddEntity(app::EntityPtr(new app::BoxEntity(box)));
        geoms.push_back(box);
    }
    for (int i = 0; i < kCircles; ++i, ++slot) {
        util::SharedPtr<physics::Circle> circle(new physics::Circle(0.4f));
        circle->SetTransform(physics::Transform::FromAngle(0, Slot(slot)));
        scene.AddEntity(app::EntityPtr(new app::CircleEntity(circle)));
        geoms.push_back(circle);
    }
    for (int i = 0; i < polygons; ++i, ++slot) {
        const math::Vec2 at = Slot(slot);
        const physics::PolygonPtr polygon(new physics::Polygon(
            math::Vec2List{at + math::Vec2(-0.5f, -0.4f), at + math::Vec2(0.5f, -0.3f),
                           at + math::Vec2(0.3f, 0.5f), at + math::Vec2(-0.2f, 0.3f),
                           at + math::Vec2(-0.6f, 0.1f)}));
        scene.AddEntity(app::EntityPtr(new app::PolyEntity(polygon)));
        geoms.push_back(polygon);
    }
    for (int i = 0; i < kHinges; ++i) {
        const physics::GeomPtr& a = geoms[static_cast<size_t>(i)];
        const physics::GeomPtr& b = geoms[static_cast<size_t>(i + kShapeColumns)];
        util::SharedPtr<app::HingeEntity> hinge(new app::HingeEntity(0.3f));
        hinge->SetEnds(a, math::Vec2(0, 0.75f), b, math::Vec2(0, -0.75f));
        scene.AddEntity(hinge);
    }
    physics::Simulation& sim = physics::Simulation::Get();
    for (int i = 0; i < kParticles; ++i) {
        sim.AddParticle(physics::ParticlePtr(
            new physics::Particle(math::Vec2(-20 + 0.09f * static_cast<float>(i % 100),
                                             0.09f * static_cast<float>(i / 100)),
                                  math::Vec2(0, 0))));
    }
}

void BM_SaveScene(benchmark::State& state) {
    MakeServices();
    BuildScene(static_cast<int>(state.range(0)));
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
    MakeServices();
    BuildScene(static_cast<int>(state.range(0)));
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
    MakeServices();
    BuildScene(static_cast<int>(state.range(0)));
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
