// Snapshots at the size of a large running scene: 2,000 entities (boxes, circles, polygons
// and the hinges between them) and 10,000 water particles, after some steps so that there
// are contacts and motion. A snapshot is taken for each stroke of the user, so capture and
// restore each have a budget of 10 ms. Memory is what the structures hold: the general heap
// in use plus the small-object pool's live objects.
//   build/bin/vorra-snapshot-bench

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <vector>

#include "BenchScene.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "physics/Simulation.h"
#include "util/CallbackSet.h"
#include "util/Pointee.h"
#include "util/SmallObjectPool.h"

namespace {

// 1,500 shapes and 500 hinges.
constexpr bench::SceneSize kSize{1500, 400, 100, 500, 10000};
constexpr int kWarmSteps = 20;

void BuildRunningScene() {
    bench::MakeServices();
    bench::BuildScene(kSize);
    app::Scene::Get().RunSteps(kWarmSteps);
    util::SweepHandles();
}

// Bytes held by live objects, pooled or not.
size_t HeldBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd - util::SmallObjectPool::GetBytesReserved() +
           util::SmallObjectPool::GetBytesInUse();
}

void BM_TakeSnapshot(benchmark::State& state) {
    BuildRunningScene();
    const size_t before = HeldBytes();
    const app::SnapshotPtr snapshot(new app::Snapshot());
    const size_t bytes = HeldBytes() - before;
    for (auto _ : state) {
        app::SnapshotPtr taken(new app::Snapshot());
        // Dropping it is not part of taking it.
        state.PauseTiming();
        taken.Reset();
        state.ResumeTiming();
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["entities"] = static_cast<double>(app::Scene::Get().GetEntities().size());
    state.counters["contacts"] =
        static_cast<double>(physics::Simulation::Get().GetContacts().size());
}

void BM_RestoreSnapshot(benchmark::State& state) {
    BuildRunningScene();
    const app::SnapshotPtr snapshot(new app::Snapshot());
    snapshot->Restore();
    util::SweepHandles();
    const size_t before = HeldBytes();
    for (auto _ : state) {
        snapshot->Restore();
        // As the next frame would: callbacks of the objects the restore replaced are
        // flushed, and the handles of the dead are swept.
        state.PauseTiming();
        util::AbstractCallbackSet::FlushAll();
        util::SweepHandles();
        state.ResumeTiming();
    }
    // What a restore leaves held beyond the scene it restores: nothing, if nothing leaks.
    state.counters["bytes"] = static_cast<double>(HeldBytes()) - static_cast<double>(before);
    state.counters["particles"] =
        static_cast<double>(physics::Simulation::Get().GetParticles().size());
}

// The memory of a full history: 25 user steps of the standard pattern while the world
// runs, each a snapshot before, one box moved and a snapshot after.
void BM_UndoHistory(benchmark::State& state) {
    BuildRunningScene();
    app::Undoer& undoer = app::Undoer::Get();
    undoer.Clear();
    undoer.SetMaxUndo(app::Undoer::kDefaultMaxUndo);
    size_t bytes = 0;
    for (auto _ : state) {
        const size_t before = HeldBytes();
        for (int step = 0; step < app::Undoer::kDefaultMaxUndo; ++step) {
            const app::SnapshotPtr snapshot(new app::Snapshot());
            const app::EntityPtr& entity = app::Scene::Get().GetEntities()[step];
            entity->BeginTransform();
            entity->Transform(physics::Transform::FromAngle(0, math::Vec2(0.1f, 0)));
            entity->EndTransform();
            undoer.AddSnapshotStep(snapshot, "UndoMove");
            app::Scene::Get().RunSteps(1);
        }
        bytes = HeldBytes() - before;
        state.PauseTiming();
        undoer.Clear();
        util::SweepHandles();
        state.ResumeTiming();
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["steps"] = app::Undoer::kDefaultMaxUndo;
}

BENCHMARK(BM_TakeSnapshot)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_RestoreSnapshot)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_UndoHistory)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
