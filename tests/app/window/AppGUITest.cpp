// The interface over the scene: the global keys, the wheel, clicks and drags that reach
// the tool or open a menu, saving and loading by name, and the autosave.

#include "app/AppGUI.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "../../util/LogCapture.h"
#include "ToolFixture.h"
#include "app/tools/SketchTool.h"
#include "physics/Simulation.h"
#include "util/FileSystem.h"

namespace {

namespace fs = std::filesystem;

class AppGUITest : public test_app::ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        m_savedWork = util::FileSystem::Get().GetWorkDirectory();
        m_work = fs::path(testing::TempDir()) / ("vorra-appgui-" + std::to_string(getpid()));
        fs::remove_all(m_work);
        fs::create_directories(m_work / "scenes");
        util::FileSystem::Get().SetWorkDirectory(m_work.string() + "/");
        app::Tools::Get().SetBaseTool(app::Tools::Get().Find<app::SketchTool>());
        Interface().trapUser->SetNative(false);
        Interface().GetPopupLayer()->RemoveAllChildren();
        app::Undoer::Get().Clear();
        physics::Simulation::Get().running->SetNative(false);
    }
    void TearDown() override {
        util::FileSystem::Get().SetWorkDirectory(m_savedWork);
        fs::remove_all(m_work);
        ToolTest::TearDown();
    }
    static app::AppGUI& Interface() { return *app::App::Get().GetAppGUI(); }
    static bool Press(input::SDLKey key, bool ctrl = false, math::Vec2 at = {400, 300}) {
        input::KeyEvent event;
        event.key = key;
        event.down = true;
        event.ctrl = ctrl;
        event.shift = s_modifiers.shift;
        event.position = at;
        Interface().OnKey(event);
        input::KeyEvent release = event;
        release.down = false;
        release.consumed = false;
        Interface().OnKey(release);
        return event.consumed;
    }
    static bool ClickAt(const math::Vec2& world, input::SDLKey key, int clicks = 1) {
        input::ClickEvent click;
        click.key = key;
        click.clicks = clicks;
        click.position = Gui(world);
        Interface().OnClick(click);
        return click.consumed;
    }
    static const char* UndoLabel() { return app::Undoer::Get().GetUndoLabel(); }

    util::String m_savedWork;
    fs::path m_work;
};

TEST_F(AppGUITest, SpaceStartsARunThatUndoesAndCtrlKeysEditTheScene) {
    physics::Simulation& sim = physics::Simulation::Get();
    const auto box = AddBox({0, 2});
    EXPECT_TRUE(Press(input::key::Space));
    EXPECT_TRUE(sim.running->Get());
    EXPECT_STREQ(UndoLabel(), "UndoSimStart");
    GetScene().RunSteps(30);
    EXPECT_LT(box->GetGeom()->GetTransform().translation.y, 2.0f);
    // Stopping is no step of its own; undo goes back to the paused scene.
    EXPECT_TRUE(Press(input::key::Space));
    EXPECT_FALSE(sim.running->Get());
    EXPECT_EQ(app::Undoer::Get().GetUndoStack().size(), 1u);
    EXPECT_TRUE(Press('z', true));
    EXPECT_FLOAT_EQ(box->GetGeom()->GetTransform().translation.y, 2.0f);
    EXPECT_TRUE(Press('y', true));

    // Ctrl+A selects everything; Ctrl+G groups it, Ctrl+U takes it out again.
    AddCircle({3, 0}, 0.5f);
    EXPECT_TRUE(Press('a', true));
    EXPECT_EQ(GetScene().GetSelection()->size(), 2u);
    EXPECT_TRUE(Press('g', true));
    EXPECT_STREQ(UndoLabel(), "UndoGroupAssignment");
    ASSERT_TRUE(GetScene().GetGroup("Group1"));
    EXPECT_EQ(GetScene().GetGroup("Group1")->size(), 2u);
    EXPECT_TRUE(Press('u', true));
    EXPECT_STREQ(UndoLabel(), "UndoGroupRemoval");
    EXPECT_TRUE(!GetScene().GetGroup("Group1") || GetScene().GetGroup("Group1")->empty());

    // Delete erases the selection as one step; Ctrl+N empties the scene as another.
    EXPECT_TRUE(Press(input::key::Delete));
    EXPECT_STREQ(UndoLabel(), "UndoErase");
    EXPECT_TRUE(GetScene().GetEntities().empty());
    EXPECT_TRUE(Press('z', true));
    EXPECT_EQ(GetScene().GetEntities().size(), 2u);
    EXPECT_TRUE(Press('n', true));
    EXPECT_STREQ(UndoLabel(), "UndoNewScene");
    EXPECT_TRUE(GetScene().GetEntities().empty());

    // A trapped user's Ctrl+Q stays unconsumed.
    Interface().trapUser->SetNative(true);
    EXPECT_FALSE(Press('q', true));
}

