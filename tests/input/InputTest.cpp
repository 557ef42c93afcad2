// The listener tree's delivery rules, and the input root fed with synthetic SDL events:
// clicks, drags and their time-out, the wheel, typed characters, key repeat, modifiers and
// window events. Only SDL's event subsystem runs; there is no window.

#include "input/Input.h"

#include <SDL.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "input/SdlKeyMap.h"
#include "logging/LogCapture.h"
#include "util/Clock.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

double s_now = 100;
double FakeSeconds() {
    return s_now;
}

util::String Pos(math::Vec2 p) {
    std::ostringstream out;
    out << "(" << p.x << "," << p.y << ")";
    return out.str();
}

// Writes down what it hears, one line an event; may consume what it records.
class Recorder : public input::InputListener {
public:
    explicit Recorder(std::vector<util::String>& log, const util::String& name = "rec",
                      int priority = 50)
        : InputListener(name, priority), m_log(log) {}

    void OnKey(input::KeyEvent& e) override {
        m_log.push_back(GetReflectedName() + " key " + std::to_string(e.key) +
                        (e.down ? " down" : " up") +
                        (e.character ? util::String(" '") + e.character + "'" : "") +
                        (e.consumed ? " consumed" : ""));
        InputListener::OnKey(e);
        e.consumed = e.consumed || consumeKeys;
    }
    void OnClick(input::ClickEvent& e) override {
        m_log.push_back("click " + std::to_string(e.key) + " x" + std::to_string(e.clicks) + " " +
                        Pos(e.position));
    }
    void OnDragBegin(input::DragEvent& e) override {
        m_log.push_back("dragbegin " + Pos(e.start) + " " + Pos(e.position));
    }
    void OnDrag(input::DragEvent& e) override {
        m_log.push_back("drag " + Pos(e.offset) + " " + Pos(e.position));
    }
    void OnDragEnd(input::DragEvent& e) override {
        m_log.push_back("dragend " + Pos(e.start) + " " + Pos(e.position));
    }
    void OnMouseMove(input::MouseMoveEvent& e) override {
        if (recordMotion) {
            m_log.push_back("move " + Pos(e.position) + " " + Pos(e.relative));
        }
    }
    void OnGeneralEvent(input::InputEvent& e) override {
        m_log.push_back("general " + std::to_string(static_cast<int>(e.kind)) + " " +
                        std::to_string(e.width) + "x" + std::to_string(e.height) + " " + e.text);
    }

    bool consumeKeys = false;
    bool recordMotion = false;

private:
    std::vector<util::String>& m_log;
};

using RecorderPtr = util::SharedPtr<Recorder>;

// ---- The delivery rules of the tree ----

// A listener that runs a piece of code in its key handler.
class Actor : public input::InputListener {
public:
    Actor(std::vector<util::String>& log, const util::String& name, std::function<void()> act)
        : InputListener(name), m_log(log), m_act(std::move(act)) {}
    void OnKey(input::KeyEvent&) override {
        m_log.push_back(GetReflectedName());
        if (m_act) {
            m_act();
        }
    }

private:
    std::vector<util::String>& m_log;
    std::function<void()> m_act;
};

TEST(InputDelegator, ChangesDuringADeliveryWaitForItsEnd) {
    std::vector<util::String> log;
    input::InputDelegator root("root");
    util::SharedPtr<Actor> late(new Actor(log, "late", nullptr));
    util::SharedPtr<Actor> c(new Actor(log, "c", nullptr));
    util::SharedPtr<Actor> b(new Actor(log, "b", [&] { root.Remove(b); }));
    util::SharedPtr<Actor> a(new Actor(log, "a", [&] {
        root.Remove(c);
        root.Add(late);
    }));
    // The latest added of equal priorities hears first: a, b, c.
    root.Add(c);
    root.Add(b);
    root.Add(a);
    input::KeyEvent event;
    root.OnKey(event);
    // c was removed by a and b by itself, yet both heard the event; late did not.
    EXPECT_THAT(log, ElementsAre("a", "b", "c"));
    log.clear();
    root.OnKey(event);
    // a adds late again: a second addition leaves it once, at the place of a fresh one.
    EXPECT_THAT(log, ElementsAre("late", "a"));
    log.clear();
    root.OnKey(event);
    EXPECT_THAT(log, ElementsAre("late", "a"));
}

