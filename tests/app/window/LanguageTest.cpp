// Texts by key: the selected language first, English behind it, "[key]" where neither has
// the key; broken files and stray keys are reported and never stop anything.

#include "app/Language.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include "app/App.h"
#include "logging/LogCapture.h"
#include "util/FileSystem.h"

namespace {

using util::String;

class LanguageTest : public testing::Test {
protected:
    void SetUp() override {
        m_root = std::filesystem::path(testing::TempDir()) /
                 ("vorra-language-" + std::to_string(getpid()));
        std::filesystem::create_directories(m_root / "language");
        util::FileSystem::Get().SetWorkDirectory(m_root.string() + "/");
        Write("English",
              "// The reference.\n"
              "Greeting = \"Hello\";\n"
              "Farewell = \"Goodbye\";\n"
              "Both = Greeting + \" and \" + Farewell;\n");
        Write("Other", "Greeting = \"Hallo\";\nOnlyHere = \"Nur hier\";\n");
        Write("Broken", "Greeting = \"Hallo;\n");
        app::Language::Get().Load("English");
    }
    void TearDown() override {
        // The other suites of the run read the shipped texts.
        util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
        app::Language::Get().Load("English");
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }

    void Write(const String& language, const String& text) const {
        std::ofstream(m_root / "language" / (language + ".cfg"), std::ios::binary) << text;
    }
    static app::Language& Language() { return app::Language::Get(); }

    // The warnings logged while the capture lived.
    static std::vector<String> Warnings(const std::vector<logging::CapturedLine>& lines) {
        std::vector<String> texts;
        for (const logging::CapturedLine& line : lines) {
            if (line.level == logging::Warning) {
                texts.push_back(line.text);
            }
        }
        return texts;
    }
    static bool Has(const std::vector<String>& texts, const String& text) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }

    std::filesystem::path m_root;
};

TEST_F(LanguageTest, AKeyOnlyEnglishHasShowsTheEnglishTextQuietly) {
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        Language().Load("Other");
    }
    EXPECT_TRUE(Has(Warnings(lines), "Missing Other translation for Farewell"));
    lines.clear();
    logging::LogCapture capture(lines);
    EXPECT_EQ(Language().Translate("Greeting"), "Hallo");
    EXPECT_EQ(Language().Translate("Farewell"), "Goodbye");
    EXPECT_EQ(Language().Translate("Both"), "Hello and Goodbye") << "texts may build on texts";
    EXPECT_TRUE(Warnings(lines).empty());
}

TEST_F(LanguageTest, AnUnknownKeyShowsInBracketsAndIsReportedEveryTime) {
    Language().Load("Other");
    std::vector<logging::CapturedLine> lines;
    logging::LogCapture capture(lines);
    EXPECT_EQ(Language().Translate("NoSuchKey"), "[NoSuchKey]");
    EXPECT_EQ(Language().Translate("NoSuchKey"), "[NoSuchKey]");
    const std::vector<String> warnings = Warnings(lines);
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[0], "English and Other translation missing for NoSuchKey");
}

TEST_F(LanguageTest, ABrokenFileLeavesEnglishShowing) {
    Language().Load("Other");
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        Language().Load("Broken");
    }
    EXPECT_TRUE(Has(Warnings(lines), "Failed to load language Broken"));
    EXPECT_EQ(lines.front().text, "Loading language Broken...");
    EXPECT_EQ(lines.front().level, logging::Info);
    EXPECT_TRUE(Language().GetSelectedTable().empty());
    EXPECT_EQ(Language().Translate("Greeting"), "Hello") << "nothing of Other stays";

    // A file that is not there at all is reported too, and changes nothing.
    lines.clear();
    {
        logging::LogCapture capture(lines);
        Language().Load("Missing");
    }
    ASSERT_FALSE(Warnings(lines).empty());
    EXPECT_EQ(Warnings(lines)[0].rfind("Error loading language ", 0), 0u) << Warnings(lines)[0];
    EXPECT_EQ(Language().Translate("Farewell"), "Goodbye");

    // A value that is no text stops the reading there; English shows for the rest.
    Write("Numbers", "Farewell = \"Tsch\xc3\xbcss\";\nGreeting = 3;\n");
    lines.clear();
    {
        logging::LogCapture capture(lines);
        Language().Load("Numbers");
    }
    EXPECT_TRUE(Has(Warnings(lines), "Error loading language Not a string"));
    EXPECT_EQ(Language().Translate("Farewell"), "Tsch\xfcss") << "read before the number";
    EXPECT_EQ(Language().Translate("Greeting"), "Hello");
}

TEST_F(LanguageTest, AKeyOnlyTheOtherLanguageHasIsStillUsed) {
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        Language().Load("Other");
    }
    EXPECT_TRUE(Has(Warnings(lines),
                    "Error in language file Other had \"OnlyHere\" which was "
                    "not found in the english original"));
    EXPECT_EQ(Language().Translate("OnlyHere"), "Nur hier");
}

