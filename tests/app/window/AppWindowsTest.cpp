// The application's own windows on the interface: the simulation control, the status, the
// file window, the options, the help and the about window are made by name, open where
// they belong without covering the toolbar or each other, and come back where the
// configuration says; their controls act as the keys and the console would.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "../../util/LogCapture.h"
#include "../SceneFixture.h"
#include "AppFixture.h"
#include "app/App.h"
#include "app/AppGUI.h"
#include "app/FileInfo.h"
#include "app/Language.h"
#include "app/Scene.h"
#include "app/Thumbnail.h"
#include "app/Undoer.h"
#include "app/tools/Tools.h"
#include "app/widgets/FileWindow.h"
#include "app/widgets/OptionControls.h"
#include "app/widgets/OptionsWindow.h"
#include "app/widgets/SimControl.h"
#include "app/widgets/SimInfo.h"
#include "app/widgets/WidgetFactory.h"
#include "gui/LookAndFeel.h"
#include "gui/Text.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"

namespace {

namespace fs = std::filesystem;
using math::Vec2;
using util::String;

constexpr const char* kWidgets[] = {"Toolbar", "SimControl", "SimInfo", "File",
                                    "Options", "Help",       "About"};

// The scene fixture's way of adding shapes, for the interface's tests.
struct Shapes : test_app::SceneTest {
    using SceneTest::AddBox;
};

bool Overlap(const app::Widget& a, const app::Widget& b) {
    const Vec2 a0 = a.GetScreenPosition();
    const Vec2 a1 = a0 + a.GetOuterSize();
    const Vec2 b0 = b.GetScreenPosition();
    const Vec2 b1 = b0 + b.GetOuterSize();
    return a0.x < b1.x && b0.x < a1.x && a0.y < b1.y && b0.y < a1.y;
}

class AppWindowsTest : public test_app::AppTest {
protected:
    void SetUp() override {
        AppTest::SetUp();
        // The interface on the host, and at the root of the script as the program puts it.
        // No autosave may write into the data tree.
        m_host->Add(gui::ComponentPtr(&Interface()));
        Interface().SetSize(m_host->GetSize());
        script::AddToRoot(script::ReflectedPtr(&Interface()));
        m_autosave = Model().autosaveTime->Get();
        Model().autosaveTime->SetNative(std::numeric_limits<float>::max());
        Interface().ResetWidgetPlacements();
        Interface().simpleMode->SetNative(false);
        Interface().SetUpWidgets();
    }
    void TearDown() override {
        Interface().ClosePopups();
        Interface().simpleMode->SetNative(false);
        Interface().ResetWidgetPlacements();
        Model().autosaveTime->SetNative(m_autosave);
        app::App::Get().Add(gui::ComponentPtr(&Interface()));
        AppTest::TearDown();
        util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
        std::error_code ignored;
        fs::remove_all(Folder(), ignored);
    }

    static app::AppModel& Model() { return app::App::Get().GetModel(); }
    static physics::Simulation& Sim() { return physics::Simulation::Get(); }
    static const app::Language& Texts() { return app::Language::Get(); }
    static app::Widget& Kept(const String& name) {
        const app::WidgetPtr widget = Interface().GetKeptWidget(name);
        EXPECT_TRUE(widget) << name;
        return *widget;
    }
    template <class W>
    static W& KeptAs(const String& name) {
        return dynamic_cast<W&>(Kept(name));
    }
    // Shown on the interface, and found there by its name as the kept widget of that name.
    static bool IsOpen(const String& name) {
        const gui::ComponentPtr found = Interface().FindWidget(name);
        if (found) {
            EXPECT_EQ(found.Get(), Interface().GetKeptWidget(name).Get()) << name;
        }
        return static_cast<bool>(found);
    }
    static void Run(const String& text) { script::Parser::Get().Execute(text); }

