// The bitmap fonts of the data tree and what a broken widths file costs: its message in
// the log, and the font still usable with the widths it had.

#include "gui/Font.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "logging/LogCapture.h"
#include "util/Exception.h"
#include "util/FileSystem.h"

namespace {

class FontTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vorra_font_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_root = pattern;
        std::filesystem::create_directories(m_root + "/fonts");
        for (const char* file : {"arial_black.raw", "arial_black.dat", "fixedsys.raw"}) {
            std::filesystem::copy_file(std::string(VORRA_DATA_DIR) + "fonts/" + file,
                                       m_root + "/fonts/" + file);
        }
        util::FileSystem::Get().SetWorkDirectory(m_root);
    }
    void TearDown() override { std::filesystem::remove_all(m_root); }

    void WriteWidths(const std::string& font, const std::string& bytes) {
        std::ofstream(m_root + "/fonts/" + font + ".dat", std::ios::binary) << bytes;
    }
    bool Logged(const std::string& text) const {
        for (const logging::CapturedLine& line : m_log) {
            if (line.text.find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    }

    std::string m_root;
    std::vector<logging::CapturedLine> m_log;
    logging::LogCapture m_capture{m_log};
};

TEST_F(FontTest, ShippedFontMeasuresItsCharactersInCells) {
    const gui::FontHandle handle = gui::Font::Load("arial_black");
    ASSERT_TRUE(handle->Get());
    const gui::Font& font = *handle->Get();
    EXPECT_FALSE(rendering::TextureManager::IsDefault(font.GetTexture()));
    EXPECT_GT(font.GetWidth('W'), font.GetWidth('i'));
    EXPECT_GT(font.GetWidth(' '), 0.0f);
    EXPECT_LT(font.GetWidth('W'), 1.0f);
    EXPECT_EQ(font.GetWidth('\n'), 0.0f);
    // Widths are pixels of the 512-pixel picture, kept as sixteenths of it.
    std::ifstream file(m_root + "/fonts/arial_black.dat", std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    EXPECT_FLOAT_EQ(font.GetWidth('A'), static_cast<unsigned char>(bytes['A']) * 16.0f / 512);
    EXPECT_FALSE(Logged("Failed"));
}

TEST_F(FontTest, BrokenWidthsAreLoggedAndTheFontStaysUsable) {
    // Missing: every character keeps a whole cell.
    const gui::FontHandle missing = gui::Font::Load("fixedsys");
    ASSERT_TRUE(missing->Get());
    EXPECT_TRUE(Logged("Failed to load font widths: Could not open"));
    EXPECT_EQ(missing->Get()->GetWidth('x'), 1.0f);

    WriteWidths("fixedsys", std::string(300, '\x10'));
    gui::Font font("fixedsys");
    EXPECT_TRUE(
        Logged("Failed to load font widths: Bad widths file, must be either 256 or 512 "
               "bytes of raw little endian data"));
    EXPECT_EQ(font.GetWidth('x'), 1.0f);
    EXPECT_THROW(font.LoadWidths(m_root + "/fonts/fixedsys.dat"), BadCoderException);

    // The two-byte form, little endian: 0x0120 pixels is 18 cells of the 512-pixel picture.
    std::string wide;
    for (int c = 0; c < 256; ++c) {
        wide += std::string("\x20\x01", 2);
    }
    WriteWidths("fixedsys", wide);
    font.LoadWidths(m_root + "/fonts/fixedsys.dat");
    EXPECT_FLOAT_EQ(font.GetWidth('x'), 0x120 * 16.0f / 512);
}

}  // namespace
