#pragma once

#include "app/tools/CreateTool.h"

namespace app {

// Drags a box from corner to corner, a square with Shift. Without free drawing a box drawn
// around entities selects them instead.
class BoxTool : public ShapeDragTool {
public:
    BoxTool();
    ~BoxTool() override;

    // The outline the drag would make.
    void Draw(Painter& painter) override;

    // The far corner the drag from start to end gives: with Shift, moved to make a square.
    static math::Vec2 FarCorner(const math::Vec2& start, const math::Vec2& end, bool square);

protected:
    void Finish(const math::Vec2& point) override;
};

}  // namespace app
