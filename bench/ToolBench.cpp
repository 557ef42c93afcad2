// The wait a user has at the end of a stroke: from the release of the button after a
// closed stroke of 200 points to the polygon standing in the world with its step in the
// history, both snapshots included, in a running scene of 2,000 entities (1,500 shapes
// and 500 hinges) and 10,000 particles. The budget is 50 ms, three frames. Each new
// polygon is undone outside the timing, so that the scene stays at 2,000.
//   build/bin/vorra-tool-bench

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>

#include "BenchScene.h"
#include "app/App.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/tools/BrushTool.h"
#include "app/tools/SketchTool.h"
#include "input/Events.h"
#include "input/KeyCodes.h"
#include "util/CallbackSet.h"
#include "util/Pointee.h"

namespace {

constexpr bench::SceneSize kSize{1500, 400, 100, 500, 10000};
constexpr int kWarmSteps = 20;
constexpr int kStrokePoints = 200;
// Beside the grid of shapes (x 0 to 74, y 0 to 44), so that the stroke encircles nothing
// and becomes a polygon; a radius of 6 puts the points 0.19 apart, just above the
// sampling distance at this zoom (0.172).
const math::Vec2 kCentre(100, 20);
constexpr float kRadius = 6;

void BuildRunningScene() {
    bench::MakeServices();
    // The tools read their settings from the application; no window is needed.
    if (!app::App::IsAlive()) {
        new app::App();
    }
    bench::BuildScene(kSize);
    app::Scene::Get().RunSteps(kWarmSteps);
    util::SweepHandles();
    app::Undoer::Get().Clear();
    app::Camera& camera = app::Scene::Get().GetCamera();
    camera.SetViewport(math::Vec2(0, 0), math::Vec2(800, 600));
    camera.SetZoom(100);
    camera.SetPan(kCentre);
}

input::DragEvent At(const math::Vec2& world) {
    input::DragEvent event;
    event.key = input::MouseKey(input::kMouseLeft);
    event.position = app::Scene::Get().GetCamera().WorldToGUI(world);
    return event;
}

// A circle that stops one step short of its start: closed by the implied edge.
math::Vec2 StrokePoint(int i) {
    const float angle = 6.2831853f * static_cast<float>(i) / kStrokePoints;
    return kCentre + math::Vec2(std::cos(angle), std::sin(angle)) * kRadius;
}

void RunStrokes(benchmark::State& state, app::Tool& tool) {
    BuildRunningScene();
    app::Scene& scene = app::Scene::Get();
    const size_t entities = scene.GetEntities().size();
    for (auto _ : state) {
        input::DragEvent begin = At(StrokePoint(0));
        tool.OnDragBegin(begin);
        for (int i = 1; i < kStrokePoints - 1; ++i) {
            input::DragEvent drag = At(StrokePoint(i));
            tool.OnDrag(drag);
        }
        input::DragEvent end = At(StrokePoint(kStrokePoints - 1));

        const auto start = std::chrono::steady_clock::now();
        tool.OnDragEnd(end);
        const auto stop = std::chrono::steady_clock::now();
        state.SetIterationTime(std::chrono::duration<double>(stop - start).count());

        if (scene.GetEntities().size() != entities + 1 ||
            app::Undoer::Get().GetUndoLabel() == nullptr) {
            state.SkipWithError("the stroke made no polygon");
            return;
        }
        app::Undoer::Get().Undo();
        util::AbstractCallbackSet::FlushAll();
        util::SweepHandles();
    }
    state.counters["entities"] = static_cast<double>(entities);
    state.counters["points"] = kStrokePoints;
}

void BM_SketchPolygon(benchmark::State& state) {
    const util::SharedPtr<app::SketchTool> tool(new app::SketchTool());
    RunStrokes(state, *tool);
}

void BM_BrushPolygon(benchmark::State& state) {
    const util::SharedPtr<app::BrushTool> tool(new app::BrushTool());
    RunStrokes(state, *tool);
}

BENCHMARK(BM_SketchPolygon)->Unit(benchmark::kMillisecond)->UseManualTime()->MinTime(2.0);
BENCHMARK(BM_BrushPolygon)->Unit(benchmark::kMillisecond)->UseManualTime()->MinTime(2.0);

}  // namespace

BENCHMARK_MAIN();
