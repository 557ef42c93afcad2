#include "app/tools/PlaneTool.h"

#include <cmath>

#include "app/entities/PlaneEntity.h"
#include "math/MathUtil.h"
#include "physics/Shapes.h"

namespace app {

PlaneTool::PlaneTool() : ShapeDragTool("PlaneTool") {}

PlaneTool::~PlaneTool() = default;

math::Vec2 PlaneTool::NormalOf(const math::Vec2& direction, bool snap) {
    if (!math::IsFinite(direction) || (direction.x == 0 && direction.y == 0)) {
        return math::Vec2(0, 0);
    }
    // By the angle rather than by the length, which overflows for far points.
    float angle = std::atan2(direction.y, direction.x);
    if (snap) {
        const float step = math::Pi / 12;
        angle = std::round(angle / step) * step;
    }
    return math::Vec2(std::cos(angle), std::sin(angle));
}

void PlaneTool::Follow(const math::Vec2& point) {
    const math::Vec2 normal = NormalOf(point - GetStart(), ShiftHeld());
    if (normal.x == 0 && normal.y == 0) {
        return;
    }
    // Through the start: n . p + offset = 0 there.
    const float offset = -math::Dot(normal, GetStart());
    if (!math::IsFinite(offset)) {
        return;
    }
    util::SharedPtr<physics::Plane> plane(new physics::Plane());
    plane->SetTransform(PlaneEntity::PlaceAt(normal, offset));
    SetPreview(util::SharedPtr<GeomEntity>(new PlaneEntity(plane)));
}

void PlaneTool::Finish(const math::Vec2&) {
    if (GetPreview()) {
        AddShapeStep(GetPreview(), true, "UndoPlane", "plane");
    }
}

}  // namespace app
