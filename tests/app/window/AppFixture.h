#pragma once

// The application's interface in a hidden window: the one application of the run, its
// tools and the shipped English texts, over an empty paused scene with an empty history,
// and a host of the screen's size for the widgets under test.

#include "../../gui/GuiFixture.h"
#include "app/App.h"
#include "app/Language.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/tools/Tools.h"
#include "gui/LookAndFeel.h"
#include "physics/Simulation.h"
#include "script/Parser.h"

namespace test_app {

class AppTest : public test_gui::GuiTest {
protected:
    static void SetUpTestSuite() {
        GuiTest::SetUpTestSuite();
        // Main makes the application with new, and so does this, once a run.
        if (!app::App::IsAlive()) {
            new app::App();
            script::AddToRoot(&app::App::Get());
        }
        if (!app::Tools::IsAlive()) {
            app::Tools::Create();
        }
        // Fonts and texts come from the shipped data, whatever a test's files are.
        gui::LookAndFeel::Get();
        app::Language::Get().Load("English");
    }
    void SetUp() override {
        GuiTest::SetUp();
        app::Scene::Get().New();
        app::Undoer::Get().Clear();
        physics::Simulation::Get().running->SetNative(false);
        m_host = gui::ComponentPtr(new gui::Component("WidgetHost"));
        m_host->SetSize(Gui().GetScreenSize());
        AddToRoot(m_host);
    }
    void TearDown() override {
        m_host->RemoveFromParent();
        m_host = nullptr;
        physics::Simulation::Get().running->SetNative(false);
        GuiTest::TearDown();
        app::Scene::Get().Clear();
        app::Undoer::Get().Clear();
    }

    static app::AppGUI& Interface() { return *app::App::Get().GetAppGUI(); }
    static util::String Text(const char* key) { return app::Language::Get().Translate(key); }

    gui::ComponentPtr m_host;
};

}  // namespace test_app
