#include "app/tools/CreateTool.h"

#include <cmath>
#include <exception>

#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Simulation.h"

namespace app {

bool AddShapeStep(const util::SharedPtr<GeomEntity>& shape, bool glue, const char* label,
                  const char* what) {
    try {
        const SnapshotPtr before(new app::Snapshot());
        if (glue) {
            physics::Simulation::Get().GetWorldBody()->AddGeom(shape->GetGeom());
        }
        Scene::Get().AddEntity(shape);
        Undoer::Get().AddSnapshotStep(before, label);
        return true;
    } catch (const std::exception& e) {
        Log(logging::Warning,
            util::String("Exception caught when creating ") + what + ": " + e.what());
    }
    // Whatever got in goes again: no half-made shape stays behind.
    try {
        Scene::Get().RemoveEntity(shape);
    } catch (...) {
        Log(logging::Warning, util::String("Could not take back the failed ") + what);
    }
    return false;
}

ClickCreateTool::ClickCreateTool(const util::String& name, const char* label)
    : Tool(name), m_label(label) {}

ClickCreateTool::~ClickCreateTool() = default;

void ClickCreateTool::OnClick(input::ClickEvent& event) {
    Tool::OnClick(event);
    if (event.consumed || !IsLeft(event.key) || event.clicks != 1) {
        return;
    }
    const math::Vec2 point = ToWorld(event.position);
    if (!IsUsablePoint(point) || !Scene::Get().GetEntityAt(point)) {
        return;
    }
    const SnapshotPtr before(new app::Snapshot());
    const EntityPtr entity = Create(point);
    if (!entity) {
        return;
    }
    Scene::Get().AddEntity(entity);
    Undoer::Get().AddSnapshotStep(before, m_label);
    event.consumed = true;
}

ShapeDragTool::ShapeDragTool(const util::String& name) : Tool(name) {}

ShapeDragTool::~ShapeDragTool() = default;

void ShapeDragTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    math::Vec2 start;
    if (!BeginGesture(event, start)) {
        return;
    }
    // On an entity the drag belongs to selecting and moving, unless the user draws freely.
    if (!FreeDrawing() && Scene::Get().GetEntityAt(start)) {
        return;
    }
    m_start = start;
    m_mouseGui = event.position;
    SetDrawing(true);
    event.consumed = true;
}

void ShapeDragTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    m_mouseGui = event.position;
    const math::Vec2 point = ToWorld(event.position);
    if (IsUsablePoint(point)) {
        Follow(point);
    }
    event.consumed = true;
}

void ShapeDragTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!EndGesture(event)) {
        return;
    }
    m_mouseGui = event.position;
    const math::Vec2 point = ToWorld(event.position);
    if (IsUsablePoint(point)) {
        Follow(point);
        Finish(point);
    }
    m_preview.Reset();
    SetDrawing(false);
}

void ShapeDragTool::Draw(Painter& painter) {
    if (IsDrawing() && m_preview) {
        m_preview->Draw(painter);
    }
}

bool ShapeDragTool::Cancel() {
    m_preview.Reset();
    if (!IsDrawing()) {
        return false;
    }
    SetDrawing(false);
    return true;
}

}  // namespace app
