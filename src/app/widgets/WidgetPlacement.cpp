#include "app/widgets/WidgetPlacement.h"

#include "app/widgets/Widget.h"
#include "logging/Log.h"

namespace app {

WidgetPlacement::WidgetPlacement(const util::String& widgetName, bool visibleByDefault)
    : script::Reflected(widgetName), m_visibleByDefault(visibleByDefault) {
    AddAttrib(position, "position", math::Vec2(kUnplaced, kUnplaced));
    AddAttrib(visible, "visible", visibleByDefault);
    AddAttrib(minimised, "minimised", false);
}

WidgetPlacement::~WidgetPlacement() = default;

bool WidgetPlacement::IsPlaced() const {
    return position->Get() != math::Vec2(kUnplaced, kUnplaced);
}

void WidgetPlacement::Apply(Widget& widget) const {
    widget.SetMinimised(minimised->Get());
    if (!IsPlaced()) {
        return;
    }
    const math::Vec2 wished = position->Get();
    widget.SetScreenPosition(wished);
    widget.KeepOnScreen();
    const math::Vec2 placed = widget.GetScreenPosition();
    if ((placed - wished).SquaredLength() > 0.25f) {
        Log(logging::Info, "The window " + GetReflectedName() +
                               " lay outside the screen and was brought back inside");
    }
}

void WidgetPlacement::Record(const Widget& widget, bool keepVisibility) {
    // Written only on change: the attributes' setters tell their watchers. A widget that
    // was never moved keeps opening where its default puts it on whatever screen.
    if (widget.IsShown() && (IsPlaced() || widget.IsBeingMoved())) {
        const math::Vec2 now = widget.GetScreenPosition();
        if (now != position->Get()) {
            position->SetNative(now);
        }
    }
    if (!keepVisibility && visible->Get() != widget.IsShown()) {
        visible->SetNative(widget.IsShown());
    }
    if (minimised->Get() != widget.IsMinimised()) {
        minimised->SetNative(widget.IsMinimised());
    }
}

void WidgetPlacement::Reset() {
    position->SetNative(math::Vec2(kUnplaced, kUnplaced));
    visible->SetNative(m_visibleByDefault);
    minimised->SetNative(false);
}

}  // namespace app
