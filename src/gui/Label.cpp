#include "gui/Label.h"

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace gui {

Label::Label(const util::String& text, FontFormaterPtr font)
    : Component("Label"),
      m_text(text),
      m_font(font ? std::move(font) : LookAndFeel::Get().GetFont()),
      m_textColor(LookAndFeel::Get().GetForegroundColor()) {
    FitContent();
}

Label::~Label() = default;

void Label::SetText(const util::String& text) {
    if (text == m_text) {
        return;
    }
    m_text = text;
    FitContent();
}

void Label::SetFont(FontFormaterPtr font) {
    m_font = font ? std::move(font) : LookAndFeel::Get().GetFont();
    FitContent();
}

void Label::FitContent() {
    SetSize(m_font->GetWidth(m_text), m_font->GetLineHeight());
}

void Label::DrawComp() {
    Component::DrawComp();
    ColorScope color(GetColor());
    ColorScope text(m_textColor);
    const math::Vec2 inner = GetBorderOffset();
    m_font->Draw(m_text, inner.x, inner.y);
}

}  // namespace gui
