#include "rendering/GraphicsContext.h"

#include <GL/glew.h>

namespace rendering {

void GraphicsContext::ContextCreated() {
    s_loaded = true;
    ++s_generation;
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
