#pragma once

#include "gui/AbstractButton.h"
#include "gui/FontFormater.h"
#include "rendering/TextureManager.h"

namespace gui {

class Button;
using ButtonPtr = util::SharedPtr<Button>;

// A push button with a text, an icon, or both (icon first), in the look and feel's
// borders for rest, hover and press. It takes the size of its content plus a margin,
// unless it is given a size of its own.
class Button : public AbstractButton {
public:
    explicit Button(const util::String& text = "");
    // iconSize is the side of the square the icon is drawn in.
    Button(const rendering::TextureHandle& icon, float iconSize, const util::String& text = "");
    ~Button() override;

    void DrawComp() override;

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text);
    const rendering::TextureHandle& GetIcon() const { return m_icon; }
    void SetIcon(const rendering::TextureHandle& icon, float iconSize);
    // The button keeps this size instead of following its content; (0, 0) lets it follow
    // again.
    void SetFixedSize(float width, float height);

    // Room between the border and the content.
    static constexpr float kMarginX = 6;
    static constexpr float kMarginY = 3;

protected:
    BorderPtr GetLookBorder() const override;
    void StateChanged() override;

private:
    void FitContent();
    float ContentWidth() const;

    util::String m_text;
    rendering::TextureHandle m_icon;
    float m_iconSize = 0;
    math::Vec2 m_fixedSize;
    FontFormaterPtr m_font;
};

}  // namespace gui
