#pragma once

#include "gui/AbstractRadioButton.h"

namespace gui {

class RadioButton;
using RadioButtonPtr = util::SharedPtr<RadioButton>;

// A round mark, filled while checked, followed by a text.
class RadioButton : public AbstractRadioButton {
public:
    explicit RadioButton(const util::String& text = "");
    ~RadioButton() override;

protected:
    void DrawMark(float x, float y, float side, const math::Colour& frame, const math::Colour& fill,
                  const math::Colour& ink) override;
};

}  // namespace gui
