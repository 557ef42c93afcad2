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
// The rows of a cell that hold ink, from the tallest accent to the lowest descender, and
// how far a glyph may reach past its advance.
constexpr float kInkTop = 2.0f / 32.0f;
constexpr float kInkBottom = 30.0f / 32.0f;
constexpr float kInkOverhang = 3.0f / 32.0f;

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
    DrawRange(text, 0, text.size(), x, y);
}

void FontFormater::Draw(const TextFormat& format, float x, float y) const {
    float lineY = y;
    for (const TextFormat::Line& line : format.GetLines()) {
        DrawRange(format.GetText(), line.begin, line.end, x + line.x, lineY);
        lineY += format.GetLineHeight();
    }
}

void FontFormater::DrawRange(const util::String& text, size_t begin, size_t end, float x,
                             float y) const {
    const FontPtr& font = m_font ? m_font->Get() : FontPtr();
    if (!font || !font->GetTexture() || !font->GetTexture()->Get()) {
        return;
    }
    const float size = DrawnSize();
    const bool crisp = GUI::IsAlive() && GUI::Get().GetCrispFonts();
    if (crisp) {
        // Whole pixels for the line's origin, wherever the components put it.
        const float scale = GUI::Get().GetScale();
        float matrix[16];
        glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
        x = std::round((x + matrix[12]) * scale) / scale - matrix[12];
        y = std::round((y + matrix[13]) * scale) / scale - matrix[13];
    }
    const GLsizei vertices = BuildQuads(text, begin, std::min(end, text.size()), x, y, size, crisp);
    if (vertices == 0) {
        return;
    }
    font->GetTexture()->Get()->Bind();
    glEnable(GL_TEXTURE_2D);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    // Texels without ink write nothing, so they need not be blended.
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    glTexCoordPointer(2, GL_FLOAT, sizeof(GlyphVertex), &s_quads[0].s);
    glVertexPointer(2, GL_FLOAT, sizeof(GlyphVertex), &s_quads[0].x);
    if (m_shadow && GUI::IsAlive() && GUI::Get().GetFontShadow()) {
        // The same quads, moved down and right, in black.
        const math::Vec2 offset = GUI::Get().GetFontShadowOffset() * size;
        rendering::Renderer& renderer = rendering::Renderer::Get();
        const math::Colour color = renderer.GetColor();
        renderer.SetColor(math::Colour(0, 0, 0, color.w * 0.8f));
        glPushMatrix();
        glTranslatef(offset.x, offset.y, 0);
        glDrawArrays(GL_QUADS, 0, vertices);
        glPopMatrix();
        renderer.SetColor(color);
    }
    glDrawArrays(GL_QUADS, 0, vertices);
    glDisable(GL_ALPHA_TEST);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

int FontFormater::BuildQuads(const util::String& text, size_t begin, size_t end, float x, float y,
                             float size, bool crisp) const {
    const float scale = size / m_size;
    const float pixel = GUI::IsAlive() ? 1.0f / GUI::Get().GetScale() : 1.0f;
    const float top = y - kLineTop * size;
    float pen = x;
    // The buffer is kept from call to call: text is drawn every frame, and it only grows
    // to the longest line drawn.
    s_quads.clear();
    const FontPtr& font = m_font->Get();
    for (size_t i = begin; i < end; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const float advance = GetCharWidth(c) * scale;
        if (c > ' ' && advance > 0) {
            const float left = crisp ? std::round(pen / pixel) * pixel : pen;
            const float x0 = left - kPenOrigin * size;
            // Only the part of the cell that can hold ink: software rasterisers pay for
            // every covered pixel, and text covers much of the screen.
            const float right = std::min(1.0f, kPenOrigin + font->GetWidth(c) + kInkOverhang);
            const float s0 = static_cast<float>(c % 16) / kCellsPerSide;
            const float s1 = s0 + right / kCellsPerSide;
            const float cellTop = 1 - static_cast<float>(c / 16) / kCellsPerSide;
            const float t0 = cellTop - kInkTop / kCellsPerSide;
            const float t1 = cellTop - kInkBottom / kCellsPerSide;
            const float y0 = top + kInkTop * size;
            const float y1 = top + kInkBottom * size;
            s_quads.push_back({s0, t0, x0, y0});
            s_quads.push_back({s1, t0, x0 + right * size, y0});
            s_quads.push_back({s1, t1, x0 + right * size, y1});
            s_quads.push_back({s0, t1, x0, y1});
        }
        pen += advance;
    }
    return static_cast<GLsizei>(s_quads.size());
}

}  // namespace gui
