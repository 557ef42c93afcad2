#include "app/AppGUI.h"

#include <algorithm>

#include "app/Actions.h"
#include "app/FileInfo.h"
#include "app/Serializer.h"
#include "app/Undoer.h"
#include "app/widgets/Widget.h"
#include "logging/Log.h"
#include "physics/Simulation.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"
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
    m_popupLayer = gui::ComponentPtr(new gui::Component("PopupLayer"));
    Add(m_popupLayer);
}

AppGUI::~AppGUI() = default;

std::vector<gui::ComponentPtr> AppGUI::GetWidgets() const {
    VORRA_PROFILE("AppGUI::GetWidgets");
    std::vector<gui::ComponentPtr> widgets;
    for (const gui::ComponentPtr& child : GetChildren()) {
        if (child != m_popupLayer && dynamic_cast<Widget*>(child.Get())) {
            widgets.push_back(child);
        }
    }
    return widgets;
}

gui::ComponentPtr AppGUI::FindWidget(const util::String& name) const {
    for (const gui::ComponentPtr& widget : GetWidgets()) {
        if (widget->GetReflectedName() == name) {
            return widget;
        }
    }
    return gui::ComponentPtr();
}

void AppGUI::ClosePopups() {
    if (const gui::ComponentPtr file = FindWidget("File")) {
        file->RemoveFromParent();
    }
    m_popupLayer->RemoveAllChildren();
}

void AppGUI::ShowPopup(const gui::ComponentPtr& popup) {
    ClosePopups();
    m_popupLayer->Add(popup);
    // The layer goes last, so that it draws above the widgets and hears events first.
    Remove(m_popupLayer);
    Add(m_popupLayer);
}

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
