#pragma once

// One scene file through the program's own paths, headless: the shell loads it (through the
// scene loader and the undo history), steps the world, saves it and loads what it saved.
// Driven by the libFuzzer target (SceneFuzz.cpp) and by the replay of kept inputs in the
// test suite (SceneReplay.cpp).

#include <cstddef>
#include <cstdint>

namespace fuzz {

// Runs the bytes as a scene file, then puts the program back to the state the first call
// found after its setup: empty scene and history, settings as they were, nothing added to
// the language's root, the random streams at their start. A finding thus reproduces from
// its own bytes, whatever ran before it in the same process.
void RunSceneInput(const uint8_t* data, size_t size);

}  // namespace fuzz