TEST(InputDelegator, PrioritiesSortStablyAndConsumedEventsTravelOn) {
    std::vector<util::String> log;
    input::InputDelegator root("root");
    RecorderPtr low(new Recorder(log, "low", 10));
    RecorderPtr first(new Recorder(log, "first"));
    RecorderPtr second(new Recorder(log, "second"));
    RecorderPtr high(new Recorder(log, "high", 100));
    root.Add(low);
    root.Add(first);
    root.Add(high);
    root.Add(second);
    high->consumeKeys = true;
    input::KeyEvent event;
    event.key = 'a';
    event.down = true;
    root.OnKey(event);
    EXPECT_THAT(log, ElementsAre("high key 97 down", "second key 97 down consumed",
                                 "first key 97 down consumed", "low key 97 down consumed"));
    // The listener saw the press only if nobody ahead of it had used it.
    EXPECT_TRUE(high->IsKeyDownHere('a'));
    EXPECT_FALSE(low->IsKeyDownHere('a'));

    // A priority change re-sorts every delegator that holds the listener; one that dies
    // simply drops out.
    low->SetPriority(200);
    second.Reset();
    log.clear();
    high->consumeKeys = false;
    input::KeyEvent again;
    root.OnKey(again);
    EXPECT_THAT(log, ElementsAre("low key 0 up", "high key 0 up", "first key 0 up"));
    EXPECT_EQ(root.GetListeners().size(), 3u);
}

TEST(InputDelegator, AThrowingHandlerIsLoggedAndTheTreeGoesOn) {
    std::vector<util::String> log;
    input::InputDelegator root("root");
    util::SharedPtr<Actor> thrower(
        new Actor(log, "thrower", [] { throw std::runtime_error("broken handler"); }));
    root.Add(thrower);
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        input::KeyEvent event;
        EXPECT_THROW(root.OnKey(event), std::runtime_error);
    }
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().text, "Exception caught in InputDelegator::FireEvent");
    // The lock was taken back: changes apply at once again.
    root.Remove(thrower);
    EXPECT_TRUE(root.GetListeners().empty());
}

// ---- The input root with SDL's queue ----

class InputTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(SDL_Init(SDL_INIT_EVENTS | SDL_INIT_JOYSTICK), 0) << SDL_GetError();
        util::Clock::SetSource(&FakeSeconds);
        input::Input::Get().Start();
    }

    void SetUp() override {
        m_recorder = RecorderPtr(new Recorder(m_log));
        input::Input::Get().Add(m_recorder);
        input::Input::Get().Reset();
        SDL_SetModState(KMOD_NONE);
    }
    void TearDown() override { SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT); }

    static void Push(SDL_Event event) { ASSERT_EQ(SDL_PushEvent(&event), 1) << SDL_GetError(); }
    static void Button(int button, bool down, int x, int y) {
        SDL_Event e{};
        e.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
        e.button.button = static_cast<Uint8>(button);
        e.button.x = x;
        e.button.y = y;
        Push(e);
    }
    static void Move(int x, int y, int dx, int dy) {
        SDL_Event e{};
        e.type = SDL_MOUSEMOTION;
        e.motion.x = x;
        e.motion.y = y;
        e.motion.xrel = dx;
        e.motion.yrel = dy;
        Push(e);
    }
    static void Key(input::SDLKey key, bool down, const char* text = nullptr) {
        SDL_Event e{};
        e.type = down ? SDL_KEYDOWN : SDL_KEYUP;
        e.key.keysym.sym = input::SdlKeycodeFromKey(key);
        Push(e);
        if (text) {
            SDL_Event t{};
            t.type = SDL_TEXTINPUT;
            SDL_strlcpy(t.text.text, text, sizeof t.text.text);
            Push(t);
        }
    }
    void Poll(double advance = 0) {
        s_now += advance;
        input::Input::Get().Poll();
    }

    std::vector<util::String> m_log;
    RecorderPtr m_recorder;
};

