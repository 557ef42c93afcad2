#include "logging/Logger.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "logging/FileLogger.h"
#include "logging/FunctionLogger.h"
#include "logging/LogCapture.h"
#include "logging/StreamLogger.h"
#include "util/FileSystem.h"

namespace {

struct Sink {
    explicit Sink(unsigned mask)
        : pointer(new logging::FunctionLogger(
              mask, [this](const util::String& text) { lines.push_back(text); })) {
        logging::Logger::Get().Add(pointer);
    }
    ~Sink() { logging::Logger::Get().Remove(pointer); }

    std::vector<util::String> lines;
    logging::ILoggerPtr pointer;
};

class LoggerTest : public ::testing::Test {
protected:
    // Starts from a clean pair of frames.
    void SetUp() override { NextFrame(), NextFrame(); }
    static void NextFrame() { logging::Logger::Get().Update(); }
};

util::String ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

TEST_F(LoggerTest, RepeatedWarningsReachTheSinksOncePerRun) {
    Sink sink(logging::Warning);
    Log(logging::Warning, "low");
    Log(logging::Warning, "low");  // same frame: dropped
    EXPECT_EQ(sink.lines, std::vector<util::String>{"-- Warning: low"});

    NextFrame();
    Log(logging::Warning, "low");  // repeats from the previous frame: still quiet
    NextFrame();
    Log(logging::Warning, "low");  // and as long as it keeps repeating
    EXPECT_EQ(sink.lines.size(), 1u);

    NextFrame();  // a frame without it
    NextFrame();
    Log(logging::Warning, "low");
    EXPECT_EQ(sink.lines.size(), 2u);
}

TEST_F(LoggerTest, DebugTextsAreNeverSuppressedAndErrorsAre) {
    Sink sink(31);
    Log(logging::Debug, "step");
    Log(logging::Debug, "step");
    Log(logging::Error, "broken");
    Log(logging::Error, "broken");
    // The prefix is part of the compared text: a warning of the same words is another text.
    Log(logging::Warning, "broken");
    EXPECT_EQ(sink.lines, (std::vector<util::String>{"step", "step", "!! ERROR: broken",
                                                     "-- Warning: broken"}));
}

TEST_F(LoggerTest, LevelsReachTheSinksWhoseMaskSharesABit) {
    Sink errors(7);
    Sink info(16);
    Sink file(31);
    Log(logging::Error, "e");
    Log(logging::Debug, "d");
    Log(logging::Info, "i");
    Log(logging::CodeCheck, "c");
    EXPECT_EQ(errors.lines, (std::vector<util::String>{"!! ERROR: e", "c"}));
    EXPECT_EQ(info.lines, std::vector<util::String>{"i"});
    EXPECT_EQ(file.lines, (std::vector<util::String>{"!! ERROR: e", "d", "i", "c"}));
}

TEST_F(LoggerTest, AThrowingSinkNeverLetsTheExceptionOut) {
    logging::ILoggerPtr bad(new logging::FunctionLogger(
        31, [](const util::String&) { throw std::runtime_error("sink broke"); }));
    Sink after(31);
    logging::Logger::Get().Add(bad);
    testing::internal::CaptureStderr();
    EXPECT_NO_THROW(Log(logging::Info, "hello"));
    const std::string err = testing::internal::GetCapturedStderr();
    logging::Logger::Get().Remove(bad);
    EXPECT_NE(err.find("ERROR - Failed to log text: hello"), std::string::npos);
}

TEST(FileLogger, WritesTheHeaderThenTimeStampedLines) {
    const auto path = std::filesystem::temp_directory_path() /
                      ("vorra_filelogger_test_" + std::to_string(::getpid()) + ".txt");
    std::filesystem::remove(path);
    {
        logging::FileLogger logger(31, path.string(), true);
        ASSERT_TRUE(logger.IsOpen());
        logger.Log("first");
    }
    std::istringstream lines(ReadFile(path));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, std::string(29, '-'));
    std::getline(lines, line);
    EXPECT_EQ(line, "  Vorra beta 4.13");
    std::getline(lines, line);
    EXPECT_EQ(line.substr(0, 2), "  ");
    EXPECT_GT(line.size(), 10u);  // the date
    std::getline(lines, line);
    EXPECT_EQ(line, std::string(29, '-'));
    std::getline(lines, line);
    // "HH:MM:SS: first"
    ASSERT_EQ(line.size(), 10u + 5u);
    EXPECT_EQ(line[2], ':');
    EXPECT_EQ(line[5], ':');
    EXPECT_EQ(line.substr(8), ": first");

    // Appending keeps the old run behind two line ends; not appending starts afresh.
    { logging::FileLogger again(31, path.string(), true); }
    const util::String appended = ReadFile(path);
    EXPECT_NE(appended.find(": first\n\n\n" + std::string(29, '-')), std::string::npos);
    { logging::FileLogger fresh(31, path.string(), false); }
    EXPECT_EQ(ReadFile(path).find("first"), std::string::npos);
    std::filesystem::remove(path);
}

TEST(FileLogger, AFileThatCannotBeOpenedIsSkipped) {
    logging::FileLogger logger(31, "/nonexistent-folder/Logfile.txt", false);
    EXPECT_FALSE(logger.IsOpen());
    EXPECT_NO_THROW(logger.Log("lost"));
}

TEST(Logger, LinesAfterTheLoggerIsReleasedGoToUnlogged) {
    testing::internal::CaptureStdout();
    util::FileSystem::Get().SetArgv0("foundation_tests");
    testing::internal::GetCapturedStdout();
    const util::String path = util::FileSystem::WorkDirectoryOrCurrent() + "Unlogged.txt";
    std::filesystem::remove(path);
    // In a child process: the released singletons can never come back in this one. The
    // file system goes first, as at the end of the program.
    EXPECT_EXIT(
        {
            logging::Logger::Get();
            util::FileSystem::Release();
            logging::Logger::Release();
            Log(logging::Warning, "after the end");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_NE(ReadFile(path).find("-- Warning: after the end\n"), util::String::npos);
    std::filesystem::remove(path);
}

TEST(StreamLogger, WritesLineAndFlushes) {
    std::ostringstream out;
    logging::StreamLogger logger(16, &out);
    logger.Log("a");
    logger.Log("b");
    EXPECT_EQ(out.str(), "a\nb\n");
}

TEST_F(LoggerTest, ACaptureHoldsItsThreadsLinesUntilTheyAreReplayed) {
    Sink sink(logging::Warning | logging::Info);
    std::vector<logging::CapturedLine> lines;
    std::thread helper([&lines] {
        logging::LogCapture capture(lines);
        Log(logging::Warning, "from a helper");
        {
            std::vector<logging::CapturedLine> inner;
            logging::LogCapture nested(inner);
            Log(logging::Info, "inner");
            EXPECT_EQ(inner.size(), 1u);
        }
        Log(logging::Info, "second");
    });
    helper.join();
    EXPECT_TRUE(sink.lines.empty());
    ASSERT_EQ(lines.size(), 2u);

    // A capture is its own thread's: this one logs as ever.
    Log(logging::Info, "here");
    logging::Replay(lines);
    EXPECT_EQ(sink.lines,
              (std::vector<util::String>{"here", "-- Warning: from a helper", "second"}));
}
