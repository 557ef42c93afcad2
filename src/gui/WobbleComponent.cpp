#include "gui/WobbleComponent.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

#include "input/KeyCodes.h"

namespace gui {
namespace {

constexpr float kStiffness = 300;
constexpr float kDamping = 20;
constexpr float kStepLength = 0.05f;
// How far an offset of one GUI unit shears the drawing, and the most it may.
constexpr float kShearPerUnit = 0.004f;
constexpr float kMaxShear = 0.35f;

}  // namespace

WobbleComponent::WobbleComponent(const util::String& name) : Component(name) {}

int WobbleComponent::StepCount(float dt) {
    if (!(dt > 0)) {
        return 1;
    }
    return std::max(1, static_cast<int>(std::lround(dt / kStepLength)));
}

void WobbleComponent::Update(float dt) {
    Component::Update(dt);
    const math::Vec2 target = GetPosition();
    if (!m_wobble || !m_placed || !(dt > 0)) {
        // A component starts where it is put, and without the wobble it stays there.
        if (!m_wobble || !m_placed) {
            m_apparent = target;
            m_velocity = math::Vec2(0, 0);
            m_placed = true;
        }
    } else {
        const int steps = StepCount(dt);
        const float h = dt / static_cast<float>(steps);
        for (int i = 0; i < steps; ++i) {
            for (int axis = 0; axis < 2; ++axis) {
                m_velocity[axis] += h * (kStiffness * (target[axis] - m_apparent[axis]) -
                                         kDamping * m_velocity[axis]);
                m_apparent[axis] += h * m_velocity[axis];
            }
        }
    }
    const math::Vec2 offset = target - m_apparent;
    if (m_deform) {
        // The window leans away from where it is heading, as a sheet pulled by one corner.
        const float shearX = std::clamp(offset.x * kShearPerUnit, -kMaxShear, kMaxShear);
        const float shearY = std::clamp(offset.y * kShearPerUnit, -kMaxShear, kMaxShear);
        m_deformation = math::Mat2(1, -shearX, -shearY, 1);
    } else {
        m_deformation = math::Mat2::Identity();
    }
}

math::Mat3 WobbleComponent::GetTransform() const {
    // Hits and local positions follow the true position: the wobble is only drawn.
    return Component::GetTransform();
}

void WobbleComponent::DrawComp() {
    const math::Vec2 shift = m_placed ? m_apparent - GetPosition() : math::Vec2(0, 0);
    const math::Vec2 centre = GetOuterSize() * 0.5f;
    const math::Mat2& m = m_deformation;
    // Column-major, as OpenGL wants it.
    const float matrix[16] = {m.a, m.c, 0, 0, m.b, m.d, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    glPushMatrix();
    glTranslatef(shift.x + centre.x, shift.y + centre.y, 0);
    glMultMatrixf(matrix);
    glTranslatef(-centre.x, -centre.y, 0);
    Component::DrawComp();
    glPopMatrix();
}

Draggable::Draggable(const util::String& name) : Component(name) {}

void Draggable::OnDragBegin(input::DragEvent& event) {
    if (!event.consumed && event.key == input::MouseKey(input::kMouseLeft) && IsMouseOver()) {
        m_dragging = true;
        event.consumed = true;
    }
    Component::OnDragBegin(event);
}

void Draggable::OnDrag(input::DragEvent& event) {
    if (m_dragging) {
        SetPosition(GetPosition() + event.offset);
        event.consumed = true;
    }
    Component::OnDrag(event);
}

void Draggable::OnDragEnd(input::DragEvent& event) {
    m_dragging = false;
    Component::OnDragEnd(event);
}

}  // namespace gui
