#include "util/FileSystem.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include "logging/FunctionLogger.h"
#include "logging/Logger.h"
#include "util/FILEWrapper.h"

namespace {

namespace fs = std::filesystem;

class FileSystemTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Unique per process: CTest runs tests side by side.
        m_folder =
            fs::temp_directory_path() / ("vorra_filesystem_test_" + std::to_string(::getpid()));
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
        m_dir = m_folder.string() + "/";
    }
    void TearDown() override { fs::remove_all(m_folder); }

    void Write(const util::String& name, const util::String& content) {
        std::ofstream(m_dir + name, std::ios::binary) << content;
    }

    fs::path m_folder;
    util::String m_dir;
    util::FileSystem& m_fileSystem = util::FileSystem::Get();
};

}  // namespace

TEST_F(FileSystemTest, WorkDirectoryIsTheProgramsFolder) {
    testing::internal::CaptureStdout();
    m_fileSystem.SetArgv0("foundation_tests");  // a bare name, as found through PATH
    const std::string out = testing::internal::GetCapturedStdout();
    const util::String work = m_fileSystem.GetWorkDirectory();
    ASSERT_FALSE(work.empty());
    EXPECT_EQ(work.back(), '/');
    EXPECT_EQ(work.find('\\'), util::String::npos);
    EXPECT_EQ(work, fs::read_symlink("/proc/self/exe").parent_path().string() + "/");
    EXPECT_NE(out.find("argv0 =    \"foundation_tests\""), std::string::npos);
    EXPECT_NE(out.find("exe name = foundation_tests"), std::string::npos);
    EXPECT_NE(out.find("workdir =  " + work), std::string::npos);
    EXPECT_EQ(util::FileSystem::WorkDirectoryOrCurrent(), work);
}

TEST_F(FileSystemTest, ListsByWildcardAndFailsOnAMissingFolder) {
    Write("a.cfg", "");
    Write("b.cfg", "");
    Write("c.vra", "");
    Write("cfg", "");
    fs::create_directories(m_folder / "d.cfg");  // folders are not files
    EXPECT_EQ(m_fileSystem.ListFiles(m_dir, "*.cfg"),
              (std::vector<util::String>{"a.cfg", "b.cfg"}));
    EXPECT_EQ(m_fileSystem.ListFiles(m_dir, "?.vra"), std::vector<util::String>{"c.vra"});
    EXPECT_THROW(m_fileSystem.ListFiles(m_dir + "missing/", "*"), fs::filesystem_error);

    EXPECT_TRUE(util::MatchesWildcard("scene.vra", "*.vra"));
    EXPECT_TRUE(util::MatchesWildcard("a.b.vra", "*.vra"));
    EXPECT_FALSE(util::MatchesWildcard("scene.vra.bak", "*.vra"));
    EXPECT_TRUE(util::MatchesWildcard("", "*"));
    EXPECT_FALSE(util::MatchesWildcard("", "?"));
}

TEST_F(FileSystemTest, RenameNeverReplacesAndReportsFailures) {
    std::vector<util::String> errors;
    logging::ILoggerPtr sink(new logging::FunctionLogger(
        logging::Error, [&](const util::String& text) { errors.push_back(text); }));
    logging::Logger::Get().Add(sink);
    logging::Logger::Get().Update();
    logging::Logger::Get().Update();

    Write("old.cfg", "old");
    Write("taken.vra", "mine");
    EXPECT_TRUE(m_fileSystem.Rename(m_dir + "old.cfg", m_dir + "old.vra"));
    EXPECT_TRUE(m_fileSystem.Exists(m_dir + "old.vra"));
    EXPECT_FALSE(m_fileSystem.Exists(m_dir + "old.cfg"));

    EXPECT_FALSE(m_fileSystem.Rename(m_dir + "old.vra", m_dir + "taken.vra"));
    EXPECT_EQ(m_fileSystem.ReadWholeFile(m_dir + "taken.vra"), "mine");
    EXPECT_FALSE(m_fileSystem.Rename(m_dir + "nothing", m_dir + "new"));
    logging::Logger::Get().Remove(sink);

    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].rfind("!! ERROR: Failed to rename \"" + m_dir + "old.vra\" to \"" + m_dir +
                                  "taken.vra\": ",
                              0),
              0u);
    EXPECT_TRUE(m_fileSystem.Remove(m_dir + "old.vra"));
    EXPECT_FALSE(m_fileSystem.Remove(m_dir + "old.vra"));
}

TEST_F(FileSystemTest, ReadsWholeFilesInBothModes) {
    util::String binary("a\0b\r\nc", 6);
    Write("data.bin", binary);
    EXPECT_EQ(m_fileSystem.ReadWholeFile(m_dir + "data.bin"), binary);
    Write("empty.txt", "");
    EXPECT_EQ(m_fileSystem.ReadWholeFile(m_dir + "empty.txt"), "");

    util::String text;
    for (int i = 0; i < 500; ++i) {
        text += "line " + std::to_string(i) + "\n";  // several 1024-byte chunks
    }
    Write("long.txt", text);
    EXPECT_EQ(m_fileSystem.ReadTextFile(m_dir + "long.txt"), text);
    try {
        m_fileSystem.ReadWholeFile(m_dir + "missing.txt");
        FAIL() << "no throw";
    } catch (const FileReadException& e) {
        EXPECT_EQ(util::String(e.what()), "Failed to open file \"" + m_dir + "missing.txt");
    }
}

TEST_F(FileSystemTest, FileWrapperTurnsShortReadsIntoExceptions) {
    Write("short.bin", "abc");
    util::FILEWrapper file(m_dir + "short.bin", "rb");
    char buffer[8];
    file.Read(buffer, 2);
    EXPECT_EQ(util::String(buffer, 2), "ab");
    try {
        file.Read(buffer, 5);
        FAIL() << "no throw";
    } catch (const FileReadException& e) {
        EXPECT_STREQ(e.what(), "Failed to read 5 bytes");
    }
    EXPECT_THROW(file.Seek(-100, SEEK_SET), FileReadException);
    EXPECT_THROW(file.Write("x", 1), Exception);  // opened for reading
}
