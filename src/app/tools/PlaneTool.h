#pragma once

#include "app/tools/CreateTool.h"

namespace app {

// Drags a plane through the start point, its free side toward the mouse; with Shift the
// direction snaps to 15 degrees. A plane is always part of the ground.
class PlaneTool : public ShapeDragTool {
public:
    PlaneTool();
    ~PlaneTool() override;

    util::String GetCursorName() const override { return "arrow"; }

    // The unit normal of the drag's direction, snapped to 15 degrees when asked; (0, 0) for
    // a direction that has none.
    static math::Vec2 NormalOf(const math::Vec2& direction, bool snap);

protected:
    void Follow(const math::Vec2& point) override;
    void Finish(const math::Vec2& point) override;
};

}  // namespace app
