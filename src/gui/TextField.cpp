#include "gui/TextField.h"

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace gui {

TextField::TextField(const util::String& name) : TextBox(false, name) {}

TextField::~TextField() = default;

void TextField::ScrollToCursor() {
    const util::String& text = GetText();
    const size_t cursor = GetCursor();
    m_firstVisible = std::min(m_firstVisible, text.size());
    if (cursor < m_firstVisible) {
        m_firstVisible = cursor;
        return;
    }
    const FontFormater& font = *GetFont();
    // Room for the cursor itself behind the last character.
    const float room = GetSize().x - 2 * kMargin - 2;
    float width = font.GetWidth(text, m_firstVisible, cursor);
    while (width > room && m_firstVisible < cursor) {
        width -= font.GetCharWidth(static_cast<unsigned char>(text[m_firstVisible]));
        ++m_firstVisible;
    }
}

size_t TextField::CursorAt(const math::Vec2& inner) const {
    const util::String& text = GetText();
    const size_t first = std::min(m_firstVisible, text.size());
    const FontFormater& font = *GetFont();
    const float x = inner.x - kMargin;
    float pen = 0;
    for (size_t i = first; i < text.size(); ++i) {
        const float advance = font.GetCharWidth(static_cast<unsigned char>(text[i]));
        if (x < pen + advance / 2) {
            return i;
        }
        pen += advance;
    }
    return text.size();
}

void TextField::DrawComp() {
    ScrollToCursor();
    ColorScope color(GetColor());
    DrawBorder();
    const util::String& text = GetText();
    const FontFormater& font = *GetFont();
    const math::Vec2 offset = GetBorderOffset();
    const float room = GetSize().x - 2 * kMargin;
    const float lineHeight = font.GetLineHeight();
    const float x = offset.x + kMargin;
    const float y = offset.y + (GetSize().y - lineHeight) / 2;

    // The characters in view, and where each boundary of interest lies.
    size_t last = m_firstVisible;
    float width = 0;
    float selectionLeft = -1;
    float selectionRight = -1;
    float cursorX = -1;
    const size_t selectionStart = GetSelectionStart();
    const size_t selectionEnd = GetSelectionEnd();
    const size_t cursor = GetCursor();
    for (;; ++last) {
        if (last == selectionStart || (selectionStart < m_firstVisible && last == m_firstVisible)) {
            selectionLeft = width;
        }
        if (last == selectionEnd) {
            selectionRight = width;
        }
        if (last == cursor) {
            cursorX = width;
        }
        if (last >= text.size()) {
            break;
        }
        const float advance = font.GetCharWidth(static_cast<unsigned char>(text[last]));
        if (width + advance > room) {
            break;
        }
        width += advance;
    }
    if (HasSelection() && selectionLeft >= 0) {
        const float right = selectionRight >= 0 ? selectionRight : width;
        FillRect(x + selectionLeft, y, right - selectionLeft, lineHeight,
                 LookAndFeel::Get().GetSelectionColor());
    }
    m_piece.assign(text, m_firstVisible, last - m_firstVisible);
    font.Draw(m_piece, x, y);
    if (CursorLit() && cursorX >= 0) {
        FillRect(x + cursorX, y, 1.5f, lineHeight, LookAndFeel::Get().GetForegroundColor());
    }
    DrawChildren();
}

}  // namespace gui
