#pragma once

#include "math/Vector2.h"
#include "math/Vector4.h"

namespace gui {

// Immediate-mode drawing in the GUI's space (y downward), under the colour already set
// multiplied by the given one. Texturing is switched off for the untextured shapes and
// left off afterwards.
void FillRect(float x, float y, float width, float height, const math::Colour& color);
// A frame whose line lies inside the rectangle.
void FrameRect(float x, float y, float width, float height, float lineWidth,
               const math::Colour& color);
// A textured quad; the picture's top row lands at y. The texture coordinates run from
// texMin at the lower left to texMax at the upper right: a part of a texture, such as the
// part a copy of the frame filled.
void DrawTexturedRect(float x, float y, float width, float height,
                      math::Vec2 texMin = math::Vec2(0, 0), math::Vec2 texMax = math::Vec2(1, 1));

// Multiplies a colour into the renderer's colour for as long as the guard lives.
class ColorScope {
public:
    explicit ColorScope(const math::Colour& color);
    ~ColorScope();
    ColorScope(const ColorScope&) = delete;
    ColorScope& operator=(const ColorScope&) = delete;

private:
    math::Colour m_saved;
};

}  // namespace gui
