#include "input/Key.h"

#include <SDL_keycode.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "input/SdlKeyMap.h"
#include "logging/LogCapture.h"
#include "util/Exception.h"

using input::Key;

namespace {

// The message of the BadDataException the call throws, or "" when it throws none. The
// throw must log its Debug line; the capture keeps it out of the test's output.
template <class F>
util::String BadDataMessage(F call) {
    std::vector<logging::CapturedLine> lines;
    logging::LogCapture capture(lines);
    try {
        call();
    } catch (const BadDataException& e) {
        EXPECT_EQ(lines.size(), 1u);
        if (!lines.empty()) {
            EXPECT_EQ(lines[0].level, logging::Debug);
            EXPECT_EQ(lines[0].text.rfind("Exception thrown: " + e.Message() + " from ", 0), 0u);
        }
        return e.Message();
    }
    return util::String();
}

}  // namespace

TEST(Key, EveryNameRoundTripsAndNamesAreUnique) {
    const std::vector<util::String> names = Key::GetAllNames();
    EXPECT_EQ(std::set<util::String>(names.begin(), names.end()).size(), names.size());
    for (const util::String& name : names) {
        EXPECT_EQ(Key::GetKeyName(Key::GetKeyFromName(name)), name);
    }
    EXPECT_EQ(Key::GetKeyName(input::KEYBUFFERSIZE - 1), "joy_31_31_left");
}

TEST(Key, NamesHaveTheirNumbers) {
    EXPECT_EQ(Key::GetKeyFromName("mouse_left"), 324);
    EXPECT_EQ(Key::GetKeyFromName("mouse_wheel_down"), 328);
    EXPECT_EQ(Key::GetKeyFromName("mouse_0"), 323);
    EXPECT_EQ(Key::GetKeyFromName("mouse_6"), 329);
    EXPECT_EQ(Key::GetKeyFromName("joy_0_3"), 582);
    EXPECT_EQ(Key::GetKeyFromName("joy_1_0_left"), 579 + 384 + 256 + 3);
    EXPECT_EQ(Key::GetKeyFromName("page_up"), 280);
    EXPECT_EQ(Key::GetKeyFromName("a"), 97);
    EXPECT_EQ(Key::GetKeyFromName("\\"), 92);
    EXPECT_EQ(Key::GetKeyFromName("f15"), 296);
    EXPECT_EQ(Key::GetKeyFromName("world_95"), 255);
    EXPECT_EQ(Key::GetKeyFromName("keypad_9"), 265);
    EXPECT_EQ(Key::GetKeyFromName("enter"), 271);
    EXPECT_EQ(Key::GetKeyFromName("alt_graph"), 313);
    EXPECT_EQ(Key::GetKeyName(input::key::Return), "return");
    // SDL's classic numbering had no key for these characters.
    for (char c : util::String("%{|}~A")) {
        EXPECT_EQ(BadDataMessage([c] { Key::GetKeyName(c); }), "Unknown key") << c;
    }
}

TEST(Key, UnknownNamesAndKeysThrow) {
    EXPECT_EQ(BadDataMessage([] { Key::GetKeyFromName("nosuchkey"); }),
              "Unknown name of key \"nosuchkey\"");
    for (input::SDLKey key : {-1, input::KEYBUFFERSIZE, 1, 297}) {
        EXPECT_EQ(BadDataMessage([key] { Key::GetKeyName(key); }), "Unknown key") << key;
    }
}

TEST(Key, JoystickAndModifierKeys) {
    const input::SDLKey hat = Key::GetJoystickHatKey(2, 5, 8);
    EXPECT_EQ(Key::GetKeyName(hat), "joy_2_5_left");
    EXPECT_TRUE(Key::IsJoystickKey(hat));
    EXPECT_EQ(Key::GetJoystickOfKey(hat), 2);
    EXPECT_EQ(Key::GetIndexInJoystick(hat), 256 + 5 * 4 + 3);
    EXPECT_EQ(Key::GetKeyName(Key::GetJoystickButtonKey(31, 255)), "joy_31_255");
    EXPECT_FALSE(Key::IsJoystickKey(input::KEYBUFFERSIZE));
    EXPECT_TRUE(Key::IsMouseKey(Key::GetKeyFromName("mouse_255")));
    EXPECT_FALSE(Key::IsMouseKey(Key::GetKeyFromName("joy_0_0")));

    std::vector<logging::CapturedLine> lines;
    {
        logging::LogCapture capture(lines);
        EXPECT_EQ(Key::GetJoystickHatKey(0, 0, 3), 0);
    }
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, logging::Error);
    EXPECT_EQ(lines[0].text, "Bad hat-mask in Key::GetJoystickHatKey");

    for (input::SDLKey key = 0; key < input::SDLK_LAST; ++key) {
        const bool modifier = key >= input::key::RShift && key <= input::key::Mode;
        EXPECT_EQ(Key::IsModifierKey(key), modifier) << key;
    }
}

TEST(SdlKeyMap, KeycodesRoundTrip) {
    int mapped = 0;
    for (input::SDLKey key = 0; key < input::SDLK_LAST; ++key) {
        const int keycode = input::SdlKeycodeFromKey(key);
        if (keycode != 0) {
            ++mapped;
            EXPECT_EQ(input::KeyFromSdlKeycode(keycode), key) << key;
            EXPECT_NO_THROW(Key::GetKeyName(key)) << key;
        }
    }
    // Every named keyboard key but compose, break, euro and the two super keys (SDL2's GUI
    // keys are the meta keys) has a keycode.
    int named = 0;
    for (const util::String& name : Key::GetAllNames()) {
        named += Key::GetKeyFromName(name) < input::SDLK_LAST ? 1 : 0;
    }
    EXPECT_EQ(mapped, named - 5);
    EXPECT_EQ(input::KeyFromSdlKeycode(SDLK_PERCENT), 0);
    EXPECT_EQ(input::KeyFromSdlKeycode(SDLK_F16), 0);
    EXPECT_EQ(input::SdlKeycodeFromKey(input::key::Compose), 0);
    EXPECT_EQ(input::SdlKeycodeFromKey(input::kFirstJoystickKey), 0);
}
