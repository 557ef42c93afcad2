#include "input/Input.h"

#include <algorithm>
#include <cctype>

#include "input/Key.h"
#include "input/SdlEvents.h"
#include "logging/Log.h"
#include "util/Clock.h"
#include "util/Profiler.h"

namespace input {
namespace {

constexpr double kRepeatDelay = 0.5;
constexpr double kRepeatInterval = 0.03;

bool IsGestureKey(SDLKey key) {
    return key >= MouseKey(kMouseLeft) && key <= MouseKey(kMouseRight);
}

// The character a press types when the system gave none.
char FallbackCharacter(SDLKey key, bool shift) {
    switch (key) {
        case key::Space:
            return ' ';
        case key::Return:
            return '\n';
        case key::Tab:
            return '\t';
        default:
            break;
    }
    if (key >= key::KP0 && key <= key::KP9) {
        return static_cast<char>('0' + (key - key::KP0));
    }
    if (key < 0 || key >= SDLK_LAST) {
        return 0;
    }
    try {
        const util::String name = Key::GetKeyName(key);
        if (name.size() == 1) {
            const unsigned char c = static_cast<unsigned char>(name[0]);
            return static_cast<char>(shift ? std::toupper(c) : std::tolower(c));
        }
    } catch (const std::exception&) {
        // A key without a name types nothing.
    }
    return 0;
}

}  // namespace

Input::Input() : InputDelegator("Input") {}

Input::~Input() = default;

void Input::Start() {
    SetTextMode(true);
    const int count = sdl::CountJoysticks();
    Log(logging::Info, "Found " + std::to_string(count) + " joystick");
    for (int i = 0; i < count; ++i) {
        OpenJoystick(i);
    }
    GrabInput(false);
}

void Input::OpenJoystick(int deviceIndex) {
    // A plugged-in device takes the place of one that was unplugged.
    const auto free = std::find_if(m_joysticks.begin(), m_joysticks.end(),
                                   [](const JoystickPtr& joystick) { return !joystick->IsOpen(); });
    const int number = static_cast<int>(free - m_joysticks.begin());
    try {
        const JoystickPtr joystick(new Joystick(number, deviceIndex));
        joystick->ReadZeroPoints();
        if (free == m_joysticks.end()) {
            m_joysticks.push_back(joystick);
        } else {
            *free = joystick;
        }
        Log(logging::Info, joystick->Describe());
    } catch (const std::exception& e) {
        Log(logging::Error, e.what());
    }
}

JoystickPtr Input::FindJoystick(int instanceId) const {
    for (const JoystickPtr& joystick : m_joysticks) {
        if (joystick->IsOpen() && joystick->GetInstanceId() == instanceId) {
            return joystick;
        }
    }
    return JoystickPtr();
}

JoystickPtr Input::GetJoystick(int number) const {
    if (number < 0 || number >= static_cast<int>(m_joysticks.size()) ||
        !m_joysticks[number]->IsOpen()) {
        return JoystickPtr();
    }
    return m_joysticks[number];
}

std::vector<JoystickPtr> Input::GetConnectedJoysticks() const {
    std::vector<JoystickPtr> connected;
    std::copy_if(m_joysticks.begin(), m_joysticks.end(), std::back_inserter(connected),
                 [](const JoystickPtr& joystick) { return joystick->IsOpen(); });
    return connected;
}

void Input::Reset() {
    m_gesture = Gesture::Idle;
    m_repeatEvent.key = 0;
    for (const JoystickPtr& joystick : m_joysticks) {
        joystick->ReadZeroPoints();
    }
}

bool Input::IsKeyDown(SDLKey key) const {
    const auto it = m_keyStates.find(key);
    return it != m_keyStates.end() && it->second;
}

bool Input::IsModifierDown(int modifier) const {
    const unsigned state = sdl::GetModifiers();
    const auto agree = [&](unsigned mask, SDLKey a, SDLKey b) {
        return (state & mask) != 0 && (IsKeyDown(a) || IsKeyDown(b));
    };
    switch (modifier) {
        case kNoModifier:
            return (state & ~(kModNum | kModCaps)) == 0;
        case kShift:
            return agree(kModLShift | kModRShift, key::LShift, key::RShift);
        case kLeftShift:
            return agree(kModLShift, key::LShift, key::LShift);
        case kRightShift:
            return agree(kModRShift, key::RShift, key::RShift);
        case kCtrl:
            return agree(kModLCtrl | kModRCtrl, key::LCtrl, key::RCtrl);
        case kLeftCtrl:
            return agree(kModLCtrl, key::LCtrl, key::LCtrl);
        case kRightCtrl:
            return agree(kModRCtrl, key::RCtrl, key::RCtrl);
        case kAlt:
            return agree(kModLAlt | kModRAlt, key::LAlt, key::RAlt);
        case kLeftAlt:
            return agree(kModLAlt, key::LAlt, key::LAlt);
        case kRightAlt:
            // Alt Gr often comes without a key of its own: the bit alone decides.
            return (state & kModRAlt) != 0;
        case kMeta:
            return agree(kModLMeta | kModRMeta, key::LMeta, key::RMeta);
        case kLeftMeta:
            return agree(kModLMeta, key::LMeta, key::LMeta);
        case kRightMeta:
            return agree(kModRMeta, key::RMeta, key::RMeta);
        case kNumLock:
            return agree(kModNum, key::NumLock, key::NumLock);
        case kCapsLock:
            return agree(kModCaps, key::CapsLock, key::CapsLock);
        default:
            return false;
    }
}

void Input::SetTextMode(bool on) {
    m_textMode = on;
    sdl::EnableTextInput(on);
    if (!on) {
        m_repeatEvent.key = 0;
    }
}

void Input::ShowCursor(bool show) {
    sdl::ShowCursor(show);
}

void Input::GrabInput(bool grab) {
    sdl::GrabInput(grab);
}

void Input::Poll() {
    VORRA_PROFILE("Event handling");
    {
        // SDL reads the joysticks while it fills the queue; their events come with it.
        VORRA_PROFILE("Joystick update");
        m_time = util::Clock::Seconds();
    }
    {
        VORRA_PROFILE("Poll loop");
        while (sdl::PollEvent(*this)) {
        }
    }
    RepeatHeldKey();
    CheckGestureTimeOut();
}

void Input::CheckGestureTimeOut() {
    if (m_gesture != Gesture::Pressed ||
        util::Clock::Seconds() - m_pressTime <= m_limits.clickTimeTolerance) {
        return;
    }
    if (!IsKeyDown(m_pressKey)) {
        m_gesture = Gesture::Idle;
        return;
    }
    BeginDrag(m_mousePosition);
}

DragEvent Input::MakeDrag(math::Vec2 position, math::Vec2 offset) const {
    DragEvent drag;
    drag.start = m_pressPosition;
    drag.offset = offset;
    drag.position = position;
    drag.key = m_pressKey;
    return drag;
}

void Input::BeginDrag(math::Vec2 position) {
    m_gesture = Gesture::Dragging;
    DragEvent begin = MakeDrag(m_pressPosition, math::Vec2(0, 0));
    InputDelegator::OnDragBegin(begin);
    if (position != m_pressPosition) {
        DragEvent drag = MakeDrag(position, position - m_pressPosition);
        InputDelegator::OnDrag(drag);
    }
}

void Input::RepeatHeldKey() {
    if (!m_textMode || m_repeatEvent.key == 0) {
        return;
    }
    if (!IsKeyDown(m_repeatEvent.key)) {
        m_repeatEvent.key = 0;
        return;
    }
    const double now = util::Clock::Seconds();
    if (now < m_nextRepeat) {
        return;
    }
    // After a long frame one repeat, not a burst.
    m_nextRepeat = std::max(m_nextRepeat + kRepeatInterval, now);
    KeyEvent repeat = m_repeatEvent;
    repeat.consumed = false;
    repeat.position = m_mousePosition;
    OnKey(repeat);
}

void Input::OnKey(KeyEvent& event) {
    m_keyStates[event.key] = event.down;
    InputDelegator::OnKey(event);
    if (event.consumed || !IsGestureKey(event.key)) {
        return;
    }
    if (event.down) {
        if (m_gesture == Gesture::Idle) {
            m_pressTime = util::Clock::Seconds();
            m_pressPosition = event.position;
            m_pressKey = event.key;
            m_clickCount = 0;
            m_gesture = Gesture::Pressed;
        }
        return;
    }
    if (event.key != m_pressKey) {
        return;
    }
    if (m_gesture == Gesture::Pressed) {
        ++m_clickCount;
        ClickEvent click;
        click.position = m_pressPosition;
        click.key = m_pressKey;
        click.clicks = m_clickCount;
        // A third click ends the gesture; before that it stays open for one more.
        if (m_clickCount > 2) {
            m_gesture = Gesture::Idle;
        }
        InputDelegator::OnClick(click);
    } else if (m_gesture == Gesture::Dragging) {
        m_gesture = Gesture::Idle;
        DragEvent end = MakeDrag(event.position, math::Vec2(0, 0));
        InputDelegator::OnDragEnd(end);
    }
}

void Input::OnMouseMove(MouseMoveEvent& event) {
    VORRA_PROFILE("OnMouseMove");
    InputDelegator::OnMouseMove(event);
    if (event.consumed) {
        return;
    }
    if (m_gesture == Gesture::Pressed) {
        if ((event.position - m_pressPosition).Length() > m_limits.clickTolerance) {
            if (!IsKeyDown(m_pressKey)) {
                m_gesture = Gesture::Idle;
            } else {
                BeginDrag(event.position);
            }
        }
    } else if (m_gesture == Gesture::Dragging) {
        DragEvent drag = MakeDrag(event.position, event.relative);
        InputDelegator::OnDrag(drag);
    }
}

KeyEvent Input::FireKey(SDLKey key, bool down, char character) {
    KeyEvent event;
    event.key = key;
    event.down = down;
    event.character = character;
    // The modifiers as the keys before this one left them: the system's present state may
    // already hold the release of a modifier that comes later in the queue, as a fast
    // Ctrl+S does.
    const auto held = [this](SDLKey a, SDLKey b) { return IsKeyDown(a) || IsKeyDown(b); };
    event.alt = held(key::LAlt, key::RAlt);
    event.ctrl = held(key::LCtrl, key::RCtrl);
    event.shift = held(key::LShift, key::RShift);
    event.position = m_mousePosition;
    const KeyEvent fired = event;
    OnKey(event);
    return fired;
}

void Input::HandleMouseButton(int button, bool down, math::Vec2 pixels) {
    if (down && button == kMouseWheelUp) {
        ++m_wheelPosition;
    } else if (down && button == kMouseWheelDown) {
        --m_wheelPosition;
    }
    m_mouseButtonDown = down;
    m_mousePosition = pixels / m_limits.scale;
    FireKey(MouseKey(button), down);
}

void Input::HandleMouseMotion(math::Vec2 pixels, math::Vec2 relativePixels) {
    m_mousePosition = pixels / m_limits.scale;
    MouseMoveEvent event;
    event.position = m_mousePosition;
    event.relative = relativePixels / m_limits.scale;
    OnMouseMove(event);
}

void Input::HandleKey(SDLKey key, bool down, unsigned unicode) {
    char character = static_cast<char>(unicode & 0xff);
    if (character == 0) {
        character = FallbackCharacter(key, IsModifierDown(kShift));
        if (character != 0 && down && !m_unicodeWarningGiven) {
            Log(logging::Warning, "SDL unicode doesn't work");
            m_unicodeWarningGiven = true;
            SetTextMode(true);
        }
    }
    const KeyEvent fired = FireKey(key, down, character);
    if (!m_textMode || key <= 0 || key >= SDLK_LAST || Key::IsModifierKey(key)) {
        return;
    }
    if (down) {
        m_repeatEvent = fired;
        m_nextRepeat = util::Clock::Seconds() + kRepeatDelay;
    } else if (key == m_repeatEvent.key) {
        m_repeatEvent.key = 0;
    }
}

void Input::HandleJoystickAxis(int instanceId, int axis) {
    JoystickEvent event;
    event.joystick = FindJoystick(instanceId);
    event.axis = axis;
    OnJoystickAxis(event);
}

void Input::HandleJoystickHat(int instanceId, int hat, unsigned value) {
    const JoystickPtr joystick = FindJoystick(instanceId);
    if (!joystick || joystick->GetNumber() >= kJoystickCount || hat < 0 ||
        hat >= kJoystickHatCount) {
        return;
    }
    // A hat is four keys, and only their changes are news.
    for (unsigned mask : {1u, 2u, 4u, 8u}) {
        const SDLKey key =
            Key::GetJoystickHatKey(joystick->GetNumber(), hat, static_cast<int>(mask));
        const bool down = (value & mask) != 0;
        if (IsKeyDown(key) != down) {
            FireKey(key, down);
        }
    }
}

void Input::HandleJoystickButton(int instanceId, int button, bool down) {
    const JoystickPtr joystick = FindJoystick(instanceId);
    if (!joystick || joystick->GetNumber() >= kJoystickCount || button < 0 ||
        button >= kJoystickButtonCount) {
        return;
    }
    FireKey(Key::GetJoystickButtonKey(joystick->GetNumber(), button), down);
}

void Input::HandleJoystickAdded(int deviceIndex) {
    // SDL announces the devices present at its start as well; those are open already.
    if (FindJoystick(sdl::GetJoystickInstanceId(deviceIndex))) {
        return;
    }
    OpenJoystick(deviceIndex);
    m_joysticksChanged.CallAll();
}

void Input::HandleJoystickRemoved(int instanceId) {
    const JoystickPtr joystick = FindJoystick(instanceId);
    if (!joystick) {
        return;
    }
    Log(logging::Info, "Joystick " + std::to_string(joystick->GetNumber()) + " was unplugged");
    // Its keys come up, so that nothing stays pressed by a device that is gone.
    const SDLKey first = Key::GetJoystickButtonKey(joystick->GetNumber(), 0);
    for (SDLKey key = first; key < first + kKeysPerJoystick; ++key) {
        if (IsKeyDown(key)) {
            FireKey(key, false);
        }
    }
    joystick->Close();
    m_joysticksChanged.CallAll();
}

void Input::HandleGeneral(InputEvent& event) {
    OnGeneralEvent(event);
}

}  // namespace input
