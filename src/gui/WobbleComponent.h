#pragma once

#include "gui/Component.h"
#include "math/Matrix2.h"

namespace gui {

// A component drawn where a damped spring pulls it after its true position, so that a
// moved window swings into place and leans while it goes.
class WobbleComponent : public Component {
public:
    explicit WobbleComponent(const util::String& name = "WobbleComponent");

    void Update(float dt) override;
    void DrawComp() override;
    math::Mat3 GetTransform() const override;

    void SetWobble(bool on) { m_wobble = on; }
    bool GetWobble() const { return m_wobble; }
    void SetDeform(bool on) { m_deform = on; }
    const math::Vec2& GetApparentPosition() const { return m_apparent; }
    const math::Vec2& GetVelocity() const { return m_velocity; }
    const math::Mat2& GetDeformation() const { return m_deformation; }

    // The spring's sub-steps for a frame of dt seconds: at least one, about 50 ms each.
    static int StepCount(float dt);

private:
    math::Vec2 m_apparent;
    math::Vec2 m_velocity;
    math::Mat2 m_deformation = math::Mat2::Identity();
    bool m_wobble = true;
    bool m_deform = true;
    bool m_placed = false;
};

// A component that follows the mouse while dragged with the left button.
class Draggable : public Component {
public:
    explicit Draggable(const util::String& name = "Draggable");

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    bool IsDragging() const { return m_dragging; }

private:
    bool m_dragging = false;
};

}  // namespace gui
