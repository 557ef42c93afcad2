#pragma once

#include "app/tools/CreateTool.h"

namespace app {

// A click on a shape pins it there with a hinge: to the shape below it, or to the ground.
class HingeTool : public ClickCreateTool {
public:
    HingeTool();
    ~HingeTool() override;

protected:
    EntityPtr Create(const math::Vec2& point) const override;
};

}  // namespace app
