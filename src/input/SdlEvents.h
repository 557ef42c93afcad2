#pragma once

#include "util/String.h"

union SDL_Event;

namespace input {

class Input;
struct InputEvent;

// The one place where the window system's events and state are read. Everything above
// works with the records of Events.h and the classic key numbers.
namespace sdl {

// Takes one event from the queue and hands it to the input root; false when the queue is
// empty. A key press and the text it typed are one event here.
bool PollEvent(Input& input);
// The modifier state as a ModifierMask.
unsigned GetModifiers();
void EnableTextInput(bool on);
void ShowCursor(bool show);
void GrabInput(bool grab);
int CountJoysticks();
// SDL's id for the device of that index, -1 if there is none.
int GetJoystickInstanceId(int deviceIndex);
// The raw event that an InputEvent carries.
const SDL_Event& GetRawEvent(const InputEvent& event);

}  // namespace sdl
}  // namespace input
