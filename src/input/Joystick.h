#pragma once

#include <vector>

#include "math/Vector2.h"
#include "util/Pointee.h"
#include "util/String.h"

struct _SDL_Joystick;

namespace input {

// An opened joystick. Its number is its place among the program's joysticks, which is
// what key names ("joy_1_3") and controllers ("joy 1 axis 0 1") count by. When the device
// is unplugged the object stays, closed: its axes read 0 and its number is kept for the
// device that is plugged in next.
class Joystick : public util::Pointee {
public:
    // Opens the device of SDL's index; throws "Failed to open joystick N" if it cannot.
    Joystick(int number, int deviceIndex);
    ~Joystick() override;

    int GetNumber() const { return m_number; }
    const util::String& GetName() const { return m_name; }
    int GetAxisCount() const { return m_axisCount; }
    int GetButtonCount() const { return m_buttonCount; }
    int GetBallCount() const { return m_ballCount; }
    int GetHatCount() const { return m_hatCount; }
    // SDL's id of the open device, -1 once closed.
    int GetInstanceId() const { return m_instanceId; }
    bool IsOpen() const { return m_joystick != nullptr; }

    // The axis from -1 to 1, less its zero point; 0 for a closed device or a bad axis.
    float GetAxis(int axis) const;
    // Takes the present position of each axis as its zero point.
    void ReadZeroPoints();
    // Lets the device go after it was unplugged.
    void Close();

    // The lines logged when the device was opened.
    util::String Describe() const;

private:
    float ReadRawAxis(int axis) const;

    int m_number;
    util::String m_name;
    int m_axisCount = 0;
    int m_buttonCount = 0;
    int m_ballCount = 0;
    int m_hatCount = 0;
    int m_instanceId = -1;
    std::vector<float> m_zeroPoints;
    _SDL_Joystick* m_joystick = nullptr;
};

using JoystickPtr = util::SharedPtr<Joystick>;

}  // namespace input
