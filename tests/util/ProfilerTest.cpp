#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "util/Profiler.h"
#include "util/Profiler2.h"

namespace {

const char* const s_fixTail = "This problem must be fixed before any profiling can be done.";

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        lines.push_back(line);
    }
    return lines;
}

// The line that starts with the prefix, or an empty string.
std::string LineStartingWith(const std::string& text, const std::string& prefix) {
    for (const std::string& line : Lines(text)) {
        if (line.compare(0, prefix.size(), prefix) == 0) {
            return line;
        }
    }
    return std::string();
}

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

class ProfilerTest : public ::testing::Test {
protected:
    void SetUp() override {
        util::Profiler::Get().Reset();
        util::Profiler2& flat = util::Profiler2::Get();
        flat.SetOutputOn(false);
        flat.SetReportInterval(1.0);
    }
    void TearDown() override { SetUp(); }

    util::Profiler& profiler = util::Profiler::Get();
};

}  // namespace

TEST_F(ProfilerTest, StartsWithoutOutput) {
    EXPECT_EQ(profiler.GetOutput(), "No output generated yet.");
    EXPECT_STREQ(profiler.GetRoot().name, "Main");
    EXPECT_EQ(profiler.GetRoot().parent, nullptr);
    EXPECT_EQ(&profiler.GetCurrent(), &profiler.GetRoot());
    EXPECT_EQ(&profiler.GetDisplayed(), &profiler.GetRoot());
    EXPECT_FALSE(profiler.IsOutputOn());
    EXPECT_FALSE(profiler.HasError());
}

TEST_F(ProfilerTest, SwitchingOutput) {
    profiler.SetOutputOn(false);
    EXPECT_FALSE(profiler.IsOutputOn());
    EXPECT_EQ(profiler.GetOutput(), "Unactive");

    profiler.Begin("Counted");
    profiler.End();
    EXPECT_EQ(profiler.GetRoot().children[0]->calls, 1);
    profiler.SetOutputOn(true);
    EXPECT_TRUE(profiler.IsOutputOn());
    EXPECT_EQ(profiler.GetRoot().children[0]->calls, 0);
    EXPECT_EQ(profiler.GetRoot().children[0]->total, 0);
}

TEST_F(ProfilerTest, UpdateDoesNothingWhileOutputIsOff) {
    profiler.Update();
    EXPECT_EQ(profiler.GetFrameCount(), 0);
    // Not even an open scope is noticed.
    profiler.Begin("Open");
    profiler.Update();
    EXPECT_FALSE(profiler.HasError());
    profiler.End();
}

TEST_F(ProfilerTest, ScopesNestAndCount) {
    static const char outer[] = "Outer";
    static const char inner[] = "Inner";
    for (int i = 0; i < 3; ++i) {
        profiler.Begin(outer);
        EXPECT_STREQ(profiler.GetCurrent().name, "Outer");
        profiler.Begin(inner);
        profiler.End();
        profiler.Begin(inner);
        profiler.End();
        profiler.End();
    }
    const util::Profiler::Node& root = profiler.GetRoot();
    ASSERT_EQ(root.children.size(), 1u);
    const util::Profiler::Node& node = *root.children[0];
    EXPECT_EQ(node.name, outer);
    EXPECT_EQ(node.parent, &root);
    EXPECT_EQ(node.calls, 3);
    ASSERT_EQ(node.children.size(), 1u);
    EXPECT_EQ(node.children[0]->calls, 6);
    EXPECT_GE(node.total, node.children[0]->total);
    EXPECT_GE(node.total, node.spike);
    EXPECT_EQ(&profiler.GetCurrent(), &root);
}

TEST_F(ProfilerTest, SameTextAtDifferentAddressesIsTwoRows) {
    // Arrays, unlike literals, are guaranteed distinct objects.
    static const char first[] = "Physics";
    static const char second[] = "Physics";
    ASSERT_NE(static_cast<const void*>(first), static_cast<const void*>(second));
    profiler.SetOutputOn(true);
    profiler.SetReportInterval(1e9);
    profiler.Begin(first);
    profiler.End();
    profiler.Begin(second);
    profiler.End();
    profiler.Begin(first);
    profiler.End();
    ASSERT_EQ(profiler.GetRoot().children.size(), 2u);
    EXPECT_EQ(profiler.GetRoot().children[0]->calls, 2);
    EXPECT_EQ(profiler.GetRoot().children[1]->calls, 1);

    profiler.RequestReport();
    profiler.Update();
    const std::string output = profiler.GetOutput();
    EXPECT_FALSE(LineStartingWith(output, " 0 Physics").empty()) << output;
    EXPECT_FALSE(LineStartingWith(output, " 1 Physics").empty()) << output;
}

