// The console: its opening keys and slide, typed lines run through the language, the
// history, completion, scrolling, bad input, and what a frame costs with many lines.

#include "gui/Console.h"

#include "GuiFixture.h"
#include "app/Undoer.h"
#include "gui/TextField.h"
#include "logging/Logger.h"
#include "script/Parser.h"

namespace {

namespace key = input::key;
using util::String;

class ConsoleTest : public test_gui::GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        // The console's script face, as the program shows it.
        static const bool added = (script::AddToRoot(script::ReflectedPtr(&Console())), true);
        (void)added;
        Close();
        Console().Clear();
    }
    void TearDown() override {
        Close();
        GuiTest::TearDown();
    }

    static gui::Console& Console() { return *Gui().GetConsole(); }
    static gui::TextField& Line() { return *Console().GetInputLine(); }
    static void Open() {
        if (!Console().IsOpen()) {
            Tap(key::F1 + 10);
        }
        Advance(1);
    }
    static void Close() {
        if (Console().IsOpen()) {
            Console().Toggle();
        }
        Advance(1);
    }
    static void Enter(const String& text) {
        Type(text);
        Tap(key::Return, '\r');
    }
    // A key press handed to the console alone, as the input root would deliver it.
    static bool Consumed(input::KeyEvent event) {
        Console().OnKey(event);
        return event.consumed;
    }
    static std::vector<String> Tail(size_t count) {
        const std::vector<String>& lines = Console().GetLines();
        return std::vector<String>(lines.end() - std::min(count, lines.size()), lines.end());
    }
};

TEST_F(ConsoleTest, OpeningKeysSlideAndTurnRoundMidway) {
    EXPECT_EQ(Console().GetFraction(), 0);
    EXPECT_FALSE(Consumed(KeyPress('a', 'a'))) << "a closed console leaves keys alone";
    EXPECT_FALSE(Consumed(KeyPress(key::Escape))) << "Escape only closes";
    EXPECT_FALSE(Console().IsOpen());

    Tap(key::F1 + 10);
    ASSERT_TRUE(Console().IsOpen());
    EXPECT_TRUE(Line().HasFocus());
    EXPECT_TRUE(input::Input::Get().GetTextMode());
    EXPECT_NEAR(Console().GetFraction(), 0, 1e-6);
    Advance(0.15);
    EXPECT_NEAR(Console().GetFraction(), 0.5, 1e-4);
    Advance(0.15);
    EXPECT_NEAR(Console().GetFraction(), 1, 1e-4);

    Tap(key::Backquote);
    EXPECT_FALSE(Console().IsOpen());
    EXPECT_FALSE(Line().HasFocus());
    Advance(0.1);
    EXPECT_NEAR(Console().GetFraction(), 2.0 / 3, 1e-4);
    // Pressed again mid-slide, it turns round from where it stands.
    Tap(167);
    EXPECT_TRUE(Console().IsOpen());
    EXPECT_NEAR(Console().GetFraction(), 2.0 / 3, 1e-4);
    Advance(0.05);
    EXPECT_NEAR(Console().GetFraction(), 5.0 / 6, 1e-4);

    Tap('4', '\xa7');  // a key that types the section sign
    EXPECT_FALSE(Console().IsOpen());
    Advance(1);
    EXPECT_EQ(Console().GetFraction(), 0);
    Tap(189);
    EXPECT_TRUE(Console().IsOpen());
    EXPECT_TRUE(Consumed(KeyPress(key::PageDown))) << "an open console keeps its keys";
    EXPECT_FALSE(Consumed(KeyPress(key::F1 + 4))) << "what the input line leaves is left";
    EXPECT_TRUE(Consumed(KeyPress(key::Escape)));
    EXPECT_FALSE(Console().IsOpen());

    // Without slide and fade it is simply open or shut.
    Open();
    Enter("Console.scroll = false");
    Tap(key::Escape);
    EXPECT_EQ(Console().GetFraction(), 0);
    Tap(key::F1 + 10);
    EXPECT_EQ(Console().GetFraction(), 1);
    Enter("Console.scroll = true");
}

TEST_F(ConsoleTest, EnterRunsTheLineAndPrintsItsResult) {
    Open();
    const size_t steps = app::Undoer::Get().GetUndoStack().size();
    Enter("1 + 2");
    EXPECT_EQ(Tail(2), (std::vector<String>{"> 1 + 2", "3"}));
    EXPECT_EQ(Line().GetText(), "");
    EXPECT_EQ(app::Undoer::Get().GetUndoStack().size(), steps)
        << "typing in the console is no step of the scene's history";
    const size_t history = Console().GetHistory().size();
    Enter("1 + 2");
    EXPECT_EQ(Console().GetHistory().size(), history) << "the same line is kept once";
    EXPECT_EQ(Console().GetHistory().back(), "1 + 2");

    const size_t lines = Console().GetLines().size();
    Tap(key::Return, '\r');
    EXPECT_EQ(Console().GetLines().size(), lines) << "an empty line runs nothing";
    Enter(";");
    EXPECT_EQ(Tail(1), std::vector<String>{"> ;"}) << "nothing to show: no line";
    Enter("Console.clear");
    EXPECT_TRUE(Console().GetLines().empty());
}

