#pragma once

#include "app/tools/CreateTool.h"

namespace app {

// A click on a shape fixes it rigidly to the shape below it, or to the ground.
class FixJointTool : public ClickCreateTool {
public:
    FixJointTool();
    ~FixJointTool() override;

protected:
    EntityPtr Create(const math::Vec2& point) const override;
};

}  // namespace app
