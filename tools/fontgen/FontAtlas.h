#pragma once

// The bitmap fonts of the data tree, as the GUI reads them. A font named N is two files:
//
// N.raw: a square texture of 16 x 16 cells, each `cell` pixels on a side, so the side is
//        16 * cell. Headerless, one byte per pixel: the alpha (the colour is white), row by
//        row, the first row of the file being the top row of the picture. Character code c
//        (ISO-8859-1, so Unicode U+00c) sits in column c % 16 and row c / 16, counted from
//        the top left.
// N.dat: each character's advance in pixels of the texture, in code order: 256 unsigned
//        bytes, or 512 bytes of unsigned 16-bit little-endian numbers when a cell is wider
//        than a byte can count.
//
// Every glyph is drawn with its pen origin at the same point of its cell (origin x, baseline
// y), so that cell quads laid one after another, each advanced by its width, set a line of
// text. No ink touches the `padding` pixels along a cell's edges, which keeps linear
// filtering from pulling a neighbour's ink in. Control codes (0-31, 127-159) are empty and
// have no width.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace fontgen {

struct AtlasOptions {
    int cell = 32;  // pixels on a side of one cell
    // The glyphs' em size in pixels; 0 takes 72% of the cell, which leaves DejaVu's accented
    // capitals and descenders just room enough within the padding.
    int pixelSize = 0;
    int padding = 2;  // pixels along each cell edge that stay empty
};

struct FontAtlas {
    int cell = 0;
    int side = 0;      // 16 * cell
    int originX = 0;   // the pen origin's column in every cell
    int baseline = 0;  // the baseline's row in every cell, counted from the cell's top
    std::vector<std::uint8_t> alpha;  // side * side bytes, top row first
    std::array<int, 256> widths{};
};

// Renders the Latin-1 characters of a TrueType or OpenType font, anti-aliased. Throws
// std::runtime_error when the font cannot be read, lacks a character, or a glyph does not
// fit its cell.
FontAtlas RenderAtlas(const std::string& fontPath, const AtlasOptions& options);

// The bytes of the .dat file: one byte per width while every width fits one.
std::vector<std::uint8_t> EncodeWidths(const FontAtlas& atlas);

// Writes STEM.raw and STEM.dat; throws std::runtime_error when a file cannot be written.
void WriteAtlas(const FontAtlas& atlas, const std::string& stem);

}  // namespace fontgen
