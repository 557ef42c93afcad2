// The application's windows as a user meets them through the input root: the toolbar
// chooses tools and shows the chosen one, the save popup saves under the name typed, the
// load popup lists the scenes folder and loads the scene clicked, and windows are moved,
// folded and closed without ever leaving the screen.

#include "app/widgets/WidgetFactory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>

#include "AppFixture.h"
#include "app/App.h"
#include "app/FileInfo.h"
#include "app/Language.h"
#include "app/Scene.h"
#include "app/tools/BoxTool.h"
#include "app/tools/HingeTool.h"
#include "app/tools/SketchTool.h"
#include "app/tools/ToolIcon.h"
#include "app/tools/Tools.h"
#include "app/widgets/ScenePopups.h"
#include "gui/LookAndFeel.h"
#include "gui/Text.h"
#include "util/StringUtil.h"

namespace {

using math::Vec2;
using util::String;

class WidgetsTest : public test_app::AppTest {
protected:
    void SetUp() override {
        AppTest::SetUp();
        Tools().SetBaseTool(Tools().Find<app::SketchTool>());
    }
    void TearDown() override {
        AppTest::TearDown();
        util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
        std::error_code ignored;
        std::filesystem::remove_all(Folder(), ignored);
    }

    static app::Tools& Tools() { return app::Tools::Get(); }
    static app::WidgetFactory& Factory() { return app::WidgetFactory::Get(); }

    // A scenes folder of this process's own, as the work directory's.
    static std::filesystem::path Folder() {
        return std::filesystem::path(testing::TempDir()) /
               ("vorra-widgets-" + std::to_string(getpid()));
    }
    static std::filesystem::path UseOwnScenes(const std::vector<String>& shipped) {
        const std::filesystem::path scenes = Folder() / "scenes";
        std::filesystem::create_directories(scenes);
        for (const String& name : shipped) {
            std::filesystem::copy_file(std::filesystem::path(VORRA_DATA_DIR) / "scenes" / name,
                                       scenes / name);
        }
        util::FileSystem::Get().SetWorkDirectory(Folder().string() + "/");
        return scenes;
    }

