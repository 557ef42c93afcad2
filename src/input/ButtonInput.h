#pragma once

#include <set>

#include "input/InputListener.h"
#include "util/CallbackSet.h"

namespace input {

class ButtonInput;
using ButtonInputPtr = util::SharedPtr<ButtonInput>;

// A combination of keys, written as their names separated by blanks ("left_ctrl s",
// "joy_0_3", "mouse_middle"). It fires when its last key goes down while the others are
// held and no other modifier key is: "s" does not fire on Ctrl+S. A "toggle" combination
// is a switch: each time it fires it turns on or off.
class ButtonInput : public util::Pointee {
public:
    ButtonInput();
    // The text form; the word "toggle" anywhere sets the flag. Throws BadDataException
    // "Unknown name of key ..." for a word that names no key.
    explicit ButtonInput(const util::String& text);
    ButtonInput(std::set<SDLKey> keys, bool toggle);
    ~ButtonInput() override;

    const std::set<SDLKey>& GetKeys() const { return m_keys; }
    bool IsToggle() const { return m_toggle; }
    bool IsEmpty() const { return m_keys.empty(); }
    // The names in key order, "toggle " first if the flag is set; empty for no keys.
    util::String ToString() const;

    // Starts following the input root's keys; the callbacks run each time this fires.
    void Listen();
    util::CallbackSet& GetCallbacks() { return m_callbacks; }
    // Held now, or for a toggle switched on. Only while listening.
    bool IsDown() const;

    bool operator==(const ButtonInput& other) const {
        return m_keys == other.m_keys && m_toggle == other.m_toggle;
    }

private:
    class InputRelay;

    void OnRelayedKey(const KeyEvent& event);
    bool AllHeld() const;

    std::set<SDLKey> m_keys;
    bool m_toggle = false;
    bool m_on = false;
    util::SharedPtr<InputRelay> m_relay;
    util::CallbackSet m_callbacks;
};

}  // namespace input
