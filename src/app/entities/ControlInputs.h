#pragma once

#include <functional>

#include "math/Vector2.h"
#include "util/String.h"

namespace app {

// How entities read the user's controls, by the text form of a binding: a hinge's motor
// buttons and a shape's direction controller. The input system installs the readers; until
// it does, no button is pressed and no direction is pushed, as with an unplugged device.
struct ControlInputs {
    std::function<bool(const util::String& buttons)> isPressed;
    std::function<math::Vec2(const util::String& controller)> direction;
    // Throw BadDataException for a text that names a key that does not exist, so that the
    // statement which set it fails; the input system installs them too.
    std::function<void(const util::String& buttons)> checkButtons;
    std::function<void(const util::String& controller)> checkController;

    void CheckButtons(const util::String& buttons) const {
        if (!buttons.empty() && checkButtons) {
            checkButtons(buttons);
        }
    }
    void CheckController(const util::String& controller) const {
        if (!controller.empty() && checkController) {
            checkController(controller);
        }
    }

    bool IsPressed(const util::String& buttons) const {
        return !buttons.empty() && isPressed && isPressed(buttons);
    }
    math::Vec2 GetDirection(const util::String& controller) const {
        return controller.empty() || !direction ? math::Vec2(0, 0) : direction(controller);
    }

    static ControlInputs& Get() {
        static ControlInputs inputs;
        return inputs;
    }
};

}  // namespace app
