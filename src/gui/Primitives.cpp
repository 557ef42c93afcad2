#include "gui/Primitives.h"

#include <GL/glew.h>

#include <algorithm>

#include "rendering/Renderer.h"

namespace gui {

ColorScope::ColorScope(const math::Colour& color) : m_saved(rendering::Renderer::Get().GetColor()) {
    rendering::Renderer::Get().MultiplyColor(color);
}

ColorScope::~ColorScope() {
    rendering::Renderer::Get().SetColor(m_saved);
}

void FillRect(float x, float y, float width, float height, const math::Colour& color) {
    if (color.w <= 0 || width <= 0 || height <= 0) {
        return;
    }
    ColorScope scope(color);
    glDisable(GL_TEXTURE_2D);
    glBegin(GL_QUADS);
    glVertex2f(x, y);
    glVertex2f(x + width, y);
    glVertex2f(x + width, y + height);
    glVertex2f(x, y + height);
    glEnd();
}

void FrameRect(float x, float y, float width, float height, float lineWidth,
               const math::Colour& color) {
    if (color.w <= 0 || lineWidth <= 0) {
        return;
    }
    const float line = std::min({lineWidth, width / 2, height / 2});
    // Four bars, so that corners are not drawn twice and see-through lines stay even.
    FillRect(x, y, width, line, color);
    FillRect(x, y + height - line, width, line, color);
    FillRect(x, y + line, line, height - 2 * line, color);
    FillRect(x + width - line, y + line, line, height - 2 * line, color);
}

void DrawTexturedRect(float x, float y, float width, float height, math::Vec2 texMin,
                      math::Vec2 texMax) {
    glEnable(GL_TEXTURE_2D);
    glBegin(GL_QUADS);
    glTexCoord2f(texMin.x, texMax.y);
    glVertex2f(x, y);
    glTexCoord2f(texMax.x, texMax.y);
    glVertex2f(x + width, y);
    glTexCoord2f(texMax.x, texMin.y);
    glVertex2f(x + width, y + height);
    glTexCoord2f(texMin.x, texMin.y);
    glVertex2f(x, y + height);
    glEnd();
}

}  // namespace gui
