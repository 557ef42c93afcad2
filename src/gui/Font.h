#pragma once

#include <array>
#include <string>

#include "rendering/TextureManager.h"
#include "util/Mentor.h"

namespace gui {

class Font;
using FontPtr = util::SharedPtr<Font>;
using FontHandle = util::SharedPtr<util::Mentor<Font>>;

// A bitmap font: "fonts/NAME.raw", a square picture of 16 by 16 cells holding the Latin-1
// characters row by row from the top, and "fonts/NAME.dat", the advance of each character
// in pixels of that picture (one byte each, or two little-endian bytes each).
class Font : public util::Pointee {
public:
    // Loads both files; a broken widths file is logged and the widths read so far stay.
    explicit Font(const util::String& name);

    // Throws BadCoderException for a file of the wrong size and FileReadException for one
    // that cannot be read; the widths from before stay.
    void LoadWidths(const std::string& path);

    // The advance of a character, in cells: 1 is the width of a whole cell.
    float GetWidth(unsigned char character) const { return m_widths[character]; }
    const rendering::TextureHandle& GetTexture() const { return m_texture; }
    const util::String& GetName() const { return m_name; }

    // The mentor of a font by name, for the GUI's fonts.
    static FontHandle Load(const util::String& name);

private:
    // Pixels across the picture; widths are kept relative to it.
    size_t GetTextureWidth() const;

    util::String m_name;
    rendering::TextureHandle m_texture;
    // Until the widths file says otherwise every character fills its cell, which keeps
    // text legible, if wide, when that file is missing.
    std::array<float, 256> m_widths;
};

}  // namespace gui
