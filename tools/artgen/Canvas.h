// A floating-point picture that shapes are painted onto, and its 8-bit form.
#pragma once

#include <functional>
#include <vector>

#include "Geometry.h"

namespace artgen {

// A signed distance in pixels from a point to a shape's edge: negative inside.
using Shape = std::function<float(Vec2)>;
// The colour laid at a point; d is the shape's distance there, for shading toward its edge.
using Paint = std::function<Rgba(Vec2 p, float d)>;

Paint Solid(Rgba colour);
// From colour a at point from to colour b at point to, constant across.
Paint Linear(Vec2 from, Rgba a, Vec2 to, Rgba b);
// From inner at the centre to outer at the radius and beyond.
Paint Radial(Vec2 centre, float radius, Rgba inner, Rgba outer);

class Canvas {
public:
    Canvas(int width, int height);

    int Width() const { return m_width; }
    int Height() const { return m_height; }

    // Lays the paint over the picture where the shape covers it. The edge is anti-aliased over
    // one pixel, or blurred over `soft` pixels when that is larger.
    void Fill(const Shape& shape, const Paint& paint, float soft = 1);
    // Lays a colour with its own opacity over every pixel: fields that are not one shape.
    void Layer(const std::function<Rgba(Vec2)>& source);

    // Premultiplied.
    Rgba At(int x, int y) const { return m_pixels[static_cast<size_t>(y) * m_width + x]; }
    void Set(int x, int y, Rgba premultiplied) {
        m_pixels[static_cast<size_t>(y) * m_width + x] = premultiplied;
    }

    // Straight 8-bit RGBA, rows top down. Pixels that end up fully transparent take the colour
    // of the nearest ink, so that filtering and mip-maps do not pull dark fringes into edges.
    std::vector<uint8_t> ToRgba8() const;

private:
    // Calls visit with the index of each of the up to nine pixels around and at index.
    template <class F>
    void ForEachNeighbour(size_t index, F&& visit) const;

    void Over(size_t index, Rgba colour, float coverage);

    int m_width;
    int m_height;
    std::vector<Rgba> m_pixels;
};

}  // namespace artgen