TEST_F(AppGUITest, TheWheelZoomsAboutTheMouseWithinTheLimitsAndShiftReorders) {
    app::Camera& camera = GetScene().GetCamera();
    const math::Vec2 mouse(600, 150);
    const math::Vec2 under = camera.GUIToWorld(mouse);
    const float zoom = camera.GetZoom();
    EXPECT_TRUE(Press(input::MouseKey(input::kMouseWheelUp), false, mouse));
    EXPECT_NEAR(camera.GetZoom(), zoom * std::pow(2.0f, 0.2f), 1e-3);
    EXPECT_NEAR((camera.WorldToGUI(under) - mouse).Length(), 0, 1e-2);
    EXPECT_TRUE(Press(input::MouseKey(input::kMouseWheelDown), false, mouse));
    EXPECT_NEAR(camera.GetZoom(), zoom, 1e-3);

    // At the limit the wheel does nothing more, but still takes the event.
    camera.SetZoom(app::Camera::kMaxZoom);
    const math::Vec2 pan = camera.GetPan();
    EXPECT_TRUE(Press(input::MouseKey(input::kMouseWheelUp), false, mouse));
    EXPECT_EQ(camera.GetZoom(), app::Camera::kMaxZoom);
    EXPECT_EQ(camera.GetPan(), pan);

    camera.SetZoom(100);
    const auto below = AddBox({0, 0});
    const auto above = AddBox({0.2f, 0});
    GetScene().GetSelection()->Add(below);
    s_modifiers.shift = true;
    EXPECT_TRUE(Press(input::MouseKey(input::kMouseWheelUp), false, mouse));
    s_modifiers.shift = false;
    EXPECT_EQ(GetScene().GetEntities().back(), app::EntityPtr(below));
    EXPECT_EQ(camera.GetZoom(), 100);
    (void)above;
}

TEST_F(AppGUITest, ClicksSelectAndTheRightClickOrADoubleClickOpensTheMenu) {
    const auto a = AddBox({0, 0});
    const auto b = AddBox({3, 0});
    ClickAt({0, 0}, Left());
    EXPECT_TRUE(GetScene().GetSelection()->Contains(a));
    ClickAt({-3, 2}, Left());
    EXPECT_TRUE(GetScene().GetSelection()->empty());

    // A right click on a shape that is not selected replaces the selection first.
    GetScene().GetSelection()->Add(a);
    EXPECT_TRUE(ClickAt({3, 0}, Right()));
    EXPECT_EQ(GetScene().GetSelection()->size(), 1u);
    EXPECT_TRUE(GetScene().GetSelection()->Contains(b));
    ASSERT_EQ(Interface().GetPopupLayer()->GetChildren().size(), 1u);
    // Escape with nothing to cancel closes it.
    EXPECT_TRUE(Press(input::key::Escape));
    EXPECT_TRUE(Interface().GetPopupLayer()->GetChildren().empty());

    // A plain left click opens nothing, the second of a double click does.
    EXPECT_FALSE(ClickAt({0, 0}, Left()));
    EXPECT_TRUE(Interface().GetPopupLayer()->GetChildren().empty());
    EXPECT_TRUE(ClickAt({0, 0}, Left(), 2));
    EXPECT_EQ(Interface().GetPopupLayer()->GetChildren().size(), 1u);
    Interface().ClosePopups();
    Interface().leftClickMenus->SetNative(true);
    EXPECT_TRUE(ClickAt({-3, 2}, Left()));
    EXPECT_EQ(Interface().GetPopupLayer()->GetChildren().size(), 1u);
    Interface().leftClickMenus->SetNative(false);
}

