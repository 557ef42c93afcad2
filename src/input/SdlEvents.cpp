// The translation of SDL2's events into the input records. SDL2 keys become the classic
// key numbers, the text of a press is merged into the press, the wheel becomes presses of
// wheel buttons, and joysticks are found by SDL's instance ids.

#include "input/SdlEvents.h"

#include <SDL.h>

#include <cstring>

#include "input/Events.h"
#include "input/Input.h"
#include "input/SdlKeyMap.h"

namespace input::sdl {
namespace {

static_assert(sizeof(SDL_Event) <= sizeof(InputEvent::raw));

// The first character of UTF-8 text as a code point.
unsigned FirstCodePoint(const char* text) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    if (bytes[0] < 0x80) {
        return bytes[0];
    }
    int extra = bytes[0] >= 0xf0 ? 3 : bytes[0] >= 0xe0 ? 2 : 1;
    unsigned point = bytes[0] & (0x3f >> extra);
    for (int i = 1; i <= extra && (bytes[i] & 0xc0) == 0x80; ++i) {
        point = (point << 6) | (bytes[i] & 0x3f);
    }
    return point;
}

// SDL2 sends the text a press types as an event of its own, right behind the press.
unsigned TakeTextOfPress() {
    SDL_Event next;
    if (SDL_PeepEvents(&next, 1, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) == 1 &&
        next.type == SDL_TEXTINPUT) {
        SDL_PeepEvents(&next, 1, SDL_GETEVENT, SDL_TEXTINPUT, SDL_TEXTINPUT);
        return FirstCodePoint(next.text.text);
    }
    return 0;
}

// The control characters that keys typed in the classic layer, where SDL2 sends no text.
unsigned ControlCharacter(const SDL_Keysym& symbol) {
    switch (symbol.sym) {
        case SDLK_RETURN:
        case SDLK_KP_ENTER:
            return '\r';
        case SDLK_TAB:
            return '\t';
        case SDLK_BACKSPACE:
            return '\b';
        case SDLK_ESCAPE:
            return 27;
        case SDLK_DELETE:
            return 127;
        default:
            break;
    }
    if ((symbol.mod & KMOD_CTRL) && symbol.sym >= SDLK_a && symbol.sym <= SDLK_z) {
        return symbol.sym - SDLK_a + 1;
    }
    return 0;
}

void HandleKey(Input& input, const SDL_KeyboardEvent& key) {
    const bool down = key.type == SDL_KEYDOWN;
    unsigned unicode = 0;
    if (down) {
        unicode = TakeTextOfPress();
        if (unicode == 0) {
            unicode = ControlCharacter(key.keysym);
        }
    }
    // The input root repeats held keys itself, at its own pace.
    if (key.repeat) {
        return;
    }
    input.HandleKey(KeyFromSdlKeycode(key.keysym.sym), down, unicode);
}

void HandleWheel(Input& input, const SDL_MouseWheelEvent& wheel) {
    int notches = wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -wheel.y : wheel.y;
    int x = 0;
    int y = 0;
    SDL_GetMouseState(&x, &y);
    const math::Vec2 position(static_cast<float>(x), static_cast<float>(y));
    // A flung wheel is a few presses, not hundreds.
    notches = notches > 10 ? 10 : notches < -10 ? -10 : notches;
    const int button = notches > 0 ? kMouseWheelUp : kMouseWheelDown;
    for (int i = 0; i < (notches > 0 ? notches : -notches); ++i) {
        input.HandleMouseButton(button, true, position);
        input.HandleMouseButton(button, false, position);
    }
}

int ClassicMouseButton(Uint8 button) {
    switch (button) {
        case SDL_BUTTON_X1:
            return kMouseX1;
        case SDL_BUTTON_X2:
            return kMouseX2;
        default:
            return button;
    }
}

void HandleGeneral(Input& input, const SDL_Event& raw) {
    InputEvent event;
    event.rawType = raw.type;
    std::memcpy(event.raw.data(), &raw, sizeof raw);
    switch (raw.type) {
        case SDL_QUIT:
            event.kind = InputEvent::Kind::Quit;
            break;
        case SDL_WINDOWEVENT:
            switch (raw.window.event) {
                case SDL_WINDOWEVENT_RESIZED:
                    event.kind = InputEvent::Kind::Resized;
                    event.width = raw.window.data1;
                    event.height = raw.window.data2;
                    break;
                case SDL_WINDOWEVENT_EXPOSED:
                    event.kind = InputEvent::Kind::Exposed;
                    break;
                case SDL_WINDOWEVENT_FOCUS_GAINED:
                    event.kind = InputEvent::Kind::FocusGained;
                    break;
                case SDL_WINDOWEVENT_FOCUS_LOST:
                    event.kind = InputEvent::Kind::FocusLost;
                    break;
                default:
                    break;
            }
            break;
        case SDL_DROPFILE:
        case SDL_DROPTEXT:
            event.kind =
                raw.type == SDL_DROPFILE ? InputEvent::Kind::FileDropped : InputEvent::Kind::Text;
            if (raw.drop.file) {
                event.text = raw.drop.file;
                SDL_free(raw.drop.file);
            }
            break;
        case SDL_TEXTINPUT:
            // Text that came without a press: an input method's, say.
            event.kind = InputEvent::Kind::Text;
            event.text = raw.text.text;
            break;
        default:
            break;
    }
    input.HandleGeneral(event);
}

}  // namespace

