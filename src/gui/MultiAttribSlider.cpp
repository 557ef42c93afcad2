#include "gui/MultiAttribSlider.h"

namespace gui {

MultiAttribSlider::MultiAttribSlider(const util::String& caption,
                                     std::vector<FloatAttribWeakPtr> attribs, double min,
                                     double max, bool logarithmic)
    : LabeledSlider(caption, min, max, logarithmic), m_binding(std::move(attribs)) {
    Refresh();
}

MultiAttribSlider::~MultiAttribSlider() = default;

void MultiAttribSlider::SetAttribs(std::vector<FloatAttribWeakPtr> attribs) {
    m_binding.SetAttribs(std::move(attribs));
    Refresh();
}

void MultiAttribSlider::Update(float dt) {
    LabeledSlider::Update(dt);
    Refresh();
}

void MultiAttribSlider::Refresh() {
    float value{};
    if (m_binding.ReadFirst(value)) {
        ShowValue(value);
    }
}

util::String MultiAttribSlider::GetValueText() const {
    return HasLiveAttrib() ? FormatValue() : util::String("-");
}

void MultiAttribSlider::ValueChanged() {
    m_binding.WriteAll(static_cast<float>(GetValue()));
}

}  // namespace gui
