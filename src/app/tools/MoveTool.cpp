#include "app/tools/MoveTool.h"

#include "app/Scene.h"
#include "physics/Simulation.h"

namespace app {

MoveTool::MoveTool() : Tool("MoveTool") {}

MoveTool::~MoveTool() = default;

void MoveTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    if (event.consumed || !IsLeft(event.key) || IsDrawing()) {
        return;
    }
    if (!SelectionTransform::TakeAt(ToWorld(event.position))) {
        return;
    }
    Scene& scene = Scene::Get();
    const SnapshotPtr before(new app::Snapshot());
    m_cloning = CtrlHeld();
    if (m_cloning) {
        // Paused for the whole gesture, so that the clones stay where they are put.
        physics::Simulation& sim = physics::Simulation::Get();
        m_wasRunning = sim.running->Get();
        sim.running->SetNative(false);
        const GroupPtr clones = scene.CloneGroup(*scene.GetSelection());
        scene.GetSelection()->Clear();
        scene.GetSelection()->Add(*clones);
    }
    m_transform.Begin(before);
    m_last = event.position;
    SetDrawing(true);
    event.consumed = true;
}

void MoveTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    MoveBy(event.offset);
    m_last = event.position;
    event.consumed = true;
}

void MoveTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!IsDrawing()) {
        return;
    }
    // An end that lies beyond the last motion carries that motion with it.
    if (!event.consumed && event.position != m_last) {
        MoveBy(event.offset);
    }
    ResumeSimulation();
    m_transform.Finish(m_cloning ? "UndoClone" : "UndoMove", m_cloning);
    m_cloning = false;
    SetDrawing(false);
    event.consumed = true;
}

bool MoveTool::Cancel() {
    if (!IsDrawing()) {
        return false;
    }
    SetDrawing(false);
    ResumeSimulation();
    m_cloning = false;
    m_transform.Revert();
    return true;
}

void MoveTool::MoveBy(const math::Vec2& pixels) {
    physics::Transform move;
    move.translation = Scene::Get().GetCamera().GUIToWorldDelta(pixels);
    m_transform.Apply(move);
}

void MoveTool::ResumeSimulation() {
    if (m_cloning && m_wasRunning) {
        physics::Simulation::Get().running->SetNative(true);
    }
    m_wasRunning = false;
}

}  // namespace app
