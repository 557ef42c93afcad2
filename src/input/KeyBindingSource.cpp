#include "input/KeyBindingSource.h"

#include "script/Parser.h"

namespace input {
namespace {

std::set<SDLKey> KeysOf(const script::KeyCombination& combination) {
    return std::set<SDLKey>(combination.keys.begin(), combination.keys.end());
}

}  // namespace

script::KeyCombination KeyBindingSource::Read(const util::String& text) const {
    const ButtonInput button(text);
    return script::KeyCombination{{button.GetKeys().begin(), button.GetKeys().end()},
                                  button.IsToggle()};
}

util::String KeyBindingSource::Print(const script::KeyCombination& combination) const {
    return ButtonInput(KeysOf(combination), combination.toggle).ToString();
}

void KeyBindingSource::Listen(const script::KeyCombination& combination,
                              script::KeyBinder& binder) {
    const ButtonInputPtr button(new ButtonInput(KeysOf(combination), combination.toggle));
    button->Listen();
    button->GetCallbacks().Add(util::WeakPtr<util::Pointee>(&binder),
                               [&binder, combination] { binder.Fire(combination); });
    m_buttons.push_back(button);
}

void KeyBindingSource::Install() {
    script::Parser::Get().GetKeyBinder().SetKeySource(std::make_unique<KeyBindingSource>());
}

}  // namespace input
