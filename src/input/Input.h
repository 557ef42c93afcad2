#pragma once

#include <map>
#include <vector>

#include "input/InputDelegator.h"
#include "input/Joystick.h"
#include "util/CallbackSet.h"
#include "util/Singleton.h"

namespace input {

// The modifier keys as the window system reports them (see SdlEvents.cpp).
enum ModifierMask : unsigned {
    kModLShift = 1 << 0,
    kModRShift = 1 << 1,
    kModLCtrl = 1 << 2,
    kModRCtrl = 1 << 3,
    kModLAlt = 1 << 4,
    kModRAlt = 1 << 5,
    kModLMeta = 1 << 6,
    kModRMeta = 1 << 7,
    kModNum = 1 << 8,
    kModCaps = 1 << 9,
};

// The modifiers that IsModifierDown knows, by number.
enum Modifier : int {
    kNoModifier = 0,
    kShift = 1,
    kLeftShift = 2,
    kRightShift = 3,
    kCtrl = 4,
    kLeftCtrl = 5,
    kRightCtrl = 6,
    kAlt = 7,
    kLeftAlt = 8,
    kRightAlt = 9,
    kMeta = 10,
    kLeftMeta = 11,
    kRightMeta = 12,
    kNumLock = 13,
    kCapsLock = 14,
};

// When a press becomes a drag: once the mouse leaves a circle of clickTolerance GUI units
// around the press, or clickTimeTolerance seconds pass with the button held. The GUI owns
// these figures and the scale of its units; until it sets them, these are its defaults.
struct GestureLimits {
    float clickTolerance = 3.5f;
    double clickTimeTolerance = 0.3;
    // Pixels per GUI unit.
    float scale = 1;
};

// The root of the input tree and the only reader of the window system's events. It turns
// them into the records of Events.h, keeps the state of keys, mouse and joysticks, and
// makes clicks and drags, which exist only here: a press that nothing consumed becomes a
// click if the button comes up soon and near, a drag otherwise.
class Input : public InputDelegator, public util::Singleton<Input> {
public:
    Input();
    ~Input() override;

    // Text mode on, joysticks opened and their axes read, no input grab.
    void Start();
    // Delivers every event waiting, then ends a press that has been held too long as the
    // start of a drag. Once a frame.
    void Poll();
    // Forgets the gesture and takes the joysticks' present axes as their zero points.
    void Reset();

    // An unseen key reads as up.
    bool IsKeyDown(SDLKey key) const;
    math::Vec2 GetMousePos() const { return m_mousePosition; }
    int GetWheelPosition() const { return m_wheelPosition; }
    // Down only where the system's modifier state and the keys this object saw agree.
    bool IsModifierDown(int modifier) const;

    // Text mode: each press carries the character it types, and a held key repeats after
    // half a second, every 30 ms. Without it keys do not repeat.
    void SetTextMode(bool on);
    bool GetTextMode() const { return m_textMode; }
    void ShowCursor(bool show);
    void GrabInput(bool grab);

    GestureLimits& GetGestureLimits() { return m_limits; }

    // The open joysticks by number; a slot of an unplugged one holds it closed.
    const std::vector<JoystickPtr>& GetJoysticks() const { return m_joysticks; }
    // Null when there is no such joystick or it is unplugged.
    JoystickPtr GetJoystick(int number) const;
    std::vector<JoystickPtr> GetConnectedJoysticks() const;
    // Called when a joystick is plugged in or out.
    util::CallbackSet& GetJoysticksChangedCallbacks() { return m_joysticksChanged; }

    void OnKey(KeyEvent& event) override;
    void OnMouseMove(MouseMoveEvent& event) override;

    // What the translation of the window system's events hands over (SdlEvents.cpp).
    // Positions are in pixels.
    void HandleMouseButton(int button, bool down, math::Vec2 pixels);
    void HandleMouseMotion(math::Vec2 pixels, math::Vec2 relativePixels);
    // unicode is what the system says the press types, 0 for nothing.
    void HandleKey(SDLKey key, bool down, unsigned unicode);
    void HandleJoystickAxis(int instanceId, int axis);
    void HandleJoystickHat(int instanceId, int hat, unsigned value);
    void HandleJoystickButton(int instanceId, int button, bool down);
    void HandleJoystickAdded(int deviceIndex);
    void HandleJoystickRemoved(int instanceId);
    void HandleGeneral(InputEvent& event);

private:
    enum class Gesture { Idle, Pressed, Dragging };

    void OpenJoystick(int deviceIndex);
    JoystickPtr FindJoystick(int instanceId) const;
    void CheckGestureTimeOut();
    void RepeatHeldKey();
    // Builds the event with the present modifiers and position, delivers it, and returns
    // it as it was before delivery.
    KeyEvent FireKey(SDLKey key, bool down, char character = 0);
    // A drag event of the present gesture.
    DragEvent MakeDrag(math::Vec2 position, math::Vec2 offset) const;
    void BeginDrag(math::Vec2 position);

    double m_time = 0;
    bool m_mouseButtonDown = false;
    std::vector<JoystickPtr> m_joysticks;
    std::map<SDLKey, bool> m_keyStates;
    int m_wheelPosition = 0;
    math::Vec2 m_mousePosition;
    Gesture m_gesture = Gesture::Idle;
    double m_pressTime = 0;
    math::Vec2 m_pressPosition;
    SDLKey m_pressKey = 0;
    int m_clickCount = 0;

    GestureLimits m_limits;
    bool m_textMode = false;
    bool m_unicodeWarningGiven = false;
    // The key that repeats while held in text mode, and when it next does.
    KeyEvent m_repeatEvent;
    double m_nextRepeat = 0;
    util::CallbackSet m_joysticksChanged;
};

}  // namespace input
