#pragma once

#include <vector>

#include "app/Group.h"
#include "app/tools/Tool.h"
#include "app/widgets/Window.h"
#include "util/Singleton.h"

namespace app {

// Makes the application's windows and popups by their ids, in one look. The caller puts
// them where they belong: widgets on the application's interface, popups on its popup
// layer, placed with Widget::PlaceNear.
class WidgetFactory : public util::Pointee, public util::Singleton<WidgetFactory> {
public:
    // A tool of the toolbar: its picture in "tools/" and the language key of its label.
    struct ToolEntry {
        ToolPtr tool;
        util::String image;
        util::String labelKey;
    };

    static constexpr const char* kToolbar = "Toolbar";
    static constexpr const char* kSaveScene = "SaveScene";
    static constexpr const char* kLoadScene = "LoadScene";
    static constexpr const char* kEntityOptions = "EntityOptions";
    static constexpr const char* kBackgroundMenu = "BackgroundMenu";
    static constexpr const char* kWaterMenu = "WaterMenu";

    WidgetFactory();
    ~WidgetFactory() override;

    // The widget or popup of an id; the group is what a menu acts on, the selection for
    // "EntityOptions". Null, and logged, for an id it doesn't know.
    WidgetPtr Make(const util::String& id, const GroupPtr& group = GroupPtr());

    // The strip of tool buttons, at the screen's left edge.
    WindowPtr MakeToolbar();
    // Asks for a name and saves the scene under it.
    WindowPtr MakeSavePopup();
    // Lists the scenes folder; a click loads one.
    WindowPtr MakeLoadPopup();
    // The popup menu of that name, titled by the language's "PopupTitle", the menu, and
    // what the group holds.
    WindowPtr MakeMenu(const util::String& menu, const GroupPtr& group);

    // The tools that have a button, in the toolbar's order.
    static std::vector<ToolEntry> GetToolEntries();
    // Puts a widget at the screen's left edge, halfway down.
    static void PlaceAtLeftEdge(Widget& widget);
};

}  // namespace app
