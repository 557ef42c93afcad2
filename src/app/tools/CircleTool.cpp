#include "app/tools/CircleTool.h"

#include <cmath>

#include "app/entities/CircleEntity.h"
#include "math/MathUtil.h"
#include "physics/Shapes.h"

namespace app {

CircleTool::CircleTool() : ShapeDragTool("CircleTool") {}

CircleTool::~CircleTool() = default;

void CircleTool::Follow(const math::Vec2& point) {
    const math::Vec2 d = point - GetStart();
    const float radius = d.Length();
    // A circle too small or too big for its area to be a float has no mass to move: the
    // previous preview stays.
    const float area = math::Pi * radius * radius;
    if (!(area > 0) || !math::IsFinite(area)) {
        return;
    }
    util::SharedPtr<physics::Circle> circle(new physics::Circle(radius));
    circle->SetTransform(physics::Transform::FromAngle(std::atan2(d.y, d.x), GetStart()));
    SetPreview(util::SharedPtr<GeomEntity>(new CircleEntity(circle)));
}

void CircleTool::Finish(const math::Vec2&) {
    if (GetPreview()) {
        AddShapeStep(GetPreview(), AutoGlue(), "UndoCircle", "circle");
    }
}

}  // namespace app
