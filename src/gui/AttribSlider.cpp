#include "gui/AttribSlider.h"

namespace gui {

AttribSlider::AttribSlider(const script::TAttribPtr<float>& attrib, double min, double max,
                           bool logarithmic, const util::String& caption)
    : MultiAttribSlider(caption.empty() && attrib ? attrib->GetName() : caption,
                        {FloatAttribWeakPtr(attrib)}, min, max, logarithmic) {}

AttribSlider::~AttribSlider() = default;

script::TAttrib<float>* AttribSlider::GetAttrib() const {
    return GetAttribs().empty() ? nullptr : GetAttribs().front().Get();
}

}  // namespace gui
