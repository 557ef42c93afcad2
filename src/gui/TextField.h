#pragma once

#include "gui/TextBox.h"

namespace gui {

class TextField;
using TextFieldPtr = util::SharedPtr<TextField>;

// One line of editable text. It scrolls sideways so that the cursor stays in view, and
// draws only the characters in view, however long the line.
class TextField : public TextBox {
public:
    explicit TextField(const util::String& name = "TextField");
    ~TextField() override;

    // The first character in view.
    size_t GetFirstVisible() const { return m_firstVisible; }

    void DrawComp() override;

protected:
    size_t CursorAt(const math::Vec2& inner) const override;

private:
    // Moves the view the least that shows the cursor.
    void ScrollToCursor();

    size_t m_firstVisible = 0;
    // The text of one frame, kept so that drawing does not allocate.
    util::String m_piece;
};

}  // namespace gui
