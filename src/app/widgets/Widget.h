#pragma once

#include "gui/WobbleComponent.h"
#include "util/CallbackSet.h"

namespace app {

class Widget;
using WidgetPtr = util::SharedPtr<Widget>;

// A window of the application, found by its name. It can be shown and hidden, folded up
// and moved: a drag that starts on its grip (see IsGrip) and that none of its controls took
// carries it along, and it never leaves the screen. Presses on it that its controls leave
// are taken too, so that they never reach the scene behind it.
class Widget : public gui::WobbleComponent {
public:
    explicit Widget(const util::String& name);
    ~Widget() override;

    // The name it is found by. Its name in the script may differ: the script gives a second
    // object of the same name a numbered one.
    const util::String& GetWidgetName() const { return m_widgetName; }

    // Shown means in the interface tree. Hiding takes the widget out and remembers where
    // it was, so that Show() puts it back there; false when it was never anywhere.
    bool Show();
    void Show(gui::Component& host);
    void Hide();
    bool IsShown() const { return GetParent() != nullptr; }
    // Hides it and tells the close callbacks: the close button, Escape in a popup.
    void Close();
    util::CallbackSet& GetOnClose() { return m_onClose; }

    // Folded up: only what identifies it stays, such as a title bar.
    bool IsMinimised() const { return m_minimised; }
    void SetMinimised(bool minimised);
    void ToggleMinimised() { SetMinimised(!m_minimised); }

    // Moves it by an offset in GUI units, kept on the screen.
    void MoveBy(const math::Vec2& offset);
    // Shifts it the least that brings all of it onto the screen; one larger than the screen
    // keeps its top-left corner on it.
    void KeepOnScreen();
    // Puts its top-left corner at a point of the screen, or its other corners where that
    // would leave the screen, so that it opens beside the point: a popup at the mouse.
    void PlaceNear(const math::Vec2& guiPoint);
    // Where its top-left corner lies on the screen.
    math::Vec2 GetScreenPosition() const;
    void SetScreenPosition(const math::Vec2& guiPoint);
    bool IsBeingMoved() const { return m_moving; }

    // A screen that changed its size since the last frame pushes it back onto the screen.
    void Update(float dt) override;
    // The wheel over a widget is the widget's, even where nothing in it scrolls: it never
    // zooms the scene behind.
    void OnKey(input::KeyEvent& event) override;
    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    void OnClick(input::ClickEvent& event) override;

protected:
    // Whether a drag that starts at this point of the widget's own space moves it. The
    // whole widget by default, which leaves the parts that the controls don't take.
    virtual bool IsGrip(const math::Vec2& /*local*/) const { return true; }
    // A click on the widget that none of its controls took.
    virtual void OnBackgroundClick(const input::ClickEvent& /*event*/) {}
    // Folding changed: a widget shows or leaves out its parts here.
    virtual void MinimisedChanged() {}
    // Whether a point of the GUI lies on the widget, border included.
    bool Covers(const math::Vec2& guiPoint) const;

private:
    // The top-left corner of the parent's inner area on the screen.
    math::Vec2 ParentOrigin() const;
    // The nearest position to a wished one that keeps all of it on the screen.
    math::Vec2 Clamped(const math::Vec2& position) const;

    util::String m_widgetName;
    gui::ComponentWeakPtr m_host;
    util::CallbackSet m_onClose;
    bool m_minimised = false;
    bool m_moving = false;
    // Where the drag would have put it, had the screen no edges: the widget follows the
    // mouse again as soon as the mouse comes back.
    math::Vec2 m_dragTarget;
    math::Vec2 m_seenScreen;
};

}  // namespace app
