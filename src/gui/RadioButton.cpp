#include "gui/RadioButton.h"

#include <GL/glew.h>

#include <cmath>
#include <numbers>

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace gui {
namespace {

// Between the mark and the text, and above and below both.
constexpr float kGap = 5;
constexpr float kMarginY = 2;
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

RadioButton::RadioButton(const util::String& text)
    : AbstractRadioButton("RadioButton"), m_text(text), m_font(LookAndFeel::Get().GetFont()) {
    FitContent();
}

RadioButton::~RadioButton() = default;

void RadioButton::SetText(const util::String& text) {
    if (text == m_text) {
        return;
    }
    m_text = text;
    FitContent();
}

void RadioButton::FitContent() {
    const float mark = m_font->GetLineHeight();
    const float text = m_text.empty() ? 0 : kGap + m_font->GetWidth(m_text);
    SetSize(mark + text, mark + 2 * kMarginY);
}

void RadioButton::DrawComp() {
    Component::DrawComp();
    ColorScope color(GetColor());
    const LookAndFeel& look = LookAndFeel::Get();
    const math::Vec2 inner = GetBorderOffset();
    const float side = m_font->GetLineHeight();
    const float radius = side / 2;
    const float cx = inner.x + radius;
    const float cy = inner.y + GetSize().y / 2;

    // A ring: the frame's colour, and the inside drawn over it.
    const math::Colour frame = !IsEnabled()    ? look.GetDimTextColor() * 0.6f
                               : IsMouseOver() ? look.GetHoverColor()
                                               : look.GetDimTextColor();
    FillCircle(cx, cy, radius, frame);
    FillCircle(cx, cy, radius - (IsMouseOver() ? 2.0f : 1.0f),
               IsPressed() ? look.GetPressedColor() : look.GetBackgroundColor());
    const math::Colour ink = IsEnabled() ? look.GetForegroundColor() : look.GetDimTextColor();
    if (IsChecked()) {
        FillCircle(cx, cy, radius * 0.5f, ink);
    }
    if (!m_text.empty()) {
        ColorScope text(ink);
        m_font->Draw(m_text, inner.x + side + kGap, cy - side / 2);
    }
}

}  // namespace gui
