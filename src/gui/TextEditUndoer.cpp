#include "gui/TextEditUndoer.h"

#include "gui/TextBox.h"

namespace gui {

TextEditUndoer::TextEditUndoer(TextBox& box, util::String oldText, size_t oldCursor,
                               util::String newText, size_t newCursor)
    : app::Action("UndoTextEdit"),
      m_box(&box),
      m_oldText(std::move(oldText)),
      m_oldCursor(oldCursor),
      m_newText(std::move(newText)),
      m_newCursor(newCursor) {}

TextEditUndoer::~TextEditUndoer() = default;

void TextEditUndoer::Undo() {
    if (util::LockPtr<TextBox> box = m_box.Lock()) {
        box->RestoreEdit(m_oldText, m_oldCursor);
    }
}

void TextEditUndoer::Redo() {
    if (util::LockPtr<TextBox> box = m_box.Lock()) {
        box->RestoreEdit(m_newText, m_newCursor);
    }
}

}  // namespace gui
