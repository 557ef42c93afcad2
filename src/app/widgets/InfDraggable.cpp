#include "app/widgets/InfDraggable.h"

#include "input/KeyCodes.h"

namespace app {

InfDraggable::InfDraggable(const rendering::TextureHandle& texture, float width, float height)
    : gui::Icon(texture, width, height) {
    SetReflectedName("InfDraggable");
}

InfDraggable::~InfDraggable() = default;

void InfDraggable::OnDragBegin(input::DragEvent& event) {
    if (!event.consumed && event.key == input::MouseKey(input::kMouseLeft) && IsMouseOver()) {
        m_dragging = true;
        m_last = event.position;
        event.consumed = true;
    }
    gui::Icon::OnDragBegin(event);
}

void InfDraggable::OnDrag(input::DragEvent& event) {
    if (m_dragging) {
        event.consumed = true;
        m_last = event.position;
        Dragged(event.offset);
    }
    gui::Icon::OnDrag(event);
}

void InfDraggable::OnDragEnd(input::DragEvent& event) {
    if (m_dragging) {
        m_dragging = false;
        event.consumed = true;
        // An end that lies beyond the last motion carries that motion with it.
        if (event.position != m_last) {
            Dragged(event.offset);
        }
    }
    gui::Icon::OnDragEnd(event);
}

void InfDraggable::Dragged(const math::Vec2& delta) {
    m_onDragged.CallAll(delta);
}

}  // namespace app
