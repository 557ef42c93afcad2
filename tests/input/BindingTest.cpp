// Key combinations, direction sources, joysticks (SDL's virtual ones) and the script's key
// bindings, with the input root fed through SDL's queue.

#include <SDL.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "input/ButtonInput.h"
#include "input/DirInput.h"
#include "input/Input.h"
#include "input/Key.h"
#include "input/KeyBindingSource.h"
#include "input/SdlKeyMap.h"
#include "logging/LogCapture.h"
#include "script/KeyBinder.h"
#include "script/Parser.h"
#include "script/Reflected.h"

namespace {

class BindingTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(SDL_Init(SDL_INIT_EVENTS | SDL_INIT_JOYSTICK), 0) << SDL_GetError();
        input::Input::Get().Start();
        input::KeyBindingSource::Install();
        script::Parser::Get().SetErrorHandler(
            [](const util::String& message) { s_errors.push_back(message); });
        s_probe = script::ReflectedPtr(new script::Reflected("Probe"));
        s_probe->AddAttrib(s_count, "count", 0);
        script::AddToRoot(s_probe);
    }
    void SetUp() override {
        s_errors.clear();
        s_count->SetNative(0);
    }
    void TearDown() override {
        // Every key up, so that tests do not hold keys for each other.
        for (input::SDLKey key = 1; key < input::SDLK_LAST; ++key) {
            if (input::Input::Get().IsKeyDown(key)) {
                Key(key, false);
            }
        }
        input::Input::Get().Poll();
    }

    // A character key's press comes with its text, as from a real keyboard.
    static void Key(input::SDLKey key, bool down) {
        SDL_Event e{};
        e.type = down ? SDL_KEYDOWN : SDL_KEYUP;
        e.key.keysym.sym = input::SdlKeycodeFromKey(key);
        SDL_PushEvent(&e);
        if (down && input::Key::IsCharacterKey(key)) {
            SDL_Event text{};
            text.type = SDL_TEXTINPUT;
            text.text.text[0] = static_cast<char>(key);
            SDL_PushEvent(&text);
        }
    }
    static void Tap(input::SDLKey key) {
        Key(key, true);
        Key(key, false);
    }
    static void Poll() { input::Input::Get().Poll(); }
    // Runs the code; what it logged as failed statements comes back.
    static std::vector<util::String> Run(const util::String& code) {
        std::vector<logging::CapturedLine> lines;
        {
            logging::LogCapture capture(lines);
            script::Parser::Get().Execute(code);
        }
        std::vector<util::String> failures;
        for (const auto& line : lines) {
            if (line.level == logging::Warning) {
                failures.push_back(line.text);
            }
        }
        return failures;
    }
    static int Count() { return s_count->Get(); }

    static inline std::vector<util::String> s_errors;
    static inline script::ReflectedPtr s_probe;
    static inline script::AttribPtr<int> s_count;
};

TEST_F(BindingTest, ACombinationFiresOnItsLastKeyWithNoOtherModifier) {
    input::ButtonInputPtr save(new input::ButtonInput("s left_ctrl"));
    input::ButtonInputPtr plain(new input::ButtonInput("s"));
    int saves = 0;
    int plains = 0;
    save->Listen();
    plain->Listen();
    util::SharedPtr<util::Pointee> owner(new util::Pointee());
    save->GetCallbacks().Add(owner, [&] { ++saves; });
    plain->GetCallbacks().Add(owner, [&] { ++plains; });
    Key(input::key::LCtrl, true);
    Tap('s');
    Key(input::key::LCtrl, false);
    Poll();
    EXPECT_EQ(saves, 1);
    EXPECT_EQ(plains, 0);
    // The order of the presses does not matter, only which key completes it.
    Key('s', true);
    Key(input::key::LCtrl, true);
    Poll();
    EXPECT_EQ(saves, 2);
    EXPECT_EQ(plains, 1);
    EXPECT_TRUE(save->IsDown());
    Key('s', false);
    Key(input::key::LCtrl, false);
    Poll();
    EXPECT_FALSE(save->IsDown());

    // A toggle is a switch: on at one press, off at the next.
    input::ButtonInputPtr toggle(new input::ButtonInput("toggle f2"));
    toggle->Listen();
    EXPECT_EQ(toggle->ToString(), "toggle f2");
    Tap(input::key::F1 + 1);
    Poll();
    EXPECT_TRUE(toggle->IsDown());
    Tap(input::key::F1 + 1);
    Poll();
    EXPECT_FALSE(toggle->IsDown());
}