TEST_F(ProfilerTest, NinthChildIsAcceptedAndTenthRefused) {
    static const char names[10][8] = {"c0", "c1", "c2", "c3", "c4", "c5", "c6", "c7", "c8", "c9"};
    profiler.Begin("Parent");
    for (int i = 0; i < 9; ++i) {
        profiler.Begin(names[i]);
        profiler.End();
    }
    EXPECT_FALSE(profiler.HasError());
    EXPECT_EQ(profiler.GetCurrent().children.size(), 9u);
    // A known child is still fine.
    profiler.Begin(names[3]);
    profiler.End();
    EXPECT_FALSE(profiler.HasError());

    profiler.Begin(names[9]);
    EXPECT_TRUE(profiler.HasError());
    EXPECT_EQ(profiler.GetOutput(),
              std::string("ERROR: Too many children of node Parent\n\n") + s_fixTail);
    EXPECT_EQ(profiler.GetCurrent().children.size(), 9u);

    // Profiling has stopped: nothing counts, nothing throws, nothing else is reported.
    profiler.End();
    profiler.End();
    profiler.SetOutputOn(true);
    profiler.RequestReport();
    profiler.Update();
    EXPECT_EQ(profiler.GetFrameCount(), 0);
    EXPECT_EQ(profiler.GetOutput(),
              std::string("ERROR: Too many children of node Parent\n\n") + s_fixTail);
}

TEST_F(ProfilerTest, EndAtTheRootStopsTheFigures) {
    profiler.SetOutputOn(true);
    profiler.Update();
    EXPECT_EQ(profiler.GetFrameCount(), 1);
    EXPECT_NO_THROW(profiler.End());
    EXPECT_TRUE(profiler.HasError());
    EXPECT_EQ(profiler.GetOutput(), std::string("ERROR: Too many calls to End()\n\n") + s_fixTail);

    // The frame goes on.
    profiler.Begin("After");
    profiler.End();
    profiler.Update();
    EXPECT_TRUE(profiler.GetRoot().children.empty());
    EXPECT_EQ(profiler.GetFrameCount(), 1);
    EXPECT_EQ(profiler.GetOutput(), std::string("ERROR: Too many calls to End()\n\n") + s_fixTail);

    // Switching off and on again does not hide it.
    profiler.SetOutputOn(false);
    profiler.SetOutputOn(true);
    EXPECT_EQ(profiler.GetOutput(), std::string("ERROR: Too many calls to End()\n\n") + s_fixTail);
}

TEST_F(ProfilerTest, UpdateInsideAScopeIsAnError) {
    profiler.SetOutputOn(true);
    profiler.Begin("Open");
    profiler.Update();
    EXPECT_TRUE(profiler.HasError());
    EXPECT_EQ(profiler.GetOutput(),
              std::string("ERROR: Profiler::Update() called within begin and end (fix code)\n\n") +
                  s_fixTail);
    EXPECT_EQ(&profiler.GetCurrent(), &profiler.GetRoot());
    EXPECT_EQ(profiler.GetFrameCount(), 0);
}

