#include "gui/TextField.h"

#include <algorithm>

namespace gui {

TextField::TextField() : Component("TextField") {}

TextField::~TextField() = default;

void TextField::SetText(const util::String& text) {
    m_text = text;
    m_cursor = std::min(m_cursor, m_text.size());
}

void TextField::SetCursor(size_t cursor) {
    m_cursor = std::min(cursor, m_text.size());
}

}  // namespace gui
