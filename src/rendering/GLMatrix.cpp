#include "rendering/GLMatrix.h"

#include <GL/glew.h>

namespace rendering {

void LoadMatrix(const math::Mat3& m) {
    float glMatrix[16];
    ToGLMatrix(m, glMatrix);
    glLoadMatrixf(glMatrix);
}

void MultMatrix(const math::Mat3& m) {
    float glMatrix[16];
    ToGLMatrix(m, glMatrix);
    glMultMatrixf(glMatrix);
}

}  // namespace rendering