TEST_F(BindingTest, KeyDirectionsCancelAndStayWithinOne) {
    const input::DirInputPtr keys = input::MakeDirInput("keys right up left down");
    ASSERT_TRUE(keys);
    EXPECT_EQ(keys->ToString(), "keys right up left down");
    Key(input::key::Right, true);
    Key(input::key::Left, true);
    Poll();
    EXPECT_EQ(keys->GetDir(), math::Vec2(0, 0));
    Key(input::key::Left, false);
    Key(input::key::Up, true);
    Poll();
    EXPECT_NEAR(keys->GetDir().Length(), 1.0f, 1e-6f);
    EXPECT_GT(keys->GetDir().x, 0.7f);
    EXPECT_GT(keys->GetDir().y, 0.7f);

    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        EXPECT_FALSE(input::MakeDirInput("arrows please"));
        EXPECT_THROW(input::MakeDirInput("keys right up nokey down"), BadDataException);
    }
    EXPECT_EQ(lines.front().text, "Failed to find DirInput \"arrows please\"");
}

TEST_F(BindingTest, JoysticksAreKeysAndDirectionsAndMayBeUnplugged) {
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        EXPECT_FALSE(input::MakeDirInput("joy 0 axis 0 1"));
    }
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().text, "No joystick connected, cannot find DirInput \"joy 0 axis 0 1\"");

    // Two devices plugged in while the program runs.
    const int first = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_GAMECONTROLLER, 2, 4, 1);
    const int second = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_GAMECONTROLLER, 2, 4, 1);
    ASSERT_GE(second, 0) << SDL_GetError();
    {
        logging::LogCapture capture(lines);
        Poll();
    }
    ASSERT_EQ(input::Input::Get().GetConnectedJoysticks().size(), 2u);
    SDL_Joystick* pad = SDL_JoystickOpen(second);
    ASSERT_TRUE(pad);
    const int number = input::Input::Get().GetJoysticks()[1]->GetNumber();
    EXPECT_EQ(number, 1);

    // A number beyond those connected wraps round them: 7 is joystick 1 of two.
    const input::DirInputPtr stick = input::MakeDirInput("joy 7 axis 0 1");
    ASSERT_TRUE(stick);
    EXPECT_EQ(stick->ToString(), "joy 1 axis 0 1");
    SDL_JoystickSetVirtualAxis(pad, 0, 32767);
    SDL_JoystickSetVirtualAxis(pad, 1, -32768);
    // A hat is four keys, and only changes are news.
    SDL_JoystickSetVirtualHat(pad, 0, SDL_HAT_UP | SDL_HAT_RIGHT);
    SDL_JoystickSetVirtualButton(pad, 3, SDL_PRESSED);
    Poll();
    EXPECT_NEAR(stick->GetDir().x, 1.0f, 1e-4f);
    EXPECT_NEAR(stick->GetDir().y, 1.0f, 1e-4f);  // pushed away from the player: up
    input::Input& in = input::Input::Get();
    EXPECT_TRUE(in.IsKeyDown(input::Key::GetKeyFromName("joy_1_0_up")));
    EXPECT_TRUE(in.IsKeyDown(input::Key::GetKeyFromName("joy_1_0_right")));
    EXPECT_FALSE(in.IsKeyDown(input::Key::GetKeyFromName("joy_1_0_down")));
    EXPECT_TRUE(in.IsKeyDown(input::Key::GetKeyFromName("joy_1_3")));
    const input::DirInputPtr hat = input::MakeDirInput("joy 1 hat 0");
    ASSERT_TRUE(hat);
    EXPECT_GT(hat->GetDir().x, 0.7f);

    // Unplugged: its keys come up, its directions read nothing, and nothing breaks.
    SDL_JoystickClose(pad);
    SDL_JoystickDetachVirtual(second);
    {
        logging::LogCapture capture(lines);
        Poll();
    }
    EXPECT_EQ(lines.back().text, "Joystick 1 was unplugged");
    EXPECT_FALSE(in.IsKeyDown(input::Key::GetKeyFromName("joy_1_0_up")));
    EXPECT_FALSE(in.IsKeyDown(input::Key::GetKeyFromName("joy_1_3")));
    EXPECT_EQ(stick->GetDir(), math::Vec2(0, 0));
    EXPECT_EQ(hat->GetDir(), math::Vec2(0, 0));
    EXPECT_EQ(input::MakeDirInput("joy 1 axis 0 1")->ToString(), "joy 0 axis 0 1");
    SDL_JoystickDetachVirtual(first);
    {
        logging::LogCapture capture(lines);
        Poll();
    }
    EXPECT_TRUE(input::Input::Get().GetConnectedJoysticks().empty());
}

