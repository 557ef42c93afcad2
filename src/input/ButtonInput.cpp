#include "input/ButtonInput.h"

#include <algorithm>
#include <sstream>

#include "input/Input.h"
#include "input/Key.h"

namespace input {

// Hears the keys after everybody else, so that a key a text field typed into is not also
// a command, and tells its combination.
class ButtonInput::InputRelay : public InputListener {
public:
    static constexpr int kPriority = 1;

    explicit InputRelay(ButtonInput& owner)
        : InputListener("InputRelay", kPriority), m_owner(&owner) {}

    // The combination is gone; a delivery under way may still hold this relay.
    void Detach() { m_owner = nullptr; }

    void OnKey(KeyEvent& event) override {
        // A press that something used is not ours; a release always is, or a key would
        // stay down here for good.
        if (event.down && event.consumed) {
            return;
        }
        m_down[event.key] = event.down;
        if (m_owner) {
            m_owner->OnRelayedKey(event);
        }
    }

    bool IsHeld(SDLKey key) const {
        const auto it = m_down.find(key);
        return it != m_down.end() && it->second;
    }

private:
    ButtonInput* m_owner;
    std::map<SDLKey, bool> m_down;
};

ButtonInput::ButtonInput() = default;

ButtonInput::ButtonInput(std::set<SDLKey> keys, bool toggle)
    : m_keys(std::move(keys)), m_toggle(toggle) {}

ButtonInput::ButtonInput(const util::String& text) {
    std::istringstream words(text);
    util::String word;
    while (words >> word) {
        if (word == "toggle") {
            m_toggle = !m_toggle;
        } else {
            m_keys.insert(Key::GetKeyFromName(word));
        }
    }
}

ButtonInput::~ButtonInput() {
    if (!m_relay) {
        return;
    }
    m_relay->Detach();
    if (Input::IsAlive()) {
        Input::Get().Remove(InputListenerWeakPtr(m_relay));
    }
}

util::String ButtonInput::ToString() const {
    util::String text;
    for (const SDLKey key : m_keys) {
        text += (text.empty() ? "" : " ") + Key::GetKeyName(key);
    }
    return m_toggle && !text.empty() ? "toggle " + text : text;
}

void ButtonInput::Listen() {
    if (m_relay || m_keys.empty()) {
        return;
    }
    m_relay = util::SharedPtr<InputRelay>(new InputRelay(*this));
    Input::Get().Add(InputListenerWeakPtr(m_relay));
}

bool ButtonInput::AllHeld() const {
    return m_relay && std::all_of(m_keys.begin(), m_keys.end(),
                                  [this](SDLKey key) { return m_relay->IsHeld(key); });
}

bool ButtonInput::IsDown() const {
    return m_toggle ? m_on : AllHeld();
}

void ButtonInput::OnRelayedKey(const KeyEvent& event) {
    if (!event.down || !m_keys.count(event.key) || !AllHeld()) {
        return;
    }
    const Input& input = Input::Get();
    for (SDLKey modifier = key::RShift; modifier <= key::Mode; ++modifier) {
        if (!m_keys.count(modifier) && input.IsKeyDown(modifier)) {
            return;
        }
    }
    if (m_toggle) {
        m_on = !m_on;
    }
    m_callbacks.CallAll();
}

}  // namespace input
