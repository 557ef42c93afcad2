#include "app/tools/DragTool.h"

#include <cmath>

#include "app/App.h"
#include "app/Painter.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "input/Input.h"
#include "input/KeyCodes.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Hinge.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"

namespace app {
namespace {

constexpr float kDefaultStrength = 0.25f;
const math::Vec4 kLineColor(1, 1, 1, 0.8f);

float Strength() {
    return App::IsAlive() ? App::Get().GetModel().dragToolStrength->Get() : kDefaultStrength;
}

// The direction of the point from the centre; false where it is too close to tell.
bool AngleFrom(const math::Vec2& centre, const math::Vec2& point, float near, float& angle) {
    const math::Vec2 d = point - centre;
    if (d.Length() <= near) {
        return false;
    }
    angle = std::atan2(d.y, d.x);
    return true;
}

}  // namespace

DragTool::DragTool() : Tool("DragTool") {}

DragTool::~DragTool() = default;

void DragTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    if (event.consumed || !IsLeft(event.key) || IsDrawing()) {
        return;
    }
    const math::Vec2 point = ToWorld(event.position);
    const physics::GeomPtr geom = Scene::Get().GetGeomAt(point);
    const auto* body = dynamic_cast<const physics::Body*>(geom->GetBody());
    if (!body || !body->IsInWorld() || body->IsStatic() || body->GetMassInv() == 0) {
        return;
    }
    m_before = SnapshotPtr(new app::Snapshot());
    physics::Simulation& sim = physics::Simulation::Get();
    // A point of infinite mass that collides with nothing: the world body's kind of geom.
    const physics::GeomPtr pin(new physics::WorldGeom());
    m_helper = physics::BodyPtr(new physics::Body());
    m_helper->SetGeom(pin);
    m_helper->position = point;
    m_helper->UpdateTransforms();
    sim.AddBody(m_helper);
    m_geom = geom;
    m_hinge = physics::HingePtr(new physics::Hinge(pin, geom, point));
    m_hinge->SetImpulseLimit(Strength());
    m_hinge->SetDistanceLimit(Strength());
    sim.AddConstraint(m_hinge);
    m_mouse = event.position;
    m_offset = math::Vec2(0, 0);
    m_turning = false;
    SetDrawing(true);
    event.consumed = true;
}

void DragTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    m_mouse = event.position;
    event.consumed = true;
}

void DragTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!IsDrawing()) {
        return;
    }
    Release();
    SetDrawing(false);
    const SnapshotPtr before = m_before;
    m_before.Reset();
    m_geom.Reset();
    // A paused world moves only under the drag: then the drag was an edit of the scene.
    if (!physics::Simulation::Get().running->Get()) {
        Undoer::Get().AddSnapshotStep(before, "UndoDrag");
    }
    event.consumed = true;
}

void DragTool::Update(float) {
    if (!IsDrawing() || !m_hinge) {
        return;
    }
    // Pulled too hard or too far: the hinge broke and the shape is free.
    if (m_hinge->IsBroken() || !m_hinge->IsValid()) {
        Release();
        return;
    }
    const bool turning = RightHeld();
    m_hinge->SetMotor(turning);
    if (turning) {
        Turn();
        return;
    }
    if (m_turning) {
        // The helper stays where the turn left it, and follows the mouse from there.
        m_turning = false;
        m_offset = MouseInWorld() - m_helper->position;
    }
    m_helper->position = MouseInWorld() - m_offset;
    m_helper->velocity = math::Vec2(0, 0);
    m_helper->UpdateTransforms();
}

void DragTool::Draw(Painter& painter) {
    if (!IsDrawing() || !m_hinge) {
        return;
    }
    painter.Line(m_hinge->GetWorldAnchorB(), m_hinge->GetWorldAnchorA(), kLineColor);
}

bool DragTool::Cancel() {
    if (!IsDrawing()) {
        return false;
    }
    Release();
    SetDrawing(false);
    m_geom.Reset();
    const SnapshotPtr before = m_before;
    m_before.Reset();
    if (before) {
        before->Restore();
    }
    return true;
}

bool DragTool::RightHeld() const {
    const input::SDLKey right = input::MouseKey(input::kMouseRight);
    return IsKeyDownHere(right) ||
           (input::Input::IsAlive() && input::Input::Get().IsKeyDown(right));
}

void DragTool::Release() {
    physics::Simulation& sim = physics::Simulation::Get();
    if (m_hinge) {
        sim.RemoveConstraint(m_hinge);
        m_hinge.Reset();
    }
    if (m_helper) {
        sim.RemoveBody(m_helper);
        m_helper.Reset();
    }
    m_turning = false;
}

math::Vec2 DragTool::MouseInWorld() const {
    return ToWorld(m_mouse);
}

void DragTool::Turn() {
    const math::Vec2 centre = m_helper->position;
    const float near = 2 * Scene::Get().GetCamera().GetPixelSize();
    const float shapeAngle = m_geom->GetTransform().Angle();
    float mouseAngle = 0;
    const bool seen = AngleFrom(centre, MouseInWorld(), near, mouseAngle);
    if (!m_turning) {
        m_turning = true;
        m_mouseKnown = false;
        m_mouseSwept = 0;
        m_shapeAngle = shapeAngle;
        m_shapeTurned = 0;
    }
    if (seen) {
        if (m_mouseKnown) {
            m_mouseSwept += physics::WrappedAngle(mouseAngle - m_mouseAngle);
        }
        m_mouseAngle = mouseAngle;
        m_mouseKnown = true;
    }
    m_shapeTurned += physics::WrappedAngle(shapeAngle - m_shapeAngle);
    m_shapeAngle = shapeAngle;
    // The shape turns at a speed that closes its lag behind the mouse's sweep.
    m_hinge->SetMotorSpeed(kTurnGain * (m_mouseSwept - m_shapeTurned));
    m_hinge->SetMotorTorque(kTurnAcceleration);
}

}  // namespace app
