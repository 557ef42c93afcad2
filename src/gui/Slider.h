#pragma once

#include "gui/Component.h"

namespace gui {

class Slider;
using SliderPtr = util::SharedPtr<Slider>;

// A knob on a horizontal track that picks a number between a minimum and a maximum, in
// equal steps or, logarithmically, in equal ratios. Pressing on the track brings the knob
// there, and the knob follows the mouse while dragged; a press on the knob itself keeps
// the spot where it was taken.
//
// A change of the value, by the user or by SetValue, calls the on-change callbacks
// (GetOnChange). Letting go after a press that changed the value calls the release ones:
// the moment for an undo step, which a whole drag should make only one of.
class Slider : public Component {
public:
    // Throws std::invalid_argument unless min < max, and for a logarithmic slider unless
    // min > 0 as well. The value starts at the minimum.
    Slider(double min, double max, bool logarithmic = false);
    ~Slider() override;

    void OnKey(input::KeyEvent& event) override;
    void OnClick(input::ClickEvent& event) override;
    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    void DrawComp() override;

    double GetValue() const { return m_value; }
    // Clamped to the range; NaN is ignored.
    void SetValue(double value);
    double GetMin() const { return m_min; }
    double GetMax() const { return m_max; }
    // The same checks as the constructor's; the value is clamped into the new range.
    void SetRange(double min, double max);
    bool IsLogarithmic() const { return m_logarithmic; }
    // Throws std::invalid_argument when turned on with a minimum of 0 or less.
    void SetLogarithmic(bool logarithmic);

    // Where along the track a value lies, from 0 at the minimum to 1 at the maximum, and
    // the value at such a place.
    double ToFraction(double value) const;
    double FromFraction(double fraction) const;

    // Pressed and not yet let go.
    bool IsHeld() const { return m_held; }
    bool IsDragging() const { return m_dragging; }
    util::CallbackSet& GetOnRelease() { return m_onRelease; }

    // Digits after the point in FormatValue; below 0 chooses them from the magnitude.
    void SetDecimals(int decimals) { m_decimals = decimals; }
    util::String FormatValue() const;

    static constexpr float kKnobWidth = 10;
    static constexpr float kDefaultWidth = 150;
    static constexpr float kTrackHeight = 16;

protected:
    // Where the track's row begins below the top of the inner area; it ends at the bottom.
    virtual float GetTrackTop() const { return 0; }
    // The value changed by the user or by SetValue, not by ShowValue.
    virtual void ValueChanged() {}
    // Shows a value that comes from elsewhere, without telling anybody.
    void ShowValue(double value);
    // The track and the knob, under the component's colour.
    void DrawTrack() const;

private:
    static void CheckRange(double min, double max, bool logarithmic);
    double Clamp(double value) const;
    // In the component's own space.
    float KnobCentre() const;
    double ValueAt(float localX) const;

    double m_min;
    double m_max;
    double m_value;
    bool m_logarithmic;
    bool m_held = false;
    bool m_dragging = false;
    // From the knob's centre to the mouse, when the knob was taken.
    float m_grab = 0;
    double m_valueAtPress = 0;
    int m_decimals = -1;
    util::CallbackSet m_onRelease;
};

}  // namespace gui
