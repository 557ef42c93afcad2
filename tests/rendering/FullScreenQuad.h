#pragma once

#include <GL/glew.h>

#include "rendering/Texture.h"

namespace test_rendering {

// Draws the texture over the whole viewport with the fixed pipeline, blended by its alpha.
inline void DrawFullScreen(const rendering::Texture& texture) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    texture.Bind();
    glColor4f(1, 1, 1, 1);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex2f(-1, -1);
    glTexCoord2f(1, 0);
    glVertex2f(1, -1);
    glTexCoord2f(1, 1);
    glVertex2f(1, 1);
    glTexCoord2f(0, 1);
    glVertex2f(-1, 1);
    glEnd();
    rendering::Texture::Unbind();
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
}

}  // namespace test_rendering