TEST_F(LanguageTest, LoadingEnglishAgainReportsNothing) {
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        Language().Load("English");
        Language().Load("English");
    }
    EXPECT_TRUE(Warnings(lines).empty());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1].text, "Loading language English...");
    EXPECT_EQ(Language().GetSelectedName(), "English");
    EXPECT_EQ(Language().GetEnglishTable().size(), 3u);
}

TEST_F(LanguageTest, TheShippedEnglishHasEveryTextTheProgramAsksFor) {
    util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
    std::vector<logging::CapturedLine> lines;
    logging::LogCapture capture(lines);
    Language().Load("English");
    std::vector<String> keys = {
        "PopupTitle", "SaveAsWhat",       "LoadSceneMenu",  "Save",
        "Cancel",     "NoScenes",         "EntityOptions",  "BackgroundMenu",
        "WaterMenu",  "Minimise_Tooltip", "Close_Tooltip",  "SaveSceneName_Tooltip",
        "EmptyGroup", "UnnamedScene",     "Option_Shaders", "Option_SimpleMode"};
    for (const char* tool : {"Sketch", "Brush", "Box", "Circle", "Plane", "Chain", "Spring",
                             "FixJoint", "Hinge", "Pen", "Drag", "Scale"}) {
        keys.push_back(String("Tool") + tool);
        keys.push_back(String("Tool") + tool + "_Tooltip");
    }
    for (const char* step :
         {"Polygon",      "Hinge",     "Fixate",        "Spring",         "Erase",
          "Pen",          "Box",       "Circle",        "Plane",          "Chain",
          "Move",         "Clone",     "Rotate",        "Scale",          "Drag",
          "SimStart",     "LoadScene", "NewScene",      "CodePaste",      "GroupAssignment",
          "GroupRemoval", "Snapshot",  "SliderChange",  "ImportVorralet", "Clear",
          "Glue",         "Liquify",   "DissolveChain", "Mirror",         "CenterHinge",
          "ToCircle",     "Loosen",    "RandomColor",   "RandomColors",   "TextEdit"}) {
        keys.push_back(String("Undo") + step);
    }
    for (const char* type :
         {"Box", "Circle", "Polygon", "Plane", "Geom", "Hinge", "Spring", "FixJoint", "Entity"}) {
        keys.push_back(String("Type_") + type);
        keys.push_back(String("Type_") + type + "_plural");
    }
    for (const String& key : keys) {
        EXPECT_FALSE(Language().Translate(key).empty()) << key;
    }
    EXPECT_TRUE(Warnings(lines).empty()) << Warnings(lines).front();
}

TEST_F(LanguageTest, TheShippedGermanHasEveryKeyOfEnglishAndNoOther) {
    util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        Language().Load("English");
        Language().Load("German");
    }
    EXPECT_TRUE(Warnings(lines).empty()) << Warnings(lines).front();
    ASSERT_EQ(Language().GetSelectedTable().size(), Language().GetEnglishTable().size());
    for (const auto& [key, text] : Language().GetEnglishTable()) {
        EXPECT_TRUE(Language().GetSelectedTable().find(key) != Language().GetSelectedTable().end())
            << key;
    }
    // Read as the fonts draw it: one byte a character.
    EXPECT_EQ(Language().Translate("Close"),
              "Schlie\xdf"
              "en");
    EXPECT_EQ(Language().Translate("UndoErase"), "L\xf6schen");
}

TEST_F(LanguageTest, TheHelpFallsBackToEnglishAndThenToAWarning) {
    if (!app::App::IsAlive()) {
        new app::App();
    }
    script::TAttrib<String>& language = *app::App::Get().GetModel().language;
    language.SetNative("Other");
    std::ofstream(m_root / "language" / "English_help.txt", std::ios::binary)
        << "Draw with the mouse. Gr\xc3\xbc\xc3\x9f"
           "e";
    std::vector<logging::CapturedLine> lines;
    logging::LogCapture capture(lines);
    EXPECT_EQ(Language().GetHelpText(),
              "Draw with the mouse. Gr\xfc\xdf"
              "e");
    const String otherPath = app::Language::GetHelpFilePath("Other");
    EXPECT_TRUE(Has(Warnings(lines), "Missing help file: " + otherPath));

    std::filesystem::remove(m_root / "language" / "English_help.txt");
    lines.clear();
    const String text = Language().GetHelpText();
    EXPECT_EQ(
        text.rfind("WARNING: Language file missing (see console and Logfile.txt for details)", 0),
        0u);
    EXPECT_TRUE(
        Has(Warnings(lines), "Missing help file: " + app::Language::GetHelpFilePath("English")));
    language.SetNative("English");
}

}  // namespace
