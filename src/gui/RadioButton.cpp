#include "gui/RadioButton.h"

#include <GL/glew.h>

#include <cmath>
#include <numbers>

#include "gui/Primitives.h"

namespace gui {
namespace {

constexpr int kSegments = 20;

void FillCircle(float cx, float cy, float radius, const math::Colour& color) {
    if (radius <= 0 || color.w <= 0) {
        return;
    }
    ColorScope scope(color);
    glDisable(GL_TEXTURE_2D);
    glBegin(GL_TRIANGLE_FAN);
    glVertex2f(cx, cy);
    for (int i = 0; i <= kSegments; ++i) {
        const float angle = 2 * std::numbers::pi_v<float> * static_cast<float>(i) / kSegments;
        glVertex2f(cx + radius * std::cos(angle), cy + radius * std::sin(angle));
    }
    glEnd();
}

}  // namespace

RadioButton::RadioButton(const util::String& text) : AbstractRadioButton("RadioButton", text) {}

RadioButton::~RadioButton() = default;

void RadioButton::DrawMark(float x, float y, float side, const math::Colour& frame,
                           const math::Colour& fill, const math::Colour& ink) {
    // A ring: the frame's colour, and the inside drawn over it.
    const float radius = side / 2;
    const float cx = x + radius;
    const float cy = y + radius;
    FillCircle(cx, cy, radius, frame);
    FillCircle(cx, cy, radius - (IsMouseOver() ? 2.0f : 1.0f), fill);
    if (IsChecked()) {
        FillCircle(cx, cy, radius * 0.5f, ink);
    }
}

}  // namespace gui
