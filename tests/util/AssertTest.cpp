#include "util/Assert.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "logging/FunctionLogger.h"
#include "logging/Logger.h"
#include "util/Exception.h"

namespace {

// Catches the lines of given levels while it lives.
class LogCapture {
public:
    explicit LogCapture(unsigned mask)
        : m_sink(new logging::FunctionLogger(
              mask, [this](const util::String& text) { m_lines.push_back(text); })) {
        logging::Logger::Get().Add(m_sink);
    }
    ~LogCapture() { logging::Logger::Get().Remove(m_sink); }

    std::vector<util::String> m_lines;

private:
    logging::ILoggerPtr m_sink;
};

void CodeAssertion(int value) {
    CODE_ASSERT(value > 3);
}
void DataAssertion(int value) {
    DATA_ASSERT(value > 3);
}
void CodeCheck(int value) {
    CODE_CHECK(value > 3);
}
void DataCheck(int value) {
    DATA_CHECK(value > 3);
}

}  // namespace

TEST(Assert, MessageHasTheSystemsFormat) {
    LogCapture capture(logging::Debug);
    try {
        AssertionFailed("x == 1", true, true, "void f()", "src/f.cpp", 12);
        FAIL() << "no throw";
    } catch (const BadCoderException& e) {
        EXPECT_STREQ(e.what(),
                     "Code assertion failed: \"x == 1\" in function void f() inf src/f.cpp:12");
        EXPECT_EQ(e.Location(), "src/f.cpp:12: void f()");
    }
    ASSERT_EQ(capture.m_lines.size(), 2u);
    EXPECT_EQ(capture.m_lines[0],
              "Code assertion failed: \"x == 1\" in function void f() inf src/f.cpp:12");
    EXPECT_EQ(capture.m_lines[1],
              "Exception thrown: Code assertion failed: \"x == 1\" in function void f() inf "
              "src/f.cpp:12 from src/f.cpp:12: void f()");
}

TEST(Assert, TheFourBehaviours) {
    LogCapture debug(logging::Debug);
    LogCapture codeChecks(logging::CodeCheck);
    LogCapture dataChecks(logging::DataCheck);

    EXPECT_NO_THROW(CodeAssertion(4));
    EXPECT_THROW(CodeAssertion(3), BadCoderException);
    EXPECT_THROW(DataAssertion(3), BadDataException);
    EXPECT_NO_THROW(CodeCheck(3));
    EXPECT_NO_THROW(DataCheck(3));

    ASSERT_EQ(codeChecks.m_lines.size(), 1u);
    EXPECT_EQ(codeChecks.m_lines[0].rfind("Code check failed: \"value > 3\" in function void "
                                          "{anonymous}::CodeCheck(int) inf ",
                                          0),
              0u);
    ASSERT_EQ(dataChecks.m_lines.size(), 1u);
    EXPECT_EQ(dataChecks.m_lines[0].rfind("Data check failed: \"value > 3\"", 0), 0u);
    // Two assertions: each the message and its throw line.
    ASSERT_EQ(debug.m_lines.size(), 4u);
    EXPECT_EQ(debug.m_lines[2].rfind("Data assertion failed: \"value > 3\"", 0), 0u);
    EXPECT_EQ(debug.m_lines[3].rfind("Exception thrown: Data assertion failed", 0), 0u);
}

TEST(Assert, ThrowMacroLogsOnceWithTheLocation) {
    LogCapture capture(logging::Debug);
    try {
        VORRA_THROW(FileReadException, "File \"x.raw\" is corrupt.");
    } catch (const BadDataException& e) {
        EXPECT_STREQ(e.what(), "File \"x.raw\" is corrupt.");
        EXPECT_NE(e.Location().find("AssertTest.cpp:"), std::string::npos);
        EXPECT_NE(e.Location().find(
                      ": virtual void Assert_ThrowMacroLogsOnceWithTheLocation_Test::TestBody()"),
                  std::string::npos);
    }
    ASSERT_EQ(capture.m_lines.size(), 1u);
    EXPECT_EQ(capture.m_lines[0].rfind("Exception thrown: File \"x.raw\" is corrupt. from ", 0),
              0u);
}
