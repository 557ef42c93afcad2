#include "app/tools/BoxTool.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "app/App.h"
#include "app/Scene.h"
#include "app/entities/BoxEntity.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Polygon.h"
#include "physics/Shapes.h"

namespace app {

namespace {

// Sides of the selection outline are split so that it has no more points than this: a box
// dragged at a far zoom would otherwise ask for millions.
constexpr float kMaxOutlinePoints = 1024;

const math::Vec4 kOutlineColor(0.85f, 1.0f, 0.85f, 1.0f);

// Selects what the rectangle encloses; true when that was anything.
bool SelectInsideRectangle(const math::Vec2& a, const math::Vec2& b) {
    math::Vec2List corners;
    corners.push_back(a);
    corners.push_back(math::Vec2(b.x, a.y));
    corners.push_back(b);
    corners.push_back(math::Vec2(a.x, b.y));
    const float perimeter = 2 * (std::fabs(b.x - a.x) + std::fabs(b.y - a.y));
    float maxDist = 0;
    if (App::IsAlive()) {
        maxDist =
            App::Get().GetModel().maxPointDist->Get() * Scene::Get().GetCamera().GetInchInWorld();
    }
    maxDist = std::max(maxDist, perimeter / kMaxOutlinePoints);
    try {
        const physics::Polygon outline(physics::AssertMaxDist(corners, maxDist));
        return Scene::Get().SelectInside(outline);
    } catch (const std::exception& e) {
        Log(logging::Debug, util::String("Box outline for selection failed: ") + e.what());
    }
    return false;
}

}  // namespace

BoxTool::BoxTool() : ShapeDragTool("BoxTool") {}

BoxTool::~BoxTool() = default;

math::Vec2 BoxTool::FarCorner(const math::Vec2& start, const math::Vec2& end, bool square) {
    if (!square) {
        return end;
    }
    const math::Vec2 d = end - start;
    const float side = std::max(std::fabs(d.x), std::fabs(d.y));
    return start + math::Vec2(d.x < 0 ? -side : side, d.y < 0 ? -side : side);
}

void BoxTool::Draw(Painter& painter) {
    if (!IsDrawing()) {
        return;
    }
    const math::Vec2 a = GetStart();
    const math::Vec2 b = FarCorner(a, GetMouse(), ShiftHeld());
    if (!IsUsablePoint(b)) {
        return;
    }
    const math::Vec2 corners[4] = {a, math::Vec2(b.x, a.y), b, math::Vec2(a.x, b.y)};
    for (int i = 0; i < 4; ++i) {
        painter.Line(corners[i], corners[(i + 1) % 4], kOutlineColor);
    }
}

void BoxTool::Finish(const math::Vec2& point) {
    const math::Vec2 start = GetStart();
    const math::Vec2 end = FarCorner(start, point, ShiftHeld());
    if (start == end) {
        return;
    }
    const math::Vec2 halfSize((end - start).x / 2, (end - start).y / 2);
    const math::Vec2 half(std::fabs(halfSize.x), std::fabs(halfSize.y));
    // A box without area has no mass to move it, and one too big for a float no area at
    // all: neither is made.
    const float area = 4 * half.x * half.y;
    if (!(area > 0) || !math::IsFinite(area) || !IsUsablePoint(end)) {
        return;
    }
    if (!FreeDrawing() && SelectInsideRectangle(start, end)) {
        return;
    }
    util::SharedPtr<physics::Box> box(new physics::Box(half));
    box->SetTransform(physics::Transform::FromAngle(0, (start + end) / 2));
    AddShapeStep(util::SharedPtr<GeomEntity>(new BoxEntity(box)), AutoGlue(), "UndoBox", "box");
}

}  // namespace app
