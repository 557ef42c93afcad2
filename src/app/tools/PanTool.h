#pragma once

#include "app/tools/Tool.h"

namespace app {

// Drags the view: the scene follows the mouse by the pixels it moved. While it pans, the
// camera's following of a group holds still.
class PanTool : public Tool {
public:
    PanTool();
    ~PanTool() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // Ends the panning; the view stays where it was taken.
    bool Cancel() override;
    util::String GetCursorName() const override { return IsDrawing() ? "hand_closed" : "hand"; }

private:
    // Where the last event of the gesture put the mouse.
    math::Vec2 m_last;
};

}  // namespace app
