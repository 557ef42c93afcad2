#include "gui/Checkbox.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

#include "gui/Primitives.h"

namespace gui {
namespace {

// One straight stroke of the given width from a to b, as a quad.
void Stroke(math::Vec2 a, math::Vec2 b, float width) {
    math::Vec2 d = b - a;
    const float length = std::sqrt(d.x * d.x + d.y * d.y);
    if (length <= 0) {
        return;
    }
    const math::Vec2 n(-d.y / length * width / 2, d.x / length * width / 2);
    glVertex2f(a.x + n.x, a.y + n.y);
    glVertex2f(b.x + n.x, b.y + n.y);
    glVertex2f(b.x - n.x, b.y - n.y);
    glVertex2f(a.x - n.x, a.y - n.y);
}

// A tick in the square of the given side whose top-left corner is at (x, y).
void DrawTick(float x, float y, float side) {
    const math::Vec2 start(x + side * 0.2f, y + side * 0.52f);
    const math::Vec2 corner(x + side * 0.42f, y + side * 0.75f);
    const math::Vec2 end(x + side * 0.82f, y + side * 0.22f);
    const float width = std::max(1.5f, side * 0.16f);
    glDisable(GL_TEXTURE_2D);
    glBegin(GL_QUADS);
    Stroke(start, corner, width);
    Stroke(corner, end, width);
    glEnd();
}

}  // namespace

Checkbox::Checkbox(const util::String& text, bool checked)
    : AbstractToggleButton("Checkbox", text) {
    ShowChecked(checked);
}

Checkbox::~Checkbox() = default;

void Checkbox::DrawMark(float x, float y, float side, const math::Colour& frame,
                        const math::Colour& fill, const math::Colour& ink) {
    FillRect(x, y, side, side, fill);
    FrameRect(x, y, side, side, IsMouseOver() ? 2.0f : 1.0f, frame);
    if (IsChecked()) {
        ColorScope tick(ink);
        DrawTick(x, y, side);
    }
}

}  // namespace gui
