#pragma once

#include "math/Vector2.h"

namespace core {

// The window settings, passed by value. The defaults are those of a first run.
struct WindowParams {
    bool resizable = true;
    bool framed = true;
    bool fullscreen = false;
    // Width and height in pixels; one vector so that the script can mirror it.
    math::TVector2<int> resolution{1024, 768};
    int colourDepth = 32;
    int zDepth = 24;
    int stencilDepth = 8;
    bool vSync = false;
    int antiAliasSamples = 1;
};

}  // namespace core
