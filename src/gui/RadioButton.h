#pragma once

#include "gui/AbstractRadioButton.h"
#include "gui/FontFormater.h"

namespace gui {

class RadioButton;
using RadioButtonPtr = util::SharedPtr<RadioButton>;

// A round mark, filled while checked, followed by a text.
class RadioButton : public AbstractRadioButton {
public:
    explicit RadioButton(const util::String& text = "");
    ~RadioButton() override;

    void DrawComp() override;

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text);

private:
    void FitContent();

    util::String m_text;
    FontFormaterPtr m_font;
};

}  // namespace gui