TEST_F(AppGUITest, ADragOnTheCanvasReachesTheToolAndOnTheSelectionMovesIt) {
    // A closed stroke through the interface becomes a polygon.
    input::DragEvent begin;
    const std::vector<math::Vec2> stroke = Circle({0, 0}, 1.0f, 40);
    auto send = [&](const std::vector<math::Vec2>& points) {
        input::DragEvent event;
        event.key = Left();
        event.start = Gui(points.front());
        event.position = event.start;
        Interface().OnDragBegin(event);
        math::Vec2 last = event.position;
        for (size_t i = 1; i < points.size(); ++i) {
            input::DragEvent drag;
            drag.key = Left();
            drag.start = Gui(points.front());
            drag.position = Gui(points[i]);
            drag.offset = drag.position - last;
            last = drag.position;
            if (i + 1 < points.size()) {
                Interface().OnDrag(drag);
            } else {
                Interface().OnDragEnd(drag);
            }
        }
    };
    send(stroke);
    ASSERT_EQ(GetScene().GetEntities().size(), 1u);
    EXPECT_STREQ(UndoLabel(), "UndoPolygon");

    // Selected, the same shape is moved by a drag, and the sketch tool is back after it.
    const app::EntityPtr shape = GetScene().GetEntities().front();
    GetScene().GetSelection()->Add(shape);
    const math::Vec2 before = shape->GetBoundingBox().Centre();
    send(Line({0, 0}, {2, 1}, 10));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);
    EXPECT_NEAR((shape->GetBoundingBox().Centre() - before - math::Vec2(2, 1)).Length(), 0, 1e-3);
    EXPECT_STREQ(UndoLabel(), "UndoMove");
    EXPECT_EQ(app::Tools::Get().GetTool(), app::ToolPtr(app::Tools::Get().Find<app::SketchTool>()));
}

TEST_F(AppGUITest, ScenesSaveByNameAndTheAutosaveNeverTakesTheUsersFile) {
    AddBox({0, 0});
    Interface().SaveSceneAs("x", false);
    EXPECT_TRUE(fs::exists(m_work / "scenes" / "x.vra"));
    const fs::path elsewhere = m_work / "dir" / "y.VRA";
    fs::create_directories(elsewhere.parent_path());
    Interface().SaveSceneAs(elsewhere.string(), false);
    EXPECT_TRUE(fs::exists(elsewhere));
    EXPECT_FALSE(fs::exists(elsewhere.string() + ".vra"));

    // The autosave writes the configuration and the scene in one frame, then waits.
    app::FileInfo::Get().SetFileName("mine.vra");
    app::App::Get().GetModel().autosaveTime->SetNative(5);
    s_now += 6;
    Interface().Update(0);
    EXPECT_TRUE(fs::exists(m_work / "config.autosave.cfg"));
    EXPECT_TRUE(fs::exists(m_work / "scenes" / "_AUTOSAVE.vra"));
    EXPECT_EQ(app::FileInfo::Get().GetFileName(), "mine.vra");
    fs::remove(m_work / "scenes" / "_AUTOSAVE.vra");
    s_now += 2;
    Interface().Update(0);
    EXPECT_FALSE(fs::exists(m_work / "scenes" / "_AUTOSAVE.vra"));

    // A folder that cannot be written is reported; the scene stays.
    {
        test::LogCapture log(test::LogCapture::kProblems);
        Interface().SaveSceneAs((m_work / "missing" / "z.vra").string(), false);
        EXPECT_TRUE(log.Contains("Couldn't write")) << log.Text();
    }
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);

    // The saved file loads back as one step.
    Interface().LoadScene("x", false);
    EXPECT_STREQ(UndoLabel(), "UndoLoadScene");
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);
}

}  // namespace