TEST_F(InputTest, AQuickPressIsAClickAtThePressAndThreeEndTheGesture) {
    Button(1, true, 10, 20);
    Button(1, false, 12, 21);
    Poll();
    EXPECT_THAT(m_log, ElementsAre("rec key 324 down", "rec key 324 up", "click 324 x1 (10,20)"));
    m_log.clear();
    // Second and third click within the time: the count goes on, the place stays.
    Button(1, true, 11, 20);
    Button(1, false, 11, 20);
    Button(1, true, 11, 20);
    Button(1, false, 11, 20);
    Button(1, true, 30, 30);
    Button(1, false, 30, 30);
    Poll(0.1);
    EXPECT_THAT(m_log, ElementsAre("rec key 324 down", "rec key 324 up", "click 324 x2 (10,20)",
                                   "rec key 324 down", "rec key 324 up", "click 324 x3 (10,20)",
                                   "rec key 324 down", "rec key 324 up", "click 324 x1 (30,30)"));
    Poll(1);
}

TEST_F(InputTest, AHeldPressBecomesADragAfterTheTimeOut) {
    Button(1, true, 50, 50);
    Poll();
    Poll(0.29);
    EXPECT_THAT(m_log, ElementsAre("rec key 324 down"));
    Poll(0.02);
    // The drag begins without motion, at the press.
    EXPECT_THAT(m_log, ElementsAre("rec key 324 down", "dragbegin (50,50) (50,50)"));
    m_log.clear();
    // A right press during the gesture is only a key; the drag goes on.
    Button(3, true, 51, 50);
    Move(53, 48, 3, -2);
    Button(1, false, 60, 40);
    Button(3, false, 60, 40);
    Poll();
    EXPECT_THAT(m_log, ElementsAre("rec key 326 down", "drag (3,-2) (53,48)", "rec key 324 up",
                                   "dragend (50,50) (60,40)", "rec key 326 up"));
}

TEST_F(InputTest, MotionBeyondTheToleranceStartsADragAtOnce) {
    Button(1, true, 100, 100);
    Move(102, 102, 2, 2);  // within 3.5 units
    Move(104, 101, 2, -1);
    Button(1, false, 104, 101);
    Poll();
    EXPECT_THAT(m_log, ElementsAre("rec key 324 down", "dragbegin (100,100) (100,100)",
                                   "drag (4,1) (104,101)", "rec key 324 up",
                                   "dragend (100,100) (104,101)"));
    // Positions are in GUI units: pixels over the GUI's scale.
    m_log.clear();
    input::Input::Get().GetGestureLimits().scale = 2;
    Button(1, true, 40, 60);
    Button(1, false, 40, 60);
    Poll();
    input::Input::Get().GetGestureLimits().scale = 1;
    EXPECT_THAT(m_log.back(), "click 324 x1 (20,30)");
    Poll(1);
}

TEST_F(InputTest, AConsumedPressStartsNoGestureAndTheWheelIsTwoKeys) {
    m_recorder->consumeKeys = true;
    Button(1, true, 5, 5);
    Poll();
    m_recorder->consumeKeys = false;
    Button(1, false, 5, 5);
    Poll(0.5);
    EXPECT_THAT(m_log, ElementsAre("rec key 324 down", "rec key 324 up"));
    m_log.clear();
    const int wheel = input::Input::Get().GetWheelPosition();
    SDL_Event e{};
    e.type = SDL_MOUSEWHEEL;
    e.wheel.y = 2;
    Push(e);
    e.wheel.y = -1;
    Push(e);
    Poll(0.5);
    EXPECT_THAT(m_log, ElementsAre("rec key 327 down", "rec key 327 up", "rec key 327 down",
                                   "rec key 327 up", "rec key 328 down", "rec key 328 up"));
    EXPECT_EQ(input::Input::Get().GetWheelPosition(), wheel + 1);
}

