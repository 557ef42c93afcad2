#include "gui/FontFormater.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

#include "gui/GUI.h"
#include "rendering/Renderer.h"

namespace gui {
namespace {

// Where a character's pen origin and a line's top lie within a cell, as parts of the cell:
// the fonts of the data tree put the origin at column 4 of 32 and leave the top 5 rows to
// the tallest accents' headroom.
constexpr float kPenOrigin = 4.0f / 32.0f;
constexpr float kLineTop = 5.0f / 32.0f;
constexpr float kCellsPerSide = 16.0f;

}  // namespace

FontFormater::FontFormater(FontHandle font, float size) : m_font(std::move(font)), m_size(size) {}

float FontFormater::GetCharWidth(unsigned char c) const {
    const FontPtr& font = m_font ? m_font->Get() : FontPtr();
    return (font ? font->GetWidth(c) : 0.5f) * m_size;
}

float FontFormater::GetWidth(const util::String& text, size_t begin, size_t end) const {
    end = std::min(end, text.size());
    float width = 0;
    for (size_t i = begin; i < end; ++i) {
        if (text[i] != '\n') {
            width += GetCharWidth(static_cast<unsigned char>(text[i]));
        }
    }
    return width;
}

size_t FontFormater::HitTest(const util::String& text, float x) const {
    float pen = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const float advance = GetCharWidth(static_cast<unsigned char>(text[i]));
        if (x < pen + advance / 2) {
            return i;
        }
        pen += advance;
    }
    return text.size();
}

float FontFormater::DrawnSize() const {
    if (!GUI::IsAlive() || !GUI::Get().GetCrispFonts()) {
        return m_size;
    }
    const GUI& gui = GUI::Get();
    const float scale = gui.GetScale();
    const FontPtr& font = m_font ? m_font->Get() : FontPtr();
    const rendering::TexturePtr texture =
        font && font->GetTexture() ? font->GetTexture()->Get() : rendering::TexturePtr();
    const float cellPixels =
        texture ? static_cast<float>(texture->GetWidth()) / kCellsPerSide : 32.0f;
    const float step = std::max(1.0f, cellPixels * gui.GetCrispFontFactor());
    return std::max(1.0f, std::round(m_size * scale / step)) * step / scale;
}

void FontFormater::Draw(const util::String& text, float x, float y) const {
    const float size = DrawnSize();
    if (GUI::IsAlive() && GUI::Get().GetCrispFonts()) {
        // Whole pixels for the line's origin, wherever the components put it.
        const float scale = GUI::Get().GetScale();
        float matrix[16];
        glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
        x = std::round((x + matrix[12]) * scale) / scale - matrix[12];
        y = std::round((y + matrix[13]) * scale) / scale - matrix[13];
    }
    if (GUI::IsAlive() && GUI::Get().GetFontShadow()) {
        const math::Vec2 offset = GUI::Get().GetFontShadowOffset() * size;
        rendering::Renderer& renderer = rendering::Renderer::Get();
        const math::Colour color = renderer.GetColor();
        renderer.SetColor(math::Colour(0, 0, 0, color.w * 0.8f));
        DrawRun(text, 0, text.size(), x + offset.x, y + offset.y, size);
        renderer.SetColor(color);
    }
    DrawRun(text, 0, text.size(), x, y, size);
}

void FontFormater::Draw(const TextFormat& format, float x, float y) const {
    const util::String& text = format.GetText();
    float lineY = y;
    for (const TextFormat::Line& line : format.GetLines()) {
        Draw(text.substr(line.begin, line.end - line.begin), x + line.x, lineY);
        lineY += format.GetLineHeight();
    }
}

void FontFormater::DrawRun(const util::String& text, size_t begin, size_t end, float x, float y,
                           float size) const {
    const FontPtr& font = m_font ? m_font->Get() : FontPtr();
    if (!font || !font->GetTexture() || !font->GetTexture()->Get()) {
        return;
    }
    font->GetTexture()->Get()->Bind();
    glEnable(GL_TEXTURE_2D);
    const float scale = size / m_size;
    const bool crisp = GUI::IsAlive() && GUI::Get().GetCrispFonts();
    const float pixel = GUI::IsAlive() ? 1.0f / GUI::Get().GetScale() : 1.0f;
    const float top = y - kLineTop * size;
    float pen = x;
    glBegin(GL_QUADS);
    for (size_t i = begin; i < end; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const float advance = GetCharWidth(c) * scale;
        if (c > ' ' && advance > 0) {
            const float left = crisp ? std::round(pen / pixel) * pixel : pen;
            const float x0 = left - kPenOrigin * size;
            const float s0 = static_cast<float>(c % 16) / kCellsPerSide;
            const float s1 = s0 + 1 / kCellsPerSide;
            const float t0 = 1 - static_cast<float>(c / 16) / kCellsPerSide;
            const float t1 = t0 - 1 / kCellsPerSide;
            glTexCoord2f(s0, t0);
            glVertex2f(x0, top);
            glTexCoord2f(s1, t0);
            glVertex2f(x0 + size, top);
            glTexCoord2f(s1, t1);
            glVertex2f(x0 + size, top + size);
            glTexCoord2f(s0, t1);
            glVertex2f(x0, top + size);
        }
        pen += advance;
    }
    glEnd();
}

}  // namespace gui
