#pragma once

#include "app/tools/SelectionTransform.h"
#include "app/tools/Tool.h"

namespace app {

// Turns the selection with the right button about its centre, or a lone shape about its
// own, by the angle the mouse sweeps around that pivot. Shift turns in steps of 15 degrees:
// a lone shape to whole steps of its own angle.
class RotateTool : public Tool {
public:
    RotateTool();
    ~RotateTool() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // Shows the pivot while turning.
    void Draw(Painter& painter) override;
    // The selection goes back to where it was.
    bool Cancel() override;
    util::String GetCursorName() const override { return "rotate"; }

    const math::Vec2& GetPivot() const { return m_pivot; }

private:
    // Follows the mouse at the window point.
    void TurnTo(const math::Vec2& gui);

    SelectionTransform m_transform;
    math::Vec2 m_pivot;
    // The mouse's direction from the pivot when last seen, and the angle swept since the
    // start, whole turns included.
    float m_mouseAngle = 0;
    float m_swept = 0;
    // What the selection has been turned by so far.
    float m_applied = 0;
    // The lone shape's own angle at the start; 0 for a group.
    float m_startAngle = 0;
};

}  // namespace app
