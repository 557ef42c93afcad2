#pragma once

#include <vector>

#include "gui/Component.h"
#include "script/Attributes.h"

namespace app {

class AppGUI;
using AppGUIPtr = util::SharedPtr<AppGUI>;

// The application's interface over the scene. For now it opens and saves scene files; the
// tools, the global keys, the popups and the widgets join it later.
class AppGUI : public gui::Component {
public:
    AppGUI();
    ~AppGUI() override;

    // Loads a scene as one undo step, with the simulation paused. An internal load (the
    // start-up scene) leaves the user's current file as it is.
    void LoadScene(util::String path, bool internal);
    // Writes the scene. An internal save (autosave, exit) neither changes the current file
    // nor tells the user. Never throws: a failure is logged.
    void SaveSceneAs(util::String path, bool internal);

    // The children that are widgets, in the order of the children; the first with the name.
    std::vector<gui::ComponentPtr> GetWidgets() const;
    gui::ComponentPtr FindWidget(const util::String& name) const;
    // Closes the "File" widget and every popup.
    void ClosePopups();
    // Closes the other popups, and shows this one above everything else of the interface.
    void ShowPopup(const gui::ComponentPtr& popup);
    const gui::ComponentPtr& GetPopupLayer() const { return m_popupLayer; }

    // A bare name goes into the scene folder, and ".vra" is added where it is missing.
    static util::String NormaliseScenePath(util::String path);

    // Hinges and fix joints show while the simulation runs, not only while it is paused.
    bool GetDrawHingesWhenRunning() const { return drawHingesWhenRunning->Get(); }

    // One wheel notch scales the view by 2 to this power.
    script::AttribPtr<float> zoomFactor;
    // The drawing tools make shapes around others rather than selecting them.
    script::AttribPtr<bool> freeDrawing;
    // New shapes are fixed to the ground.
    script::AttribPtr<bool> autoGlue;
    // A plain left click that nothing used opens the popup menu.
    script::AttribPtr<bool> leftClickMenus;
    script::AttribPtr<bool> drawHingesWhenRunning;
    // The program cannot be quit.
    script::AttribPtr<bool> trapUser;
    // The reduced interface.
    script::AttribPtr<bool> simpleMode;

private:
    gui::ComponentPtr m_popupLayer;
};

}  // namespace app
