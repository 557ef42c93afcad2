#include "app/tools/RotateTool.h"

#include <cmath>

#include "app/Painter.h"
#include "app/Scene.h"
#include "app/entities/GeomEntity.h"
#include "math/MathUtil.h"
#include "physics/Geom.h"

namespace app {
namespace {

constexpr float kSnapStep = 3.14159265f / 12;
// The pivot's picture, in inches of the screen.
constexpr float kPivotSize = 0.4f;

// The direction of the point from the pivot; false where the point is the pivot.
bool AngleFrom(const math::Vec2& pivot, const math::Vec2& point, float& angle) {
    const math::Vec2 d = point - pivot;
    if (d.x == 0 && d.y == 0) {
        return false;
    }
    angle = std::atan2(d.y, d.x);
    return true;
}

}  // namespace

RotateTool::RotateTool() : Tool("RotateTool") {}

RotateTool::~RotateTool() = default;

void RotateTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    if (event.consumed || !IsRight(event.key) || IsDrawing()) {
        return;
    }
    const math::Vec2 start = ToWorld(event.position);
    if (!SelectionTransform::TakeAt(start)) {
        return;
    }
    const Group& selection = *Scene::Get().GetSelection();
    m_startAngle = 0;
    const GeomEntity* lone = nullptr;
    if (selection.size() == 1) {
        lone = dynamic_cast<const GeomEntity*>(selection.GetEntities().begin()->Get());
    }
    if (lone) {
        m_pivot = lone->GetGeom()->GetPosition();
        m_startAngle = lone->GetGeom()->GetTransform().Angle();
    } else {
        const math::BoundingBox2f box = selection.GetBoundingBox();
        m_pivot = box.IsEmpty() ? start : box.Centre();
    }
    m_mouseAngle = 0;
    AngleFrom(m_pivot, start, m_mouseAngle);
    m_swept = 0;
    m_applied = 0;
    m_transform.Begin(SnapshotPtr(new app::Snapshot()));
    SetDrawing(true);
    event.consumed = true;
}

void RotateTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    TurnTo(event.position);
    event.consumed = true;
}

void RotateTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!IsDrawing()) {
        return;
    }
    if (!event.consumed) {
        TurnTo(event.position);
    }
    m_transform.Finish("UndoRotate", false);
    SetDrawing(false);
    event.consumed = true;
}

void RotateTool::Draw(Painter& painter) {
    if (IsDrawing()) {
        painter.Sprite("rotate_origo.png", m_pivot, kPivotSize * painter.GetInchInWorld(), 0,
                       math::Vec4(1, 1, 1, 1));
    }
}

bool RotateTool::Cancel() {
    if (!IsDrawing()) {
        return false;
    }
    SetDrawing(false);
    m_transform.Revert();
    return true;
}

void RotateTool::TurnTo(const math::Vec2& gui) {
    float angle = 0;
    if (!AngleFrom(m_pivot, ToWorld(gui), angle)) {
        return;
    }
    // Each step's share wrapped, so that the sum counts whole turns.
    m_swept += physics::WrappedAngle(angle - m_mouseAngle);
    m_mouseAngle = angle;
    float target = m_swept;
    if (ShiftHeld()) {
        target = std::round((m_startAngle + m_swept) / kSnapStep) * kSnapStep - m_startAngle;
    }
    m_transform.Apply(RotationAbout(m_pivot, target - m_applied));
    m_applied = target;
}

}  // namespace app