TEST_F(InputTest, PressesCarryTheirCharacterAndRepeatWhileHeld) {
    Key('a', true, "A");
    Key('a', false);
    Key(input::key::Return, true);
    Key(input::key::Return, false);
    Poll();
    // A release has no text of its own; it names its key's character.
    EXPECT_THAT(m_log, ElementsAre("rec key 97 down 'A'", "rec key 97 up 'a'",
                                   "rec key 13 down '\r'", "rec key 13 up '\n'"));
    m_log.clear();
    // A printable key that came without its text: the name gives the character, and the
    // warning that the system's text is broken comes once.
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        Key('b', true);
        Key('b', false);
        Key('c', true);
        Key('c', false);
        Poll();
    }
    EXPECT_THAT(m_log, ElementsAre("rec key 98 down 'b'", "rec key 98 up 'b'",
                                   "rec key 99 down 'c'", "rec key 99 up 'c'"));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].text, "SDL unicode doesn't work");
    m_log.clear();
    // Held: a repeat after half a second, then every 30 ms.
    Key('x', true, "x");
    Poll();
    Poll(0.49);
    EXPECT_EQ(m_log.size(), 1u);
    Poll(0.02);
    Poll(0.02);
    Poll(0.015);
    EXPECT_THAT(
        m_log, ElementsAre("rec key 120 down 'x'", "rec key 120 down 'x'", "rec key 120 down 'x'"));
    Key('x', false);
    Poll(1);
    EXPECT_EQ(m_log.size(), 4u);
}

TEST_F(InputTest, ModifiersNeedTheSystemAndTheKeysToAgree) {
    input::Input& in = input::Input::Get();
    EXPECT_TRUE(in.IsModifierDown(input::kNoModifier));
    Key(input::key::LShift, true);
    Poll();
    // The key alone is not enough, nor the system's state alone.
    EXPECT_FALSE(in.IsModifierDown(input::kShift));
    SDL_SetModState(KMOD_LSHIFT);
    EXPECT_TRUE(in.IsModifierDown(input::kShift));
    EXPECT_TRUE(in.IsModifierDown(input::kLeftShift));
    EXPECT_FALSE(in.IsModifierDown(input::kRightShift));
    EXPECT_FALSE(in.IsModifierDown(input::kNoModifier));
    SDL_SetModState(KMOD_LCTRL);
    EXPECT_FALSE(in.IsModifierDown(input::kCtrl));
    // Right Alt (Alt Gr) trusts the system alone.
    SDL_SetModState(KMOD_RALT);
    EXPECT_TRUE(in.IsModifierDown(input::kRightAlt));
    Key(input::key::LShift, false);
    Poll();
}

TEST_F(InputTest, WindowEventsArriveAsGeneralEvents) {
    SDL_Event e{};
    e.type = SDL_WINDOWEVENT;
    e.window.event = SDL_WINDOWEVENT_RESIZED;
    e.window.data1 = 800;
    e.window.data2 = 600;
    Push(e);
    SDL_Event text{};
    text.type = SDL_TEXTINPUT;
    SDL_strlcpy(text.text.text, "ü", sizeof text.text.text);
    Push(text);
    SDL_Event quit{};
    quit.type = SDL_QUIT;
    Push(quit);
    Poll();
    EXPECT_THAT(m_log, ElementsAre("general 1 800x600 ", "general 6 0x0 ü", "general 0 0x0 "));
}

}  // namespace
