// Program entry: fixes the order in which the system comes up and goes down.

#include <GL/glew.h>

#include <algorithm>
#include <exception>
#include <iostream>

#include "app/App.h"
#include "app/Background.h"
#include "app/InputControls.h"
#include "app/Language.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/tools/Tools.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "gui/Console.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "logging/Logger.h"
#include "os/OS.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"
#include "util/Version.h"

namespace {

bool AsksForVersion(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const util::String argument = argv[i];
        if (argument.find("-version") != util::String::npos ||
            argument.find("/version") != util::String::npos) {
            return true;
        }
    }
    return false;
}

// Scenes of old versions were kept under the configuration extension.
void RenameOldSceneFiles() {
    util::FileSystem& fileSystem = util::FileSystem::Get();
    const util::String scenes = fileSystem.GetWorkDirectory() + util::FileSystem::GetScenesFolder();
    if (!fileSystem.Exists(scenes)) {
        Log(logging::Warning, "The scene folder \"" + scenes + "\" is missing");
        return;
    }
    const std::vector<util::String> oldFiles = fileSystem.ListFiles(scenes, "*.cfg");
    if (oldFiles.empty()) {
        return;
    }
    Log(logging::Info, "Renaming old .cfg files to .vra...");
    for (const util::String& name : oldFiles) {
        fileSystem.Rename(scenes + name, scenes + name.substr(0, name.size() - 3) + "vra");
    }
}

core::WindowParams FirstRunWindowParams() {
    core::WindowParams params;
    int desktopWidth = 0;
    int desktopHeight = 0;
    if (core::Subsystem::GetDesktopSize(desktopWidth, desktopHeight)) {
        params.resolution.x = std::min(params.resolution.x, desktopWidth - 64);
        params.resolution.y = std::min(params.resolution.y, desktopHeight - 64);
    }
    return params;
}

// Runs the configuration and makes the window from what it asked for. After a crash the
// autosave wins over the last clean exit's file; with neither, this is a first run.
void LoadConfigurationAndCreateWindow(core::Subsystem& subsystem) {
    util::FileSystem& fileSystem = util::FileSystem::Get();
    script::Parser& parser = script::Parser::Get();
    const util::String work = fileSystem.GetWorkDirectory();

    // A missing start-up script is not a failure, so it is not even tried.
    if (fileSystem.Exists(work + "autoexec.cfg")) {
        parser.LoadConfig(work + "autoexec.cfg");
    }
    if (fileSystem.Exists(work + "config.autosave.cfg")) {
        Log(logging::Info, "Recovering config.autosave.cfg from previous crash");
        parser.LoadConfig(work + "config.autosave.cfg");
        subsystem.CreateWindow(subsystem.GetRequestedWindowParams());
    } else if (fileSystem.Exists(work + "config.cfg")) {
        parser.LoadConfig(work + "config.cfg");
        subsystem.CreateWindow(subsystem.GetRequestedWindowParams());
    } else {
        app::App::Get().PrepareFirstRun();
        subsystem.CreateWindow(FirstRunWindowParams());
    }
}

// The scene named on the command line, else the one a crash or the last exit left, else the
// welcome scene, else none.
void LoadFirstScene(int argc, char** argv) {
    app::AppGUI& appGUI = *app::App::Get().GetAppGUI();
    if (argc > 1 && util::EndsWithIgnoreCase(argv[argc - 1], ".vra")) {
        // A path with blanks arrives in pieces.
        util::String path = argv[1];
        for (int i = 2; i < argc; ++i) {
            path += util::String(" ") + argv[i];
        }
        Log(logging::Info, "Loading argument " + path);
        appGUI.LoadScene(path, true);
        return;
    }
    util::FileSystem& fileSystem = util::FileSystem::Get();
    const util::String scenes = fileSystem.GetWorkDirectory() + util::FileSystem::GetScenesFolder();
    for (const char* name : {"_AUTOSAVE.vra", "_ONEXITSAVE.vra", "welcome.vra"}) {
        if (fileSystem.Exists(scenes + name)) {
            appGUI.LoadScene(scenes + name, true);
            return;
        }
    }
}

