#include "gui/LabeledSlider.h"

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace gui {
namespace {

// Between the text line and the track.
constexpr float kGap = 2;

}  // namespace

LabeledSlider::LabeledSlider(const util::String& caption, double min, double max, bool logarithmic)
    : Slider(min, max, logarithmic), m_caption(caption), m_font(LookAndFeel::Get().GetFont()) {
    SetSize(kDefaultWidth, GetTrackTop() + kTrackHeight);
}

LabeledSlider::~LabeledSlider() = default;

float LabeledSlider::GetTrackTop() const {
    return m_font->GetLineHeight() + kGap;
}

void LabeledSlider::DrawComp() {
    Component::DrawComp();
    ColorScope color(GetColor());
    const LookAndFeel& look = LookAndFeel::Get();
    const math::Vec2 inner = GetBorderOffset();
    {
        ColorScope text(look.GetForegroundColor());
        m_font->Draw(m_caption, inner.x, inner.y);
    }
    const util::String value = GetValueText();
    {
        ColorScope text(IsMouseOver() || IsHeld() ? look.GetForegroundColor()
                                                  : look.GetDimTextColor());
        m_font->Draw(value, inner.x + GetSize().x - m_font->GetWidth(value), inner.y);
    }
    DrawTrack();
}

}  // namespace gui
