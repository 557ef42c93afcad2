#include "input/SdlKeyMap.h"

#include <SDL_keycode.h>

#include "input/Key.h"

namespace input {
namespace {

struct KeycodePair {
    SDL_Keycode sdl;
    SDLKey classic;
};

// Every SDL2 keycode whose classic number is not the keycode itself. Where two keycodes
// share a key, the first is the one a key maps back to.
constexpr KeycodePair kKeycodes[] = {
    {SDLK_BACKSPACE, key::Backspace},
    {SDLK_TAB, key::Tab},
    {SDLK_CLEAR, key::Clear},
    {SDLK_RETURN, key::Return},
    {SDLK_PAUSE, key::Pause},
    {SDLK_ESCAPE, key::Escape},
    {SDLK_SPACE, key::Space},
    {SDLK_DELETE, key::Delete},
    {SDLK_KP_0, key::KP0},
    {SDLK_KP_1, key::KP0 + 1},
    {SDLK_KP_2, key::KP0 + 2},
    {SDLK_KP_3, key::KP0 + 3},
    {SDLK_KP_4, key::KP0 + 4},
    {SDLK_KP_5, key::KP0 + 5},
    {SDLK_KP_6, key::KP0 + 6},
    {SDLK_KP_7, key::KP0 + 7},
    {SDLK_KP_8, key::KP0 + 8},
    {SDLK_KP_9, key::KP9},
    {SDLK_KP_PERIOD, key::KPPeriod},
    {SDLK_KP_DIVIDE, key::KPDivide},
    {SDLK_KP_MULTIPLY, key::KPMultiply},
    {SDLK_KP_MINUS, key::KPMinus},
    {SDLK_KP_PLUS, key::KPPlus},
    {SDLK_KP_ENTER, key::KPEnter},
    {SDLK_KP_EQUALS, key::KPEquals},
    {SDLK_UP, key::Up},
    {SDLK_DOWN, key::Down},
    {SDLK_RIGHT, key::Right},
    {SDLK_LEFT, key::Left},
    {SDLK_INSERT, key::Insert},
    {SDLK_HOME, key::Home},
    {SDLK_END, key::End},
    {SDLK_PAGEUP, key::PageUp},
    {SDLK_PAGEDOWN, key::PageDown},
    {SDLK_F1, key::F1},
    {SDLK_F2, key::F1 + 1},
    {SDLK_F3, key::F1 + 2},
    {SDLK_F4, key::F1 + 3},
    {SDLK_F5, key::F1 + 4},
    {SDLK_F6, key::F1 + 5},
    {SDLK_F7, key::F1 + 6},
    {SDLK_F8, key::F1 + 7},
    {SDLK_F9, key::F1 + 8},
    {SDLK_F10, key::F1 + 9},
    {SDLK_F11, key::F1 + 10},
    {SDLK_F12, key::F1 + 11},
    {SDLK_F13, key::F1 + 12},
    {SDLK_F14, key::F1 + 13},
    {SDLK_F15, key::F15},
    {SDLK_NUMLOCKCLEAR, key::NumLock},
    {SDLK_CAPSLOCK, key::CapsLock},
    {SDLK_SCROLLLOCK, key::ScrollLock},
    {SDLK_RSHIFT, key::RShift},
    {SDLK_LSHIFT, key::LShift},
    {SDLK_RCTRL, key::RCtrl},
    {SDLK_LCTRL, key::LCtrl},
    {SDLK_RALT, key::RAlt},
    {SDLK_LALT, key::LAlt},
    // SDL2's GUI keys are the classic meta keys, as KMOD_GUI is the classic meta modifier.
    {SDLK_RGUI, key::RMeta},
    {SDLK_LGUI, key::LMeta},
    {SDLK_MODE, key::Mode},
    {SDLK_HELP, key::Help},
    {SDLK_PRINTSCREEN, key::Print},
    {SDLK_SYSREQ, key::SysReq},
    {SDLK_APPLICATION, key::Menu},
    {SDLK_MENU, key::Menu},
    {SDLK_POWER, key::Power},
    {SDLK_UNDO, key::Undo},
};

// The keys whose SDL2 keycode is their own number: the printable characters and the
// international keys, whose keycodes are their Latin-1 characters.
bool IsIdentityKey(int code) {
    return Key::IsCharacterKey(code) || (code >= key::World0 && code <= key::World95);
}

}  // namespace

SDLKey KeyFromSdlKeycode(int sdlKeycode) {
    if (IsIdentityKey(sdlKeycode)) {
        return sdlKeycode;
    }
    for (const KeycodePair& pair : kKeycodes) {
        if (pair.sdl == sdlKeycode) {
            return pair.classic;
        }
    }
    return key::Unknown;
}

int SdlKeycodeFromKey(SDLKey key) {
    if (IsIdentityKey(key)) {
        return key;
    }
    for (const KeycodePair& pair : kKeycodes) {
        if (pair.classic == key) {
            return pair.sdl;
        }
    }
    return SDLK_UNKNOWN;
}

}  // namespace input
