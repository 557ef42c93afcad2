#pragma once

#include "gui/Component.h"

namespace gui {

class TextField;
using TextFieldPtr = util::SharedPtr<TextField>;

// One line of editable text.
class TextField : public Component {
public:
    TextField();
    ~TextField() override;

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text);
    size_t GetCursor() const { return m_cursor; }
    void SetCursor(size_t cursor);

private:
    util::String m_text;
    size_t m_cursor = 0;
};

}  // namespace gui
