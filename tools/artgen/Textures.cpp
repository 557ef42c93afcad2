// The textures drawn over the scene. Those of entities are white and greys, since the program
// multiplies them by the entity's colour; all fade to nothing at their outermost pixels.
#include "Artwork.h"
#include "Figures.h"
#include "Sdf.h"

namespace artgen {

namespace {

const Rgba kDeep = Grey(0.22f);  // rims and slots: still the tint, only darker

// A screw head with a cross slot: the mark of a joint fixed to the background.
void ScrewHead(Canvas& canvas, Vec2 centre, float radius) {
    canvas.Fill(sdf::Circle(centre, radius + radius * 0.16f), Solid(kDeep));
    canvas.Fill(sdf::Circle(centre, radius), Metal(centre, radius, 1.0f, 0.72f));
    const float arm = radius * 0.62f;
    const float slot = radius * 0.15f;
    canvas.Fill(sdf::Union({sdf::Capsule(centre - Vec2{arm, 0}, centre + Vec2{arm, 0}, slot),
                            sdf::Capsule(centre - Vec2{0, arm}, centre + Vec2{0, arm}, slot)}),
                Solid(kDeep));
}

// A small domed rivet.
void Rivet(Canvas& canvas, Vec2 centre, float radius) {
    canvas.Fill(sdf::Circle(centre, radius + 1.5f), Solid(kDeep));
    canvas.Fill(sdf::Circle(centre, radius),
                Radial(centre - Vec2{1.5f, 1.5f}, radius * 1.6f, Grey(1.0f), Grey(0.6f)));
}

Canvas Hinge(bool toBackground) {
    Canvas canvas(128, 128);
    const Vec2 c{64, 64};
    // The ring: a dark rim, a bevelled band lit from the top left, and a dark gap to the pin.
    canvas.Fill(sdf::Circle(c, 59), Solid(kDeep));
    canvas.Fill(sdf::Circle(c, 53), Metal(c, 53, 0.98f, 0.62f));
    canvas.Fill(sdf::Ring(c, 50.5f, 2.5f), Metal(c, 53, 1.0f, 0.78f));
    canvas.Fill(sdf::Circle(c, 34), Solid(kDeep));
    if (toBackground) {
        for (int i = 0; i < 4; ++i) {
            Rivet(canvas, c + Polar(kPi / 4 + i * kPi / 2, 43.5f), 4.5f);
        }
        ScrewHead(canvas, c, 26);
    } else {
        canvas.Fill(sdf::Circle(c, 27), Metal(c, 27, 1.0f, 0.7f));
        // A soft glint on the pin's dome.
        canvas.Fill(sdf::Circle(c - Vec2{8, 8}, 7), Solid(Grey(1, 0.7f)), 10);
    }
    return canvas;
}

Canvas FixJoint(bool toBackground) {
    Canvas canvas(128, 128);
    const Vec2 c{64, 64};
    canvas.Fill(sdf::Box(c, {55, 55}, 16), Solid(kDeep));
    canvas.Fill(sdf::Box(c, {50, 50}, 12), Metal(c, 50, 0.98f, 0.62f));
    canvas.Fill(sdf::Box(c, {40, 40}, 6), Metal(c, 40, 0.7f, 0.9f));
    canvas.Fill(sdf::Box(c, {37, 37}, 4), Solid(Grey(0.84f)));
    if (toBackground) {
        for (int i = 0; i < 4; ++i) {
            Rivet(canvas, c + Polar(kPi / 4 + i * kPi / 2, 44.5f), 4.5f);
        }
        ScrewHead(canvas, c, 24);
    } else {
        // A hex bolt with its washer.
        canvas.Fill(sdf::Circle(c, 31), Solid(kDeep));
        canvas.Fill(sdf::Circle(c, 28), Metal(c, 28, 0.5f, 0.75f));
        const Shape hex = sdf::RegularPolygon(c, 23, 6, kPi / 6);
        canvas.Fill(sdf::Grow(hex, 4), Solid(kDeep));
        canvas.Fill(hex, Metal(c, 23, 1.0f, 0.74f));
        canvas.Fill(sdf::Ring(c, 12, 1.5f), Solid(Grey(0.55f, 0.6f)));
    }
    return canvas;
}

Canvas SelectionRing() {
    Canvas canvas(128, 128);
    canvas.Fill(sdf::Ring({64, 64}, 55, 6), Solid(Grey(1)));
    return canvas;
}

// The wire of the spring and of its end loops: the same gauge, so that they join.
constexpr float kWireHalfWidth = 4.0f;

// The wire lit along its middle, darker the further behind the coil's axis it runs.
Rgba Wire(figure::Coil::Sample at) {
    const float light = Lerp(0.6f, 1.0f, (at.depth + 1) / 2);
    return Tube(kWireHalfWidth, Grey(light), Grey(0.5f * light))({}, at.across - kWireHalfWidth);
}

Canvas Spring() {
    // Two turns across the tile, the wire at the top of a turn at both edges; a turn more on
    // each side is drawn so that the wire crossing the edges continues into the next tile.
    Canvas canvas(64, 64);
    const figure::Coil coil =
        figure::MakeCoil({0, 32}, -2 * kPi, 6 * kPi, 32, 20, 12, kWireHalfWidth);
    for (const figure::Coil::Half& half : coil.halves) {
        canvas.Fill(half.shape, [&half](Vec2 p, float) { return Wire(half.sample(p)); });
    }
    return canvas;
}

Canvas SpringEnd() {
    Canvas canvas(64, 64);
    const Vec2 c{32, 32};
    // The pin the loop hangs on.
    canvas.Fill(sdf::Circle(c, 9), Solid(kDeep));
    canvas.Fill(sdf::Circle(c, 7), Metal(c, 7, 0.95f, 0.6f));
    canvas.Fill(sdf::Ring(c, 17, kWireHalfWidth), [c](Vec2 p, float) {
        return Wire({1, std::abs(Length(p - c) - 17)});
    });
    return canvas;
}

Canvas PenDot() {
    Canvas canvas(64, 64);
    const Vec2 c{32, 32};
    canvas.Fill(sdf::Circle(c, 27), Radial(c - Vec2{7, 8}, 34, Grey(1), Grey(0.8f)), 3);
    return canvas;
}

Canvas WaterDrop() {
    Canvas canvas(64, 64);
    canvas.Layer([](Vec2 p) {
        const float r = Length(p - Vec2{32, 32}) / 30;
        const float fall = Clamp01(1 - r * r);
        return Grey(1, fall * fall);
    });
    return canvas;
}

Canvas Blank() {
    return Canvas(8, 8);
}

Canvas RotationPivot() {
    Canvas canvas(64, 64);
    const Vec2 c{32, 32};
    std::vector<Shape> marks = {sdf::Ring(c, 11, 1.6f), sdf::Circle(c, 3)};
    for (int i = 0; i < 4; ++i) {
        marks.push_back(
            sdf::Capsule(c + Polar(i * kPi / 2, 16.5f), c + Polar(i * kPi / 2, 26.5f), 1.6f));
    }
    Inked(canvas, sdf::Union(std::move(marks)), Solid(Grey(1)), 1.8f, Grey(0.08f, 0.9f));
    return canvas;
}

}  // namespace

std::vector<Artwork> EntityTextures() {
    return {
        {"textures/hinge.png", [] { return Hinge(false); }},
        {"textures/hinge_bg.png", [] { return Hinge(true); }},
        {"textures/fixjoint.png", [] { return FixJoint(false); }},
        {"textures/fixjoint_bg.png", [] { return FixJoint(true); }},
        {"textures/ring.png", SelectionRing},
        {"textures/spring.png", Spring},
        {"textures/spring_attachment.png", SpringEnd},
        {"textures/dot.png", PenDot},
        {"textures/simpleWater.png", WaterDrop},
        {"textures/blank.png", Blank},
        {"textures/rotate_origo.png", RotationPivot},
    };
}

}  // namespace artgen
