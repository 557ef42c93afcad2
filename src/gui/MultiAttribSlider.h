#pragma once

#include <vector>

#include "gui/AttribBinding.h"
#include "gui/LabeledSlider.h"

namespace gui {

class MultiAttribSlider;
using MultiAttribSliderPtr = util::SharedPtr<MultiAttribSlider>;
using FloatAttribWeakPtr = util::WeakPtr<script::TAttrib<float>>;

// A slider for a number that several objects have, such as the density of every selected
// shape. It shows the first attribute's value, read again each frame so that a change
// made elsewhere shows, and a move writes the value to all of them. The attributes are
// watched, not held: one that died with its object is skipped, and with none left the
// slider does nothing.
class MultiAttribSlider : public LabeledSlider {
public:
    // Throws as Slider does.
    MultiAttribSlider(const util::String& caption, std::vector<FloatAttribWeakPtr> attribs,
                      double min, double max, bool logarithmic = false);
    ~MultiAttribSlider() override;

    void Update(float dt) override;
    util::String GetValueText() const override;

    const std::vector<FloatAttribWeakPtr>& GetAttribs() const { return m_binding.GetAttribs(); }
    void SetAttribs(std::vector<FloatAttribWeakPtr> attribs);
    // Whether any of the attributes still lives.
    bool HasLiveAttrib() const { return m_binding.HasLive(); }
    // Shows the first live attribute's value.
    void Refresh();

protected:
    void ValueChanged() override;

private:
    AttribBinding<float> m_binding;
};

}  // namespace gui
