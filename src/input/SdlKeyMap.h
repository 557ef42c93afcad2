#pragma once

#include "input/KeyCodes.h"

namespace input {

// The key of an SDL2 keycode (SDL_Keycode) in the classic numbering, or 0 when the
// classic numbering has none.
SDLKey KeyFromSdlKeycode(int sdlKeycode);

// An SDL2 keycode for a classic key, or 0 when none; for synthetic events in tests.
int SdlKeycodeFromKey(SDLKey key);

}  // namespace input
