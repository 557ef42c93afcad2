#pragma once

#include "gui/Component.h"
#include "rendering/TextureManager.h"

namespace gui {

class Icon;
using IconPtr = util::SharedPtr<Icon>;

// A picture drawn over the whole inner area, under a tint.
class Icon : public Component {
public:
    Icon(const rendering::TextureHandle& texture, float width, float height);
    // Loads the picture from a path of the data tree.
    Icon(const util::String& path, float width, float height);
    ~Icon() override;

    void DrawComp() override;

    const rendering::TextureHandle& GetTexture() const { return m_texture; }
    void SetTexture(const rendering::TextureHandle& texture) { m_texture = texture; }
    // Multiplied into the picture's colours; white leaves them as they are.
    const math::Colour& GetTint() const { return m_tint; }
    void SetTint(const math::Colour& tint) { m_tint = tint; }

private:
    rendering::TextureHandle m_texture;
    math::Colour m_tint{1, 1, 1, 1};
};

}  // namespace gui
