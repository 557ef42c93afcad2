#pragma once

#include "gui/Border.h"
#include "gui/FontFormater.h"
#include "util/Singleton.h"

namespace gui {

// The style of the whole interface, one shared object: colours, the fonts of text and of
// fixed-width text, and the border of each kind of control. Components that use the look
// and feel fetch their border here again when the look changes.
class LookAndFeel : public util::Pointee, public util::Singleton<LookAndFeel> {
public:
    LookAndFeel();
    ~LookAndFeel() override;

    virtual math::Colour GetBackgroundColor() const { return math::Colour(0.1f, 0.1f, 0.1f, 1); }
    virtual math::Colour GetForegroundColor() const { return math::Colour(1, 1, 1, 1); }

    // Text of labels, buttons and windows, in the GUI's font.
    virtual FontFormaterPtr GetFont() const;
    // Fixed-width text: the console and the profiler.
    virtual FontFormaterPtr GetFixedFont() const;
    // Window titles.
    virtual FontFormaterPtr GetTitleFont() const;
    // Small print: tooltips.
    virtual FontFormaterPtr GetSmallFont() const;
    virtual BorderPtr GetPanelBorder() const;
    virtual BorderPtr GetWindowBorder() const;
    // A window whose contents are read, over a busy picture: nothing shows through.
    virtual BorderPtr GetOpaqueWindowBorder() const;
    virtual BorderPtr GetButtonBorder() const;
    virtual BorderPtr GetButtonHoverBorder() const;
    virtual BorderPtr GetButtonPressedBorder() const;
    virtual BorderPtr GetTextFieldBorder() const;
    virtual BorderPtr GetTextFieldFocusBorder() const;
    virtual BorderPtr GetTooltipBorder() const;

    // Accents shared by the controls.
    math::Colour GetHoverColor() const { return math::Colour(0.35f, 0.55f, 0.85f, 1); }
    math::Colour GetPressedColor() const { return math::Colour(0.2f, 0.35f, 0.6f, 1); }
    math::Colour GetSelectionColor() const { return math::Colour(0.3f, 0.45f, 0.8f, 0.8f); }
    math::Colour GetDimTextColor() const { return math::Colour(0.7f, 0.7f, 0.7f, 1); }

    // The GUI's font was changed: text made from now on uses the new one.
    void SetFontName(const util::String& name);

    static constexpr float kTextSize = 18;
    static constexpr float kTitleSize = 22;
    static constexpr float kSmallSize = 16;
    static constexpr float kFixedSize = 18;

private:
    FontHandle m_font;
    FontHandle m_fixedFont;
    util::String m_fontName;
    FontFormaterPtr m_text;
    FontFormaterPtr m_title;
    FontFormaterPtr m_small;
    FontFormaterPtr m_fixed;
};

}  // namespace gui
