#include "gui/Icon.h"

#include <GL/glew.h>

#include "gui/Primitives.h"

namespace gui {

Icon::Icon(const rendering::TextureHandle& texture, float width, float height)
    : Component("Icon"), m_texture(texture) {
    SetSize(width, height);
}

Icon::Icon(const util::String& path, float width, float height)
    : Icon(rendering::TextureManager::Get().Load(path, GL_RGBA), width, height) {}

Icon::~Icon() = default;

void Icon::DrawComp() {
    Component::DrawComp();
    if (!m_texture || !m_texture->Get()) {
        return;
    }
    ColorScope color(GetColor());
    ColorScope tint(m_tint);
    m_texture->Get()->Bind();
    const math::Vec2 inner = GetBorderOffset();
    DrawTexturedRect(inner.x, inner.y, GetSize().x, GetSize().y);
}

}  // namespace gui