bool PollEvent(Input& input) {
    SDL_Event event;
    if (!SDL_PollEvent(&event)) {
        return false;
    }
    switch (event.type) {
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            input.HandleMouseButton(
                ClassicMouseButton(event.button.button), event.type == SDL_MOUSEBUTTONDOWN,
                math::Vec2(static_cast<float>(event.button.x), static_cast<float>(event.button.y)));
            break;
        case SDL_MOUSEWHEEL:
            HandleWheel(input, event.wheel);
            break;
        case SDL_MOUSEMOTION:
            input.HandleMouseMotion(
                math::Vec2(static_cast<float>(event.motion.x), static_cast<float>(event.motion.y)),
                math::Vec2(static_cast<float>(event.motion.xrel),
                           static_cast<float>(event.motion.yrel)));
            break;
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            HandleKey(input, event.key);
            break;
        case SDL_JOYAXISMOTION:
            input.HandleJoystickAxis(event.jaxis.which, event.jaxis.axis);
            break;
        case SDL_JOYBALLMOTION:
            break;
        case SDL_JOYHATMOTION:
            input.HandleJoystickHat(event.jhat.which, event.jhat.hat, event.jhat.value);
            break;
        case SDL_JOYBUTTONDOWN:
        case SDL_JOYBUTTONUP:
            input.HandleJoystickButton(event.jbutton.which, event.jbutton.button,
                                       event.type == SDL_JOYBUTTONDOWN);
            break;
        case SDL_JOYDEVICEADDED:
            input.HandleJoystickAdded(event.jdevice.which);
            break;
        case SDL_JOYDEVICEREMOVED:
            input.HandleJoystickRemoved(event.jdevice.which);
            break;
        default:
            HandleGeneral(input, event);
            break;
    }
    return true;
}

unsigned GetModifiers() {
    const SDL_Keymod state = SDL_GetModState();
    const std::pair<int, ModifierMask> bits[] = {
        {KMOD_LSHIFT, kModLShift}, {KMOD_RSHIFT, kModRShift}, {KMOD_LCTRL, kModLCtrl},
        {KMOD_RCTRL, kModRCtrl},   {KMOD_LALT, kModLAlt},     {KMOD_RALT, kModRAlt},
        {KMOD_LGUI, kModLMeta},    {KMOD_RGUI, kModRMeta},    {KMOD_NUM, kModNum},
        {KMOD_CAPS, kModCaps},     {KMOD_MODE, kModRAlt}};
    unsigned mask = 0;
    for (const auto& [sdlBit, bit] : bits) {
        if (state & sdlBit) {
            mask |= bit;
        }
    }
    return mask;
}

void EnableTextInput(bool on) {
    if (on) {
        SDL_StartTextInput();
    } else {
        SDL_StopTextInput();
    }
}

void ShowCursor(bool show) {
    SDL_ShowCursor(show ? SDL_ENABLE : SDL_DISABLE);
}

void GrabInput(bool grab) {
    if (SDL_Window* window = SDL_GetMouseFocus() ? SDL_GetMouseFocus() : SDL_GetKeyboardFocus()) {
        SDL_SetWindowGrab(window, grab ? SDL_TRUE : SDL_FALSE);
    }
}

int CountJoysticks() {
    const int count = SDL_NumJoysticks();
    return count > 0 ? count : 0;
}

int GetJoystickInstanceId(int deviceIndex) {
    return SDL_JoystickGetDeviceInstanceID(deviceIndex);
}

const SDL_Event& GetRawEvent(const InputEvent& event) {
    return *reinterpret_cast<const SDL_Event*>(event.raw.data());
}

}  // namespace input::sdl
