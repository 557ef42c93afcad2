#include "app/AppGUI.h"

#include <algorithm>

#include "app/Actions.h"
#include "app/FileInfo.h"
#include "app/Serializer.h"
#include "app/Undoer.h"
#include "logging/Log.h"
#include "physics/Simulation.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"

namespace app {

AppGUI::AppGUI() : gui::Component("AppGUI") {
    AddAttrib(zoomFactor, "zoomFactor", 0.2f);
    AddAttrib(freeDrawing, "freeDrawing", false);
    AddAttrib(autoGlue, "autoGlue", false);
    AddAttrib(leftClickMenus, "leftClickMenus", false);
    AddAttrib(drawHingesWhenRunning, "drawHingesWhenRunning", true);
    AddAttrib(trapUser, "trapUser", false);
    AddAttrib(simpleMode, "simpleMode", false);
}

AppGUI::~AppGUI() = default;

util::String AppGUI::NormaliseScenePath(util::String path) {
    if (!util::EndsWithIgnoreCase(path, ".vra")) {
        path += ".vra";
    }
    if (path.find('/') == util::String::npos) {
        path =
            util::FileSystem::Get().GetWorkDirectory() + util::FileSystem::GetScenesFolder() + path;
    }
    return path;
}

void AppGUI::LoadScene(util::String path, bool internal) {
    std::replace(path.begin(), path.end(), '\\', '/');
    if (!internal) {
        FileInfo::Get().SetFileName(path);
    }
    path = NormaliseScenePath(path);
    physics::Simulation::Get().running->SetNative(false);
    Undoer::Get().Do(ActionPtr(new SceneLoader("UndoLoadScene", false, path)));
}

void AppGUI::SaveSceneAs(util::String path, bool internal) {
    try {
        if (!internal) {
            FileInfo::Get().SetFileName(path);
        }
        path = NormaliseScenePath(path);
        if (Serializer::Get().Save(path) && !internal) {
            Log(logging::Info, "Scene saved to " + path);
        }
    } catch (const std::exception& e) {
        Log(logging::Debug, "Error: " + util::String(e.what()) + "\n" + VORRA_LOCATION + "\n");
    } catch (...) {
        Log(logging::Debug, "Fail\n");
    }
}

}  // namespace app
