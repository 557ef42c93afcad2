#pragma once

#include "util/String.h"

namespace app {

// The small picture of a scene that the file window shows beside its name: a PNG file of
// the same name beside the scene file.
class Thumbnail {
public:
    // Draws the scene as it is now, without the interface, and writes the picture beside
    // the scene file. False, and nothing written, where there is no window to draw in or
    // the file cannot be written (which is logged).
    static bool SaveBeside(const util::String& scenePath);
    // "scenes/bridge.vra" gives "scenes/bridge.png"; a bare name lies in the scenes folder.
    static util::String PathFor(const util::String& scenePath);

    static constexpr int kWidth = 160;
    static constexpr int kHeight = 120;
};

}  // namespace app