    static Vec2 Centre(const gui::Component& component) {
        return component.GetAbsolutePosition() + component.GetOuterSize() * 0.5f;
    }
    static void ClickOn(const gui::Component& component) {
        const Vec2 at = Centre(component);
        Click(at.x, at.y);
    }
    // The toolbar's buttons, top to bottom.
    static std::vector<app::ToolIconPtr> Icons(const app::Window& toolbar) {
        std::vector<app::ToolIconPtr> icons;
        for (const gui::ComponentPtr& child : toolbar.GetBody()->GetChildren()) {
            if (auto* icon = dynamic_cast<app::ToolIcon*>(child.Get())) {
                icons.emplace_back(icon);
            }
        }
        return icons;
    }
    static app::ToolIconPtr IconOf(const app::Window& toolbar, const app::ToolPtr& tool) {
        for (const app::ToolIconPtr& icon : Icons(toolbar)) {
            if (icon->GetTool() == tool) {
                return icon;
            }
        }
        return app::ToolIconPtr();
    }
};

TEST_F(WidgetsTest, TheToolbarHasAButtonForEveryLabelledTool) {
    const app::WindowPtr toolbar = Factory().MakeToolbar();
    EXPECT_EQ(toolbar->GetReflectedName(), "Toolbar");
    const std::vector<app::ToolIconPtr> icons = Icons(*toolbar);
    ASSERT_EQ(icons.size(), 12u);
    std::set<String> keys;
    std::set<app::Tool*> tools;
    for (const app::ToolIconPtr& icon : icons) {
        keys.insert(icon->GetLabelKey());
        ASSERT_TRUE(icon->GetTool());
        tools.insert(icon->GetTool().Get());
        // The tooltip names the key that switches to the tool.
        const auto* tip = dynamic_cast<const gui::Text*>(icon->GetTooltip().Get());
        ASSERT_NE(tip, nullptr);
        EXPECT_NE(tip->GetText().front(), '[') << icon->GetLabelKey();
        bool named = false;
        for (char letter = 'a'; letter <= 'z'; ++letter) {
            if (Tools().GetToolForKey(letter) == icon->GetTool()) {
                const String key = String("(") + static_cast<char>(std::toupper(letter)) + ")";
                named = tip->GetText().find(key) != String::npos;
            }
        }
        EXPECT_TRUE(named) << tip->GetText();
    }
    EXPECT_EQ(tools.size(), 12u);
    EXPECT_EQ(keys, (std::set<String>{"ToolSketch", "ToolBrush", "ToolBox", "ToolCircle",
                                      "ToolPlane", "ToolChain", "ToolSpring", "ToolFixJoint",
                                      "ToolHinge", "ToolPen", "ToolDrag", "ToolScale"}));
    // At the left edge, and all of it on the screen.
    EXPECT_EQ(toolbar->GetScreenPosition().x, 0);
    EXPECT_GE(toolbar->GetScreenPosition().y, 0);
    EXPECT_LE(toolbar->GetScreenPosition().y + toolbar->GetOuterSize().y, 768);
}

TEST_F(WidgetsTest, ClickingAButtonChoosesItsToolAndThePressedLookFollows) {
    const app::WindowPtr toolbar = Factory().MakeToolbar();
    toolbar->Show(*m_host);
    const app::ToolIconPtr sketch = IconOf(*toolbar, Tools().Find<app::SketchTool>());
    const app::ToolIconPtr box = IconOf(*toolbar, Tools().Find<app::BoxTool>());
    const app::ToolIconPtr hinge = IconOf(*toolbar, Tools().Find<app::HingeTool>());
    ASSERT_TRUE(sketch && box && hinge);
    EXPECT_TRUE(sketch->IsSelected());
    EXPECT_FALSE(box->IsSelected());

    ClickOn(*box);
    EXPECT_EQ(Tools().GetBaseTool(), box->GetTool());
    EXPECT_TRUE(box->IsSelected());
    EXPECT_FALSE(sketch->IsSelected());

    // A tool chosen elsewhere, by its key for one, shows on the toolbar too.
    Tools().SetBaseTool(hinge->GetTool());
    EXPECT_EQ(Tools().GetBaseTool(), hinge->GetTool());
    EXPECT_TRUE(hinge->IsSelected());
    EXPECT_FALSE(box->IsSelected());
    EXPECT_EQ(toolbar->GetScreenPosition().x, 0) << "a click on a button never moves the bar";
}

TEST_F(WidgetsTest, TheSavePopupSavesUnderTheNameTyped) {
    const std::filesystem::path scenes = UseOwnScenes({});
    const app::WindowPtr popup = Factory().MakeSavePopup();
    auto& save = dynamic_cast<app::SaveScenePopup&>(*popup);
    EXPECT_EQ(popup->GetTitle(), app::Language::Get().Translate("SaveAsWhat"));
    popup->Show(*m_host);
    popup->PlaceNear(Vec2(300, 200));
    ASSERT_TRUE(save.GetNameField()->HasFocus());

    // Typing replaces the present name; an empty name saves nothing.
    Tap(input::key::Backspace);
    EXPECT_EQ(save.GetNameField()->GetText(), "");
    Tap(input::key::Return);
    EXPECT_TRUE(popup->IsShown());
    EXPECT_TRUE(std::filesystem::is_empty(scenes));

    Type("Tower");
    Tap(input::key::Return);
    EXPECT_TRUE(std::filesystem::exists(scenes / "Tower.vra"));
    EXPECT_TRUE(util::EndsWithIgnoreCase(app::FileInfo::Get().GetFileName(), "Tower.vra") ||
                app::FileInfo::Get().GetFileName() == "Tower");
    EXPECT_FALSE(popup->IsShown());
    EXPECT_FALSE(save.GetNameField()->HasFocus());

    // The button does the same, and the next popup offers the present name.
    const app::WindowPtr again = Factory().MakeSavePopup();
    auto& second = dynamic_cast<app::SaveScenePopup&>(*again);
    EXPECT_EQ(second.GetNameField()->GetText(), "Tower");
    again->Show(*m_host);
    Type("Bridge");
    ClickOn(*second.GetSaveButton());
    EXPECT_TRUE(std::filesystem::exists(scenes / "Bridge.vra"));
    EXPECT_FALSE(again->IsShown());
}

TEST_F(WidgetsTest, TheLoadPopupListsTheScenesAndLoadsTheOneClicked) {
    const std::filesystem::path scenes = UseOwnScenes({"pendulum.vra", "bridge.vra"});
    std::ofstream(scenes / "notes.txt") << "not a scene";
    const app::WindowPtr popup = Factory().MakeLoadPopup();
    const auto& load = dynamic_cast<const app::LoadScenePopup&>(*popup);
    EXPECT_EQ(popup->GetTitle(), app::Language::Get().Translate("LoadSceneMenu"));
    EXPECT_EQ(load.GetFiles(), (std::vector<String>{"bridge.vra", "pendulum.vra"}));
    const std::vector<gui::ComponentPtr>& rows = load.GetList()->GetRows();
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(dynamic_cast<const app::ListRow&>(*rows[1]).GetText(), "pendulum");
    popup->Show(*m_host);
    popup->PlaceNear(Vec2(200, 150));
    ASSERT_TRUE(app::Scene::Get().GetEntities().empty());

    ClickOn(*rows[1]);
    EXPECT_TRUE(util::EndsWithIgnoreCase(app::FileInfo::Get().GetFileName(), "pendulum.vra"));
    EXPECT_FALSE(app::Scene::Get().GetEntities().empty());
    EXPECT_FALSE(popup->IsShown());
}

TEST_F(WidgetsTest, ALongSceneListScrollsWithTheWheel) {
    const std::filesystem::path scenes = UseOwnScenes({});
    for (int i = 0; i < 20; ++i) {
        std::ofstream(scenes / ("scene" + std::to_string(100 + i) + ".vra")) << "";
    }
    const app::WindowPtr popup = Factory().MakeLoadPopup();
    const app::ScrollListPtr list = dynamic_cast<const app::LoadScenePopup&>(*popup).GetList();
    popup->Show(*m_host);
    ASSERT_EQ(list->GetRows().size(), 20u);
    ASSERT_TRUE(list->HasScrollBar());
    EXPECT_EQ(list->GetChildren().size(), app::LoadScenePopup::kRows);
    EXPECT_LE(popup->GetScreenPosition().y + popup->GetOuterSize().y, 768);

    const Vec2 over = Centre(*list);
    MoveMouse(over.x, over.y);
    Tap(input::MouseKey(input::kMouseWheelDown));
    EXPECT_EQ(list->GetFirstVisible(), static_cast<size_t>(app::ScrollList::kWheelRows));
    for (int i = 0; i < 10; ++i) {
        Tap(input::MouseKey(input::kMouseWheelDown));
    }
    EXPECT_EQ(list->GetFirstVisible(), 20u - app::LoadScenePopup::kRows) << "never past the end";
    EXPECT_EQ(list->GetChildren().front(), list->GetRows()[8]);
}

TEST_F(WidgetsTest, AWindowMovedOffTheScreenComesBack) {
    const app::WindowPtr menu =
        Factory().MakeMenu(app::WidgetFactory::kBackgroundMenu, app::GroupPtr());
    const app::Language& language = app::Language::Get();
    EXPECT_EQ(menu->GetTitle(),
              language.Translate("PopupTitle") + language.Translate("BackgroundMenu"));
    menu->Show(*m_host);
    menu->SetScreenPosition(Vec2(100, 100));
    const Vec2 outer = menu->GetOuterSize();

    // By its title bar, far past the lower right corner: it stops at the edges.
    const Vec2 grip = menu->GetTitleBar()->GetAbsolutePosition() + Vec2(8, 8);
    Drag(grip, Vec2(3000, 2500), 8);
    EXPECT_EQ(menu->GetScreenPosition(), Vec2(1024, 768) - outer);
    Drag(menu->GetTitleBar()->GetAbsolutePosition() + Vec2(8, 8), Vec2(-400, -300), 8);
    EXPECT_EQ(menu->GetScreenPosition(), Vec2(0, 0));

    // A drag on the rest of the window takes the gesture from the scene but moves nothing.
    menu->SetScreenPosition(Vec2(500, 400));
    const Vec2 body = menu->GetBody()->GetAbsolutePosition() + Vec2(3, 3);
    Drag(body, body + Vec2(100, 100));
    EXPECT_EQ(menu->GetScreenPosition(), Vec2(500, 400));

    // A smaller screen pushes it back in at the next frame.
    menu->SetScreenPosition(Vec2(1024, 768) - outer);
    menu->Update(0.02f);
    Gui().OnResize(640, 480);
    menu->Update(0.02f);
    EXPECT_EQ(menu->GetScreenPosition(), Vec2(640, 480) - outer);

    // A popup placed at a point opens beside it, on the side where there is room.
    menu->PlaceNear(Vec2(620, 470));
    EXPECT_EQ(menu->GetScreenPosition(), Vec2(620, 470) - outer);
    menu->PlaceNear(Vec2(10, 20));
    EXPECT_EQ(menu->GetScreenPosition(), Vec2(10, 20));
}

TEST_F(WidgetsTest, TheTitleBarFoldsAndClosesAWindow) {
    const app::WindowPtr toolbar = Factory().MakeToolbar();
    toolbar->Show(*m_host);
    const float height = toolbar->GetOuterSize().y;
    EXPECT_EQ(toolbar->GetTitleBar()->GetCloseButton()->GetParent(), nullptr)
        << "the toolbar stays";

    ClickOn(*toolbar->GetTitleBar()->GetMinimiseButton());
    EXPECT_TRUE(toolbar->IsMinimised());
    EXPECT_EQ(toolbar->GetBody()->GetParent(), nullptr);
    EXPECT_LT(toolbar->GetOuterSize().y, height / 4);
    ClickOn(*toolbar->GetTitleBar()->GetMinimiseButton());
    EXPECT_FALSE(toolbar->IsMinimised());
    EXPECT_EQ(toolbar->GetOuterSize().y, height);

    const app::WindowPtr menu = Factory().MakeMenu(app::WidgetFactory::kWaterMenu, app::GroupPtr());
    int closed = 0;
    menu->GetOnClose().Add(util::WeakPtr<util::Pointee>(m_host.Get()), [&closed]() { ++closed; });
    menu->Show(*m_host);
    ClickOn(*menu->GetTitleBar()->GetCloseButton());
    EXPECT_FALSE(menu->IsShown());
    EXPECT_EQ(closed, 1);
    // Shown again where it was; Escape closes a popup as well.
    ASSERT_TRUE(menu->Show());
    EXPECT_EQ(menu->GetParent(), m_host.Get());
    Tap(input::key::Escape);
    EXPECT_FALSE(menu->IsShown());
    EXPECT_EQ(closed, 2);
}

}  // namespace
