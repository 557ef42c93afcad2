#include "gui/AbstractButton.h"

#include "input/KeyCodes.h"

namespace gui {
namespace {

bool IsLeft(input::SDLKey key) {
    return key == input::MouseKey(input::kMouseLeft);
}

}  // namespace

AbstractButton::AbstractButton(const util::String& name) : Component(name) {}

AbstractButton::~AbstractButton() = default;

void AbstractButton::OnKey(input::KeyEvent& event) {
    Component::OnKey(event);
    if (!IsLeft(event.key)) {
        return;
    }
    if (!event.down) {
        // The key is up whoever used the release.
        SetHeld(false);
    } else if (!event.consumed && IsMouseOver() && m_enabled) {
        SetHeld(true);
    }
}

void AbstractButton::OnClick(input::ClickEvent& event) {
    Component::OnClick(event);
    if (event.consumed || !IsLeft(event.key) || !IsMouseOver()) {
        return;
    }
    event.consumed = true;
    if (m_enabled) {
        Clicked();
    }
}

void AbstractButton::OnDragBegin(input::DragEvent& event) {
    Component::OnDragBegin(event);
    // A press that lasts or wanders is a drag to the input root; it still belongs here and
    // must not also start something in the scene behind.
    if (!event.consumed && IsLeft(event.key) && m_held) {
        m_ownsDrag = true;
        event.consumed = true;
    }
}

void AbstractButton::OnDrag(input::DragEvent& event) {
    Component::OnDrag(event);
    if (m_ownsDrag) {
        event.consumed = true;
    }
}

void AbstractButton::OnDragEnd(input::DragEvent& event) {
    Component::OnDragEnd(event);
    if (!m_ownsDrag) {
        return;
    }
    m_ownsDrag = false;
    StateChanged();
    event.consumed = true;
    // A slow press, or one that left and came back, is let go over the button: a click.
    if (IsMouseOver() && m_enabled) {
        Clicked();
    }
}

void AbstractButton::OnMouseEnter() {
    Component::OnMouseEnter();
    StateChanged();
}

void AbstractButton::OnMouseLeave() {
    Component::OnMouseLeave();
    StateChanged();
}

void AbstractButton::SetEnabled(bool enabled) {
    if (enabled == m_enabled) {
        return;
    }
    m_enabled = enabled;
    if (!enabled) {
        m_held = false;
    }
    StateChanged();
}

void AbstractButton::DoClick() {
    if (m_enabled) {
        Clicked();
    }
}

void AbstractButton::Clicked() {
    m_onClick.CallAll();
}

void AbstractButton::SetHeld(bool held) {
    if (held == m_held) {
        return;
    }
    m_held = held;
    StateChanged();
}

}  // namespace gui
