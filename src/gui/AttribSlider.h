#pragma once

#include "gui/MultiAttribSlider.h"

namespace gui {

class AttribSlider;
using AttribSliderPtr = util::SharedPtr<AttribSlider>;

// A slider for one number attribute: the shared case of MultiAttribSlider. The caption
// is the attribute's name unless one is given.
class AttribSlider : public MultiAttribSlider {
public:
    // Throws as Slider does.
    AttribSlider(const script::TAttribPtr<float>& attrib, double min, double max,
                 bool logarithmic = false, const util::String& caption = "");
    ~AttribSlider() override;

    // Null once the attribute has died.
    script::TAttrib<float>* GetAttrib() const;
};

}  // namespace gui
