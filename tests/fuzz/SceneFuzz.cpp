// libFuzzer target for scene files: load through the shell, step, save, load the save.
// Built and run by "scripts/fuzz.sh scene"; inputs worth keeping go to
// tests/fuzz/scene-regressions/, which the test suite replays (SceneReplay.cpp).

#include <cstddef>
#include <cstdint>

#include "SceneHarness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::RunSceneInput(data, size);
    return 0;
}
