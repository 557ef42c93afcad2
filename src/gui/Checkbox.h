#pragma once

#include "gui/AbstractToggleButton.h"

namespace gui {

class Checkbox;
using CheckboxPtr = util::SharedPtr<Checkbox>;

// A box, ticked while checked, followed by a text. The whole of it takes the clicks.
class Checkbox : public AbstractToggleButton {
public:
    explicit Checkbox(const util::String& text = "", bool checked = false);
    ~Checkbox() override;

protected:
    void DrawMark(float x, float y, float side, const math::Colour& frame, const math::Colour& fill,
                  const math::Colour& ink) override;
};

}  // namespace gui
