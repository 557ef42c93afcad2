#pragma once

namespace core {

// The window settings, passed by value. The defaults are those of a first run.
struct WindowParams {
    bool resizable = true;
    bool framed = true;
    bool fullscreen = false;
    int width = 1024;
    int height = 768;
    int colourDepth = 32;
    int zDepth = 24;
    int stencilDepth = 8;
    bool vSync = false;
    int antiAliasSamples = 1;
};

}  // namespace core
