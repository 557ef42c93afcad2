#include "app/widgets/BackgroundMenus.h"

#include <vector>

#include "app/App.h"
#include "app/AppGUI.h"
#include "app/AppModel.h"
#include "app/PopupActions.h"
#include "app/widgets/OptionPanels.h"
#include "input/Input.h"

namespace app {
namespace {

constexpr size_t kColumns = 2;

// Where the click that opened the menu fell, in the world: pasted code lands there.
math::Vec2 MouseInWorld() {
    return App::IsAlive() && input::Input::IsAlive() ? App::Get().GetMousePos() : math::Vec2(0, 0);
}

}  // namespace

void FillBackgroundMenu(Window& menu) {
    const math::Vec2 world = MouseInWorld();
    const std::vector<gui::ButtonPtr> buttons = {
        MakeMenuButton("MenuNewScene", []() { NewScene(); }),
        MakeMenuButton("MenuPaste", [world]() { PasteSceneCode(world); }),
        MakeMenuButton("MenuOptions",
                       []() {
                           if (App::IsAlive()) {
                               App::Get().GetAppGUI()->ShowWidget("Options");
                           }
                       }),
        MakePanelButton(kBackgroundOptions, GroupPtr(), menu),
    };
    menu.GetBody()->Add(MakeButtonGrid(buttons, kColumns));
}

void FillWaterMenu(Window& menu) {
    gui::Component& body = *menu.GetBody();
    AddWaterSliders(body);
    if (App::IsAlive()) {
        // The water's colour is the program's, not the scene's: no step of the history.
        body.Add(gui::ComponentPtr(MakeOptionHeading("PanelColor")));
        AddColorSliders(body, {App::Get().GetModel().waterColor}, true, false);
    }
    body.Add(MakeButtonGrid({MakeMenuButton("MenuEraseWater", []() { EraseAllWater(); })}, 1));
}

}  // namespace app
