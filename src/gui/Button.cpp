#include "gui/Button.h"

#include <algorithm>

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace gui {
namespace {

// Between the icon and the text.
constexpr float kIconGap = 4;

}  // namespace

Button::Button(const util::String& text)
    : AbstractButton("Button"), m_text(text), m_font(LookAndFeel::Get().GetFont()) {
    SetUsesLookAndFeel(true);
    FitContent();
}

Button::Button(const rendering::TextureHandle& icon, float iconSize, const util::String& text)
    : AbstractButton("Button"),
      m_text(text),
      m_icon(icon),
      m_iconSize(iconSize),
      m_font(LookAndFeel::Get().GetFont()) {
    SetUsesLookAndFeel(true);
    FitContent();
}

Button::~Button() = default;

void Button::SetText(const util::String& text) {
    if (text == m_text) {
        return;
    }
    m_text = text;
    FitContent();
}

void Button::SetIcon(const rendering::TextureHandle& icon, float iconSize) {
    m_icon = icon;
    m_iconSize = icon ? iconSize : 0;
    FitContent();
}

void Button::SetFixedSize(float width, float height) {
    m_fixedSize = math::Vec2(width, height);
    FitContent();
}

float Button::ContentWidth() const {
    float width = m_text.empty() ? 0 : m_font->GetWidth(m_text);
    if (m_icon) {
        width += m_iconSize + (m_text.empty() ? 0 : kIconGap);
    }
    return width;
}

void Button::FitContent() {
    if (m_fixedSize.x > 0 && m_fixedSize.y > 0) {
        SetSize(m_fixedSize);
        return;
    }
    const float height =
        std::max(m_text.empty() ? 0 : m_font->GetLineHeight(), m_icon ? m_iconSize : 0.0f);
    SetSize(ContentWidth() + 2 * kMarginX, height + 2 * kMarginY);
}

BorderPtr Button::GetLookBorder() const {
    const LookAndFeel& look = LookAndFeel::Get();
    if (!IsEnabled()) {
        return look.GetButtonBorder();
    }
    if (IsPressed()) {
        return look.GetButtonPressedBorder();
    }
    if (IsMouseOver()) {
        return look.GetButtonHoverBorder();
    }
    return look.GetButtonBorder();
}

void Button::StateChanged() {
    LookChanged();
}

void Button::DrawComp() {
    Component::DrawComp();
    ColorScope color(GetColor());
    const LookAndFeel& look = LookAndFeel::Get();
    ColorScope text(IsEnabled() ? look.GetForegroundColor() : look.GetDimTextColor());
    const math::Vec2 inner = GetBorderOffset();
    const math::Vec2 size = GetSize();
    // Centred, so that a button made wider than its content keeps it in the middle.
    float x = inner.x + (size.x - ContentWidth()) / 2;
    if (m_icon && m_icon->Get()) {
        m_icon->Get()->Bind();
        DrawTexturedRect(x, inner.y + (size.y - m_iconSize) / 2, m_iconSize, m_iconSize);
    }
    if (m_icon) {
        x += m_iconSize + kIconGap;
    }
    if (!m_text.empty()) {
        m_font->Draw(m_text, x, inner.y + (size.y - m_font->GetLineHeight()) / 2);
    }
}

}  // namespace gui
