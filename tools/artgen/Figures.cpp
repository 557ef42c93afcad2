#include "Figures.h"

#include "Sdf.h"

namespace artgen {

void Inked(Canvas& canvas, const Shape& shape, const Paint& fill, float line, Rgba ink) {
    canvas.Fill(sdf::Grow(shape, line), Solid(ink));
    canvas.Fill(shape, fill);
}

Paint Metal(Vec2 centre, float radius, float light, float dark) {
    const Vec2 reach = Vec2{radius, radius} * 0.7f;
    return Linear(centre - reach, Grey(light), centre + reach, Grey(dark));
}

Paint Tube(float halfWidth, Rgba core, Rgba edge) {
    return [=](Vec2, float d) {
        // d runs from -halfWidth on the wire's axis to 0 at its silhouette.
        const float across = Clamp01((d + halfWidth) / halfWidth);
        return Mix(edge, core, std::sqrt(1 - across * across));
    };
}

namespace figure {

Shape Arrow(float tail, float reach, float shaftHalfWidth, float headLength, float headHalfWidth) {
    const float neck = reach - headLength;
    return sdf::Union(
        {sdf::Box({(tail + neck + 0.5f) / 2, 0}, {(neck + 0.5f - tail) / 2, shaftHalfWidth}),
         sdf::Polygon({{reach, 0}, {neck, -headHalfWidth}, {neck, headHalfWidth}})});
}

Shape DoubleArrow(float reach, float shaftHalfWidth, float headLength, float headHalfWidth) {
    const Shape half = Arrow(0, reach, shaftHalfWidth, headLength, headHalfWidth);
    return sdf::Union({half, sdf::Placed(half, {}, kPi)});
}

Shape FourWayArrow(float reach, float shaftHalfWidth, float headLength, float headHalfWidth) {
    const Shape across = DoubleArrow(reach, shaftHalfWidth, headLength, headHalfWidth);
    return sdf::Union({across, sdf::Placed(across, {}, kPi / 2)});
}

Shape CircularArrow(float radius, float halfWidth, float from, float to, float headLength,
                    float headHalfWidth) {
    const Vec2 end = Polar(to, radius);
    const Vec2 onward = Polar(to + kPi / 2);
    const Vec2 outward = Polar(to);
    // The arc stops a little short so that its round end hides under the head.
    const float trim = 0.5f * halfWidth / radius;
    return sdf::Union({sdf::Arc({}, radius, from, to - trim, halfWidth),
                       sdf::Polygon({end + onward * headLength, end + outward * headHalfWidth,
                                     end - outward * headHalfWidth})});
}

Shape Pointer() {
    return sdf::Polygon({{0, 0},
                         {0, 12.4f},
                         {2.9f, 9.7f},
                         {4.9f, 13.8f},
                         {6.9f, 12.9f},
                         {5.0f, 8.9f},
                         {8.8f, 8.9f}});
}

Shape SlimPointer() {
    return sdf::Polygon({{0, 0},
                         {0, 11.0f},
                         {2.5f, 8.7f},
                         {4.2f, 12.2f},
                         {5.9f, 11.4f},
                         {4.3f, 7.9f},
                         {7.6f, 7.9f}});
}

namespace {

// Four fingers side by side, index first, from their bases to the tops given.
std::vector<Shape> Fingers(float base, const float (&tops)[4], float radius) {
    const float xs[4] = {-4.1f, -0.85f, 2.4f, 5.55f};
    std::vector<Shape> fingers;
    for (int i = 0; i < 4; ++i) {
        fingers.push_back(sdf::Capsule({xs[i], base}, {xs[i], tops[i]}, radius));
    }
    return fingers;
}

}  // namespace

std::vector<Shape> OpenHand() {
    std::vector<Shape> parts = Fingers(0.0f, {-9.2f, -10.6f, -9.8f, -7.2f}, 1.15f);
    parts.push_back(sdf::Box({0.6f, 4.4f}, {5.9f, 5.4f}, 3.2f));
    parts.push_back(sdf::Capsule({-4.2f, 5.4f}, {-9.4f, 0.2f}, 1.35f));
    return {sdf::Union(std::move(parts))};
}

std::vector<Shape> ClosedHand() {
    std::vector<Shape> parts = {sdf::Box({0.6f, 3.2f}, {6.2f, 5.8f}, 3.2f)};
    for (const Shape& knuckle : Fingers(-0.5f, {-3.4f, -4.0f, -3.6f, -2.6f}, 1.55f)) {
        parts.push_back(knuckle);
    }
    parts.push_back(sdf::Capsule({-6.6f, 2.0f}, {-1.6f, 4.4f}, 1.55f));
    return parts;
}

Pencil MakePencil() {
    const float halfWidth = 3.0f;
    const float cone = 5.5f;
    const float bandAt = 12.5f;
    const float end = 17.0f;
    const Shape wood = sdf::Polygon({{0, 0}, {cone, -halfWidth}, {cone, halfWidth}});
    const Shape body = sdf::Box({(cone + bandAt) / 2, 0}, {(bandAt - cone) / 2, halfWidth});
    const Shape band = sdf::Box({bandAt + 1, 0}, {1, halfWidth});
    const Shape eraser =
        sdf::Box({(bandAt + 1 + end) / 2, 0}, {(end - bandAt - 1) / 2, halfWidth}, 1.2f);
    const Shape lead = sdf::Intersect(wood, [](Vec2 p) { return p.x - 2.0f; });
    return {sdf::Union({wood, body, band, eraser}), wood, lead, body, band, eraser};
}

Brush MakeBrush() {
    const Shape bristles = sdf::Grow(sdf::Polygon({{0.3f, 0},
                                                   {2.5f, -1.7f},
                                                   {5.8f, -2.3f},
                                                   {6.8f, -2.0f},
                                                   {6.8f, 2.0f},
                                                   {5.8f, 2.3f},
                                                   {2.5f, 1.7f}}),
                                     0.4f);
    const Shape ferrule = sdf::Box({8.6f, 0}, {1.8f, 2.3f}, 0.4f);
    const Shape handle = sdf::Grow(
        sdf::Polygon({{10.3f, -1.5f}, {17.6f, -1.0f}, {17.6f, 1.0f}, {10.3f, 1.5f}}), 0.4f);
    return {sdf::Union({bristles, ferrule, handle}), bristles, ferrule, handle};
}

Eraser MakeEraser() {
    const Shape whole = sdf::Box({6.5f, 0}, {6.5f, 4.0f}, 1.3f);
    const Shape rubber = sdf::Intersect(whole, [](Vec2 p) { return p.x - 4.5f; });
    const Shape sleeve = sdf::Intersect(whole, [](Vec2 p) { return 4.5f - p.x; });
    return {whole, rubber, sleeve};
}

Coil MakeCoil(Vec2 origin, float fromAngle, float toAngle, float turnLength, float radius,
              float lean, float wireHalfWidth) {
    const auto at = [=](float angle) {
        return origin + Vec2{turnLength * angle / (2 * kPi) + lean * std::sin(angle),
                             -radius * std::cos(angle)};
    };
    // Half turns run from top to bottom in front, and back up behind.
    std::vector<Coil::Half> back;
    std::vector<Coil::Half> front;
    const int steps = 24;
    const int first = static_cast<int>(std::floor(fromAngle / kPi + 1e-4f));
    const int last = static_cast<int>(std::ceil(toAngle / kPi - 1e-4f));
    for (int half = first; half < last; ++half) {
        std::vector<Vec2> points;
        std::vector<float> angles;
        const float a0 = std::max(fromAngle, half * kPi);
        const float a1 = std::min(toAngle, (half + 1) * kPi);
        for (int i = 0; i <= steps; ++i) {
            angles.push_back(Lerp(a0, a1, static_cast<float>(i) / steps));
            points.push_back(at(angles.back()));
        }
        auto sample = [points, angles](Vec2 p) {
            float best = 1e30f;
            float angle = angles[0];
            for (size_t i = 1; i < points.size(); ++i) {
                const Vec2 ab = points[i] - points[i - 1];
                float t = Dot(p - points[i - 1], ab) / Dot(ab, ab);
                t = std::clamp(t, i == 1 ? -1e9f : 0.0f, i + 1 == points.size() ? 1e9f : 1.0f);
                const Vec2 offset = p - (points[i - 1] + ab * t);
                if (Dot(offset, offset) < best) {
                    best = Dot(offset, offset);
                    angle = Lerp(angles[i - 1], angles[i], Clamp01(t));
                }
            }
            return Coil::Sample{std::sin(angle), std::sqrt(best)};
        };
        Coil::Half piece{sdf::Polyline(std::move(points), wireHalfWidth), std::move(sample)};
        (((half % 2) + 2) % 2 == 0 ? front : back).push_back(std::move(piece));
    }
    Coil coil;
    std::vector<Shape> backShapes;
    std::vector<Shape> frontShapes;
    for (Coil::Half& piece : back) {
        backShapes.push_back(piece.shape);
        coil.halves.push_back(std::move(piece));
    }
    for (Coil::Half& piece : front) {
        frontShapes.push_back(piece.shape);
        coil.halves.push_back(std::move(piece));
    }
    coil.back = sdf::Union(std::move(backShapes));
    coil.front = sdf::Union(std::move(frontShapes));
    return coil;
}

}  // namespace figure
}  // namespace artgen
