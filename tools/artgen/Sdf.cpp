#include "Sdf.h"

#include <limits>
#include <utility>

namespace artgen::sdf {

namespace {

float SegmentDistance(Vec2 p, Vec2 a, Vec2 b) {
    const Vec2 ab = b - a;
    const float lengthSquared = Dot(ab, ab);
    const float t = lengthSquared > 0 ? Clamp01(Dot(p - a, ab) / lengthSquared) : 0;
    return Length(p - (a + ab * t));
}

// Whether the angle lies on the clockwise sweep from `from` to `to`.
bool OnSweep(float angle, float from, float to) {
    const float turn = 2 * kPi;
    const float sweep = std::fmod(std::fmod(to - from, turn) + turn, turn);
    const float along = std::fmod(std::fmod(angle - from, turn) + turn, turn);
    return along <= sweep;
}

}  // namespace

Shape Circle(Vec2 centre, float radius) {
    return [=](Vec2 p) { return Length(p - centre) - radius; };
}

Shape Ring(Vec2 centre, float radius, float halfWidth) {
    return [=](Vec2 p) { return std::abs(Length(p - centre) - radius) - halfWidth; };
}

Shape Box(Vec2 centre, Vec2 halfSize, float radius, float angle) {
    return [=](Vec2 p) {
        const Vec2 local = Rotated(p - centre, -angle);
        const Vec2 q{std::abs(local.x) - halfSize.x + radius,
                     std::abs(local.y) - halfSize.y + radius};
        const Vec2 outside{std::max(q.x, 0.0f), std::max(q.y, 0.0f)};
        return Length(outside) + std::min(std::max(q.x, q.y), 0.0f) - radius;
    };
}

Shape Capsule(Vec2 a, Vec2 b, float radius) {
    return [=](Vec2 p) { return SegmentDistance(p, a, b) - radius; };
}

Shape Polyline(std::vector<Vec2> points, float radius) {
    return [points = std::move(points), radius](Vec2 p) {
        float d = std::numeric_limits<float>::max();
        for (size_t i = 1; i < points.size(); ++i) {
            d = std::min(d, SegmentDistance(p, points[i - 1], points[i]));
        }
        return d - radius;
    };
}

Shape Polygon(std::vector<Vec2> points) {
    return [points = std::move(points)](Vec2 p) {
        float d = std::numeric_limits<float>::max();
        bool inside = false;
        for (size_t i = 0, j = points.size() - 1; i < points.size(); j = i++) {
            const Vec2 a = points[i];
            const Vec2 b = points[j];
            d = std::min(d, SegmentDistance(p, a, b));
            // Even-odd crossings of a ray toward +x.
            if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y)) {
                inside = !inside;
            }
        }
        return inside ? -d : d;
    };
}

Shape Arc(Vec2 centre, float radius, float from, float to, float halfWidth) {
    const Vec2 start = centre + Polar(from, radius);
    const Vec2 end = centre + Polar(to, radius);
    return [=](Vec2 p) {
        const Vec2 v = p - centre;
        if (OnSweep(std::atan2(v.y, v.x), from, to)) {
            return std::abs(Length(v) - radius) - halfWidth;
        }
        return std::min(Length(p - start), Length(p - end)) - halfWidth;
    };
}

Shape RegularPolygon(Vec2 centre, float radius, int corners, float angle) {
    std::vector<Vec2> points;
    for (int i = 0; i < corners; ++i) {
        points.push_back(centre + Polar(angle + 2 * kPi * i / corners, radius));
    }
    return Polygon(std::move(points));
}

Shape Union(std::vector<Shape> shapes) {
    return [shapes = std::move(shapes)](Vec2 p) {
        float d = std::numeric_limits<float>::max();
        for (const Shape& shape : shapes) {
            d = std::min(d, shape(p));
        }
        return d;
    };
}

Shape SmoothUnion(std::vector<Shape> shapes, float k) {
    return [shapes = std::move(shapes), k](Vec2 p) {
        // The polynomial smooth minimum, folded over the shapes.
        float d = std::numeric_limits<float>::max();
        for (const Shape& shape : shapes) {
            const float e = shape(p);
            if (d == std::numeric_limits<float>::max()) {
                d = e;
                continue;
            }
            const float h = Clamp01(0.5f + 0.5f * (e - d) / k);
            d = Lerp(e, d, h) - k * h * (1 - h);
        }
        return d;
    };
}

Shape Intersect(Shape a, Shape b) {
    return [a = std::move(a), b = std::move(b)](Vec2 p) { return std::max(a(p), b(p)); };
}

Shape Subtract(Shape from, Shape cut) {
    return [from = std::move(from), cut = std::move(cut)](Vec2 p) {
        return std::max(from(p), -cut(p));
    };
}

Shape Grow(Shape shape, float by) {
    return [shape = std::move(shape), by](Vec2 p) { return shape(p) - by; };
}

Shape Outline(Shape shape, float halfWidth) {
    return [shape = std::move(shape), halfWidth](Vec2 p) { return std::abs(shape(p)) - halfWidth; };
}

Shape Placed(Shape shape, Vec2 at, float angle, float scale) {
    return [shape = std::move(shape), at, angle, scale](Vec2 p) {
        return shape(Rotated(p - at, -angle) / scale) * scale;
    };
}

}  // namespace artgen::sdf
