#pragma once

#include <optional>

#include "gui/Component.h"
#include "gui/FontFormater.h"

namespace gui {

class Text;
using TextPtr = util::SharedPtr<Text>;

// Text of several lines wrapped to a width, each line aligned within it. The width is
// the component's; the height follows the text.
class Text : public Component {
public:
    explicit Text(const util::String& text = "", float width = 300, Align align = Align::Left,
                  FontFormaterPtr font = nullptr);
    ~Text() override;

    void DrawComp() override;
    // The width wraps the text; the height is the text's own, whatever is asked.
    void SetSize(float x, float y) override;
    using Component::SetSize;

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text);
    Align GetAlign() const { return m_align; }
    void SetAlign(Align align);
    const FontFormaterPtr& GetFont() const { return m_font; }
    void SetFont(FontFormaterPtr font);
    // The look's foreground colour until set.
    const math::Colour& GetTextColor() const { return m_textColor; }
    void SetTextColor(const math::Colour& color) { m_textColor = color; }
    // The text broken into lines for the present width.
    const TextFormat& GetFormat() const { return *m_format; }

private:
    void Rewrap();

    util::String m_text;
    Align m_align;
    FontFormaterPtr m_font;
    math::Colour m_textColor;
    std::optional<TextFormat> m_format;
};

}  // namespace gui
