#pragma once

#include <vector>

#include "input/ButtonInput.h"
#include "script/KeyBinder.h"

namespace input {

// Gives the script's key binder the key names and the combinations of this system.
class KeyBindingSource : public script::KeyBinder::KeySource {
public:
    script::KeyCombination Read(const util::String& text) const override;
    util::String Print(const script::KeyCombination& combination) const override;
    void Listen(const script::KeyCombination& combination, script::KeyBinder& binder) override;

    // Installs a source into the parser's binder.
    static void Install();

private:
    std::vector<ButtonInputPtr> m_buttons;
};

}  // namespace input
