// The language menu's flags (64x40, opaque, with a thin dark border) and the window icon.
#include "Artwork.h"
#include "Figures.h"
#include "Sdf.h"

namespace artgen {

namespace {

constexpr int kFlagWidth = 64;
constexpr int kFlagHeight = 40;
const Rgba kBorder = Hex(0x1e1e24);

// The flag's own area, inside its one-pixel border.
const Vec2 kFlagMin{1, 1};
const Vec2 kFlagMax{kFlagWidth - 1, kFlagHeight - 1};

Shape Rect(Vec2 min, Vec2 max) {
    return sdf::Box((min + max) / 2, (max - min) / 2);
}

Canvas Framed(const std::function<void(Canvas&)>& field) {
    Canvas canvas(kFlagWidth, kFlagHeight);
    canvas.Fill([](Vec2) { return -1.0f; }, Solid(kBorder));
    field(canvas);
    canvas.Fill(sdf::Subtract([](Vec2) { return -1.0f; }, Rect(kFlagMin, kFlagMax)),
                Solid(kBorder));
    return canvas;
}

Canvas UnionFlag() {
    return Framed([](Canvas& canvas) {
        const Rgba blue = Hex(0x012169);
        const Rgba red = Hex(0xc8102e);
        const Rgba white = Grey(1);
        const Vec2 centre = (kFlagMin + kFlagMax) / 2;
        const Vec2 size = kFlagMax - kFlagMin;
        // Proportions of the 30-unit-high flag, at this height.
        const float unit = size.y / 30;
        const Vec2 diagonals[2] = {Normalized(size), Normalized({size.x, -size.y})};
        const auto saltire = [&](float from, float to, bool counterchanged) -> Shape {
            return [=](Vec2 p) {
                const Vec2 v = p - centre;
                float d = 1e9f;
                for (const Vec2& axis : diagonals) {
                    // Across the band, measured to the left of the arm looking outward, so
                    // that the red turns about the centre from one arm to the next.
                    const Vec2 outward = Dot(v, axis) >= 0 ? axis : -axis;
                    const float across =
                        counterchanged ? Dot(v, Vec2{outward.y, -outward.x}) : Cross(axis, v);
                    d = std::min(d, std::max(from * unit - across, across - to * unit));
                }
                return d;
            };
        };
        const auto cross = [&](float halfWidth) {
            const float w = halfWidth * unit;
            return sdf::Union({Rect({kFlagMin.x, centre.y - w}, {kFlagMax.x, centre.y + w}),
                               Rect({centre.x - w, kFlagMin.y}, {centre.x + w, kFlagMax.y})});
        };
        canvas.Fill(Rect(kFlagMin, kFlagMax), Solid(blue));
        canvas.Fill(saltire(-3, 3, false), Solid(white));
        canvas.Fill(saltire(0, 2, true), Solid(red));
        canvas.Fill(cross(5), Solid(white));
        canvas.Fill(cross(3), Solid(red));
    });
}

Canvas GermanFlag() {
    return Framed([](Canvas& canvas) {
        // Bands of 13, 12 and 13 rows, so that their edges fall on whole pixels.
        canvas.Fill(Rect(kFlagMin, {kFlagMax.x, 14}), Solid(Hex(0x000000)));
        canvas.Fill(Rect({kFlagMin.x, 14}, {kFlagMax.x, 26}), Solid(Hex(0xdd0000)));
        canvas.Fill(Rect({kFlagMin.x, 26}, kFlagMax), Solid(Hex(0xffce00)));
    });
}

Canvas WindowIcon() {
    // A V of two hinged planks holding a ball, on a blue tile.
    Canvas canvas(64, 64);
    const Rgba ink = Hex(0x141a33);
    const Shape tile = sdf::Box({32, 32}, {30, 30}, 12);
    canvas.Fill(sdf::Grow(tile, 1.0f), Solid(ink));
    canvas.Fill(tile, Linear({0, 2}, Hex(0x5b8cff), {0, 62}, Hex(0x2343b0)));
    const Vec2 bottom{32, 51};
    const Vec2 tops[2] = {{11, 15}, {53, 15}};
    const Rgba planks[2] = {Hex(0xffc233), Hex(0xff9a1f)};
    for (int i = 0; i < 2; ++i) {
        Inked(canvas, sdf::Capsule(tops[i], bottom, 5.5f),
              Linear({0, 12}, Shade(planks[i], 1.25f), {0, 56}, planks[i]), 2, ink);
    }
    for (const Vec2& top : tops) {
        Inked(canvas, sdf::Circle(top, 3.2f), Solid(Hex(0xe8ecf4)), 1.6f, ink);
    }
    const Vec2 ball{32, 27};
    Inked(canvas, sdf::Circle(ball, 8.5f),
          Radial(ball - Vec2{3, 3.5f}, 13, Hex(0xff7a6b), Hex(0xc81e2a)), 2, ink);
    canvas.Fill(sdf::Circle(ball - Vec2{3, 3.5f}, 2.2f), Solid(Grey(1, 0.85f)), 2);
    return canvas;
}

}  // namespace

std::vector<Artwork> Emblems() {
    return {
        {"language/English.png", UnionFlag},
        {"language/German.png", GermanFlag},
        {"Vorra.bmp", WindowIcon},
    };
}

}  // namespace artgen