TEST_F(BindingTest, KeysBindRunsFunctionsAndRefusesWhatItCannotBind) {
    Run("Keys.bind(\"f3\", { Probe.count = Probe.count + 1 })");
    Tap(input::key::F1 + 2);
    Poll();
    EXPECT_EQ(Count(), 1);
    // Binding again replaces the function and adds no second callback.
    Run("Keys.bind(\"f3\", { Probe.count = Probe.count + 10 })");
    Tap(input::key::F1 + 2);
    Poll();
    EXPECT_EQ(Count(), 11);
    // "toggle f3" is a binding of its own.
    Run("Keys.bind(\"toggle f3\", { Probe.count = Probe.count + 100 })");
    Tap(input::key::F1 + 2);
    Poll();
    EXPECT_EQ(Count(), 121);

    const std::pair<const char*, const char*> refused[] = {
        {"Keys.bind(\"\", { Probe.count = 1 })", "Bad button"},
        {"Keys.bind(\"f3 nokey\", { Probe.count = 1 })", "Unknown name of key \"nokey\""},
        {"Keys.bind(3, { Probe.count = 1 })", "Not a string"},
        {"Keys.bind(\"f3\", (x) => { Probe.count = x })",
         "The second argument should be a function taking no arguments"},
        {"Keys.bind(\"f3\", [1, 2])",
         "The second argument should be a function taking no arguments"},
    };
    for (const auto& [code, message] : refused) {
        const std::vector<util::String> failures = Run(code);
        ASSERT_EQ(failures.size(), 1u) << code;
        EXPECT_THAT(failures[0], testing::HasSubstr(message)) << code;
    }
    Tap(input::key::F1 + 2);
    Poll();
    EXPECT_EQ(Count(), 231);

    // A failing statement of a binding costs only itself; after unbind the key's callback
    // finds nothing to run, which is logged.
    Run("Keys.bind(\"f4\", { Probe.count = \"many\"; Probe.count = 5 })");
    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        Tap(input::key::F1 + 3);
        Poll();
        EXPECT_EQ(Count(), 5);
        Tap(input::key::F1 + 3);
        Run("Keys.unbind(\"f4\")");
        Poll();
    }
    std::vector<util::String> errors;
    for (const auto& line : lines) {
        errors.push_back(line.text);
    }
    EXPECT_THAT(errors, testing::Contains(testing::HasSubstr("Not an integer")));
    EXPECT_EQ(errors.back(), "Button combination \"f4\" failed to execute its command.");
    Run("Keys.unbind(\"f4\")");
    Run("Keys.unbind(\"f3\")");
    Run("Keys.unbind(\"toggle f3\")");
}

TEST_F(BindingTest, BindingsSurviveASaveAndALoadOfTheConfiguration) {
    Run("Keys.bind(\"left_ctrl f5\", { Probe.count = Probe.count + 1 })");
    Run("Keys.bind(\"toggle mouse_middle\", { Probe.count = Probe.count + 2 })");
    const util::String path = testing::TempDir() + "bindings.cfg";
    ASSERT_TRUE(script::Parser::Get().SaveConfig(path));
    Run("Keys.unbind(\"left_ctrl f5\")");
    Run("Keys.unbind(\"toggle mouse_middle\")");
    EXPECT_EQ(script::Parser::Get().GetKeyBinder().GetBindingCount(), 0u);

    EXPECT_THAT(Run("Keys.unbind(\"f9\")"), testing::IsEmpty());

    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        script::Parser::Get().LoadConfig(path);
    }
    std::remove(path.c_str());
    EXPECT_EQ(script::Parser::Get().GetKeyBinder().GetBindingCount(), 2u);
    for (const auto& line : lines) {
        EXPECT_NE(line.level, logging::Warning) << line.text;
    }
    Key(input::key::LCtrl, true);
    Tap(input::key::F1 + 4);
    Key(input::key::LCtrl, false);
    Poll();
    EXPECT_EQ(Count(), 1);
    input::Input::Get().HandleMouseButton(input::kMouseMiddle, true, math::Vec2(0, 0));
    input::Input::Get().HandleMouseButton(input::kMouseMiddle, false, math::Vec2(0, 0));
    EXPECT_EQ(Count(), 3);
}

}  // namespace
