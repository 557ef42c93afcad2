#pragma once

#include "app/tools/CreateTool.h"

namespace app {

// Drags a circle out of its centre; the slice that shows its turn points at the mouse.
class CircleTool : public ShapeDragTool {
public:
    CircleTool();
    ~CircleTool() override;

protected:
    void Follow(const math::Vec2& point) override;
    void Finish(const math::Vec2& point) override;
};

}  // namespace app
