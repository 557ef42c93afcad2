#pragma once

#include <vector>

#include "app/widgets/WidgetPlacement.h"
#include "gui/Component.h"
#include "math/Vector2.h"
#include "script/Attributes.h"

namespace app {

class AppGUI;
using AppGUIPtr = util::SharedPtr<AppGUI>;
class Tool;
class Widget;
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
    // A scene file dropped on the window loads, as one undo step.
    void OnGeneralEvent(input::InputEvent& event) override;
    // No border: the scene shows through.
    void DrawBorder() override {}

    // Loads a scene as one undo step, with the simulation paused; a load that worked makes
    // it the current file. An internal load (the start-up scene) leaves the popups open.
    void LoadScene(util::String path, bool internal);
    // Writes the scene. An internal save (autosave, exit) neither changes the current file
    // nor tells the user. Never throws: a failure is logged.
    void SaveSceneAs(util::String path, bool internal);
    // Runs or pauses the simulation; starting is an undo step, so that a run can be undone.
    static void ToggleRunning();
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
    // Makes the widgets afresh, in the language now selected, each where its placement
    // says and open or closed as it was.
    void SetUpWidgets();
    // The widgets that the configuration keeps, by name, whether open or not; null for a
    // name that is none of them or before SetUpWidgets.
    util::SharedPtr<Widget> GetKeptWidget(const util::String& name) const;
    // Opens a kept widget where it was last, or closes it; false for an unknown name.
    bool ShowWidget(const util::String& name);
    void HideWidget(const util::String& name);
    void ToggleWidget(const util::String& name);
    // Every kept widget back where it opens by default, as on a first run.
    void ResetWidgetPlacements();
    const std::vector<WidgetPlacementPtr>& GetPlacements() const { return m_placements; }
    // Whether the reduced interface keeps this widget.
    static bool IsInSimpleMode(const util::String& name);
    // The menu for what lies at the GUI point: the selection's, the water's or the
    // background's.
    void OpenPopupMenu(const math::Vec2& position);

    // A bare name goes into the scene folder, and ".vra" is added where it is missing.
    static util::String NormaliseScenePath(util::String path);
    // What the window's title bar says: the scene's name and the program's.
    static util::String GetWindowCaption();

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
    void GroupSelection();
    void UngroupSelection();
    void EraseSelection();
    void ShowCentred(const util::SharedPtr<Window>& popup);
    // The tool that gets the mouse: the temporary, the override, else the base tool.
    Tool& GetTool() const;

    // The popups above every widget.
    void RaisePopupLayer();
    // The kept widgets' state into their placements; the reduced interface applied.
    void FollowWidgets();

    gui::ComponentPtr m_popupLayer;
    std::vector<WidgetPlacementPtr> m_placements;
    // Parallel to the placements.
    std::vector<util::SharedPtr<Widget>> m_kept;
    bool m_simpleShown = false;
    util::String m_caption;
    double m_lastAutosave = 0;
    // A manipulating tool took over the drag in progress.
    bool m_dragOverride = false;
};

}  // namespace app