TEST_F(ProfilerTest, ReportShowsRowsAndFigures) {
    static const char physics[] = "Physics";
    static const char collide[] = "Collide";
    static const char render[] = "Render";
    profiler.SetOutputOn(true);
    profiler.SetReportInterval(1e9);
    profiler.SetFramesPerSecond(59.5);
    for (int frame = 0; frame < 2; ++frame) {
        profiler.Begin(physics);
        profiler.Begin(collide);
        profiler.End();
        profiler.End();
        // Three calls in the first frame only: 1.5 a frame over the two.
        for (int i = 0; frame == 0 && i < 3; ++i) {
            profiler.Begin(render);
            profiler.End();
        }
        if (frame == 1) {
            profiler.RequestReport();
        }
        profiler.Update();
        if (frame == 0) {
            EXPECT_EQ(profiler.GetOutput(), "No output generated yet.");
        }
    }
    const std::string output = profiler.GetOutput();
    const std::vector<std::string> lines = Lines(output);
    ASSERT_EQ(lines.size(), 8u) << output;
    EXPECT_EQ(lines[0], "FPS: 59.50");
    EXPECT_EQ(lines[1], "");
    EXPECT_EQ(lines[2], "Profile data for Main");
    const std::string& header = lines[3];
    for (const char* heading : {" Name", "   %owner", "    %total", "   µs/frame", "  frame-spike",
                                "   µs/call", "   calls/frame"}) {
        EXPECT_NE(header.find(heading), std::string::npos) << heading;
    }
    // Physics has a child of its own, so it is marked as one the keypad can enter.
    EXPECT_EQ(lines[4].substr(0, 10), "+0 Physics");
    EXPECT_EQ(lines[5].substr(0, 9), " 1 Render");
    EXPECT_EQ(lines[6].substr(0, 15), "   MISSING TIME");
    EXPECT_EQ(lines[7].substr(0, 7), "   Main");
    // Calls a frame close every row.
    EXPECT_TRUE(EndsWith(lines[4], "   1.0")) << lines[4];
    EXPECT_TRUE(EndsWith(lines[5], "   1.5")) << lines[5];
    EXPECT_TRUE(EndsWith(lines[6], "   1.0")) << lines[6];
    EXPECT_TRUE(EndsWith(lines[7], "   1.0")) << lines[7];
    // The root's own row is all of the frame.
    EXPECT_NE(lines[7].find("   100.0 %   100.0 %"), std::string::npos) << lines[7];
    // The child rows have the fixed layout: two percentages, then four figures.
    double owner = 0;
    double whole = 0;
    double perFrame = 0;
    double spike = 0;
    double perCall = 0;
    double callsPerFrame = 0;
    ASSERT_EQ(std::sscanf(lines[5].c_str() + 24, "%lf %% %lf %% %lf %lf %lf %lf", &owner, &whole,
                          &perFrame, &spike, &perCall, &callsPerFrame),
              6)
        << lines[5];
    EXPECT_GE(owner, 0);
    EXPECT_LE(owner, 100);
    EXPECT_DOUBLE_EQ(owner, whole);  // shown node is the root
    EXPECT_DOUBLE_EQ(callsPerFrame, 1.5);

    // Every counter starts afresh after a report.
    EXPECT_EQ(profiler.GetFrameCount(), 0);
    EXPECT_EQ(profiler.GetRoot().calls, 0);
    EXPECT_EQ(profiler.GetRoot().total, 0);
    EXPECT_EQ(profiler.GetRoot().children[0]->calls, 0);
    EXPECT_EQ(profiler.GetRoot().children[0]->children[0]->calls, 0);
    EXPECT_EQ(profiler.GetRoot().children[1]->spike, 0);
}

TEST_F(ProfilerTest, ReportsWhenTheIntervalHasPassed) {
    profiler.SetOutputOn(true);
    profiler.SetReportInterval(0);
    profiler.Update();
    EXPECT_EQ(profiler.GetOutput().rfind("FPS: ", 0), 0u) << profiler.GetOutput();
    EXPECT_NE(profiler.GetOutput().find("Profile data for Main\n"), std::string::npos);
}

TEST_F(ProfilerTest, NavigationMovesTheDisplayedNode) {
    static const char physics[] = "Physics";
    static const char collide[] = "Collide";
    static const char render[] = "Render";
    profiler.Begin(physics);
    profiler.Begin(collide);
    profiler.End();
    profiler.End();
    profiler.Begin(render);
    profiler.End();

    EXPECT_FALSE(profiler.ShowParent());
    EXPECT_FALSE(profiler.ShowChild(1));  // Render has no children
    EXPECT_FALSE(profiler.ShowChild(7));
    EXPECT_EQ(&profiler.GetDisplayed(), &profiler.GetRoot());
    EXPECT_TRUE(profiler.ShowChild(0));
    EXPECT_EQ(profiler.GetDisplayed().name, physics);
    EXPECT_FALSE(profiler.ShowChild(0));  // Collide is a leaf

    profiler.SetOutputOn(true);
    profiler.RequestReport();
    profiler.Update();
    const std::string output = profiler.GetOutput();
    EXPECT_NE(output.find("Profile data for Physics\n"), std::string::npos) << output;
    EXPECT_FALSE(LineStartingWith(output, " 0 Collide").empty()) << output;
    EXPECT_FALSE(LineStartingWith(output, "   Physics").empty()) << output;
    EXPECT_TRUE(LineStartingWith(output, " 1 Render").empty()) << output;

    EXPECT_TRUE(profiler.ShowParent());
    EXPECT_EQ(&profiler.GetDisplayed(), &profiler.GetRoot());
}

