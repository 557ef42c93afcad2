// Tool icons, 64x64, shown at 32-48 pixels on light grey buttons: soft colours lit from the
// top under one dark outline of the same weight everywhere.
#include "Artwork.h"
#include "Figures.h"
#include "Sdf.h"

namespace artgen {

namespace {

const Rgba kInk = Hex(0x2b2f3a);
constexpr float kLine = 2.5f;
const Vec2 kCentre{32, 32};

const Rgba kBlue = Hex(0x5b9bd5);
const Rgba kOrange = Hex(0xf4a261);
const Rgba kGreen = Hex(0x7cc47f);
const Rgba kRed = Hex(0xe76f51);
const Rgba kYellow = Hex(0xf6d55c);
const Rgba kPurple = Hex(0xa58bd6);
const Rgba kMetal = Hex(0xbcc5ce);
const Rgba kSkin = Hex(0xf6cfa9);
const Rgba kPink = Hex(0xf29bb5);
const Rgba kWood = Hex(0xe8c496);

// The fill of every part: the colour, lighter toward the top of the icon.
Paint Soft(Rgba colour) {
    return Linear({0, 6}, Shade(colour, 1.4f), {0, 58}, Shade(colour, 0.9f));
}

void Part(Canvas& canvas, const Shape& shape, Rgba colour) {
    Inked(canvas, shape, Soft(colour), kLine, kInk);
}

// A smooth open curve through the points (Catmull-Rom), for strokes and strings.
std::vector<Vec2> Curve(const std::vector<Vec2>& through) {
    std::vector<Vec2> points;
    const int steps = 12;
    for (size_t i = 0; i + 1 < through.size(); ++i) {
        const Vec2 p0 = through[i > 0 ? i - 1 : i];
        const Vec2 p1 = through[i];
        const Vec2 p2 = through[i + 1];
        const Vec2 p3 = through[i + 2 < through.size() ? i + 2 : i + 1];
        for (int s = 0; s < steps; ++s) {
            const float t = static_cast<float>(s) / steps;
            const float t2 = t * t;
            const float t3 = t2 * t;
            points.push_back(0.5f * (2 * p1 + (p2 - p0) * t + (2 * p0 - 5 * p1 + 4 * p2 - p3) * t2 +
                                     (3 * p1 - p0 - 3 * p2 + p3) * t3));
        }
    }
    points.push_back(through.back());
    return points;
}

Canvas Move() {
    Canvas canvas(64, 64);
    Part(canvas, sdf::Placed(figure::FourWayArrow(13.5f, 1.7f, 5.5f, 5.0f), kCentre, 0, 1.95f),
         kBlue);
    return canvas;
}

Canvas Rotate() {
    Canvas canvas(64, 64);
    Part(canvas,
         sdf::Placed(figure::CircularArrow(9.5f, 1.9f, -0.35f * kPi, 1.25f * kPi, 6.5f, 5.2f),
                     kCentre, 0, 2.1f),
         kGreen);
    canvas.Fill(sdf::Circle(kCentre, 4), Solid(kInk));
    return canvas;
}

Canvas Pan() {
    Canvas canvas(64, 64);
    for (const Shape& part : figure::OpenHand()) {
        Part(canvas, sdf::Placed(part, {31, 30}, 0, 2.25f), kSkin);
    }
    return canvas;
}

// A pencil or pen with its tip at the point, pointing down and to the left.
void Pencil(Canvas& canvas, Vec2 tip, float scale, Rgba wood, Rgba body, Rgba eraser) {
    const figure::Pencil pencil = figure::MakePencil();
    const auto at = [&](const Shape& shape) { return sdf::Placed(shape, tip, -kPi / 4, scale); };
    canvas.Fill(at(sdf::Grow(pencil.whole, kLine / scale)), Solid(kInk));
    canvas.Fill(at(pencil.wood), Soft(wood));
    canvas.Fill(at(pencil.lead), Solid(kInk));
    Part(canvas, at(pencil.body), body);
    Part(canvas, at(pencil.eraser), eraser);
    Part(canvas, at(pencil.band), kMetal);
}

Canvas Sketch() {
    Canvas canvas(64, 64);
    // A loop drawn round, its end just reaching the pencil.
    std::vector<Vec2> loop;
    const Vec2 centre{25, 39};
    for (int i = 0; i <= 60; ++i) {
        const float a = -kPi / 4 - 1.85f * kPi * i / 60;
        const float r = 14.5f + 2.0f * std::sin(3 * a + 0.6f) + 1.2f * std::cos(2 * a);
        loop.push_back(centre + Polar(a, r));
    }
    Part(canvas, sdf::Polyline(loop, 1.8f), kBlue);
    Pencil(canvas, loop.front(), 1.65f, kWood, kYellow, kPink);
    return canvas;
}

Canvas Brush() {
    Canvas canvas(64, 64);
    const Vec2 tip{21, 43};
    Part(canvas, sdf::Polyline(Curve({{49, 53}, {34, 57}, {20, 56}, {16, 50}, tip}), 3.0f), kBlue);
    const figure::Brush brush = figure::MakeBrush();
    const float scale = 2.3f;
    const float angle = -kPi / 4;
    const auto at = [&](const Shape& shape) { return sdf::Placed(shape, tip, angle, scale); };
    canvas.Fill(at(sdf::Grow(brush.whole, kLine / scale)), Solid(kInk));
    Part(canvas, at(brush.handle), kRed);
    Part(canvas, at(brush.ferrule), kMetal);
    // Bristles wet with the stroke's paint toward their tip.
    Inked(canvas, at(brush.bristles),
          Linear(tip + Polar(angle, 2 * scale), kBlue, tip + Polar(angle, 6 * scale), kWood), kLine,
          kInk);
    return canvas;
}

Canvas Drag() {
    Canvas canvas(64, 64);
    Part(canvas, sdf::Box({20, 45}, {11, 11}, 2.5f, 0.25f), kOrange);
    canvas.Fill(sdf::Polyline(Curve({{24.5f, 33.5f}, {30, 29}, {38, 30}, {44, 27}}), 1.3f),
                Solid(kInk));
    for (const Shape& part : figure::ClosedHand()) {
        Part(canvas, sdf::Placed(part, {46, 19}, 0, 1.55f), kSkin);
    }
    return canvas;
}

Canvas Plane() {
    Canvas canvas(64, 64);
    const Shape below = [](Vec2 p) {
        return std::max({34.0f - p.y, p.y - 50.0f, 9.0f - p.x, p.x - 55.0f});
    };
    std::vector<Shape> hatches;
    for (float x = 14; x < 70; x += 8) {
        hatches.push_back(sdf::Capsule({x, 34}, {x - 14, 48}, 1.3f));
    }
    canvas.Fill(sdf::Intersect(sdf::Union(std::move(hatches)), below), Solid(kInk));
    Part(canvas, sdf::Box({32, 31}, {24, 4}, 1.5f), kGreen);
    Part(canvas, sdf::Circle({32, 18.5f}, 7), kBlue);
    return canvas;
}

Canvas Circle() {
    Canvas canvas(64, 64);
    Part(canvas, sdf::Circle(kCentre, 22), kBlue);
    canvas.Fill(sdf::Capsule(kCentre, kCentre + Vec2{22, 0}, kLine / 2), Solid(kInk));
    canvas.Fill(sdf::Circle(kCentre, 3), Solid(kInk));
    return canvas;
}

Canvas Box() {
    Canvas canvas(64, 64);
    Part(canvas, sdf::Box(kCentre, {18, 18}, 3, -0.2f), kOrange);
    return canvas;
}

Canvas Chain() {
    Canvas canvas(64, 64);
    const Vec2 along = Normalized({1, -1});
    const auto link = [&](float at) {
        const Vec2 c = kCentre + along * at;
        return sdf::Outline(sdf::Capsule(c - along * 4.5f, c + along * 4.5f, 6.5f), 2.3f);
    };
    Part(canvas, link(-15), kMetal);
    Part(canvas, link(15), kMetal);
    Part(canvas, sdf::Capsule(kCentre - along * 10, kCentre + along * 10, 2.6f), kMetal);
    return canvas;
}

Canvas Spring() {
    Canvas canvas(64, 64);
    const figure::Coil coil = figure::MakeCoil({}, 0, 7 * kPi, 9.6f, 11, 2.5f, 1.7f);
    const auto at = [](const Shape& shape) { return sdf::Placed(shape, {32, 15}, kPi / 2); };
    Part(canvas, at(coil.back), Shade(kGreen, 0.7f));
    Part(canvas, at(coil.front), kGreen);
    Part(canvas, sdf::Box({32, 11}, {15, 3}, 1.5f), kMetal);
    Part(canvas, sdf::Box({32, 53}, {15, 3}, 1.5f), kMetal);
    return canvas;
}

Canvas FixJoint() {
    Canvas canvas(64, 64);
    Part(canvas, sdf::Box({23, 25}, {15, 11}, 3, -0.15f), kBlue);
    Part(canvas, sdf::Box({41, 39}, {15, 11}, 3, 0.2f), kOrange);
    Part(canvas, sdf::RegularPolygon(kCentre, 8.5f, 6, kPi / 6), kMetal);
    canvas.Fill(sdf::Circle(kCentre, 2.5f), Solid(kInk));
    return canvas;
}

Canvas Hinge() {
    Canvas canvas(64, 64);
    const Vec2 pin{32, 25};
    Part(canvas, sdf::Capsule({10, 47}, pin, 6), kBlue);
    Part(canvas, sdf::Capsule(pin, {54, 45}, 6), kOrange);
    Part(canvas, sdf::Circle(pin, 8.5f), kMetal);
    canvas.Fill(sdf::Circle(pin, 3.5f), Solid(kInk));
    return canvas;
}

Canvas Pen() {
    Canvas canvas(64, 64);
    // The trail fades toward its old end, as the program draws it.
    const Vec2 tip{33, 37};
    const std::vector<Vec2> trail = Curve({{5, 30}, {12, 44}, {22, 52}, {29, 44}, tip});
    canvas.Fill(sdf::Polyline(trail, 2.2f), [](Vec2 p, float) {
        return WithAlpha(Shade(kPurple, 0.85f), Lerp(0.3f, 1, Clamp01((p.x - 5) / 26)));
    });
    Pencil(canvas, tip, 1.6f, kMetal, kPurple, Shade(kPurple, 0.8f));
    return canvas;
}

Canvas Scale() {
    Canvas canvas(64, 64);
    const Shape dashes = [](Vec2 p) { return std::abs(std::fmod(p.x - p.y + 64, 8) - 4) - 2; };
    canvas.Fill(sdf::Intersect(sdf::Outline(sdf::Box(kCentre, {23, 23}, 2), 1.25f), dashes),
                Solid(kInk));
    Part(canvas, sdf::Box({21, 43}, {11, 11}, 2), kBlue);
    Part(canvas, sdf::Placed(figure::Arrow(0, 24, 2, 8, 6.5f), {27, 37}, -kPi / 4), kGreen);
    return canvas;
}

}  // namespace

std::vector<Artwork> ToolIcons() {
    return {
        {"textures/tools/move.png", Move},     {"textures/tools/rotate.png", Rotate},
        {"textures/tools/pan.png", Pan},       {"textures/tools/sketch.png", Sketch},
        {"textures/tools/brush.png", Brush},   {"textures/tools/drag.png", Drag},
        {"textures/tools/plane.png", Plane},   {"textures/tools/circle.png", Circle},
        {"textures/tools/box.png", Box},       {"textures/tools/chain.png", Chain},
        {"textures/tools/spring.png", Spring}, {"textures/tools/fixjoint.png", FixJoint},
        {"textures/tools/hinge.png", Hinge},   {"textures/tools/pen.png", Pen},
        {"textures/tools/scale.png", Scale},
    };
}

}  // namespace artgen
