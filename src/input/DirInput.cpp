#include "input/DirInput.h"

#include <sstream>
#include <vector>

#include "input/Input.h"
#include "input/Key.h"
#include "logging/Log.h"

namespace input {

DirInput::~DirInput() = default;

KeyDirInput::KeyDirInput(SDLKey right, SDLKey up, SDLKey left, SDLKey down)
    : m_keys{right, up, left, down} {}

math::Vec2 KeyDirInput::GetDir() const {
    const Input& input = Input::Get();
    const auto held = [&](int i) { return input.IsKeyDown(m_keys[i]) ? 1.0f : 0.0f; };
    math::Vec2 dir(held(0) - held(2), held(1) - held(3));
    const float length = dir.Length();
    if (length < 1e-6f) {
        return math::Vec2(0, 0);
    }
    return length > 1 ? dir / length : dir;
}

util::String KeyDirInput::ToString() const {
    util::String text = "keys";
    for (const SDLKey key : m_keys) {
        text += " " + Key::GetKeyName(key);
    }
    return text;
}

namespace {

SDLKey HatKey(int joystick, int hat, int mask) {
    return Key::GetJoystickHatKey(joystick, hat, mask);
}

}  // namespace

// The hat's right, up, left and down are the masks 2, 1, 8 and 4.
JoyHatInput::JoyHatInput(int joystick, int hat)
    : KeyDirInput(HatKey(joystick, hat, 2), HatKey(joystick, hat, 1), HatKey(joystick, hat, 8),
                  HatKey(joystick, hat, 4)),
      m_joystick(joystick),
      m_hat(hat) {}

util::String JoyHatInput::ToString() const {
    return "joy " + std::to_string(m_joystick) + " hat " + std::to_string(m_hat);
}

JoyAxisInput::JoyAxisInput(JoystickPtr joystick, int xAxis, int yAxis)
    : m_joystick(std::move(joystick)), m_xAxis(xAxis), m_yAxis(yAxis) {}

math::Vec2 JoyAxisInput::GetDir() const {
    // A stick's second axis grows toward the player; the world's y grows upward.
    return math::Vec2(m_joystick->GetAxis(m_xAxis), -m_joystick->GetAxis(m_yAxis));
}

util::String JoyAxisInput::ToString() const {
    return "joy " + std::to_string(m_joystick->GetNumber()) + " axis " + std::to_string(m_xAxis) +
           " " + std::to_string(m_yAxis);
}

DirInputPtr MakeDirInput(const util::String& text) {
    std::istringstream in(text);
    std::vector<util::String> words;
    for (util::String word; in >> word;) {
        words.push_back(word);
    }
    const auto failed = [&]() {
        Log(logging::Warning, "Failed to find DirInput \"" + text + "\"");
        return DirInputPtr();
    };
    const auto number = [](const util::String& word, int& value) {
        std::istringstream digits(word);
        return (digits >> value) && digits.eof() && value >= 0;
    };
    if (words.size() == 5 && words[0] == "keys") {
        return DirInputPtr(
            new KeyDirInput(Key::GetKeyFromName(words[1]), Key::GetKeyFromName(words[2]),
                            Key::GetKeyFromName(words[3]), Key::GetKeyFromName(words[4])));
    }
    int joystickNumber = 0;
    if (words.size() < 4 || words[0] != "joy" || !number(words[1], joystickNumber)) {
        return failed();
    }
    int first = 0;
    int second = 0;
    const bool isAxis = words[2] == "axis" && words.size() == 5 && number(words[3], first) &&
                        number(words[4], second);
    const bool isHat = words[2] == "hat" && words.size() == 4 && number(words[3], first) &&
                       first < kJoystickHatCount;
    if (!isAxis && !isHat) {
        return failed();
    }
    JoystickPtr joystick = Input::Get().GetJoystick(joystickNumber);
    if (!joystick) {
        const std::vector<JoystickPtr> connected = Input::Get().GetConnectedJoysticks();
        if (connected.empty()) {
            Log(logging::Warning, "No joystick connected, cannot find DirInput \"" + text + "\"");
            return DirInputPtr();
        }
        joystick = connected[joystickNumber % connected.size()];
    }
    if (isAxis) {
        return DirInputPtr(new JoyAxisInput(joystick, first, second));
    }
    return DirInputPtr(new JoyHatInput(joystick->GetNumber(), first));
}

}  // namespace input