TEST_F(ProfilerTest, HeaviestChildMustHaveChildren) {
    profiler.Begin("Leaf");
    profiler.End();
    EXPECT_FALSE(profiler.ShowHeaviestChild());

    profiler.Reset();
    profiler.Begin("Branch");
    profiler.Begin("Twig");
    profiler.End();
    profiler.End();
    EXPECT_TRUE(profiler.ShowHeaviestChild());
    EXPECT_STREQ(profiler.GetDisplayed().name, "Branch");
    EXPECT_FALSE(profiler.ShowHeaviestChild());
}

TEST_F(ProfilerTest, ScopeHelperClosesOnEveryPath) {
    {
        VORRA_PROFILE("Scoped");
        EXPECT_STREQ(profiler.GetCurrent().name, "Scoped");
        {
            util::ProfileScope inner("Inner");
            EXPECT_STREQ(profiler.GetCurrent().name, "Inner");
        }
    }
    EXPECT_EQ(&profiler.GetCurrent(), &profiler.GetRoot());
    EXPECT_EQ(profiler.GetRoot().children[0]->calls, 1);

    try {
        VORRA_PROFILE("Throws");
        throw std::runtime_error("leaving");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(&profiler.GetCurrent(), &profiler.GetRoot());
    EXPECT_FALSE(profiler.HasError());
}

TEST_F(ProfilerTest, BeginAndEndAreMeasuredIntoFlatRecords) {
    util::Profiler2& flat = util::Profiler2::Get();
    flat.SetOutputOn(true);
    profiler.SetOutputOn(true);  // only timed while the figures are shown
    for (int i = 0; i < 5; ++i) {
        profiler.Begin("Measured");
        profiler.End();
    }
    flat.RequestReport();
    flat.Update(0.01);
    const std::string output = flat.GetOutput();
    for (const char* name : {"Profiler::Begin", "Profiler::End"}) {
        const std::string line = LineStartingWith(output, name);
        ASSERT_FALSE(line.empty()) << output;
        double share = 0;
        double calls = 0;
        ASSERT_EQ(std::sscanf(line.c_str() + 24, "%lf %% %lf", &share, &calls), 2) << line;
        EXPECT_EQ(calls, 5) << line;
    }
}

TEST_F(ProfilerTest, FlatRecordsReportTheirFigures) {
    util::Profiler2& flat = util::Profiler2::Get();
    const size_t before = flat.GetRecordCount();
    {
        util::ProfileRecord record("Test::Record");
        EXPECT_EQ(flat.GetRecordCount(), before + 1);
        flat.SetOutputOn(true);
        record.Add(0.002);
        record.Add(0.003);
        EXPECT_EQ(record.GetCount(), 2);
        EXPECT_DOUBLE_EQ(record.GetSum(), 0.005);
        EXPECT_DOUBLE_EQ(record.GetSpike(), 0.003);

        flat.Update(0.5);
        EXPECT_EQ(flat.GetOutput(), "Unactive");
        flat.Update(0.5);  // the interval of one second has passed
        const std::string output = flat.GetOutput();
        EXPECT_EQ(output.rfind("Statistics over 1.00 s, 2 frames\n\n", 0), 0u) << output;
        const std::string header = Lines(output)[2];
        EXPECT_NE(header.find("   %total"), std::string::npos) << header;
        EXPECT_NE(header.find("  call-spike"), std::string::npos) << header;
        char expected[256];
        std::snprintf(expected, sizeof(expected),
                      "%-24.24s  %5.1f %%     %6.0f     %5.0f ms    %5.0f ms     %5.0f   %7.1f",
                      "Test::Record", 0.5, 2.0, 5.0, 3.0, 2500.0, 1.0);
        EXPECT_EQ(LineStartingWith(output, "Test::Record"), expected) << output;
        // Counters start afresh after a report.
        EXPECT_EQ(record.GetCount(), 0);

        util::ProfileRecordTimer timer(record);
    }
    EXPECT_EQ(flat.GetRecordCount(), before);
}

TEST_F(ProfilerTest, FlatProfilerOutputSwitch) {
    util::Profiler2& flat = util::Profiler2::Get();
    EXPECT_EQ(flat.GetOutput(), "Unactive");
    flat.Update(5.0);
    EXPECT_EQ(flat.GetOutput(), "Unactive");
    EXPECT_FALSE(flat.IsOutputOn());
}

TEST_F(ProfilerTest, TimerAddsOneCall) {
    util::ProfileRecord record("Test::Timed");
    { util::ProfileRecordTimer timer(record); }
    EXPECT_EQ(record.GetCount(), 1);
    EXPECT_GE(record.GetSum(), 0);
}
