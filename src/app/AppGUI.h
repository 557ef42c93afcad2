#pragma once

#include <vector>

#include "gui/Component.h"
#include "math/Vector2.h"
#include "script/Attributes.h"

namespace app {

class AppGUI;
using AppGUIPtr = util::SharedPtr<AppGUI>;
class Tool;
class Window;

// The application's interface over the scene, covering the whole window: it holds the
// widgets and the popup layer, gives the mouse to the tool in force where no widget used
// it, interprets the global keys, opens the popup menus and runs the autosave.
class AppGUI : public gui::Component {
public:
    AppGUI();
    ~AppGUI() override;

    void Update(float dt) override;
    void OnKey(input::KeyEvent& event) override;
    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    void OnClick(input::ClickEvent& event) override;
    // No border: the scene shows through.
    void DrawBorder() override {}

    // Loads a scene as one undo step, with the simulation paused. An internal load (the
    // start-up scene) leaves the user's current file as it is.
    void LoadScene(util::String path, bool internal);
    // Writes the scene. An internal save (autosave, exit) neither changes the current file
    // nor tells the user. Never throws: a failure is logged.
    void SaveSceneAs(util::String path, bool internal);
    // A checkpoint of the scene as an undo step.
    void MakeSnapshotAction();
    // The configuration and the scene, as a crash would want them found at the next start.
    void Autosave();

    // The children that are widgets, in the order of the children; the first with the name.
    std::vector<gui::ComponentPtr> GetWidgets() const;
    gui::ComponentPtr FindWidget(const util::String& name) const;
    // Closes the "File" widget and every popup.
    void ClosePopups();
    // Closes the other popups, and shows this one above everything else of the interface.
    void ShowPopup(const gui::ComponentPtr& popup);
    const gui::ComponentPtr& GetPopupLayer() const { return m_popupLayer; }
    // Makes the widgets afresh: the toolbar at the left edge.
    void SetUpWidgets();
    // The menu for what lies at the GUI point: the selection's, the water's or the
    // background's.
    void OpenPopupMenu(const math::Vec2& position);

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
    // The global keys of a press; true when one acted.
    bool HandleGlobalKey(const input::KeyEvent& event);
    // Zoom about the mouse, or with shift the selection's drawing order.
    void Wheel(int direction, const math::Vec2& position, bool shift);
    void ToggleRunning();
    void PasteAt(const math::Vec2& world);
    void GroupSelection();
    void UngroupSelection();
    void EraseSelection();
    void ShowCentred(const util::SharedPtr<Window>& popup);
    // The tool that gets the mouse: the temporary, the override, else the base tool.
    Tool& GetTool() const;

    gui::ComponentPtr m_popupLayer;
    double m_lastAutosave = 0;
    // A manipulating tool took over the drag in progress.
    bool m_dragOverride = false;
};

}  // namespace app
