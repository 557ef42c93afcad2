#pragma once

#include <vector>

#include "gui/Font.h"
#include "gui/TextFormat.h"

namespace gui {

class FontFormater;
using FontFormaterPtr = util::SharedPtr<FontFormater>;

// A font at a size: measures and draws text. The size is the height of a character cell
// in GUI units; a line of text takes three quarters of it, from the top of the accents to
// the bottom of the descenders. Drawing uses the renderer's colour, with the GUI's shadow
// and crisp settings.
class FontFormater : public util::Pointee {
public:
    FontFormater(FontHandle font, float size);

    const FontHandle& GetFont() const { return m_font; }
    void SetFont(FontHandle font) { m_font = std::move(font); }
    float GetSize() const { return m_size; }
    void SetSize(float size) { m_size = size; }
    float GetLineHeight() const { return m_size * kLineHeight; }
    // Whether this text casts the GUI's shadow, when that is on.
    void SetShadow(bool shadow) { m_shadow = shadow; }

    float GetCharWidth(unsigned char c) const;
    // The advance of a piece of text; line feeds count nothing.
    float GetWidth(const util::String& text, size_t begin = 0,
                   size_t end = util::String::npos) const;
    // The character boundary nearest to x, counted from the start of the text.
    size_t HitTest(const util::String& text, float x) const;

    // One line with its top-left corner at (x, y); line feeds are skipped.
    void Draw(const util::String& text, float x, float y) const;
    // The characters from begin to end of the text, as one line.
    void DrawRange(const util::String& text, size_t begin, size_t end, float x, float y) const;
    void Draw(const TextFormat& format, float x, float y) const;

    static constexpr float kLineHeight = 0.75f;

private:
    // The cell size actually drawn: crisp fonts keep to sizes that map the texture's
    // pixels onto whole screen pixels.
    float DrawnSize() const;
    // Fills the glyph buffer with a quad for each inked character; gives its vertices.
    int BuildQuads(const util::String& text, size_t begin, size_t end, float x, float y, float size,
                   bool crisp) const;

    struct GlyphVertex {
        float s, t, x, y;
    };
    static inline std::vector<GlyphVertex> s_quads;

    FontHandle m_font;
    float m_size;
    bool m_shadow = true;
};

}  // namespace gui
