#include "input/Key.h"

#include <map>

#include "logging/Log.h"
#include "util/Assert.h"
#include "util/Exception.h"

namespace input {
namespace {

struct FixedName {
    SDLKey key;
    const char* name;
};

// The keyboard keys named by a word; characters, world keys, keypad digits and function
// keys are named by their ranges.
constexpr FixedName kFixedNames[] = {
    {key::Backspace, "backspace"},
    {key::Tab, "tab"},
    {key::Clear, "clear"},
    {key::Return, "return"},
    {key::Pause, "pause"},
    {key::Escape, "escape"},
    {key::Space, "space"},
    {key::Delete, "delete"},
    {key::KPPeriod, "keypad_period"},
    {key::KPDivide, "keypad_divide"},
    {key::KPMultiply, "keypad_multiply"},
    {key::KPMinus, "keypad_minus"},
    {key::KPPlus, "keypad_plus"},
    {key::KPEnter, "enter"},
    {key::KPEquals, "equals"},
    {key::Up, "up"},
    {key::Down, "down"},
    {key::Right, "right"},
    {key::Left, "left"},
    {key::Insert, "insert"},
    {key::Home, "home"},
    {key::End, "end"},
    {key::PageUp, "page_up"},
    {key::PageDown, "page_down"},
    {key::NumLock, "numlock"},
    {key::CapsLock, "caps_lock"},
    {key::ScrollLock, "scroll_lock"},
    {key::RShift, "right_shift"},
    {key::LShift, "left_shift"},
    {key::RCtrl, "right_ctrl"},
    {key::LCtrl, "left_ctrl"},
    {key::RAlt, "right_alt"},
    {key::LAlt, "left_alt"},
    {key::RMeta, "right_meta"},
    {key::LMeta, "left_meta"},
    {key::LSuper, "left_super"},
    {key::RSuper, "right_super"},
    {key::Mode, "alt_graph"},
    {key::Compose, "compose"},
    {key::Help, "help"},
    {key::Print, "print_screen"},
    {key::SysReq, "sys_req"},
    {key::Break, "break"},
    {key::Menu, "menu"},
    {key::Power, "power"},
    {key::Euro, "euro"},
    {key::Undo, "undo"},
};

constexpr const char* kMouseNames[] = {"mouse_left", "mouse_middle", "mouse_right",
                                       "mouse_wheel_up", "mouse_wheel_down"};
constexpr const char* kHatDirections[] = {"_up", "_right", "_down", "_left"};

bool s_initialized = false;
std::vector<std::string> s_names;
std::map<util::String, SDLKey> s_keysByName;

std::string KeyboardKeyName(SDLKey code) {
    if (Key::IsCharacterKey(code)) {
        return std::string(1, static_cast<char>(code));
    }
    if (code >= key::World0 && code <= key::World95) {
        return "world_" + std::to_string(code - key::World0);
    }
    if (code >= key::KP0 && code <= key::KP9) {
        return "keypad_" + std::to_string(code - key::KP0);
    }
    if (code >= key::F1 && code <= key::F15) {
        return "f" + std::to_string(code - key::F1 + 1);
    }
    for (const FixedName& fixed : kFixedNames) {
        if (fixed.key == code) {
            return fixed.name;
        }
    }
    return std::string();
}

std::string MouseButtonName(int button) {
    if (button >= kMouseLeft && button <= kMouseWheelDown) {
        return kMouseNames[button - kMouseLeft];
    }
    return "mouse_" + std::to_string(button);
}

}  // namespace

void Key::Init() {
    if (s_initialized) {
        return;
    }
    s_initialized = true;
    s_names.assign(KEYBUFFERSIZE, std::string());
    int destIndex = 0;
    auto add = [&destIndex](std::string name) {
        if (destIndex < KEYBUFFERSIZE) {
            s_names[destIndex] = std::move(name);
        }
        ++destIndex;
    };
    for (SDLKey code = 0; code < SDLK_LAST; ++code) {
        add(KeyboardKeyName(code));
    }
    for (int button = 0; button < kMouseButtonCount; ++button) {
        add(MouseButtonName(button));
    }
    for (int joystick = 0; joystick < kJoystickCount; ++joystick) {
        const std::string prefix = "joy_" + std::to_string(joystick) + "_";
        for (int button = 0; button < kJoystickButtonCount; ++button) {
            add(prefix + std::to_string(button));
        }
        for (int hat = 0; hat < kJoystickHatCount; ++hat) {
            for (const char* direction : kHatDirections) {
                add(prefix + std::to_string(hat) + direction);
            }
        }
    }
    CODE_ASSERT(destIndex == KEYBUFFERSIZE);
    // In the order of the keys, so that of two keys with one name the lower one keeps it.
    for (SDLKey key = 0; key < KEYBUFFERSIZE; ++key) {
        if (!s_names[key].empty()) {
            s_keysByName.emplace(s_names[key], key);
        }
    }
}

SDLKey Key::GetKeyFromName(const util::String& name) {
    Init();
    const auto found = s_keysByName.find(name);
    if (found == s_keysByName.end()) {
        VORRA_THROW(BadDataException, "Unknown name of key \"" + name + "\"");
    }
    return found->second;
}

std::string Key::GetKeyName(SDLKey key) {
    Init();
    if (key < 0 || key >= KEYBUFFERSIZE || s_names[key].empty()) {
        VORRA_THROW(BadDataException, "Unknown key");
    }
    return s_names[key];
}

std::vector<util::String> Key::GetAllNames() {
    Init();
    std::vector<util::String> names;
    for (const std::string& name : s_names) {
        if (!name.empty()) {
            names.push_back(name);
        }
    }
    return names;
}

bool Key::IsCharacterKey(SDLKey key) {
    return (key >= '!' && key <= '@' && key != '%') || (key >= '[' && key <= 'z');
}

bool Key::IsMouseKey(SDLKey key) {
    return key >= SDLK_LAST && key < kFirstJoystickKey;
}

bool Key::IsJoystickKey(SDLKey key) {
    return key >= kFirstJoystickKey && key < KEYBUFFERSIZE;
}

int Key::GetJoystickOfKey(SDLKey key) {
    return (key - kFirstJoystickKey) / kKeysPerJoystick;
}

int Key::GetIndexInJoystick(SDLKey key) {
    return (key - kFirstJoystickKey) % kKeysPerJoystick;
}

SDLKey Key::GetJoystickButtonKey(int joystick, int button) {
    return kFirstJoystickKey + joystick * kKeysPerJoystick + button;
}

SDLKey Key::GetJoystickHatKey(int joystick, int hat, int mask) {
    int direction;
    switch (mask) {
        case 1:
            direction = 0;
            break;
        case 2:
            direction = 1;
            break;
        case 4:
            direction = 2;
            break;
        case 8:
            direction = 3;
            break;
        default:
            Log(logging::Error, "Bad hat-mask in Key::GetJoystickHatKey");
            return 0;
    }
    return GetJoystickButtonKey(joystick, kJoystickButtonCount + hat * 4 + direction);
}

bool Key::IsModifierKey(SDLKey key) {
    return key >= key::RShift && key <= key::Mode;
}

}  // namespace input
