#pragma once

#include "math/Vector4.h"
#include "script/Attributes.h"
#include "script/Reflected.h"

namespace app {

// What a scene says of what lies behind it: the sky's colour and the clouds. The window's
// background draws them; without a window a stand-in keeps them, so that scene files read
// and write the same everywhere.
class BackgroundSettings {
public:
    // Registers the attributes, in the order the object "Background" lists them.
    explicit BackgroundSettings(script::Reflected& owner);

    script::AttribPtr<math::Colour> skyColor;
    script::AttribPtr<float> cloudOpacity;
    script::AttribPtr<bool> drawClouds;
};

// "Background" where there is no window: the shell's.
class HeadlessBackground : public script::Reflected, public BackgroundSettings {
public:
    HeadlessBackground();
    ~HeadlessBackground() override;
};

}  // namespace app
