#include "gui/LookAndFeel.h"

namespace gui {
namespace {

math::Colour Panel(float alpha) {
    return math::Colour(0.1f, 0.1f, 0.1f, alpha);
}

const math::Colour kLine(0.45f, 0.5f, 0.6f, 1);

}  // namespace

LookAndFeel::LookAndFeel() : m_fixedFont(Font::Load("fixedsys")) {
    m_fixed = FontFormaterPtr(new FontFormater(m_fixedFont, kFixedSize));
    // Fixed-width text stands on the dark panels of the console and the profiler, where a
    // shadow would not show and would only double the pixels drawn.
    m_fixed->SetShadow(false);
    SetFontName("arial_black");
}

LookAndFeel::~LookAndFeel() = default;

void LookAndFeel::SetFontName(const util::String& name) {
    if (name == m_fontName && m_font) {
        return;
    }
    m_fontName = name;
    m_font = Font::Load(name);
    // The formaters are shared by every control: changing their font in place reaches
    // them all without any of them knowing.
    if (!m_text) {
        m_text = FontFormaterPtr(new FontFormater(m_font, kTextSize));
        m_title = FontFormaterPtr(new FontFormater(m_font, kTitleSize));
        m_small = FontFormaterPtr(new FontFormater(m_font, kSmallSize));
    } else {
        m_text->SetFont(m_font);
        m_title->SetFont(m_font);
        m_small->SetFont(m_font);
    }
}

FontFormaterPtr LookAndFeel::GetFont() const {
    return m_text;
}

FontFormaterPtr LookAndFeel::GetFixedFont() const {
    return m_fixed;
}

FontFormaterPtr LookAndFeel::GetTitleFont() const {
    return m_title;
}

FontFormaterPtr LookAndFeel::GetSmallFont() const {
    return m_small;
}

BorderPtr LookAndFeel::GetPanelBorder() const {
    return BorderPtr(new SimpleBorder(4, Panel(0.85f), kLine));
}

BorderPtr LookAndFeel::GetWindowBorder() const {
    return BorderPtr(new SimpleBorder(6, Panel(0.9f), kLine));
}

BorderPtr LookAndFeel::GetOpaqueWindowBorder() const {
    return BorderPtr(new SimpleBorder(6, Panel(1), kLine));
}

BorderPtr LookAndFeel::GetButtonBorder() const {
    return BorderPtr(new SimpleBorder(3, math::Colour(0.22f, 0.24f, 0.28f, 1), kLine));
}

BorderPtr LookAndFeel::GetButtonHoverBorder() const {
    return BorderPtr(new SimpleBorder(3, GetHoverColor(), math::Colour(0.8f, 0.9f, 1, 1)));
}

BorderPtr LookAndFeel::GetButtonPressedBorder() const {
    return BorderPtr(new SimpleBorder(3, GetPressedColor(), math::Colour(0.8f, 0.9f, 1, 1)));
}

BorderPtr LookAndFeel::GetTextFieldBorder() const {
    return BorderPtr(new SimpleBorder(3, math::Colour(0.03f, 0.03f, 0.05f, 1), kLine));
}

BorderPtr LookAndFeel::GetTextFieldFocusBorder() const {
    return BorderPtr(
        new SimpleBorder(3, math::Colour(0.03f, 0.03f, 0.05f, 1), math::Colour(0.5f, 0.7f, 1, 1)));
}

BorderPtr LookAndFeel::GetTooltipBorder() const {
    return BorderPtr(new SimpleBorder(4, math::Colour(0.15f, 0.15f, 0.12f, 0.95f),
                                      math::Colour(0.7f, 0.7f, 0.5f, 1)));
}

}  // namespace gui
