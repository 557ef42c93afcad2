#pragma once

#include "gui/Icon.h"
#include "math/Vector2.h"
#include "util/CallbackSet.h"

namespace app {

// A picture that reports drags of the left mouse button begun on it, without moving: the
// mouse can go on as far as it likes, and each motion is told as it comes. It acts on a
// drag before its children hear of it.
class InfDraggable : public gui::Icon {
public:
    InfDraggable(const rendering::TextureHandle& texture, float width, float height);
    ~InfDraggable() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;

    bool IsDragging() const { return m_dragging; }
    // Told each motion of a drag, in GUI units.
    util::CallbackArgSet<math::Vec2>& GetOnDragged() { return m_onDragged; }

protected:
    // A motion of the drag; the default tells the callbacks.
    virtual void Dragged(const math::Vec2& delta);

private:
    bool m_dragging = false;
    // Where the last event of the drag put the mouse.
    math::Vec2 m_last;
    util::CallbackArgSet<math::Vec2> m_onDragged;
};

}  // namespace app
