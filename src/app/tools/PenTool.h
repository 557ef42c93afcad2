#pragma once

#include "app/tools/CreateTool.h"

namespace app {

// A click on a shape puts a pen there, which rides on it and draws its trail.
class PenTool : public ClickCreateTool {
public:
    PenTool();
    ~PenTool() override;

    util::String GetCursorName() const override { return "pencil"; }

protected:
    EntityPtr Create(const math::Vec2& point) const override;
};

}  // namespace app
