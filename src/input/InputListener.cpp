#include "input/InputListener.h"

namespace input {

InputListener::InputListener(const util::String& name, int priority)
    : script::Reflected(name), m_priority(priority) {}

InputListener::~InputListener() = default;

void InputListener::OnMouseMove(MouseMoveEvent&) {}

void InputListener::OnKey(KeyEvent& event) {
    if (!event.consumed) {
        m_keyStates[event.key] = event.down;
    }
}

void InputListener::OnGeneralEvent(InputEvent&) {}
void InputListener::OnDragBegin(DragEvent&) {}
void InputListener::OnDrag(DragEvent&) {}
void InputListener::OnDragEnd(DragEvent&) {}
void InputListener::OnClick(ClickEvent&) {}
void InputListener::OnJoystickAxis(JoystickEvent&) {}

void InputListener::SetPriority(int priority) {
    m_priority = priority;
    m_priorityChanged.CallAll();
}

bool InputListener::IsKeyDownHere(SDLKey key) const {
    const auto it = m_keyStates.find(key);
    return it != m_keyStates.end() && it->second;
}

}  // namespace input