TEST_F(ConsoleTest, HistoryWalkKeepsAHalfTypedLine) {
    Open();
    Enter("11");
    Enter("22");
    Type("3");
    Tap(key::Up);
    EXPECT_EQ(Console().GetHistory().back(), "3") << "the half-typed line is kept";
    Tap(key::Up);
    EXPECT_EQ(Line().GetText(), "22");
    EXPECT_EQ(Line().GetCursor(), 2u);
    Tap(key::Up);
    EXPECT_EQ(Line().GetText(), "11");
    Tap(key::Down);
    Tap(key::Down);
    EXPECT_EQ(Line().GetText(), "3");
    Tap(key::Down);
    EXPECT_EQ(Line().GetText(), "");
    EXPECT_EQ(Console().GetHistoryIndex(), -1);

    Type("4 +");
    Tap(key::Down);
    EXPECT_EQ(Line().GetText(), "") << "Down puts the line away";
    EXPECT_EQ(Console().GetHistory().back(), "4 +");
    Type("half");
    Tap(key::F1 + 10);
    EXPECT_EQ(Console().GetHistory().back(), "half") << "closing keeps it too";
    const size_t history = Console().GetHistory().size();
    Open();
    EXPECT_EQ(Line().GetText(), "");
    Tap(key::Up);
    EXPECT_EQ(Line().GetText(), "half");
    EXPECT_EQ(Console().GetHistory().size(), history);
}

TEST_F(ConsoleTest, TabCompletesBeforeTheCursorAndListsCandidates) {
    Open();
    Enter("consoleAlpha = 1; consoleAlps = 2");
    Type("consoleal + 1");
    Line().SetCursor(9);
    Tap(key::Tab, '\t');
    EXPECT_EQ(Line().GetText(), "consoleAlp + 1");
    EXPECT_EQ(Line().GetCursor(), 10u);
    EXPECT_EQ(Tail(3), (std::vector<String>{"", "consoleAlpha", "consoleAlps"}));
    Type("h");
    Tap(key::Tab, '\t');
    EXPECT_EQ(Line().GetText(), "consoleAlpha + 1");
    EXPECT_EQ(Tail(1), std::vector<String>{"consoleAlps"}) << "one candidate: nothing listed";
}

TEST_F(ConsoleTest, ScrollingStaysWithinTheLines) {
    Open();
    Tap(key::PageUp);
    EXPECT_EQ(Console().GetScrollPosition(), 0) << "no lines, no scrolling";
    for (int i = 0; i < 5; ++i) {
        Console().Print("line " + std::to_string(i), false);
    }
    for (int i = 0; i < 9; ++i) {
        Tap(key::PageUp);
    }
    EXPECT_EQ(Console().GetScrollPosition(), 4);
    for (int i = 0; i < 9; ++i) {
        Tap(key::PageDown);
    }
    EXPECT_EQ(Console().GetScrollPosition(), 0);
    EXPECT_TRUE(Consumed(KeyPress(key::Home, 0, true)));
    EXPECT_EQ(Console().GetScrollPosition(), 4);
    EXPECT_TRUE(Consumed(KeyPress(key::End, 0, true)));
    EXPECT_EQ(Console().GetScrollPosition(), 0);

    // Without Control, Home is the input line's.
    Type("abc");
    Consumed(KeyPress(key::PageUp));
    EXPECT_TRUE(Consumed(KeyPress(key::Home)));
    EXPECT_EQ(Line().GetCursor(), 0u);
    EXPECT_EQ(Console().GetScrollPosition(), 1);
    Console().Print("news", false);
    EXPECT_EQ(Console().GetScrollPosition(), 0) << "printing shows the newest";
}

TEST_F(ConsoleTest, BadLinesPrintTheirErrorAndTheConsoleGoesOn) {
    Open();
    for (const String& bad : {String("(1 + 2"), String("[1, 2"), String(100000, '('),
                              String(100000, 'x'), String("\"unclosed")}) {
        const size_t lines = Console().GetLines().size();
        // A new frame of the log, which holds back a message repeated within one.
        logging::Logger::Get().Update();
        logging::Logger::Get().Update();
        Line().SetText(bad);
        EXPECT_NO_THROW(Tap(key::Return, '\r'));
        ASSERT_GE(Console().GetLines().size(), lines + 2) << bad.substr(0, 20);
        EXPECT_EQ(Console().GetLines()[lines], "> " + bad);
        EXPECT_FALSE(Console().GetLines().back().empty());
    }
    Enter("1 + 1");
    EXPECT_EQ(Tail(1), std::vector<String>{"2"});
}

TEST_F(ConsoleTest, AFrameWithManyLinesDrawsOnlyWhatShows) {
    Open();
    Console().Print(String(100000, 'w'), false);
    for (int i = 0; i < 1000; ++i) {
        Console().Print("a line of the log, number " + std::to_string(i) + String(60, '.'), false);
    }
    Console().Print(String(100000, 'n'), false);
    const auto frame = [] {
        Gui().Update(0.016f);
        Console().DrawComp();
    };
    double start = util::Clock::PreciseSeconds();
    frame();
    EXPECT_LT(util::Clock::PreciseSeconds() - start, 0.05) << "a huge line is wrapped once";
    for (int i = 0; i < 5; ++i) {
        Tap(key::PageUp);
    }
    frame();
    constexpr int kFrames = 200;
    start = util::Clock::PreciseSeconds();
    for (int i = 0; i < kFrames; ++i) {
        frame();
    }
    const double perFrame = (util::Clock::PreciseSeconds() - start) / kFrames;
    EXPECT_LT(perFrame, 0.001);
    RecordProperty("microsecondsPerFrame", std::to_string(perFrame * 1e6));
}

}  // namespace
