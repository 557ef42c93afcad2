#pragma once

#include "math/Matrix3.h"

namespace rendering {

// A 2D affine matrix in OpenGL's column-major 4x4 form, leaving z alone.
inline void ToGLMatrix(const math::Mat3& m, float out[16]) {
    const float glMatrix[16] = {m(0, 0), m(1, 0), 0, m(2, 0), m(0, 1), m(1, 1), 0, m(2, 1),
                                0,       0,       1, 0,       m(0, 2), m(1, 2), 0, m(2, 2)};
    for (int i = 0; i < 16; ++i) {
        out[i] = glMatrix[i];
    }
}

// Replaces the current matrix, or multiplies onto it.
void LoadMatrix(const math::Mat3& m);
void MultMatrix(const math::Mat3& m);

}  // namespace rendering
