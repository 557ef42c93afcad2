#pragma once

#include "gui/Component.h"
#include "gui/FontFormater.h"

namespace gui {

class Label;
using LabelPtr = util::SharedPtr<Label>;

// One line of text, sized to it. The font is the look and feel's unless another is given.
class Label : public Component {
public:
    explicit Label(const util::String& text = "", FontFormaterPtr font = nullptr);
    ~Label() override;

    void DrawComp() override;

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text);
    const FontFormaterPtr& GetFont() const { return m_font; }
    void SetFont(FontFormaterPtr font);
    // The look's foreground colour until set.
    const math::Colour& GetTextColor() const { return m_textColor; }
    void SetTextColor(const math::Colour& color) { m_textColor = color; }

private:
    void FitContent();

    util::String m_text;
    FontFormaterPtr m_font;
    math::Colour m_textColor;
};

}  // namespace gui
