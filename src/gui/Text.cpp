#include "gui/Text.h"

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace gui {

Text::Text(const util::String& text, float width, Align align, FontFormaterPtr font)
    : Component("Text"),
      m_text(text),
      m_align(align),
      m_font(font ? std::move(font) : LookAndFeel::Get().GetFont()),
      m_textColor(LookAndFeel::Get().GetForegroundColor()) {
    SetSize(width, 0);
}

Text::~Text() = default;

void Text::SetSize(float x, float /*y*/) {
    m_format.emplace(*m_font, m_text, x, m_align);
    Component::SetSize(x, m_format->GetHeight());
}

void Text::Rewrap() {
    SetSize(GetSize().x, 0);
}

void Text::SetText(const util::String& text) {
    if (text == m_text) {
        return;
    }
    m_text = text;
    Rewrap();
}

void Text::SetAlign(Align align) {
    m_align = align;
    Rewrap();
}

void Text::SetFont(FontFormaterPtr font) {
    m_font = font ? std::move(font) : LookAndFeel::Get().GetFont();
    Rewrap();
}

void Text::DrawComp() {
    Component::DrawComp();
    ColorScope color(GetColor());
    ColorScope text(m_textColor);
    const math::Vec2 inner = GetBorderOffset();
    m_font->Draw(*m_format, inner.x, inner.y);
}

}  // namespace gui
