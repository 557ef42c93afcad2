// What the interface costs a frame. Needs an X server:
//   xvfb-run -a build/bin/vorra-gui-bench
// ConsoleFrame: the GUI's update and draw with the console open over a 1024 by 768 window
// and 1,000 lines in it, submitted (Submit) and with the drawing finished by the driver
// (Finished: Mesa's software rasteriser here, so that figure is mostly its pixel work).
// ConsoleUpdate: the update alone, all of it the program's own work.
// MouseOverWalk: UpdateMouseOverComp on a tree of 500 components, the mouse moving over
// it.

#include <GL/glew.h>
#include <SDL.h>
#include <benchmark/benchmark.h>

#include "BenchWindow.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "gui/Console.h"
#include "gui/GUI.h"
#include "input/Input.h"

namespace {

// The window with the data tree's fonts and cursor already on the card.
core::Subsystem& Window() {
    static const bool prefetched = [] {
        bench::BenchWindow();
        core::ResourceManager::Get().Prefetch();
        return true;
    }();
    (void)prefetched;
    return bench::BenchWindow();
}

gui::Console& OpenConsoleWithLines() {
    gui::Console& console = *gui::GUI::Get().GetConsole();
    if (console.GetLines().size() < 1000) {
        for (int i = 0; console.GetLines().size() < 1000; ++i) {
            console.Print("Line " + std::to_string(i) +
                              ": Sim.gravity = [0.0, -9.81]; a line of ordinary length for a log",
                          false);
        }
    }
    if (!console.IsOpen()) {
        console.Toggle();
    }
    return console;
}

void ConsoleFrame(benchmark::State& state, bool finish) {
    Window();
    gui::GUI& gui = gui::GUI::Get();
    OpenConsoleWithLines();
    // Past the slide, which follows the clock: the console stands fully open.
    SDL_Delay(500);
    gui.Update(0.016f);
    // What an earlier benchmark left queued is not this one's work.
    glFinish();
    for (auto _ : state) {
        gui.Update(0.016f);
        gui.Draw();
        if (finish) {
            glFinish();
        }
    }
}

// The GUI's own work of the frame, without the driver: the mouse-over walk and every
// component's update, the console's among them.
void BM_ConsoleUpdate(benchmark::State& state) {
    Window();
    gui::GUI& gui = gui::GUI::Get();
    OpenConsoleWithLines();
    for (auto _ : state) {
        gui.Update(0.016f);
    }
}
BENCHMARK(BM_ConsoleUpdate)->Unit(benchmark::kMicrosecond)->MinTime(1.0)->UseRealTime();

void BM_ConsoleFrameSubmit(benchmark::State& state) {
    ConsoleFrame(state, false);
}
BENCHMARK(BM_ConsoleFrameSubmit)->Unit(benchmark::kMicrosecond)->MinTime(1.0)->UseRealTime();

void BM_ConsoleFrameFinished(benchmark::State& state) {
    ConsoleFrame(state, true);
}
BENCHMARK(BM_ConsoleFrameFinished)->Unit(benchmark::kMicrosecond)->MinTime(1.0)->UseRealTime();

// Twenty panels of five rows of four: 20 panels, 100 rows and 400 leaves, 520 components
// over the whole window.
void BM_MouseOverWalk(benchmark::State& state) {
    Window();
    gui::GUI& gui = gui::GUI::Get();
    gui::ComponentPtr holder(new gui::Component("benchHolder"));
    for (int p = 0; p < 20; ++p) {
        gui::ComponentPtr panel(new gui::Component("panel"));
        panel->SetPosition(static_cast<float>(p % 5) * 200, static_cast<float>(p / 5) * 190);
        panel->SetSize(190, 180);
        for (int r = 0; r < 5; ++r) {
            gui::ComponentPtr row(new gui::Component("row"));
            row->SetPosition(0, static_cast<float>(r) * 36);
            row->SetSize(190, 34);
            for (int c = 0; c < 4; ++c) {
                gui::ComponentPtr leaf(new gui::Component("leaf"));
                leaf->SetPosition(static_cast<float>(c) * 47, 0);
                leaf->SetSize(45, 34);
                row->Add(leaf);
            }
            panel->Add(row);
        }
        holder->Add(panel);
    }
    holder->SetSize(1024, 768);
    gui.GetRoot()->Add(holder);
    input::Input& input = input::Input::Get();
    int i = 0;
    for (auto _ : state) {
        const float x = static_cast<float>((i * 37) % 1000);
        const float y = static_cast<float>((i * 53) % 760);
        ++i;
        input.HandleMouseMotion(math::Vec2(x, y), math::Vec2(1, 1));
    }
    holder->RemoveFromParent();
}
BENCHMARK(BM_MouseOverWalk)->Unit(benchmark::kMicrosecond)->MinTime(1.0)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    return bench::RunWindowBenchmarks(argc, argv);
}
