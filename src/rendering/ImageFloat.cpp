#include "rendering/ImageFloat.h"

#include <GL/glew.h>

namespace rendering {

unsigned int ImageFloat::GetFormat() const {
    return GL_ALPHA;
}

unsigned int ImageFloat::GetType() const {
    return GL_FLOAT;
}

}  // namespace rendering
