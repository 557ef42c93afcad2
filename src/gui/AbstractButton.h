#pragma once

#include "gui/Component.h"

namespace gui {

class AbstractButton;
using AbstractButtonPtr = util::SharedPtr<AbstractButton>;

// What every button shares: hovering, being held down, and a click with the left mouse
// key. It draws nothing; the look is the business of the classes built on it.
//
// The press and the release are left unconsumed: the input root makes the click only of
// a press that nobody consumed. The click itself, and a drag that began here, are taken.
class AbstractButton : public Component {
public:
    explicit AbstractButton(const util::String& name = "AbstractButton");
    ~AbstractButton() override;

    void OnKey(input::KeyEvent& event) override;
    void OnClick(input::ClickEvent& event) override;
    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    void OnMouseEnter() override;
    void OnMouseLeave() override;

    // Held down with the mouse still over it: what a user sees as pressed.
    bool IsPressed() const { return m_held && IsMouseOver(); }
    // Held down, wherever the mouse went since.
    bool IsHeld() const { return m_held || m_ownsDrag; }
    // A disabled button still takes the clicks on it, so that they don't fall through to
    // what lies behind, but does nothing with them.
    bool IsEnabled() const { return m_enabled; }
    void SetEnabled(bool enabled);

    // Acts as a click by the user would.
    void DoClick();
    util::CallbackSet& GetOnClick() { return m_onClick; }

protected:
    // A click: calls the click callbacks. Buttons that change state do so first.
    virtual void Clicked();
    // Hover, held or enabled changed: time to take another look.
    virtual void StateChanged() {}

private:
    void SetHeld(bool held);

    bool m_held = false;
    bool m_ownsDrag = false;
    bool m_enabled = true;
    util::CallbackSet m_onClick;
};

}  // namespace gui
