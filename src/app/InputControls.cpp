#include "app/InputControls.h"

#include <map>

#include "app/entities/ControlInputs.h"
#include "input/ButtonInput.h"
#include "input/DirInput.h"
#include "input/Input.h"
#include "input/KeyBindingSource.h"
#include "util/Callback.h"

namespace app {
namespace {

// Each text is read once: entities ask every step, and a text that failed must not warn
// again each time. A null entry stands for a text that gives nothing.
struct ControlCache : util::Pointee {
    std::map<util::String, input::ButtonInputPtr> buttons;
    std::map<util::String, input::DirInputPtr> directions;

    input::ButtonInput* GetButtons(const util::String& text) {
        const auto found = buttons.find(text);
        if (found != buttons.end()) {
            return found->second.Get();
        }
        input::ButtonInputPtr button;
        try {
            button = input::ButtonInputPtr(new input::ButtonInput(text));
            button->Listen();
        } catch (const std::exception&) {
            button = input::ButtonInputPtr();
        }
        return buttons.emplace(text, button).first->second.Get();
    }

    // Throws for an unknown key name before anything is kept.
    input::DirInput* GetDirection(const util::String& text) {
        const auto found = directions.find(text);
        if (found != directions.end()) {
            return found->second.Get();
        }
        const input::DirInputPtr direction = input::MakeDirInput(text);
        return directions.emplace(text, direction).first->second.Get();
    }
};

util::SharedPtr<ControlCache> s_cache;

}  // namespace

void InputControls::Install() {
    input::KeyBindingSource::Install();
    s_cache = util::SharedPtr<ControlCache>(new ControlCache());
    ControlCache* cache = s_cache.Get();
    // A joystick plugged in or out changes what "joy 1 axis 0 1" means.
    input::Input::Get().GetJoysticksChangedCallbacks().Add(util::WeakPtr<util::Pointee>(cache),
                                                           [cache] { cache->directions.clear(); });

    ControlInputs& inputs = ControlInputs::Get();
    inputs.isPressed = [cache](const util::String& text) {
        const input::ButtonInput* button = cache->GetButtons(text);
        return button && button->IsDown();
    };
    inputs.direction = [cache](const util::String& text) {
        try {
            const input::DirInput* direction = cache->GetDirection(text);
            return direction ? direction->GetDir() : math::Vec2(0, 0);
        } catch (const std::exception&) {
            // Its statement failed when it was set; from here on it is a dead control.
            cache->directions.emplace(text, input::DirInputPtr());
            return math::Vec2(0, 0);
        }
    };
    inputs.checkButtons = [](const util::String& text) { input::ButtonInput check(text); };
    inputs.checkController = [cache](const util::String& text) { cache->GetDirection(text); };
}

void InputControls::Uninstall() {
    ControlInputs::Get() = ControlInputs();
    s_cache = util::SharedPtr<ControlCache>();
}

}  // namespace app
