#pragma once

#include "app/tools/SelectionTransform.h"
#include "app/tools/Tool.h"

namespace app {

// Moves the selection with the left button, taking the entity under the mouse into it
// first. With Ctrl the selection is cloned at the start and the clones move instead.
class MoveTool : public Tool {
public:
    MoveTool();
    ~MoveTool() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // The selection goes back to where it was, and clones made by the gesture go.
    bool Cancel() override;
    util::String GetCursorName() const override { return "move"; }

private:
    // The world motion of a window distance.
    void MoveBy(const math::Vec2& pixels);
    // The simulation runs again if it ran before a clone paused it.
    void ResumeSimulation();

    SelectionTransform m_transform;
    bool m_cloning = false;
    bool m_wasRunning = false;
    // Where the last event of the gesture put the mouse.
    math::Vec2 m_last;
};

}  // namespace app
