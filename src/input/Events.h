#pragma once

#include <array>
#include <cstdint>

#include "input/KeyCodes.h"
#include "math/Vector2.h"
#include "util/Pointee.h"
#include "util/String.h"

namespace input {

class Joystick;
using JoystickPtr = util::SharedPtr<Joystick>;

// Events are plain records passed by reference: a listener that used one marks it
// consumed, and those after it decide for themselves whether to act anyway. Positions are
// in GUI units (pixels divided by the GUI's scale).
struct GeneralEvent {
    bool consumed = false;
};

// A key, mouse button, joystick button or hat direction going down or up.
struct KeyEvent : GeneralEvent {
    SDLKey key = 0;
    // The character the press types, 0 if none.
    char character = 0;
    bool down = false;
    bool alt = false;
    bool ctrl = false;
    bool shift = false;
    math::Vec2 position;
};

struct MouseMoveEvent : GeneralEvent {
    math::Vec2 position;
    // The movement since the last event.
    math::Vec2 relative;
};

// The three stages of a drag. offset is position - start in the first drag event, and
// the event's own motion after that.
struct DragEvent : GeneralEvent {
    math::Vec2 start;
    math::Vec2 offset;
    math::Vec2 position;
    SDLKey key = 0;
};

struct ClickEvent : GeneralEvent {
    // Where the button went down, not where it came up.
    math::Vec2 position;
    SDLKey key = 0;
    // 1 for a single click, 2 for the second of a double click, and so on.
    int clicks = 1;
};

// What the window system says that has no record of its own: quit, the window's size and
// focus, a file dropped on it, text that came without a key press. The raw event travels
// along for the few who read it (see SdlEvents.h).
struct InputEvent : GeneralEvent {
    enum class Kind { Quit, Resized, Exposed, FocusGained, FocusLost, FileDropped, Text, Other };

    virtual ~InputEvent() = default;

    Kind kind = Kind::Other;
    // The window's new size, for Resized.
    int width = 0;
    int height = 0;
    // The file's path for FileDropped, the text for Text.
    util::String text;
    // A copy of the system's event, as bytes.
    std::uint32_t rawType = 0;
    alignas(8) std::array<unsigned char, 64> raw{};
};

// A joystick's axis moved. The joystick is null if it is not open.
struct JoystickEvent : GeneralEvent {
    JoystickPtr joystick;
    int axis = 0;
};

}  // namespace input
