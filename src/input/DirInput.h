#pragma once

#include <array>

#include "input/Joystick.h"
#include "input/KeyCodes.h"
#include "math/Vector2.h"
#include "util/Pointee.h"
#include "util/String.h"

namespace input {

class DirInput;
using DirInputPtr = util::SharedPtr<DirInput>;

// A source of a direction of at most length 1 that a shape's controller pushes it by.
class DirInput : public util::Pointee {
public:
    ~DirInput() override;
    virtual math::Vec2 GetDir() const = 0;
    // The text that MakeDirInput reads back.
    virtual util::String ToString() const = 0;
};

// Four keys: "keys right up left down". Opposite keys cancel, and a diagonal is no faster
// than a straight push.
class KeyDirInput : public DirInput {
public:
    KeyDirInput(SDLKey right, SDLKey up, SDLKey left, SDLKey down);
    math::Vec2 GetDir() const override;
    util::String ToString() const override;

private:
    std::array<SDLKey, 4> m_keys;
};

// The four directions of a joystick's hat: "joy 0 hat 0".
class JoyHatInput : public KeyDirInput {
public:
    JoyHatInput(int joystick, int hat);
    util::String ToString() const override;

private:
    int m_joystick;
    int m_hat;
};

// Two axes of a joystick: "joy 0 axis 0 1". Pushing the stick away from the player is up.
class JoyAxisInput : public DirInput {
public:
    JoyAxisInput(JoystickPtr joystick, int xAxis, int yAxis);
    math::Vec2 GetDir() const override;
    util::String ToString() const override;

private:
    JoystickPtr m_joystick;
    int m_xAxis;
    int m_yAxis;
};

// Reads the text forms above. A text of no known form, or one that needs a joystick when
// none is connected, logs a warning and gives null; a key name that names no key throws
// BadDataException. A joystick number beyond those connected wraps round them, so a scene
// made with another joystick still gets one.
DirInputPtr MakeDirInput(const util::String& text);

}  // namespace input