    // A work directory of this process's own, with the scenes and vorralets folders.
    static fs::path Folder() {
        return fs::path(testing::TempDir()) / ("vorra-appwindows-" + std::to_string(getpid()));
    }
    static fs::path UseOwnFolders() {
        fs::create_directories(Folder() / "scenes");
        fs::create_directories(Folder() / "vorralets");
        util::FileSystem::Get().SetWorkDirectory(Folder().string() + "/");
        return Folder();
    }

    static void ClickOn(const gui::Component& component) {
        const Vec2 at = component.GetAbsolutePosition() + component.GetOuterSize() * 0.5f;
        Click(at.x, at.y);
    }
    // The first control of a window whose text is the key's translation.
    template <class Control>
    static Control* FindControl(const gui::Component& parent, const String& key) {
        const String text = Texts().Translate(key);
        for (const gui::ComponentPtr& child : parent.GetChildren()) {
            if (auto* control = dynamic_cast<Control*>(child.Get())) {
                if constexpr (std::is_base_of_v<gui::LabeledSlider, Control>) {
                    if (control->GetCaption() == text) {
                        return control;
                    }
                } else if (control->GetText() == text) {
                    return control;
                }
            }
            if (Control* inner = FindControl<Control>(*child, key)) {
                return inner;
            }
        }
        return nullptr;
    }
    static String TooltipOf(const gui::Component& component) {
        const auto* tip = dynamic_cast<const gui::Text*>(component.GetTooltip().Get());
        return tip ? tip->GetText() : String();
    }

