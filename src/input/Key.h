#pragma once

#include <string>
#include <vector>

#include "input/KeyCodes.h"
#include "util/String.h"

namespace input {

// Names of the keys of the whole key space, as bindings and configuration files spell
// them: "a", "page_up", "keypad_5", "mouse_left", "joy_0_3" (joystick 0, button 3),
// "joy_1_0_left" (joystick 1, hat 0, left). The tables are made on first use.
class Key {
public:
    // Makes the tables; later calls do nothing.
    static void Init();

    // The key of a name; an unknown name throws BadDataException.
    static SDLKey GetKeyFromName(const util::String& name);
    // The name of a key; a key without a name throws BadDataException.
    static std::string GetKeyName(SDLKey key);
    // Every name, in the order of the keys.
    static std::vector<util::String> GetAllNames();

    // Whether the classic numbering has a key for this printable ASCII character: the
    // punctuation, digits and lower-case letters, but no '%', '{', '|', '}' or '~'.
    static bool IsCharacterKey(SDLKey key);

    static bool IsMouseKey(SDLKey key);
    static bool IsJoystickKey(SDLKey key);
    static int GetJoystickOfKey(SDLKey key);
    // The button, or 256 + hat * 4 + direction, within the joystick's keys.
    static int GetIndexInJoystick(SDLKey key);
    static SDLKey GetJoystickButtonKey(int joystick, int button);
    // The mask is one of SDL's hat bits: 1 up, 2 right, 4 down, 8 left. Any other value
    // logs an error and gives 0.
    static SDLKey GetJoystickHatKey(int joystick, int hat, int mask);

    // Shift, ctrl, alt, meta, super and alt graph, on either side.
    static bool IsModifierKey(SDLKey key);
};

}  // namespace input
