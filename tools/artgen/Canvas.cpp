#include "Canvas.h"

#include <cstddef>

namespace artgen {

Paint Solid(Rgba colour) {
    return [colour](Vec2, float) { return colour; };
}

Paint Linear(Vec2 from, Rgba a, Vec2 to, Rgba b) {
    const Vec2 axis = to - from;
    const float lengthSquared = Dot(axis, axis);
    return [=](Vec2 p, float) { return Mix(a, b, Clamp01(Dot(p - from, axis) / lengthSquared)); };
}

Paint Radial(Vec2 centre, float radius, Rgba inner, Rgba outer) {
    return [=](Vec2 p, float) { return Mix(inner, outer, Clamp01(Length(p - centre) / radius)); };
}

Canvas::Canvas(int width, int height)
    : m_width(width), m_height(height), m_pixels(static_cast<size_t>(width) * height) {}

void Canvas::Over(size_t index, Rgba colour, float coverage) {
    const float a = colour.a * coverage;
    Rgba& pixel = m_pixels[index];
    pixel.r = colour.r * a + pixel.r * (1 - a);
    pixel.g = colour.g * a + pixel.g * (1 - a);
    pixel.b = colour.b * a + pixel.b * (1 - a);
    pixel.a = a + pixel.a * (1 - a);
}

void Canvas::Fill(const Shape& shape, const Paint& paint, float soft) {
    const float width = std::max(soft, 1.0f);
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            const Vec2 p{x + 0.5f, y + 0.5f};
            const float d = shape(p);
            // A linear ramp is the box filter of a straight edge; wider blurs ease in and out.
            float coverage = Clamp01(0.5f - d / width);
            if (width > 1) {
                coverage = coverage * coverage * (3 - 2 * coverage);
            }
            if (coverage > 0) {
                Over(static_cast<size_t>(y) * m_width + x, paint(p, d), coverage);
            }
        }
    }
}

void Canvas::Layer(const std::function<Rgba(Vec2)>& source) {
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            Over(static_cast<size_t>(y) * m_width + x, source({x + 0.5f, y + 0.5f}), 1);
        }
    }
}

namespace {

uint8_t Quantize(float v) {
    return static_cast<uint8_t>(std::lround(Clamp01(v) * 255));
}

}  // namespace

template <class F>
void Canvas::ForEachNeighbour(size_t index, F&& visit) const {
    const int x = static_cast<int>(index % m_width);
    const int y = static_cast<int>(index / m_width);
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            const int nx = x + dx;
            const int ny = y + dy;
            if (nx >= 0 && ny >= 0 && nx < m_width && ny < m_height) {
                visit(static_cast<size_t>(ny) * m_width + nx);
            }
        }
    }
}

std::vector<uint8_t> Canvas::ToRgba8() const {
    const size_t count = m_pixels.size();
    std::vector<Rgba> straight(count);
    std::vector<bool> inked(count, false);
    std::vector<size_t> frontier;
    for (size_t i = 0; i < count; ++i) {
        const Rgba& p = m_pixels[i];
        if (Quantize(p.a) > 0) {
            straight[i] = {p.r / p.a, p.g / p.a, p.b / p.a, p.a};
            inked[i] = true;
            frontier.push_back(i);
        }
    }
    if (frontier.empty()) {
        std::fill(straight.begin(), straight.end(), Rgba{1, 1, 1, 0});
    }
    // Grows the ink's colour outward one ring of pixels at a time; each new pixel takes the
    // mean of its inked neighbours.
    while (!frontier.empty()) {
        std::vector<size_t> ring;
        for (size_t i : frontier) {
            ForEachNeighbour(i, [&](size_t n) {
                if (!inked[n] && straight[n].a == 0) {
                    straight[n].a = -1;  // queued
                    ring.push_back(n);
                }
            });
        }
        for (size_t n : ring) {
            Rgba sum;
            ForEachNeighbour(n, [&](size_t m) {
                if (inked[m]) {
                    sum = {sum.r + straight[m].r, sum.g + straight[m].g, sum.b + straight[m].b,
                           sum.a + 1};
                }
            });
            straight[n] = {sum.r / sum.a, sum.g / sum.a, sum.b / sum.a, 0};
        }
        for (size_t n : ring) {
            inked[n] = true;
        }
        frontier = std::move(ring);
    }
    std::vector<uint8_t> bytes(count * 4);
    for (size_t i = 0; i < count; ++i) {
        const Rgba& p = straight[i];
        const float alpha = std::max(m_pixels[i].a, 0.0f);
        bytes[i * 4 + 0] = Quantize(p.r);
        bytes[i * 4 + 1] = Quantize(p.g);
        bytes[i * 4 + 2] = Quantize(p.b);
        bytes[i * 4 + 3] = Quantize(alpha);
    }
    return bytes;
}

}  // namespace artgen
