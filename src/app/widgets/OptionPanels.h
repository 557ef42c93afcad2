#pragma once

#include <functional>
#include <vector>

#include "app/Group.h"
#include "app/widgets/OptionControls.h"
#include "app/widgets/Window.h"
#include "gui/AttribBinding.h"
#include "gui/Checkbox.h"

namespace app {

// The option panels that the popup menus open: each a popup window named by its id, over
// the entities of the selection it was opened with, or over the scene's settings. Every
// control is one of OptionControls', so a change is exactly what the console would do.

constexpr const char* kColorOptions = "ColorOptions";
constexpr const char* kGeomOptions = "GeomOptions";
constexpr const char* kCollisionOptions = "CollisionOptions";
constexpr const char* kSpringOptions = "SpringOptions";
constexpr const char* kHingeOptions = "HingeOptions";
constexpr const char* kPenOptions = "PenOptions";
constexpr const char* kEntityInfo = "EntityInfo";
constexpr const char* kBackgroundOptions = "BackgroundOptions";

bool IsOptionPanel(const util::String& id);
// The entity panels that have something to show for the group, in the menu's order.
std::vector<util::String> PanelsFor(const Group& group);
// The panel of the id, titled by the language; null for an id that is none.
WindowPtr MakeOptionPanel(const util::String& id, const GroupPtr& group);

// What the menus and panels are built of, so that all of them look alike.

// A popup with its contents in a column.
WindowPtr MakePopupWindow(const util::String& name, const util::String& title);
// Buttons of one width, so many to a row: the widest one's, and at least the given width.
gui::ComponentPtr MakeButtonGrid(const std::vector<gui::ButtonPtr>& buttons, size_t columns,
                                 float minWidth = 0);
float WidestButton(const std::vector<gui::ButtonPtr>& buttons);
// A menu's entry: the menu goes, then the action runs.
gui::ButtonPtr MakeMenuButton(const util::String& key, std::function<void()> action);
// Opens the panel over the group where the menu stands, in the menu's place.
gui::ButtonPtr MakePanelButton(const util::String& id, const GroupPtr& group, const Window& menu);
// Red, green and blue sliders over the colours, and with alpha an opacity slider.
void AddColorSliders(gui::Component& body,
                     const std::vector<util::WeakPtr<script::TAttrib<math::Vec4>>>& colors,
                     bool withAlpha, bool recordsUndo);
// The water's settings that a user understands.
void AddWaterSliders(gui::Component& body);

// A checkbox over one bit of an integer attribute: a collision layer of the shapes.
class BitCheckbox : public gui::Checkbox {
public:
    using WeakAttrib = util::WeakPtr<script::TAttrib<int>>;

    BitCheckbox(const util::String& text, const util::String& tooltipKey,
                std::vector<WeakAttrib> attribs, int bit, bool recordsUndo);
    ~BitCheckbox() override;

    void Update(float dt) override;
    // Shows the first live attribute's bit.
    void Refresh();

protected:
    void CheckedChanged() override;

private:
    gui::AttribBinding<int> m_binding;
    int m_mask;
    SceneChange m_change;
};

}  // namespace app
