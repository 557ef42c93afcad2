#include "core/Subsystem.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "WindowFixture.h"
#include "script/Parser.h"
#include "util/Callback.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"

namespace {

using SubsystemTest = test_core::WindowTest;

class Owner : public util::Pointee {};

std::vector<util::String> ChildNames(const util::Profiler::Node& node) {
    std::vector<util::String> names;
    for (const util::Profiler::Node* child : node.children) {
        names.push_back(child->name);
    }
    return names;
}

}  // namespace

TEST_F(SubsystemTest, WindowSizesAreClampedAndBecomeTheSettings) {
    ASSERT_TRUE(m_subsystem->HasWindow());
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution.x, 320);
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution.y, 240);

    core::WindowParams params = m_subsystem->GetCurrentWindowParams();
    params.resolution.x = 0;
    params.resolution.y = 5000;
    m_subsystem->CreateWindow(params);
    // Past 4096 and past the desktop, where the desktop's size is known.
    int desktopWidth = 0;
    int desktopHeight = 4096;
    core::Subsystem::GetDesktopSize(desktopWidth, desktopHeight);
    const int expectedHeight = std::min(4096, desktopHeight);
    // A size below a usable window's is raised: a width of 0 was once saved and came back
    // as a window of one pixel at every start.
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution.x, 320);
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution.y, expectedHeight);
    EXPECT_EQ(m_subsystem->GetRequestedWindowParams().resolution.y, expectedHeight);

    // A change of the context's settings builds a new window; it must still draw frames.
    params.resolution.x = 200;
    params.resolution.y = 100;
    params.stencilDepth = 0;
    m_subsystem->CreateWindow(params);
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().stencilDepth, 0);
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution, math::TVector2<int>(320, 240));
    RunFrames(2);
}

TEST_F(SubsystemTest, ResizeEventRebuildsTheWindowInTheEventsStage) {
    PushResize(400, 300);
    RunFrames(1);
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution.x, 400);
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution.y, 300);
}

TEST_F(SubsystemTest, QuitEventEndsTheLoop) {
    RunFrames(3);
    SDL_Event event{};
    event.type = SDL_QUIT;
    SDL_PushEvent(&event);
    EXPECT_FALSE(m_subsystem->RunFrame());
    EXPECT_TRUE(m_subsystem->IsExitRequested());
}

TEST_F(SubsystemTest, ExitCommandEndsRunAtTheNextExitTest) {
    int calls = 0;
    util::SharedPtr<Owner> owner(new Owner());
    // Asked for from inside the frame, as a script command would be.
    m_subsystem->GetNextFrameCallbacks().Add(util::MakeCallback(owner, [&] {
        ++calls;
        m_subsystem->RequestExit();
    }));
    m_subsystem->Run();  // returns only because of the request
    EXPECT_EQ(calls, 1);
}

TEST_F(SubsystemTest, NextFrameCallbacksRunOnce) {
    int calls = 0;
    util::SharedPtr<Owner> owner(new Owner());
    m_subsystem->GetNextFrameCallbacks().Add(util::MakeCallback(owner, [&] { ++calls; }));
    RunFrames(3);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(m_subsystem->GetNextFrameCallbacks().empty());
}

TEST_F(SubsystemTest, CallbackSetsAreFlushedEveryEleventhFrame) {
    util::CallbackSet set;
    {
        util::SharedPtr<Owner> owner(new Owner());
        set.Add(util::MakeCallback(owner, [] {}));
    }
    RunFrames(10);
    EXPECT_EQ(set.size(), 1u);  // dead, but not yet flushed
    RunFrames(1);
    EXPECT_EQ(set.size(), 0u);
}

TEST_F(SubsystemTest, EachFrameSweepsTheHandles) {
    RunFrames(3);
    const size_t before = util::PointeeHandleCount();
    for (int i = 0; i < 5; ++i) {
        util::SharedPtr<Owner> temporary(new Owner());
    }
    EXPECT_EQ(util::PointeeHandleCount(), before + 5);
    // Only a sweep frees handles; the frame's own script values come and go beside them.
    RunFrames(1);
    EXPECT_LT(util::PointeeHandleCount(), before + 5);
}

