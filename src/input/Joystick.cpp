#include "input/Joystick.h"

#include <SDL_joystick.h>

#include <algorithm>
#include <stdexcept>

#include "util/Exception.h"

namespace input {

Joystick::Joystick(int number, int deviceIndex) : m_number(number) {
    m_joystick = SDL_JoystickOpen(deviceIndex);
    if (!m_joystick) {
        VORRA_THROW(std::runtime_error, "Failed to open joystick " + std::to_string(number));
    }
    const char* name = SDL_JoystickName(m_joystick);
    m_name = name ? name : "";
    m_axisCount = std::max(0, SDL_JoystickNumAxes(m_joystick));
    m_buttonCount = std::max(0, SDL_JoystickNumButtons(m_joystick));
    m_ballCount = std::max(0, SDL_JoystickNumBalls(m_joystick));
    m_hatCount = std::max(0, SDL_JoystickNumHats(m_joystick));
    m_instanceId = SDL_JoystickInstanceID(m_joystick);
    m_zeroPoints.assign(m_axisCount, 0.0f);
}

Joystick::~Joystick() {
    Close();
}

void Joystick::Close() {
    if (m_joystick) {
        SDL_JoystickClose(m_joystick);
        m_joystick = nullptr;
    }
    m_instanceId = -1;
}

float Joystick::ReadRawAxis(int axis) const {
    if (!m_joystick || axis < 0 || axis >= m_axisCount) {
        return 0;
    }
    const float position = (SDL_JoystickGetAxis(m_joystick, axis) + 32768.0f) / 65535.0f;
    return 2 * position - 1;
}

float Joystick::GetAxis(int axis) const {
    if (!m_joystick || axis < 0 || axis >= m_axisCount) {
        return 0;
    }
    return std::clamp(ReadRawAxis(axis) - m_zeroPoints[axis], -1.0f, 1.0f);
}

void Joystick::ReadZeroPoints() {
    for (int axis = 0; axis < m_axisCount; ++axis) {
        m_zeroPoints[axis] = ReadRawAxis(axis);
    }
}

util::String Joystick::Describe() const {
    return "Opened joystick " + std::to_string(m_number) + "\nName: " + m_name +
           "\nNumber of axes: " + std::to_string(m_axisCount) +
           "\nNumber of buttons: " + std::to_string(m_buttonCount) +
           "\nNumber of balls: " + std::to_string(m_ballCount) +
           "\nNumber of hats: " + std::to_string(m_hatCount) + "\n---";
}

}  // namespace input
