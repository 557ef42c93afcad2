#pragma once

#include "math/Vector2.h"
#include "script/Attributes.h"
#include "script/Reflected.h"

namespace app {

class Widget;

// Where a widget of the application lies, whether it is open and whether it is folded up:
// the configuration keeps these between runs, as "AppGUI.<widget>.position" and so on.
class WidgetPlacement : public script::Reflected {
public:
    WidgetPlacement(const util::String& widgetName, bool visibleByDefault);
    ~WidgetPlacement() override;

    // Puts the widget where the placement says, or leaves it where it opens by default
    // while it has never been placed. One that would lie off the screen comes back inside,
    // which is logged.
    void Apply(Widget& widget) const;
    // Takes over the widget's present state; with keepVisibility the open flag stays.
    void Record(const Widget& widget, bool keepVisibility);
    // As on a first run: where the widget opens by default, open as by default.
    void Reset();
    bool IsPlaced() const;

    // The top-left corner on the screen in GUI units; kUnplaced until it was moved.
    script::AttribPtr<math::Vec2> position;
    script::AttribPtr<bool> visible;
    script::AttribPtr<bool> minimised;

    static constexpr float kUnplaced = -1;

private:
    bool m_visibleByDefault;
};
using WidgetPlacementPtr = util::SharedPtr<WidgetPlacement>;

}  // namespace app