TEST_F(SubsystemTest, MaxFpsBelowOneBecomesOne) {
    m_subsystem->SetMaxFPS(0);
    RunFrames(1);  // sleeps the rest of one second
    EXPECT_EQ(m_subsystem->GetMaxFPS(), 1.0f);
}

TEST_F(SubsystemTest, StagesAreProfiledInFrameOrder) {
    RunFrames(3);
    const std::vector<util::String> stages = ChildNames(util::Profiler::Get().GetRoot());
    const std::vector<util::String> expected = {
        "Events",      "GC",   "Parser::Update",     "Interp::Update",
        "GUI::Update", "Draw", "SDL_GL_SwapBuffers", "Logger::Update"};
    std::vector<util::String> seen;
    std::copy_if(stages.begin(), stages.end(), std::back_inserter(seen), [&](const auto& name) {
        return std::find(expected.begin(), expected.end(), name) != expected.end();
    });
    EXPECT_EQ(seen, expected);
    RunFrames(8);  // the eleventh frame adds the flush stage
    const std::vector<util::String> all = ChildNames(util::Profiler::Get().GetRoot());
    EXPECT_NE(std::find(all.begin(), all.end(), "FlushCallbackSets"), all.end());
}

TEST_F(SubsystemTest, FrameRateIsMeasured) {
    RunFrames(5);
    EXPECT_GT(m_subsystem->GetFramesPerSecond(), 0.0);
}

class SystemObjectTest : public SubsystemTest {
protected:
    void SetUp() override {
        SubsystemTest::SetUp();
        script::AddToRoot(m_subsystem);
    }
    util::String Eval(const util::String& text) {
        return script::Parser::Get().ExecuteToString(text);
    }
};

TEST_F(SystemObjectTest, WindowSettingsAreScriptVariables) {
    // The script mirrors the native settings from the next recalculation on.
    RunFrames(1);
    EXPECT_EQ(Eval("System.resolution"), "[320, 240]");
    Eval("System.resolution = [400, 300]; System.resizable = false");
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution.x, 320);  // not yet applied
    Eval("System.recreateWindow");
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().resolution, math::Vec2i(400, 300));
    EXPECT_FALSE(m_subsystem->GetCurrentWindowParams().resizable);
    // Read back after the window made it: the raised size shows, and the configuration
    // saves that, not the size that could not be used.
    Eval("System.resolution = [0, 200]; System.recreateWindow");
    EXPECT_EQ(Eval("System.resolution"), "[320, 240]");
    // A resize by the user shows in the script too.
    PushResize(410, 310);
    RunFrames(1);
    EXPECT_EQ(Eval("System.resolution"), "[410, 310]");
}

TEST_F(SystemObjectTest, FrameRateAttributesAndFigures) {
    Eval("System.maxFPS = 0");
    RunFrames(1);
    EXPECT_EQ(Eval("System.maxFPS"), "1");
    EXPECT_EQ(Eval("System.objectTotal"), "0");
    EXPECT_NE(Eval("System.objectCurrent"), "0");
    EXPECT_NE(Eval("System.time"), "");
    Eval("System.minFPS = { 5 * 4 }");
    EXPECT_EQ(m_subsystem->GetMinFPS(), 20.0f);
    Eval("System.exit");
    EXPECT_FALSE(m_subsystem->RunFrame());
}

TEST_F(SystemObjectTest, RefusedWindowSettingsKeepTheWindowThatWorked) {
    RunFrames(1);
    // No driver offers this many samples: the window comes back with its old settings.
    Eval("System.antiAlias = 4096; System.recreateWindow");
    ASSERT_TRUE(m_subsystem->HasWindow());
    EXPECT_EQ(m_subsystem->GetCurrentWindowParams().antiAliasSamples, 1);
    RunFrames(2);
    EXPECT_EQ(Eval("System.antiAlias"), "1");
}