int RunProgram(int argc, char** argv) {
    core::Subsystem::Create();
    core::Subsystem& subsystem = core::Subsystem::Get();
    subsystem.SetCaption(util::GetVersionString() + " - a physics sandbox by the Vorra developers");

    // The simulation is made before any body, so that the world body and geom draw ID 0.
    script::AddToRoot(&subsystem);
    script::AddToRoot(&core::ResourceManager::Get());
    script::AddToRoot(&physics::Simulation::Get());
    script::AddToRoot(&physics::SPH::Get());
    gui::GUI& gui = gui::GUI::Get();
    script::AddToRoot(&gui);
    // The application root lives in the GUI's main layer, below the console.
    app::App* application = new app::App();
    gui.GetMainLayer()->Add(gui::ComponentPtr(application));
    script::AddToRoot(script::ReflectedPtr(gui.GetConsole()));
    script::AddToRoot(application);
    script::AddToRoot(script::ReflectedPtr(application->GetAppGUI()));
    app::Tools::Create();
    script::AddToRoot(script::ReflectedPtr(application->GetBackground()));
    script::AddToRoot(&app::Scene::Get());
    app::Serializer::Get();
    // The tools read shift, ctrl and alt as the system reports them.
    app::Scene::Get().SetModifierSource([] {
        const input::Input& input = input::Input::Get();
        app::Modifiers keys;
        keys.shift = input.IsModifierDown(input::kShift);
        keys.ctrl = input.IsModifierDown(input::kCtrl);
        keys.alt = input.IsModifierDown(input::kAlt);
        return keys;
    });
    subsystem.SetExitGuard([] { return !app::App::Get().GetAppGUI()->trapUser->Get(); });
    // Key bindings of the configuration and the controls of loaded scenes need the keys.
    app::InputControls::Install();
    RenameOldSceneFiles();
    Log(logging::Debug, "Application created");

    LoadConfigurationAndCreateWindow(subsystem);

    if (const GLubyte* extensions = glGetString(GL_EXTENSIONS)) {
        Log(logging::Debug, "Available OpenGL extensions: " +
                                util::String(reinterpret_cast<const char*>(extensions)));
    }
    core::ResourceManager::Get().Prefetch();
    // The language the configuration chose, then the windows that show its texts.
    app::Language::Get();
    application->GetAppGUI()->SetUpWidgets();
    LoadFirstScene(argc, argv);

    Log(logging::Info, "Running program...");
    subsystem.Run();

    Log(logging::Debug, "Subsystem::Run returned, saving config...");
    const util::String work = util::FileSystem::Get().GetWorkDirectory();
    script::Parser::Get().SaveConfig(work + "config.cfg");
    // Its absence at the next start is what marks this exit as normal.
    util::FileSystem::Get().Remove(work + "config.autosave.cfg");
    app::App::Get().OnExit();

    Log(logging::Debug, "Destroying subsystem");
    app::InputControls::Uninstall();
    script::Parser::Release();
    app::Tools::Release();
    app::Language::Release();
    // The GUI's tree holds the application from here on, and goes with the subsystem.
    app::App::Release();
    core::Subsystem::Release();
    Log(logging::Debug, "Returning 0 from main");
    logging::Logger::Release();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    util::FileSystem::Get().SetArgv0(argc > 0 ? argv[0] : "");
    if (AsksForVersion(argc, argv)) {
        std::cout << util::GetVersionString() << std::endl;
        return 0;
    }
    try {
        return RunProgram(argc, argv);
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        Log(logging::Error, "Exception caught in main: " + util::String(e.what()));
        if (os::ShowErrorPopup("Exception caught", e.what())) {
            throw;
        }
        return 1;
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
        Log(logging::Error, "Unknown exception caught in main.");
        if (os::ShowErrorPopup("Unknown exception caught", "Badness")) {
            throw;
        }
        return 2;
    }
}
