#include "gui/AbstractToggleButton.h"

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace gui {
namespace {

// Between the mark and the text, and above and below both.
constexpr float kGap = 5;
constexpr float kMarginY = 2;

}  // namespace

AbstractToggleButton::AbstractToggleButton(const util::String& name, const util::String& text)
    : AbstractButton(name), m_text(text), m_font(LookAndFeel::Get().GetFont()) {
    FitContent();
}

AbstractToggleButton::~AbstractToggleButton() = default;

void AbstractToggleButton::SetChecked(bool checked) {
    ApplyChecked(checked, true);
}

void AbstractToggleButton::Clicked() {
    SetChecked(!m_checked);
    AbstractButton::Clicked();
}

void AbstractToggleButton::SetText(const util::String& text) {
    if (text == m_text) {
        return;
    }
    m_text = text;
    FitContent();
}

void AbstractToggleButton::FitContent() {
    const float mark = m_font->GetLineHeight();
    const float text = m_text.empty() ? 0 : kGap + m_font->GetWidth(m_text);
    SetSize(mark + text, mark + 2 * kMarginY);
}

void AbstractToggleButton::DrawComp() {
    Component::DrawComp();
    ColorScope color(GetColor());
    const LookAndFeel& look = LookAndFeel::Get();
    const math::Vec2 inner = GetBorderOffset();
    const float side = m_font->GetLineHeight();
    const float y = inner.y + (GetSize().y - side) / 2;
    const math::Colour frame = !IsEnabled()    ? look.GetDimTextColor() * 0.6f
                               : IsMouseOver() ? look.GetHoverColor()
                                               : look.GetDimTextColor();
    const math::Colour fill = IsPressed() ? look.GetPressedColor() : look.GetBackgroundColor();
    const math::Colour ink = IsEnabled() ? look.GetForegroundColor() : look.GetDimTextColor();
    DrawMark(inner.x, y, side, frame, fill, ink);
    if (!m_text.empty()) {
        ColorScope text(ink);
        m_font->Draw(m_text, inner.x + side + kGap, y);
    }
}

void AbstractToggleButton::ApplyChecked(bool checked, bool notify) {
    if (checked == m_checked) {
        return;
    }
    m_checked = checked;
    StateChanged();
    if (notify) {
        CheckedChanged();
        GetOnChange().CallAll();
    }
}

}  // namespace gui
