#include "gui/MultiAttribSlider.h"

#include <exception>

#include "logging/Log.h"

namespace gui {

MultiAttribSlider::MultiAttribSlider(const util::String& caption,
                                     std::vector<FloatAttribWeakPtr> attribs, double min,
                                     double max, bool logarithmic)
    : LabeledSlider(caption, min, max, logarithmic), m_attribs(std::move(attribs)) {
    Refresh();
}

MultiAttribSlider::~MultiAttribSlider() = default;

void MultiAttribSlider::SetAttribs(std::vector<FloatAttribWeakPtr> attribs) {
    m_attribs = std::move(attribs);
    Refresh();
}

bool MultiAttribSlider::HasLiveAttrib() const {
    for (const FloatAttribWeakPtr& attrib : m_attribs) {
        if (!attrib.Expired()) {
            return true;
        }
    }
    return false;
}

void MultiAttribSlider::Update(float dt) {
    LabeledSlider::Update(dt);
    Refresh();
}

void MultiAttribSlider::Refresh() {
    for (const FloatAttribWeakPtr& attrib : m_attribs) {
        const util::LockPtr<script::TAttrib<float>> live(attrib);
        if (live) {
            ShowValue(live->Get());
            return;
        }
    }
}

util::String MultiAttribSlider::GetValueText() const {
    return HasLiveAttrib() ? FormatValue() : util::String("-");
}

void MultiAttribSlider::ValueChanged() {
    const float value = static_cast<float>(GetValue());
    // A copy: an attribute's callbacks may rebind this slider.
    const std::vector<FloatAttribWeakPtr> attribs = m_attribs;
    for (const FloatAttribWeakPtr& attrib : attribs) {
        const util::LockPtr<script::TAttrib<float>> live(attrib);
        if (!live) {
            continue;
        }
        // One attribute that refuses the value must not keep it from the others.
        try {
            live->SetNative(value);
        } catch (const std::exception& e) {
            Log(logging::Warning, e.what());
        }
    }
}

}  // namespace gui
