// Mouse cursors, 32x32. The program draws them centred on the mouse, so each one's hot spot is
// the middle of the image, the corner between pixels 15 and 16. White with a near-black
// outline, like a desktop cursor; straight edges sit on pixel boundaries where they can.
#include "Artwork.h"
#include "Figures.h"
#include "Sdf.h"

namespace artgen {

namespace {

const Vec2 kHotSpot{16, 16};
const Rgba kInk = Grey(0.06f);
const Rgba kWhite = Grey(1);
constexpr float kLine = 1.0f;

// The figure inked in white at the hot spot, turned by the angle.
Canvas Cursor(const std::vector<Shape>& parts, float angle = 0) {
    Canvas canvas(32, 32);
    for (const Shape& part : parts) {
        Inked(canvas, sdf::Placed(part, kHotSpot, angle), Solid(kWhite), kLine, kInk);
    }
    return canvas;
}

Canvas Mouse() {
    return Cursor({figure::Pointer()});
}

Canvas PrecisePointer() {
    // Cross hairs to the left and above the tip, and a slim pointer below and to the right.
    Canvas canvas =
        Cursor({sdf::Union({sdf::Box({-7.5f, 0}, {4.5f, 1}), sdf::Box({0, -7.5f}, {1, 4.5f})})});
    Inked(canvas, sdf::Placed(figure::SlimPointer(), kHotSpot), Solid(kWhite), kLine, kInk);
    return canvas;
}

Canvas Resize(float angle) {
    // Diagonals reach as far along both axes as the straight ones do.
    const bool diagonal = std::fmod(angle, kPi / 2) != 0;
    return Cursor({figure::DoubleArrow(diagonal ? 16.0f : 13.5f, 1, 5, 4.5f)}, angle);
}

Canvas Move() {
    return Cursor({figure::FourWayArrow(13.5f, 1, 4.5f, 4.0f)});
}

Canvas Rotate() {
    return Cursor({figure::CircularArrow(9.5f, 1.4f, -0.35f * kPi, 1.25f * kPi, 5.5f, 4.2f),
                   sdf::Box({}, {1, 1})});
}

Canvas Crosshair() {
    std::vector<Shape> arms = {sdf::Box({}, {1, 1})};
    for (int i = 0; i < 4; ++i) {
        arms.push_back(sdf::Placed(sdf::Box({8.5f, 0}, {4.5f, 1}), {}, i * kPi / 2));
    }
    return Cursor({sdf::Union(std::move(arms))});
}

Canvas Pencil() {
    const figure::Pencil pencil = figure::MakePencil();
    const float angle = -kPi / 4;
    Canvas canvas = Cursor({pencil.whole}, angle);
    const auto at = [&](const Shape& shape) { return sdf::Placed(shape, kHotSpot, angle); };
    canvas.Fill(at(pencil.lead), Solid(kInk));
    canvas.Fill(at(sdf::Outline(pencil.body, 0.5f)), Solid(kInk));
    canvas.Fill(at(pencil.band), Solid(Grey(0.55f)));
    return canvas;
}

Canvas Brush() {
    const figure::Brush brush = figure::MakeBrush();
    const float angle = -kPi / 4;
    Canvas canvas = Cursor({brush.whole}, angle);
    canvas.Fill(sdf::Placed(brush.ferrule, kHotSpot, angle), Solid(Grey(0.55f)));
    return canvas;
}

Canvas Eraser() {
    const figure::Eraser eraser = figure::MakeEraser();
    const float angle = -0.22f * kPi;
    Canvas canvas = Cursor({eraser.whole}, angle);
    canvas.Fill(sdf::Placed(eraser.rubber, kHotSpot, angle), Solid(Grey(0.62f)));
    canvas.Fill(sdf::Placed(sdf::Outline(eraser.sleeve, 0.5f), kHotSpot, angle), Solid(kInk));
    return canvas;
}

}  // namespace

std::vector<Artwork> Cursors() {
    return {
        {"textures/cursors/mouse.png", Mouse},
        {"textures/cursors/arrow.png", PrecisePointer},
        {"textures/cursors/arrow_north-west.png", [] { return Resize(kPi / 4); }},
        {"textures/cursors/arrow_north-south.png", [] { return Resize(kPi / 2); }},
        {"textures/cursors/arrow_north-east.png", [] { return Resize(-kPi / 4); }},
        {"textures/cursors/arrow_west-east.png", [] { return Resize(0); }},
        {"textures/cursors/pencil.png", Pencil},
        {"textures/cursors/brush.png", Brush},
        {"textures/cursors/hand.png", [] { return Cursor(figure::OpenHand()); }},
        {"textures/cursors/hand_closed.png", [] { return Cursor(figure::ClosedHand()); }},
        {"textures/cursors/move.png", Move},
        {"textures/cursors/rotate.png", Rotate},
        {"textures/cursors/crosshair.png", Crosshair},
        {"textures/cursors/eraser.png", Eraser},
    };
}

}  // namespace artgen
