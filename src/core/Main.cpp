// Program entry: fixes the order in which the system comes up and goes down.

#include <GL/glew.h>

#include <algorithm>
#include <exception>
#include <iostream>

#include "app/AppModel.h"
#include "app/InputControls.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "logging/Logger.h"
#include "os/OS.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/FileSystem.h"
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
        // The application's first-run preparation joins here.
        subsystem.CreateWindow(FirstRunWindowParams());
    }
}

int RunProgram() {
    core::Subsystem::Create();
    core::Subsystem& subsystem = core::Subsystem::Get();
    subsystem.SetCaption(util::GetVersionString() + " - a physics sandbox by the Vorra developers");

    // The GUI joins after the fluid; the
    // application root is made and joins the GUI, and the console is published before App,
    // once they exist. The simulation is made before any body, so that the world body and
    // geom draw ID 0.
    script::AddToRoot(&subsystem);
    script::AddToRoot(&core::ResourceManager::Get());
    script::AddToRoot(&physics::Simulation::Get());
    script::AddToRoot(&physics::SPH::Get());
    script::AddToRoot(script::ReflectedPtr(new app::HeadlessApp()));
    script::AddToRoot(&app::Scene::Get());
    app::Serializer::Get();
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
    // The widgets are set up and the first scene is chosen here as those parts join.

    Log(logging::Info, "Running program...");
    subsystem.Run();

    Log(logging::Debug, "Subsystem::Run returned, saving config...");
    const util::String work = util::FileSystem::Get().GetWorkDirectory();
    script::Parser::Get().SaveConfig(work + "config.cfg");
    // Its absence at the next start is what marks this exit as normal.
    util::FileSystem::Get().Remove(work + "config.autosave.cfg");
    // The application saves the scene on exit here once it exists.

    Log(logging::Debug, "Destroying subsystem");
    app::InputControls::Uninstall();
    script::Parser::Release();
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
        return RunProgram();
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
