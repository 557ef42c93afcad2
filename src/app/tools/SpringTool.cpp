#include "app/tools/SpringTool.h"

#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/tools/CreateTool.h"
#include "math/MathUtil.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

namespace app {

SpringTool::SpringTool() : Tool("SpringTool") {}

SpringTool::~SpringTool() = default;

void SpringTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    math::Vec2 start;
    if (!BeginGesture(event, start)) {
        return;
    }
    m_startGeom = Scene::Get().GetGeomAt(start);
    m_startLocal = m_startGeom->GetInverseTransform().Apply(start);
    m_mouseGui = event.position;
    m_preview = util::SharedPtr<SpringEntity>(
        new SpringEntity(Scene::Get().GetCamera().GetDefaultJointSize()));
    MoveFreeEnd(start);
    SetDrawing(true);
    event.consumed = true;
}

void SpringTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    m_mouseGui = event.position;
    event.consumed = true;
}

void SpringTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!EndGesture(event)) {
        return;
    }
    const math::Vec2 end = ToWorld(event.position);
    const physics::GeomPtr endGeom =
        IsUsablePoint(end) ? Scene::Get().GetGeomAt(end) : physics::GeomPtr();
    // The start's body may have gone while the drag lasted, by an undo or an erase.
    const physics::AbstractBody* startBody = m_startGeom->GetBody();
    if (!endGeom || endGeom == m_startGeom || !startBody || !startBody->IsInWorld()) {
        Cancel();
        return;
    }
    const math::Vec2 start = m_startGeom->GetTransform().Apply(m_startLocal);
    const float length = (end - start).Length();
    if (!math::IsFinite(length)) {
        Cancel();
        return;
    }
    const util::SharedPtr<SpringEntity> spring = m_preview;
    // The scene before holds no trace of the preview.
    spring->RemoveFromSimulation();
    const SnapshotPtr before(new app::Snapshot());
    spring->SetEnds(m_startGeom, m_startLocal, endGeom, endGeom->GetInverseTransform().Apply(end));
    spring->length->SetNative(length);
    m_preview.Reset();
    m_startGeom.Reset();
    SetDrawing(false);
    Scene::Get().AddEntity(spring);
    Undoer::Get().AddSnapshotStep(before, "UndoSpring");
}

void SpringTool::Update(float) {
    if (IsDrawing() && m_preview) {
        const math::Vec2 mouse = ToWorld(m_mouseGui);
        if (IsUsablePoint(mouse)) {
            MoveFreeEnd(mouse);
        }
    }
}

void SpringTool::Draw(Painter& painter) {
    if (IsDrawing() && m_preview) {
        m_preview->Draw(painter);
    }
}

bool SpringTool::Cancel() {
    if (m_preview) {
        m_preview->RemoveFromSimulation();
        m_preview.Reset();
    }
    m_startGeom.Reset();
    if (!IsDrawing()) {
        return false;
    }
    SetDrawing(false);
    return true;
}

void SpringTool::MoveFreeEnd(const math::Vec2& point) {
    const physics::GeomPtr& ground = physics::Simulation::Get().GetWorldGeom();
    m_preview->SetEnds(m_startGeom, m_startLocal, ground,
                       ground->GetInverseTransform().Apply(point));
}

}  // namespace app
