// The fonts of the data tree, read as the program reads them; no FreeType involved.

#include <gtest/gtest.h>

#include <string>

#include "FontChecks.h"

namespace {

const std::string kFonts = VORRA_FONTS_DIR;
const int kPadding = 2;  // as tools/fontgen/regenerate.sh makes them

TEST(FontgenCommittedFonts, ArialBlackIsAProportionalFont) {
    fontgen_test::BitmapFont font;
    ASSERT_TRUE(fontgen_test::Load(kFonts + "/arial_black", font));
    EXPECT_EQ(font.side, 512);
    EXPECT_TRUE(fontgen_test::FollowsTheLayout(font, kPadding));
    EXPECT_GT(font.widths['W'], font.widths['i']);
}

TEST(FontgenCommittedFonts, FixedsysIsAFixedWidthFont) {
    fontgen_test::BitmapFont font;
    ASSERT_TRUE(fontgen_test::Load(kFonts + "/fixedsys", font));
    EXPECT_EQ(font.side, 512);
    EXPECT_TRUE(fontgen_test::FollowsTheLayout(font, kPadding));
    EXPECT_TRUE(fontgen_test::AllPrintableWidthsEqual(font));
}

}  // namespace
