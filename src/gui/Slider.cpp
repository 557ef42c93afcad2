#include "gui/Slider.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "input/KeyCodes.h"

namespace gui {
namespace {

constexpr float kBarHeight = 4;

bool IsLeft(input::SDLKey key) {
    return key == input::MouseKey(input::kMouseLeft);
}

util::String Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

}  // namespace

Slider::Slider(double min, double max, bool logarithmic)
    : Component("Slider"), m_min(min), m_max(max), m_value(min), m_logarithmic(logarithmic) {
    CheckRange(min, max, logarithmic);
    SetSize(kDefaultWidth, kTrackHeight);
}

Slider::~Slider() = default;

void Slider::CheckRange(double min, double max, bool logarithmic) {
    if (!(min < max)) {
        throw std::invalid_argument("Slider range is empty: the minimum (" + Number(min) +
                                    ") must be below the maximum (" + Number(max) + ")");
    }
    if (logarithmic && !(min > 0)) {
        throw std::invalid_argument("A logarithmic slider needs a minimum above 0, not " +
                                    Number(min));
    }
}

void Slider::SetRange(double min, double max) {
    CheckRange(min, max, m_logarithmic);
    m_min = min;
    m_max = max;
    SetValue(m_value);
}

void Slider::SetLogarithmic(bool logarithmic) {
    CheckRange(m_min, m_max, logarithmic);
    m_logarithmic = logarithmic;
}

double Slider::Clamp(double value) const {
    return std::clamp(value, m_min, m_max);
}

void Slider::SetValue(double value) {
    if (std::isnan(value)) {
        return;
    }
    value = Clamp(value);
    if (value == m_value) {
        return;
    }
    m_value = value;
    ValueChanged();
    GetOnChange().CallAll();
}

void Slider::ShowValue(double value) {
    if (!std::isnan(value)) {
        m_value = Clamp(value);
    }
}

double Slider::ToFraction(double value) const {
    value = Clamp(value);
    if (m_logarithmic) {
        return std::log(value / m_min) / std::log(m_max / m_min);
    }
    return (value - m_min) / (m_max - m_min);
}

double Slider::FromFraction(double fraction) const {
    // The ends exactly, whatever the rounding inside.
    if (!(fraction > 0)) {
        return m_min;
    }
    if (fraction >= 1) {
        return m_max;
    }
    if (m_logarithmic) {
        return Clamp(m_min * std::pow(m_max / m_min, fraction));
    }
    return Clamp(m_min + fraction * (m_max - m_min));
}

float Slider::KnobCentre() const {
    const float travel = std::max(0.0f, GetSize().x - kKnobWidth);
    return GetBorderOffset().x + kKnobWidth / 2 + static_cast<float>(ToFraction(m_value)) * travel;
}

double Slider::ValueAt(float localX) const {
    const float travel = GetSize().x - kKnobWidth;
    if (travel <= 0) {
        return m_value;
    }
    return FromFraction((localX - GetBorderOffset().x - kKnobWidth / 2) / travel);
}

void Slider::OnKey(input::KeyEvent& event) {
    Component::OnKey(event);
    if (!IsLeft(event.key)) {
        return;
    }
    if (!event.down) {
        if (m_held) {
            m_held = false;
            if (m_value != m_valueAtPress) {
                m_onRelease.CallAll();
            }
        }
        return;
    }
    // The press stays unconsumed, or the input root would make neither click nor drag.
    if (event.consumed || !IsMouseOver()) {
        return;
    }
    m_held = true;
    m_valueAtPress = m_value;
    const float x = ToLocal(event.position).x;
    const float fromKnob = x - KnobCentre();
    if (std::abs(fromKnob) <= kKnobWidth / 2) {
        m_grab = fromKnob;
    } else {
        m_grab = 0;
        SetValue(ValueAt(x));
    }
}

void Slider::OnClick(input::ClickEvent& event) {
    Component::OnClick(event);
    // The press did the work; the click must not reach the scene behind.
    if (!event.consumed && IsLeft(event.key) && IsMouseOver()) {
        event.consumed = true;
    }
}

void Slider::OnDragBegin(input::DragEvent& event) {
    Component::OnDragBegin(event);
    if (!event.consumed && IsLeft(event.key) && m_held) {
        m_dragging = true;
        event.consumed = true;
    }
}

void Slider::OnDrag(input::DragEvent& event) {
    Component::OnDrag(event);
    if (!m_dragging) {
        return;
    }
    event.consumed = true;
    SetValue(ValueAt(ToLocal(event.position).x - m_grab));
}

void Slider::OnDragEnd(input::DragEvent& event) {
    Component::OnDragEnd(event);
    if (m_dragging) {
        m_dragging = false;
        event.consumed = true;
    }
}

util::String Slider::FormatValue() const {
    int decimals = m_decimals;
    if (decimals < 0) {
        // About three significant digits: of the range for even steps, of the value itself
        // for ratios.
        const double magnitude = m_logarithmic ? std::abs(m_value) : m_max - m_min;
        decimals = magnitude > 0 ? 2 - static_cast<int>(std::floor(std::log10(magnitude))) : 2;
        decimals = std::clamp(decimals, 0, 4);
    }
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, m_value);
    return text;
}

void Slider::DrawComp() {
    Component::DrawComp();
    ColorScope color(GetColor());
    DrawTrack();
}

void Slider::DrawTrack() const {
    const LookAndFeel& look = LookAndFeel::Get();
    const math::Vec2 inner = GetBorderOffset();
    const float top = inner.y + GetTrackTop();
    const float height = GetSize().y - GetTrackTop();
    const float left = inner.x + kKnobWidth / 2;
    const float right = inner.x + GetSize().x - kKnobWidth / 2;
    const float knob = KnobCentre();
    const float barY = top + (height - kBarHeight) / 2;

    FillRect(left, barY, right - left, kBarHeight, look.GetDimTextColor() * 0.5f);
    FillRect(left, barY, knob - left, kBarHeight, look.GetSelectionColor());
    const math::Colour fill = m_held          ? look.GetPressedColor()
                              : IsMouseOver() ? look.GetHoverColor()
                                              : look.GetDimTextColor();
    FillRect(knob - kKnobWidth / 2, top + 1, kKnobWidth, height - 2, fill);
    FrameRect(knob - kKnobWidth / 2, top + 1, kKnobWidth, height - 2, 1, look.GetForegroundColor());
}

}  // namespace gui
