// The generator's output, drawn from Debian's DejaVu fonts, read back as the program reads it.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "FontAtlas.h"
#include "FontChecks.h"

namespace {

const std::string kDejaVu = VORRA_DEJAVU_DIR;

fontgen::FontAtlas Render(const std::string& file, const fontgen::AtlasOptions& options) {
    return fontgen::RenderAtlas(kDejaVu + "/" + file, options);
}

TEST(FontgenTool, ProportionalFontFollowsTheFormat) {
    const fontgen::AtlasOptions options;  // 32-pixel cells, 2 pixels of padding
    const fontgen::FontAtlas atlas = Render("DejaVuSans-Bold.ttf", options);
    const std::vector<std::uint8_t> widths = fontgen::EncodeWidths(atlas);
    EXPECT_EQ(widths.size(), 256u);
    fontgen_test::BitmapFont font;
    ASSERT_TRUE(fontgen_test::Decode(atlas.alpha, widths, font));
    EXPECT_EQ(font.side, 16 * options.cell);
    EXPECT_TRUE(fontgen_test::FollowsTheLayout(font, options.padding));
    EXPECT_GT(font.widths['W'], font.widths['i']);
}

TEST(FontgenTool, FixedFontGivesEveryCharacterOneWidth) {
    fontgen::AtlasOptions options;
    options.cell = 48;  // another cell size scales the whole texture
    const fontgen::FontAtlas atlas = Render("DejaVuSansMono.ttf", options);
    fontgen_test::BitmapFont font;
    ASSERT_TRUE(fontgen_test::Decode(atlas.alpha, fontgen::EncodeWidths(atlas), font));
    EXPECT_EQ(font.side, 768);
    EXPECT_TRUE(fontgen_test::FollowsTheLayout(font, options.padding));
    EXPECT_TRUE(fontgen_test::AllPrintableWidthsEqual(font));
}

TEST(FontgenTool, GlyphsTooLargeForTheirCellsAreRefused) {
    fontgen::AtlasOptions options;
    options.pixelSize = 23;  // the committed fonts' size: the largest that fits
    EXPECT_NO_THROW(Render("DejaVuSans-Bold.ttf", options));
    options.pixelSize = 24;  // accented capitals and '|' would reach into the padding
    EXPECT_THROW(Render("DejaVuSans-Bold.ttf", options), std::runtime_error);
}

TEST(FontgenTool, WidthsBeyondAByteTakeTwoBytesEach) {
    fontgen::FontAtlas atlas;
    atlas.widths['A'] = 300;
    const std::vector<std::uint8_t> bytes = fontgen::EncodeWidths(atlas);
    ASSERT_EQ(bytes.size(), 512u);
    EXPECT_EQ(bytes[2 * 'A'], 300 & 0xff);
    EXPECT_EQ(bytes[2 * 'A' + 1], 300 >> 8);
}

}  // namespace
