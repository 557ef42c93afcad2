#pragma once

#include "math/Vector4.h"
#include "util/Singleton.h"
#include "util/String.h"

namespace rendering {

// Drawing state worth caching, and the screenshot service.
class Renderer : public util::Pointee, public util::Singleton<Renderer> {
public:
    const math::Colour& GetColor() const { return m_color; }
    // Calls the driver only if the colour changes.
    void SetColor(const math::Colour& color);
    // The current colour times this one; opaque white changes nothing.
    void MultiplyColor(const math::Colour& color);
    // After a new context or foreign state changes: the next colour goes to the driver.
    void ForgetState() { m_known = false; }

    // Writes the viewport as a 24-bit TGA named basePath_YYMMDD_NNNN.tga, and gives the
    // name used; empty when the file could not be written.
    util::String SaveScreenshot(const util::String& basePath);
    // The first free name of the day; "to_many_screenshots.tga" when all 10000 are taken.
    static util::String ScreenshotName(const util::String& basePath);

private:
    math::Colour m_color{1, 1, 1, 1};
    bool m_known = false;
};

}  // namespace rendering
