#pragma once

// Reads a bitmap font's two files as the program does and checks the rules a text renderer
// relies on; shared by the tests of the generator and of the committed fonts.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fontgen_test {

struct BitmapFont {
    int side = 0;
    int cell = 0;
    std::vector<std::uint8_t> alpha;  // top row first
    std::array<int, 256> widths{};
};

inline std::vector<std::uint8_t> ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The program's reading: the side is the square root of the .raw's size, and the widths are
// bytes or 16-bit little-endian numbers by the .dat's size.
inline testing::AssertionResult Decode(const std::vector<std::uint8_t>& raw,
                                       const std::vector<std::uint8_t>& dat, BitmapFont& font) {
    font.side = static_cast<int>(std::lround(std::sqrt(static_cast<double>(raw.size()))));
    if (raw.empty() || static_cast<std::size_t>(font.side) * font.side != raw.size() ||
        font.side % 16 != 0) {
        return testing::AssertionFailure()
               << "the texture's " << raw.size() << " bytes are no square of 16 x 16 cells";
    }
    if (dat.size() != 256 && dat.size() != 512) {
        return testing::AssertionFailure() << "the widths file has " << dat.size() << " bytes";
    }
    font.cell = font.side / 16;
    font.alpha = raw;
    const bool wide = dat.size() == 512;
    for (int code = 0; code < 256; ++code) {
        font.widths[code] = wide ? dat[2 * code] | dat[2 * code + 1] << 8 : dat[code];
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult Load(const std::string& stem, BitmapFont& font) {
    return Decode(ReadBytes(stem + ".raw"), ReadBytes(stem + ".dat"), font);
}

inline std::uint8_t At(const BitmapFont& font, int code, int x, int y) {
    const int column = (code % 16) * font.cell + x;
    const int row = (code / 16) * font.cell + y;
    return font.alpha[static_cast<std::size_t>(row) * font.side + column];
}

inline bool HasInk(const BitmapFont& font, int code) {
    for (int y = 0; y < font.cell; ++y) {
        for (int x = 0; x < font.cell; ++x) {
            if (At(font, code, x, y) != 0) {
                return true;
            }
        }
    }
    return false;
}

// The lowest row of a cell that holds ink, or -1.
inline int LowestInkRow(const BitmapFont& font, int code) {
    for (int y = font.cell - 1; y >= 0; --y) {
        for (int x = 0; x < font.cell; ++x) {
            if (At(font, code, x, y) != 0) {
                return y;
            }
        }
    }
    return -1;
}

inline bool IsControl(int code) {
    return code < 32 || (code >= 127 && code < 160);
}

// The rules every font of the data tree keeps; `padding` is the empty border of a cell.
inline testing::AssertionResult FollowsTheLayout(const BitmapFont& font, int padding) {
    for (int code = 0; code < 256; ++code) {
        const bool ink = HasInk(font, code);
        if (font.widths[code] > font.cell) {
            return testing::AssertionFailure() << "code " << code << " is wider than a cell";
        }
        if (IsControl(code) && (ink || font.widths[code] != 0)) {
            return testing::AssertionFailure() << "control code " << code << " is not empty";
        }
        const bool blank = code == 32 || code == 160;
        if (blank && (ink || font.widths[code] == 0)) {
            return testing::AssertionFailure() << "space " << code << " needs width, no ink";
        }
        // The soft hyphen may be invisible; every other printable character must show.
        if (!IsControl(code) && !blank && code != 173 && (!ink || font.widths[code] == 0)) {
            return testing::AssertionFailure() << "code " << code << " has no glyph";
        }
        // Ink on a cell's border would be a glyph cut off, or bleeding into its neighbour
        // under linear filtering.
        for (int y = 0; y < font.cell; ++y) {
            for (int x = 0; x < font.cell; ++x) {
                const bool border = x < padding || y < padding || x >= font.cell - padding ||
                                    y >= font.cell - padding;
                if (border && At(font, code, x, y) != 0) {
                    return testing::AssertionFailure()
                           << "code " << code << " has ink at (" << x << ", " << y
                           << ") of its cell, within the padding";
                }
            }
        }
    }
    // Letters standing flat on the baseline end on the same row in every cell.
    const std::string flat = "EFHILTZiklmnrxz\xc4\xdf";  // with "Ä" and "ß"
    const int baseline = LowestInkRow(font, 'H');
    for (unsigned char code : flat) {
        if (LowestInkRow(font, code) != baseline) {
            return testing::AssertionFailure() << "'" << code << "' is off the baseline";
        }
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult AllPrintableWidthsEqual(const BitmapFont& font) {
    for (int code = 32; code < 256; ++code) {
        if (!IsControl(code) && font.widths[code] != font.widths['0']) {
            return testing::AssertionFailure()
                   << "code " << code << " has width " << font.widths[code] << ", '0' has "
                   << font.widths['0'];
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace fontgen_test
