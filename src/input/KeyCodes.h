#pragma once

namespace input {

// Every button of the program has a number in one space: the keyboard keys by the classic
// SDL key numbers (the same on every input layer, so that saved bindings keep their
// meaning), then mouse buttons, then joystick buttons and hat directions.
using SDLKey = int;

// One past the last keyboard key; mouse button n is SDLK_LAST + n.
constexpr SDLKey SDLK_LAST = 323;
constexpr int kMouseButtonCount = 256;
// Joystick j's keys start at kFirstJoystickKey + j * kKeysPerJoystick: buttons 0 to 255,
// then four directions for each of 32 hats.
constexpr SDLKey kFirstJoystickKey = SDLK_LAST + kMouseButtonCount;  // 579
constexpr int kJoystickButtonCount = 256;
constexpr int kJoystickHatCount = 32;
constexpr int kKeysPerJoystick = kJoystickButtonCount + kJoystickHatCount * 4;  // 384
constexpr int kJoystickCount = 32;
constexpr int KEYBUFFERSIZE = kFirstJoystickKey + kJoystickCount * kKeysPerJoystick;  // 12867
static_assert(KEYBUFFERSIZE == 12867);

// Mouse buttons as the key space numbers them (SDLK_LAST + button).
enum MouseButton : int {
    kMouseLeft = 1,
    kMouseMiddle = 2,
    kMouseRight = 3,
    kMouseWheelUp = 4,
    kMouseWheelDown = 5,
    // The side buttons; 4 and 5 stay the wheel's.
    kMouseX1 = 6,
    kMouseX2 = 7,
};

constexpr SDLKey MouseKey(int button) {
    return SDLK_LAST + button;
}

// Keyboard keys of the classic SDL numbering. Printable keys are their ASCII code
// (lower-case letters 'a' to 'z'); international keys run from World0 (160) to 255.
namespace key {
enum : SDLKey {
    Unknown = 0,
    Backspace = 8,
    Tab = 9,
    Clear = 12,
    Return = 13,
    Pause = 19,
    Escape = 27,
    Space = 32,
    Backquote = 96,
    Delete = 127,
    World0 = 160,
    World95 = 255,
    KP0 = 256,
    KP9 = 265,
    KPPeriod = 266,
    KPDivide = 267,
    KPMultiply = 268,
    KPMinus = 269,
    KPPlus = 270,
    KPEnter = 271,
    KPEquals = 272,
    Up = 273,
    Down = 274,
    Right = 275,
    Left = 276,
    Insert = 277,
    Home = 278,
    End = 279,
    PageUp = 280,
    PageDown = 281,
    F1 = 282,
    F15 = 296,
    NumLock = 300,
    CapsLock = 301,
    ScrollLock = 302,
    RShift = 303,
    LShift = 304,
    RCtrl = 305,
    LCtrl = 306,
    RAlt = 307,
    LAlt = 308,
    RMeta = 309,
    LMeta = 310,
    LSuper = 311,
    RSuper = 312,
    Mode = 313,
    Compose = 314,
    Help = 315,
    Print = 316,
    SysReq = 317,
    Break = 318,
    Menu = 319,
    Power = 320,
    Euro = 321,
    Undo = 322,
};
}  // namespace key

}  // namespace input
