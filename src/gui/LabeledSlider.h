#pragma once

#include "gui/FontFormater.h"
#include "gui/Slider.h"

namespace gui {

class LabeledSlider;
using LabeledSliderPtr = util::SharedPtr<LabeledSlider>;

// A slider under a line that names it on the left and shows its value on the right.
class LabeledSlider : public Slider {
public:
    // Throws as Slider does.
    LabeledSlider(const util::String& caption, double min, double max, bool logarithmic = false);
    ~LabeledSlider() override;

    void DrawComp() override;

    const util::String& GetCaption() const { return m_caption; }
    void SetCaption(const util::String& caption) { m_caption = caption; }
    // What the value's place shows; the formatted value unless overridden.
    virtual util::String GetValueText() const { return FormatValue(); }

    static constexpr float kDefaultWidth = 200;

protected:
    float GetTrackTop() const override;

private:
    util::String m_caption;
    FontFormaterPtr m_font;
};

}  // namespace gui
