#include "app/tools/ScaleTool.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "app/Painter.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "input/Input.h"
#include "logging/Log.h"

namespace app {
namespace {

// Half the side of a handle's square, in window pixels; the grip reaches a little beyond.
constexpr float kHandlePixels = 5;
constexpr float kGripPixels = 8;
// No axis shrinks below this, and none turns over.
constexpr float kMinScale = 0.02f;
// Sides thinner than this have no extent to scale.
constexpr float kMinExtent = 1e-6f;

// Which sides of the box the handle lies on: -1 left or bottom, 1 right or top, 0 the
// middle.
math::Vec2 SideOf(ScaleTool::Handle handle) {
    static const math::Vec2 kSides[ScaleTool::kHandleCount] = {{-1, 1}, {0, 1},  {1, 1},   {1, 0},
                                                               {1, -1}, {0, -1}, {-1, -1}, {-1, 0}};
    return kSides[handle];
}

const math::Vec4 kBoxColor(0.2f, 0.5f, 1.0f, 1.0f);

// The selection's box, empty when it has no finite extent.
math::BoundingBox2f SelectionBox() {
    const math::BoundingBox2f box = Scene::Get().GetSelection()->GetBoundingBox();
    if (box.IsEmpty() || !box.IsFinite() ||
        (box.Width() < kMinExtent && box.Height() < kMinExtent)) {
        return math::BoundingBox2f();
    }
    return box;
}

}  // namespace

ScaleTool::ScaleTool() : Tool("ScaleTool") {}

ScaleTool::~ScaleTool() = default;

math::Vec2 ScaleTool::HandlePosition(const math::BoundingBox2f& box, Handle handle) {
    const math::Vec2 side = SideOf(handle);
    const math::Vec2 half = box.Size() * 0.5f;
    return box.Centre() + math::Vec2(side.x * half.x, side.y * half.y);
}

ScaleTool::Handle ScaleTool::HandleAt(const math::Vec2& world) {
    const math::BoundingBox2f box = SelectionBox();
    if (box.IsEmpty()) {
        return kNone;
    }
    const float grip = kGripPixels * Scene::Get().GetCamera().GetPixelSize();
    Handle best = kNone;
    float bestDistance = grip;
    for (int i = 0; i < kHandleCount; ++i) {
        const Handle handle = static_cast<Handle>(i);
        const math::Vec2 d = world - HandlePosition(box, handle);
        const float distance = std::max(std::fabs(d.x), std::fabs(d.y));
        if (distance <= bestDistance) {
            best = handle;
            bestDistance = distance;
        }
    }
    return best;
}

void ScaleTool::OnMouseMove(input::MouseMoveEvent& event) {
    Tool::OnMouseMove(event);
    if (!IsDrawing()) {
        m_hover = HandleAt(ToWorld(event.position));
    }
}

void ScaleTool::Update(float) {
    if (!IsDrawing() && input::Input::IsAlive()) {
        m_hover = HandleAt(ToWorld(input::Input::Get().GetMousePos()));
    }
}

void ScaleTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    if (event.consumed || !IsLeft(event.key) || IsDrawing()) {
        return;
    }
    const Handle handle = HandleAt(ToWorld(event.position));
    if (handle == kNone) {
        return;
    }
    Scene& scene = Scene::Get();
    m_handle = handle;
    m_box = SelectionBox();
    m_before = SnapshotPtr(new app::Snapshot());
    m_entities =
        scene.GetSelection()->GetTransformSet(scene.GetEntities(), scene.GetModifiers().alt);
    SetPreview(math::Mat3::Identity());
    SetDrawing(true);
    event.consumed = true;
}

void ScaleTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    SetPreview(ScaleFor(event.position));
    event.consumed = true;
}

void ScaleTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!IsDrawing()) {
        return;
    }
    const math::Mat3 scale = event.consumed ? m_preview : ScaleFor(event.position);
    const SnapshotPtr before = m_before;
    const std::vector<EntityPtr> originals = m_entities;
    Cancel();
    event.consumed = true;
    if (scale == math::Mat3::Identity() || originals.empty()) {
        return;
    }
    Scene& scene = Scene::Get();
    try {
        Group group;
        for (const EntityPtr& entity : originals) {
            group.Add(entity);
        }
        const GroupPtr copies = scene.CloneGroupTransformed(group, scale);
        for (const EntityPtr& entity : originals) {
            scene.RemoveEntity(entity);
        }
        scene.GetSelection()->Clear();
        scene.GetSelection()->Add(*copies);
        Undoer::Get().AddSnapshotStep(before, "UndoScale");
    } catch (const std::exception& e) {
        Log(logging::Warning, util::String("Exception caught when scaling: ") + e.what());
        // Half a resize is worse than none.
        before->Restore();
    }
}

void ScaleTool::Draw(Painter& painter) {
    const math::BoundingBox2f box = IsDrawing() ? m_box : SelectionBox();
    if (box.IsEmpty()) {
        return;
    }
    const math::Mat3& shown = IsDrawing() ? m_preview : math::Mat3::Identity();
    math::Vec2 corners[4] = {box.min, math::Vec2(box.max.x, box.min.y), box.max,
                             math::Vec2(box.min.x, box.max.y)};
    for (math::Vec2& corner : corners) {
        corner = shown.TransformPoint(corner);
    }
    for (int i = 0; i < 4; ++i) {
        painter.Line(corners[i], corners[(i + 1) % 4], kBoxColor);
    }
    const float half = kHandlePixels * painter.GetPixelSize();
    for (int i = 0; i < kHandleCount; ++i) {
        const Handle handle = static_cast<Handle>(i);
        const math::Vec2 at = shown.TransformPoint(HandlePosition(box, handle));
        const bool lit = handle == (IsDrawing() ? m_handle : m_hover);
        painter.RoundedRect(at, math::Vec2(half, half), 0, half * 0.3f,
                            lit ? math::Vec4(1, 1, 1, 1) : kBoxColor);
    }
}

bool ScaleTool::Cancel() {
    if (!IsDrawing()) {
        return false;
    }
    SetPreview(math::Mat3::Identity());
    SetDrawing(false);
    m_entities.clear();
    m_before.Reset();
    m_handle = kNone;
    return true;
}

util::String ScaleTool::GetCursorName() const {
    switch (IsDrawing() ? m_handle : m_hover) {
        case kNorthWest:
        case kSouthEast:
            return "arrow_north-west";
        case kNorthEast:
        case kSouthWest:
            return "arrow_north-east";
        case kNorth:
        case kSouth:
            return "arrow_north-south";
        case kEast:
        case kWest:
            return "arrow_west-east";
        default:
            return "";
    }
}

math::Mat3 ScaleTool::ScaleFor(const math::Vec2& gui) const {
    const math::Vec2 side = SideOf(m_handle);
    const math::Vec2 grip = HandlePosition(m_box, m_handle);
    const math::Vec2 anchor = m_box.Centre() - (grip - m_box.Centre());
    const math::Vec2 mouse = ToWorld(gui);
    const auto axisScale = [](float moving, float reach, float mouse, float fixed) {
        if (moving == 0 || std::fabs(reach - fixed) < kMinExtent) {
            return 1.0f;
        }
        const float scale = (mouse - fixed) / (reach - fixed);
        return std::isfinite(scale) ? std::max(scale, kMinScale) : 1.0f;
    };
    float sx = axisScale(side.x, grip.x, mouse.x, anchor.x);
    float sy = axisScale(side.y, grip.y, mouse.y, anchor.y);
    if (ShiftHeld()) {
        // The axis the handle moves rules; a corner takes the larger stretch.
        const float both = side.x == 0 ? sy : side.y == 0 ? sx : std::max(sx, sy);
        sx = m_box.Width() < kMinExtent ? 1.0f : both;
        sy = m_box.Height() < kMinExtent ? 1.0f : both;
    }
    // About the anchor: x' = anchor + s (x - anchor).
    return math::Mat3(sx, 0, anchor.x * (1 - sx), 0, sy, anchor.y * (1 - sy), 0, 0, 1);
}

void ScaleTool::SetPreview(const math::Mat3& transform) {
    m_preview = transform;
    for (const EntityPtr& entity : m_entities) {
        entity->previewTransform = transform;
    }
}

}  // namespace app
