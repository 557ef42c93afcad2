#pragma once

#include "app/widgets/Window.h"

namespace app {

// The popup of a click on empty space: a new scene, paste, the program's options and the
// scene's settings.
void FillBackgroundMenu(Window& menu);
// The popup of a click on water: its settings, its colour, and erasing it.
void FillWaterMenu(Window& menu);

}  // namespace app