    float m_autosave = 0;
};

TEST_F(AppWindowsTest, TheWindowsOpenApartAndComeBackWhereTheConfigurationSays) {
    for (const char* name : kWidgets) {
        const app::WidgetPtr made = app::WidgetFactory::Get().Make(name);
        ASSERT_TRUE(made) << name;
        EXPECT_EQ(made->GetReflectedName(), name);
        if (const auto* window = dynamic_cast<const app::Window*>(made.Get());
            window && String(name) != "Toolbar") {
            EXPECT_EQ(window->GetTitle(), Texts().Translate(name));
            EXPECT_NE(window->GetTitle().front(), '[') << name;
        }
    }
    // A first run shows the toolbar, the control and the status; the rest wait for a click.
    for (const char* name : kWidgets) {
        const bool open =
            String(name) == "Toolbar" || String(name) == "SimControl" || String(name) == "SimInfo";
        EXPECT_EQ(IsOpen(name), open) << name;
    }
    EXPECT_FALSE(
        Kept("SimControl").IsShown() &&
        dynamic_cast<app::Window&>(Kept("SimControl")).GetTitleBar()->GetCloseButton()->GetParent())
        << "the control folds, it never closes";

    // Open all at once, on the smallest screen and on a larger one: nothing covers another.
    for (const Vec2 screen : {Vec2(1024, 768), Vec2(1280, 1024), Vec2(1920, 1080)}) {
        Gui().OnResize(static_cast<int>(screen.x), static_cast<int>(screen.y));
        m_host->SetSize(screen);
        Interface().SetSize(screen);
        Interface().SetUpWidgets();
        for (const char* name : kWidgets) {
            ASSERT_TRUE(Interface().ShowWidget(name));
        }
        for (size_t i = 0; i < std::size(kWidgets); ++i) {
            const app::Widget& a = Kept(kWidgets[i]);
            EXPECT_GE(a.GetScreenPosition().x, 0) << kWidgets[i];
            EXPECT_GE(a.GetScreenPosition().y, 0) << kWidgets[i];
            EXPECT_LE(a.GetScreenPosition().x + a.GetOuterSize().x, screen.x) << kWidgets[i];
            EXPECT_LE(a.GetScreenPosition().y + a.GetOuterSize().y, screen.y) << kWidgets[i];
            for (size_t j = i + 1; j < std::size(kWidgets); ++j) {
                EXPECT_FALSE(Overlap(a, Kept(kWidgets[j])))
                    << kWidgets[i] << " and " << kWidgets[j] << " at " << screen.x;
            }
        }
        Interface().ResetWidgetPlacements();
    }
    Gui().OnResize(1024, 768);
    m_host->SetSize(1024, 768);
    Interface().SetSize(1024, 768);

    // What the configuration says, as its text: a place, a closed window, a folded one.
    Run("AppGUI.Options.position = [300, 200]; AppGUI.Options.visible = true;"
        "AppGUI.SimInfo.visible = false; AppGUI.Help.visible = true;"
        "AppGUI.Help.minimised = true;");
    Interface().SetUpWidgets();
    ASSERT_TRUE(IsOpen("Options"));
    EXPECT_EQ(Kept("Options").GetScreenPosition(), Vec2(300, 200));
    EXPECT_FALSE(IsOpen("SimInfo"));
    EXPECT_TRUE(Kept("Help").IsShown());
    EXPECT_TRUE(Kept("Help").IsMinimised());

    // Moved by its title bar, the window is found there after the windows are made again.
    const auto& options = KeptAs<app::Window>("Options");
    const Vec2 grip = options.GetTitleBar()->GetAbsolutePosition() + Vec2(10, 8);
    Drag(grip, grip + Vec2(-150, 120));
    Interface().Update(0);
    Interface().SetUpWidgets();
    EXPECT_EQ(Kept("Options").GetScreenPosition(), Vec2(150, 320));
    Interface().HideWidget("Options");
    Interface().Update(0);
    Interface().SetUpWidgets();
    EXPECT_FALSE(IsOpen("Options"));
    ASSERT_TRUE(Interface().ShowWidget("Options"));
    EXPECT_EQ(Kept("Options").GetScreenPosition(), Vec2(150, 320));

    // A place far off the screen brings the window back inside, and says so.
    {
        test::LogCapture log;
        Run("AppGUI.File.position = [5000, 4000]; AppGUI.File.visible = true;");
        Interface().SetUpWidgets();
        EXPECT_TRUE(log.Contains("File lay outside the screen")) << log.Lines().size();
    }
    const app::Widget& file = Kept("File");
    EXPECT_EQ(file.GetScreenPosition() + file.GetOuterSize(), Vec2(1024, 768));

    // Without a window there is no picture to take.
    EXPECT_FALSE(app::Thumbnail::SaveBeside("nowhere.vra"));
    EXPECT_TRUE(util::EndsWith(app::Thumbnail::PathFor("bridge"), "/scenes/bridge.png"));
    EXPECT_EQ(app::Thumbnail::PathFor("/tmp/x/Tower.VRA"), "/tmp/x/Tower.png");
}

TEST_F(AppWindowsTest, TheControlsActAsTheKeysAndTheConsoleWould) {
    // The run button starts the simulation as one step of the history, and pauses it.
    auto& control = KeptAs<app::SimControl>("SimControl");
    Shapes::AddBox({0, 2});
    control.Update(0);
    EXPECT_FALSE(control.GetUndoButton()->IsEnabled());
    EXPECT_EQ(TooltipOf(*control.GetUndoButton()), Texts().Translate("NothingToUndo"));
    ClickOn(*control.GetRunButton());
    EXPECT_TRUE(Sim().running->Get());
    ASSERT_EQ(app::Undoer::Get().GetUndoStack().size(), 1u);
    EXPECT_STREQ(app::Undoer::Get().GetUndoLabel(), "UndoSimStart");
    control.Update(0);
    EXPECT_EQ(control.GetRunButton()->GetSymbol(), app::SymbolButton::Symbol::Pause);
    EXPECT_TRUE(control.GetUndoButton()->IsEnabled());
    EXPECT_EQ(TooltipOf(*control.GetUndoButton()),
              Texts().Translate("Undo_Tooltip") + Texts().Translate("UndoSimStart"));
    ClickOn(*control.GetRunButton());
    EXPECT_FALSE(Sim().running->Get());
    EXPECT_EQ(app::Undoer::Get().GetUndoStack().size(), 1u) << "pausing is no step";

    // Undo and redo through their buttons.
    ClickOn(*control.GetUndoButton());
    EXPECT_TRUE(app::Undoer::Get().GetUndoStack().empty());
    control.Update(0);
    EXPECT_TRUE(control.GetRedoButton()->IsEnabled());
    ClickOn(*control.GetRedoButton());
    EXPECT_EQ(app::Undoer::Get().GetUndoStack().size(), 1u);
    Sim().running->SetNative(false);
    Sim().SetSimulatedTime(12.44);
    control.Update(0);
    EXPECT_EQ(control.GetTimeText(), "12.4 " + Texts().Translate("Seconds"));

    // The buttons of the control open and close the other windows.
    const String help = Texts().Translate("Help");
    ClickOn(*FindControl<gui::Button>(*control.GetBody(), "Help"));
    EXPECT_TRUE(IsOpen("Help"));
    ClickOn(*FindControl<gui::Button>(*control.GetBody(), "Help"));
    EXPECT_FALSE(IsOpen("Help"));

    // A slider of the options writes the program's setting, as typing it would.
    ASSERT_TRUE(Interface().ShowWidget("Options"));
    const auto& options = KeptAs<app::OptionsWindow>("Options");
    app::OptionSlider* autosave = FindControl<app::OptionSlider>(options, "Option_AutosaveTime");
    ASSERT_NE(autosave, nullptr);
    autosave->SetValue(120);
    EXPECT_FLOAT_EQ(Model().autosaveTime->Get(), 120);
    EXPECT_EQ(script::Parser::Get().ExecuteToString("App.autosaveTime"), "120");
    EXPECT_EQ(app::Undoer::Get().GetUndoStack().size(), 1u) << "settings are no steps";
    for (const char* key : {"Option_Borders", "Option_AutoGlue", "Option_LeftClickMenus"}) {
        EXPECT_NE(FindControl<app::OptionCheckbox>(options, key), nullptr) << key;
    }
    // The shipped languages, English chosen; choosing German makes every window anew in it.
    ASSERT_EQ(app::OptionsWindow::FindLanguages(), (std::vector<String>{"English", "German"}));
    EXPECT_EQ(options.GetLanguages()->GetSelected(), 0);
    options.GetLanguages()->SetSelected(1);
    Interface().Update(0);
    EXPECT_EQ(Model().language->Get(), "German");
    EXPECT_EQ(KeptAs<app::OptionsWindow>("Options").GetTitle(), "Optionen");
    EXPECT_EQ(dynamic_cast<app::Window&>(Kept("File")).GetTitle(), "Datei");
    KeptAs<app::OptionsWindow>("Options").ChooseLanguage("English");
    EXPECT_EQ(KeptAs<app::OptionsWindow>("Options").GetTitle(), Texts().Translate("Options"));
    ASSERT_TRUE(Interface().ShowWidget("Options"));
    const auto& english = KeptAs<app::OptionsWindow>("Options");

    // The reduced interface: the control keeps its three buttons, the others close. The
    // language change made the control anew.
    auto& remade = KeptAs<app::SimControl>("SimControl");
    app::OptionCheckbox* simple = FindControl<app::OptionCheckbox>(english, "Option_SimpleMode");
    ASSERT_NE(simple, nullptr);
    ClickOn(*simple);
    EXPECT_TRUE(Interface().simpleMode->Get());
    Interface().Update(0);
    EXPECT_TRUE(remade.ShowsReducedSet());
    EXPECT_EQ(remade.GetBody()->GetChildren().size(), 3u);
    EXPECT_FALSE(IsOpen("Options"));
    EXPECT_FALSE(IsOpen("SimInfo"));
    Run("AppGUI.simpleMode = false;");
    Interface().Update(0);
    EXPECT_FALSE(remade.ShowsReducedSet());
    EXPECT_TRUE(IsOpen("SimInfo"));
    EXPECT_EQ(remade.GetTimeText(), "12.4 " + Texts().Translate("Seconds"));

    // The status counts what the simulation moves.
    auto& info = KeptAs<app::SimInfo>("SimInfo");
    info.Update(app::SimInfo::kRefreshSeconds);
    EXPECT_EQ(info.GetValue(app::SimInfo::kBodies), "1");
    EXPECT_EQ(info.GetValue(app::SimInfo::kSpeed), Texts().Translate("SimInfo_Paused"));
}

TEST_F(AppWindowsTest, TheFileWindowListsEverySceneAndABrokenOneOnlyLogs) {
    const fs::path work = UseOwnFolders();
    fs::copy_file(fs::path(VORRA_DATA_DIR) / "scenes" / "pendulum.vra",
                  work / "scenes" / "pendulum.vra");
    // Any picture will do beside it.
    fs::copy_file(fs::path(VORRA_DATA_DIR) / "language" / "English.png",
                  work / "scenes" / "pendulum.png");
    std::ofstream(work / "scenes" / "Broken.vra") << "Scene.AddBox({{{ not a scene";
    fs::copy_file(fs::path(VORRA_DATA_DIR) / "scenes" / "pendulum.vra",
                  work / "vorralets" / "swing.vra");

    // Opened, and made again as a change of language would: it lists the new folder.
    ASSERT_TRUE(Interface().ShowWidget("File"));
    Interface().Update(0);
    Interface().SetUpWidgets();
    auto& file = KeptAs<app::FileWindow>("File");
    ASSERT_TRUE(file.IsShown());
    ASSERT_EQ(file.GetFiles(), (std::vector<String>{"Broken.vra", "pendulum.vra"}));
    const std::vector<gui::ComponentPtr>& rows = file.GetList()->GetRows();
    ASSERT_EQ(rows.size(), 2u);
    const auto& broken = dynamic_cast<const app::SceneRow&>(*rows[0]);
    EXPECT_EQ(broken.GetText(), "Broken");
    EXPECT_FALSE(broken.HasPicture());
    EXPECT_TRUE(dynamic_cast<const app::SceneRow&>(*rows[1]).HasPicture());

    // Opening the broken file tells why in the log and leaves the scene as it was.
    Shapes::AddBox({0, 0});
    {
        test::LogCapture log;
        ClickOn(*rows[0]);
        EXPECT_TRUE(log.Contains("Parse error")) << log.Lines().size();
    }
    EXPECT_EQ(app::Scene::Get().GetEntities().size(), 1u);
    EXPECT_FALSE(file.IsShown()) << "opening closes the window";

    // The vorralets join the scene as one step.
    ASSERT_TRUE(Interface().ShowWidget("File"));
    file.ShowListing(app::FileWindow::Listing::Vorralets);
    ASSERT_EQ(file.GetFiles(), std::vector<String>{"swing.vra"});
    const size_t before = app::Scene::Get().GetEntities().size();
    ClickOn(*file.GetList()->GetRows()[0]);
    EXPECT_STREQ(app::Undoer::Get().GetUndoLabel(), "UndoImportVorralet");
    EXPECT_GT(app::Scene::Get().GetEntities().size(), before);

    // A name typed in the field opens that scene with Enter; "New" empties the scene.
    ASSERT_TRUE(Interface().ShowWidget("File"));
    ClickOn(*file.GetNameField());
    Type("pendulum");
    Tap(input::key::Return);
    EXPECT_STREQ(app::Undoer::Get().GetUndoLabel(), "UndoLoadScene");
    EXPECT_TRUE(util::EndsWith(app::FileInfo::Get().GetFileName(), "pendulum.vra"));
    ASSERT_TRUE(Interface().ShowWidget("File"));
    ClickOn(*FindControl<gui::Button>(file, "File_New"));
    EXPECT_STREQ(app::Undoer::Get().GetUndoLabel(), "UndoNewScene");
    EXPECT_TRUE(app::Scene::Get().GetEntities().empty());
}

}  // namespace
