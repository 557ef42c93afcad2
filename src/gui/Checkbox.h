#pragma once

#include "gui/AbstractToggleButton.h"
#include "gui/FontFormater.h"

namespace gui {

class Checkbox;
using CheckboxPtr = util::SharedPtr<Checkbox>;

// A box, ticked while checked, followed by a text. The whole of it takes the clicks.
class Checkbox : public AbstractToggleButton {
public:
    explicit Checkbox(const util::String& text = "", bool checked = false);
    ~Checkbox() override;

    void DrawComp() override;

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text);

private:
    void FitContent();

    util::String m_text;
    FontFormaterPtr m_font;
};

}  // namespace gui
