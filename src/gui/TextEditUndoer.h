#pragma once

#include "app/Action.h"
#include "util/String.h"

namespace gui {

class TextBox;

// One edit of a text box as an undo step ("UndoTextEdit"). The edit has already happened
// when the step is pushed, so Do does nothing. The box is held weakly: once it is gone,
// the step does nothing either.
class TextEditUndoer : public app::Action {
public:
    TextEditUndoer(TextBox& box, util::String oldText, size_t oldCursor, util::String newText,
                   size_t newCursor);
    ~TextEditUndoer() override;

    void Do() override {}
    void Undo() override;
    void Redo() override;

    const util::String& GetOldText() const { return m_oldText; }
    const util::String& GetNewText() const { return m_newText; }

private:
    util::WeakPtr<TextBox> m_box;
    util::String m_oldText;
    size_t m_oldCursor;
    util::String m_newText;
    size_t m_newCursor;
};

}  // namespace gui
