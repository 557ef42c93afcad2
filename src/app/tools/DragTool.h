#pragma once

#include "app/Snapshot.h"
#include "app/tools/Tool.h"
#include "physics/Forward.h"

namespace app {

// Pulls a moving shape about with the mouse. A small helper body without mass follows the
// mouse, hinged to the shape at the point where it was taken; the hinge lets go when pulled
// harder or farther than the application's dragToolStrength. With the right button held
// the helper stays, and the hinge's motor turns the shape after the mouse as it circles
// the helper.
class DragTool : public Tool {
public:
    DragTool();
    ~DragTool() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // The helper goes to the mouse, or the motor turns the shape.
    void Update(float dt) override;
    // The line from the grip on the shape to the helper.
    void Draw(Painter& painter) override;
    // Lets go, and the scene goes back to how it was before the drag.
    bool Cancel() override;
    util::String GetCursorName() const override { return IsDrawing() ? "hand_closed" : "hand"; }

    // The shape held, and the hinge that holds it; null when none.
    const physics::GeomPtr& GetGeom() const { return m_geom; }
    const physics::HingePtr& GetHinge() const { return m_hinge; }
    const physics::BodyPtr& GetHelper() const { return m_helper; }

    // The motor's target speed, per radian the shape lags behind the mouse's turn.
    static constexpr float kTurnGain = 10;
    // The motor's torque: the hinge takes it per unit of the shape's inertia, so that it
    // is the most angular acceleration the motor gives.
    static constexpr float kTurnAcceleration = 100;

private:
    bool RightHeld() const;
    // The helper and the hinge leave the simulation.
    void Release();
    // Where the mouse is, in the world.
    math::Vec2 MouseInWorld() const;
    void Turn();

    physics::GeomPtr m_geom;
    physics::BodyPtr m_helper;
    physics::HingePtr m_hinge;
    SnapshotPtr m_before;
    // The mouse of the last drag event, in the window.
    math::Vec2 m_mouse;
    // How far the helper stands from the mouse: it keeps where the turning left it.
    math::Vec2 m_offset;
    bool m_turning = false;
    // While turning: the mouse's direction from the helper when last seen, the angle it
    // swept, the shape's angle when last seen, and the angle the shape turned, both since
    // the turn began.
    bool m_mouseKnown = false;
    float m_mouseAngle = 0;
    float m_mouseSwept = 0;
    float m_shapeAngle = 0;
    float m_shapeTurned = 0;
};

}  // namespace app
