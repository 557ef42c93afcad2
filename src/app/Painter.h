#pragma once

#include <cstddef>

#include "math/Matrix3.h"
#include "math/Vector2.h"
#include "math/Vector4.h"
#include "util/Pointee.h"

namespace physics {
class Polygon;
}

namespace app {

// The colours and border of one shape, as the entity decided them from its own state.
struct ShapeStyle {
    math::Vec4 fill;
    math::Vec4 border;
    // In world units; 0 draws no border.
    float borderWidth = 0;
    // The shape alone in the fill colour, flat and without a border: the mask that keeps
    // water out of shapes one can see through.
    bool silhouette = false;
};

// What the application's settings ask of the entities' drawing this frame.
struct DrawOptions {
    // A border on every shape, not only on selected ones and those under the mouse.
    bool borders = true;
    // Hinges and fix joints show: the simulation is paused, or the user wants them always.
    bool drawJoints = true;
    // Polygon debug overlays: the box tree, the distance map's box, the bounding circle,
    // the vertices.
    bool drawOBBs = false;
    bool drawMapOBBs = false;
    bool drawBCs = false;
    bool drawVertices = false;
};

// One point of a pen's trail: where it was, the side it widens to, and how faded it is
// (1 new, 0 gone).
struct TrailVertex {
    math::Vec2 position;
    math::Vec2 normal;
    float freshness = 1;
};

// What entities draw with. They say what to draw, in world units; the window side decides
// how (shaders or the fixed pipeline, textures, blending), and tests record the calls. So
// the scene model needs no graphics library.
//
// Shapes are drawn in the frame set by PushTransform: the geom's transform, with any
// preview transform on top.
class Painter {
public:
    virtual ~Painter() = default;

    // The size of a window pixel and of an inch of the screen, in world units.
    virtual float GetPixelSize() const = 0;
    virtual float GetInchInWorld() const = 0;
    // The width of a shape's border, in world units.
    virtual float GetBorderWidth() const = 0;
    virtual const DrawOptions& GetOptions() const = 0;

    virtual void PushTransform(const math::Mat3& transform) = 0;
    virtual void PopTransform() = 0;

    // A box of the half size around the origin.
    virtual void Box(math::Vec2 halfSize, const ShapeStyle& style) = 0;
    // A disc around the origin, with the slice toward +x that shows its turn.
    virtual void Circle(float radius, const ShapeStyle& style) = 0;
    // A polygon through its distance map. The painter keeps what it builds from the map
    // (a texture) in cache, which the entity holds for as long as the polygon lives.
    virtual void Polygon(const physics::Polygon& polygon, float textureScale,
                         util::SharedPtr<util::Pointee>& cache, const ShapeStyle& style) = 0;
    // The half plane behind the line of points p with dot(normal, p) = offset.
    virtual void HalfPlane(math::Vec2 normal, float offset, const ShapeStyle& style) = 0;

    // A square picture of the side centred on the point and turned by the angle: joints,
    // a pen's dot, the ring of a selected joint. Textures go by their data file's name.
    // Sprites, strips, lines, outlines and trails are drawn over whatever lies below them,
    // without the depth test.
    virtual void Sprite(const char* texture, math::Vec2 center, float side, float angle,
                        const math::Vec4& color) = 0;
    // A strip of the width from a to b, the texture repeated along it every width, with
    // the end texture at both ends: a spring.
    virtual void Strip(const char* texture, const char* endTexture, math::Vec2 a, math::Vec2 b,
                       float width, const math::Vec4& color) = 0;
    virtual void Line(math::Vec2 a, math::Vec2 b, const math::Vec4& color) = 0;
    // The outline of a rectangle with round corners, turned by the angle.
    virtual void RoundedRect(math::Vec2 center, math::Vec2 halfSize, float angle, float radius,
                             const math::Vec4& color) = 0;
    // A pen's trail: one strip through the vertices, fading with their freshness. A
    // painter with shaders widens it by a pixel for its soft sides.
    virtual void Trail(const TrailVertex* vertices, size_t count, float width,
                       const math::Vec4& color) = 0;

    // Debug overlays: points, and a closed outline and a filled disc that add their colour
    // to what lies below.
    virtual void Points(const math::Vec2* points, size_t count, float size,
                        const math::Vec4& color) = 0;
    virtual void Outline(const math::Vec2* points, size_t count, const math::Vec4& color) = 0;
    virtual void Disc(math::Vec2 center, float radius, const math::Vec4& color) = 0;
};

}  // namespace app
