#include "FontAtlas.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace fontgen {
namespace {

// One character's coverage bitmap, placed relative to its pen origin on the baseline.
struct Glyph {
    int width = 0;
    int rows = 0;
    int left = 0;  // columns from the pen origin to the bitmap's left edge
    int top = 0;   // rows from the baseline up to the bitmap's top edge
    int advance = 0;
    std::vector<std::uint8_t> alpha;

    bool HasInk() const { return width > 0 && rows > 0; }
};

struct LibraryDeleter {
    void operator()(FT_Library library) const { FT_Done_FreeType(library); }
};
struct FaceDeleter {
    void operator()(FT_Face face) const { FT_Done_Face(face); }
};
using LibraryPtr = std::unique_ptr<FT_LibraryRec_, LibraryDeleter>;
using FacePtr = std::unique_ptr<FT_FaceRec_, FaceDeleter>;

std::string Hex(int code) {
    static const char digits[] = "0123456789ABCDEF";
    return std::string("U+00") + digits[code / 16] + digits[code % 16];
}

bool IsControl(int code) {
    return code < 32 || (code >= 127 && code < 160);
}

FacePtr OpenFace(FT_Library library, const std::string& path, int pixelSize) {
    FT_Face face = nullptr;
    if (FT_New_Face(library, path.c_str(), 0, &face) != 0) {
        throw std::runtime_error("cannot read the font " + path);
    }
    FacePtr owned(face);
    // Latin-1 codes are the first 256 Unicode code points, so the Unicode map serves.
    if (FT_Select_Charmap(face, FT_ENCODING_UNICODE) != 0 ||
        FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(pixelSize)) != 0) {
        throw std::runtime_error("the font " + path + " has no Unicode map or no such size");
    }
    return owned;
}

// Light hinting snaps heights (baseline, x-height, cap height) to whole pixels, which keeps
// horizontal strokes sharp, but leaves the glyphs' shapes and widths as designed.
Glyph RenderGlyph(FT_Face face, int code) {
    Glyph glyph;
    if (IsControl(code)) {
        return glyph;
    }
    FT_UInt index = FT_Get_Char_Index(face, static_cast<FT_ULong>(code));
    if (index == 0) {
        throw std::runtime_error("the font has no glyph for " + Hex(code));
    }
    if (FT_Load_Glyph(face, index, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT) != 0) {
        throw std::runtime_error("cannot render " + Hex(code));
    }
    const FT_GlyphSlot slot = face->glyph;
    const FT_Bitmap& bitmap = slot->bitmap;
    if (bitmap.rows > 0 && (bitmap.pixel_mode != FT_PIXEL_MODE_GRAY || bitmap.pitch <= 0)) {
        throw std::runtime_error("unexpected bitmap layout for " + Hex(code));
    }
    glyph.width = static_cast<int>(bitmap.width);
    glyph.rows = static_cast<int>(bitmap.rows);
    glyph.left = slot->bitmap_left;
    glyph.top = slot->bitmap_top;
    glyph.advance = static_cast<int>((slot->advance.x + 32) >> 6);  // 26.6 to whole pixels
    for (int y = 0; y < glyph.rows; ++y) {
        const std::uint8_t* row = bitmap.buffer + y * bitmap.pitch;
        glyph.alpha.insert(glyph.alpha.end(), row, row + glyph.width);
    }
    return glyph;
}

// One origin for all cells: far enough right for the glyph reaching furthest left (such as
// 'j'), and the baseline placed so the tallest accent and the deepest descender are
// centred in the room the padding leaves.
void PlaceOrigin(const std::array<Glyph, 256>& glyphs, const AtlasOptions& options,
                 FontAtlas& atlas) {
    int overhangLeft = 0;
    int above = 0;
    int below = 0;
    for (const Glyph& glyph : glyphs) {
        if (glyph.HasInk()) {
            overhangLeft = std::max(overhangLeft, -glyph.left);
            above = std::max(above, glyph.top);
            below = std::max(below, glyph.rows - glyph.top);
        }
    }
    const int room = options.cell - 2 * options.padding;
    if (above + below > room) {
        throw std::runtime_error("glyphs need " + std::to_string(above + below) +
                                 " rows but a cell leaves " + std::to_string(room) +
                                 ": choose a smaller size or a larger cell");
    }
    atlas.originX = options.padding + overhangLeft;
    atlas.baseline = options.padding + above + (room - above - below) / 2;
}

void CheckFits(const Glyph& glyph, int code, const FontAtlas& atlas, int padding) {
    const int right = atlas.originX + glyph.left + glyph.width;
    if (glyph.advance > atlas.cell || right > atlas.cell - padding) {
        throw std::runtime_error(Hex(code) + " is too wide for a cell of " +
                                 std::to_string(atlas.cell) + " pixels");
    }
}

void Blit(const Glyph& glyph, int code, FontAtlas& atlas) {
    const int cellX = (code % 16) * atlas.cell + atlas.originX + glyph.left;
    const int cellY = (code / 16) * atlas.cell + atlas.baseline - glyph.top;
    for (int y = 0; y < glyph.rows; ++y) {
        const std::uint8_t* from = glyph.alpha.data() + y * glyph.width;
        std::copy(from, from + glyph.width, atlas.alpha.begin() + (cellY + y) * atlas.side + cellX);
    }
}

void WriteFile(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        throw std::runtime_error("cannot write " + path);
    }
}

}  // namespace

FontAtlas RenderAtlas(const std::string& fontPath, const AtlasOptions& options) {
    if (options.cell < 4 || options.cell > 4096 || options.pixelSize < 0 || options.padding < 0) {
        throw std::runtime_error(
            "the cell must be 4 to 4096 pixels, size and padding not negative");
    }
    const int pixelSize = options.pixelSize > 0 ? options.pixelSize : options.cell * 72 / 100;
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) {
        throw std::runtime_error("cannot start FreeType");
    }
    LibraryPtr ownedLibrary(library);
    FacePtr face = OpenFace(library, fontPath, pixelSize);

    std::array<Glyph, 256> glyphs;
    for (int code = 0; code < 256; ++code) {
        glyphs[code] = RenderGlyph(face.get(), code);
    }

    FontAtlas atlas;
    atlas.cell = options.cell;
    atlas.side = 16 * options.cell;
    atlas.alpha.assign(static_cast<std::size_t>(atlas.side) * atlas.side, 0);
    PlaceOrigin(glyphs, options, atlas);
    for (int code = 0; code < 256; ++code) {
        CheckFits(glyphs[code], code, atlas, options.padding);
        Blit(glyphs[code], code, atlas);
        atlas.widths[code] = glyphs[code].advance;
    }
    return atlas;
}

std::vector<std::uint8_t> EncodeWidths(const FontAtlas& atlas) {
    const bool bytes = *std::max_element(atlas.widths.begin(), atlas.widths.end()) <= 255;
    std::vector<std::uint8_t> out;
    for (int width : atlas.widths) {
        out.push_back(static_cast<std::uint8_t>(width & 0xff));
        if (!bytes) {
            out.push_back(static_cast<std::uint8_t>(width >> 8));
        }
    }
    return out;
}

void WriteAtlas(const FontAtlas& atlas, const std::string& stem) {
    WriteFile(stem + ".raw", atlas.alpha);
    WriteFile(stem + ".dat", EncodeWidths(atlas));
}

}  // namespace fontgen
