#pragma once

namespace app {

// Connects what the scene model reads of the user's controls (ControlInputs: a hinge's
// motor buttons, a shape's direction controller) to the input system, and the script's
// key bindings to its keys.
class InputControls {
public:
    static void Install();
    // Forgets the combinations and directions read so far.
    static void Uninstall();
};

}  // namespace app
