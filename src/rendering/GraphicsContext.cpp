#include "rendering/GraphicsContext.h"

#include <GL/glew.h>

namespace rendering {

std::string GraphicsContext::ContextCreated() {
    // glewInit loads the GL's entry points first, then the window system's, for which it
    // asks GLX for the current display. A loaded X server now and then leaves that answer
    // empty while the context draws fine; nothing here uses GLX's extensions, so only a
    // failure of the GL's own part counts.
    const GLenum result = glewInit();
    if (result != GLEW_OK && result != GLEW_ERROR_NO_GLX_DISPLAY &&
        result != GLEW_ERROR_GLX_VERSION_11_ONLY) {
        s_loaded = false;
        return reinterpret_cast<const char*>(glewGetErrorString(result));
    }
    s_loaded = true;
    ++s_generation;
    return {};
}

void GraphicsContext::ContextLost() {
    s_loaded = false;
}

bool GraphicsContext::HasMultiTexturing() {
    return s_loaded && (GLEW_VERSION_1_3 || GLEW_ARB_multitexture);
}

bool GraphicsContext::HasImaging() {
    return s_loaded && GLEW_ARB_imaging;
}

bool GraphicsContext::HasBorderClamp() {
    return s_loaded && (GLEW_VERSION_1_3 || GLEW_ARB_texture_border_clamp);
}

}  // namespace rendering
