#pragma once

#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "math/BoundingBox2.h"
#include "math/MathUtil.h"
#include "math/Matrix3.h"
#include "math/OBB2D.h"
#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/AbstractBody.h"
#include "physics/Forward.h"
#include "physics/Geom.h"
#include "util/Array2D.h"
#include "util/VectorPOD.h"

namespace physics {

class BackgroundMapBuilds;

// A segment from a to b.
struct Line {
    math::Vec2 a;
    math::Vec2 b;
};
using LineList = util::VectorPOD<Line>;

// A grid cell while the distance map is built: the nearest line found so far.
struct BuildCell {
    const Line* closest = nullptr;
    float squaredDist = math::Infinity();
    bool done = false;
};

// A free, possibly concave outline. Dist and Normal are look-ups in fields computed once at
// construction on a 128 by 128 grid laid over the polygon's tight box; the fields never change,
// so a polygon of another shape is another polygon.
class Polygon final : public Geom {
public:
    static constexpr int kMapSize = 128;
    // A drawn outline has a few hundred points; this many bounds the work of a polygon that
    // nobody drew, whose crossing test could otherwise take minutes.
    static constexpr size_t kMaxVertices = 8192;

    // The points are in world space, in either winding. The polygon comes out with these
    // world vertices, counter-clockwise, placed at its centroid. Throws BadDataException for
    // fewer than three distinct points, a point that is not finite, more than kMaxVertices
    // or crossing edges.
    explicit Polygon(const math::Vec2List& worldPoints);
    // Points already in a local frame about their centroid, as a file keeps them: they stay
    // as they are, so that writing the polygon again gives the same numbers.
    struct KeepLocal {};
    Polygon(const math::Vec2List& localPoints, KeepLocal);
    // Takes over the shape and all derived data; the maps are copied, not shared.
    Polygon(const Polygon& other);
    Polygon& operator=(const Polygon&) = delete;
    ~Polygon() override;

    // A rectangle walked (x1, y1), (x2, y1), (x2, y2), (x1, y2), with points close to each
    // corner and in the middle of each side, since collision tests vertices against fields.
    static PolygonPtr CreateBox(math::real x1, math::real y1, math::real x2, math::real y2);

    Collides GetCollides() const override { return Collides::AsPolygon; }

    math::real Dist(const math::Vec2& worldPoint) const override {
        const math::Vec2 p = GetInverseTransform().Apply(worldPoint);
        // Beyond the map the tight box stands in: cheap, and never inside the polygon.
        if (!(BoxDist(m_mapBox, p) <= 0)) {
            return BoxDist(m_obb, p);
        }
        return SampleDist(p);
    }

    math::Vec2 Normal(const math::Vec2& worldPoint) const override {
        const math::Vec2 p = GetInverseTransform().Apply(worldPoint);
        const math::Vec2 q = p - m_mapBox.centre;
        if (!(std::fabs(math::Dot(q, m_mapBox.axis1)) <= m_mapBox.halfExtents.x) ||
            !(std::fabs(math::Dot(q, m_mapBox.axis2)) <= m_mapBox.halfExtents.y)) {
            return math::Vec2(0, 0);
        }
        return GetTransform().ApplyToVector(math::Normalized(SampleNormal(p)));
    }

    math::real Area() const override { return m_area; }
    math::real InertiaPerMass() const override { return m_inertiaPerMass; }
    // Exact, over the world lines; the first of equally near points wins.
    math::Vec2 ClosestPoint(const math::Vec2& worldPoint) const override;
    math::BoundingBox2f GetBoundingBox() const override { return m_boundingBox; }
    math::OBB2D GetOBB() const override { return m_worldOBB; }
    BoundingCircle GetBoundingCircle() const override { return m_worldCircle; }
    void SetTransform(const Transform& localToWorld) override;

    // Local: counter-clockwise, centroid at the origin.
    const math::Vec2List& GetVertices() const { return m_vertices; }
    const math::Vec2List& GetWorldVertices() const { return m_worldVertices; }
    // Line i runs from vertex i to vertex i + 1; the last one closes the outline.
    const LineList& GetLines() const { return m_lines; }
    const LineList& GetWorldLines() const { return m_worldLines; }
    const BoundingCircle& GetLocalBoundingCircle() const { return m_localCircle; }
    const math::OBB2D& GetLocalOBB() const { return m_obb; }
    // The box, in local space, that the maps cover.
    const math::OBB2D& GetMapBox() const { return m_mapBox; }
    // Cell (x, y) has its centre at map coordinates (x, y).
    const math::TMatrix3<float>& GetLocalToMap() const { return m_localToMap; }
    const math::TMatrix3<float>& GetMapToLocal() const { return m_mapToLocal; }
    // Signed distance of each cell's centre, negative inside.
    const util::Array2D<float>& GetDistMap() const {
        EnsureMaps();
        return m_distMap;
    }
    // Arc length from vertex 0 along the outline to the nearest outline point.
    const util::Array2D<float>& GetOutlineMap() const {
        EnsureMaps();
        return m_outlineMap;
    }
    // Local unit normals.
    const util::Array2D<math::Vec2>& GetNormalMap() const {
        EnsureMaps();
        return m_normalMap;
    }
    math::real GetPerimeter() const {
        EnsureMaps();
        return m_perimeter;
    }

    // Waits for, or builds, maps still being made in the background: after this the maps
    // may be read from any thread.
    void FinishPendingMaps() const { EnsureMaps(); }

private:
    friend class BackgroundMapBuilds;

    // Where the maps stand when a BackgroundMapBuilds scope made the polygon.
    enum class MapState : uint8_t { Ready, Queued, Building };

    Polygon(const math::Vec2List& worldPoints, bool keepLocal);

    // Maps built on a helper thread become visible here; one still queued is built now.
    void EnsureMaps() const {
        if (m_mapState.load(std::memory_order_acquire) != MapState::Ready) {
            FinishMaps();
        }
    }
    void FinishMaps() const;
    // The maps away from the constructor, where nothing may escape: a failure is logged and
    // leaves maps that put every point outside.
    void BuildMaps() noexcept;

    // Signed distance to an oriented box.
    static float BoxDist(const math::OBB2D& box, const math::Vec2& p) {
        const math::Vec2 q = p - box.centre;
        const float a = std::fabs(math::Dot(q, box.axis1)) - box.halfExtents.x;
        const float b = std::fabs(math::Dot(q, box.axis2)) - box.halfExtents.y;
        if (a > 0 && b > 0) {
            return std::sqrt(a * a + b * b);
        }
        return a > b ? a : b;
    }

    // The four cells around a point of the map box and the weights along x and y; indices
    // are clamped, so the outer half cell repeats the border.
    struct Sample {
        size_t i00, i10, i01, i11;
        float fx, fy;
    };
    Sample SampleAt(const math::Vec2& local) const {
        const math::Vec2 m = m_localToMap.TransformPoint(local);
        const float floorX = std::floor(m.x);
        const float floorY = std::floor(m.y);
        const int ix = static_cast<int>(floorX);
        const int iy = static_cast<int>(floorY);
        const size_t x0 = Clamp(ix);
        const size_t x1 = Clamp(ix + 1);
        const size_t y0 = Clamp(iy) * kMapSize;
        const size_t y1 = Clamp(iy + 1) * kMapSize;
        return {y0 + x0, y0 + x1, y1 + x0, y1 + x1, m.x - floorX, m.y - floorY};
    }
    static size_t Clamp(int i) {
        return static_cast<size_t>(i < 0 ? 0 : (i > kMapSize - 1 ? kMapSize - 1 : i));
    }
    float SampleDist(const math::Vec2& local) const {
        EnsureMaps();
        const Sample s = SampleAt(local);
        const float* d = m_distMap.data();
        const float row0 = d[s.i00] + (d[s.i10] - d[s.i00]) * s.fx;
        const float row1 = d[s.i01] + (d[s.i11] - d[s.i01]) * s.fx;
        return row0 + (row1 - row0) * s.fy;
    }
    math::Vec2 SampleNormal(const math::Vec2& local) const {
        EnsureMaps();
        const Sample s = SampleAt(local);
        const math::Vec2* n = m_normalMap.data();
        const math::Vec2 row0 = n[s.i00] + (n[s.i10] - n[s.i00]) * s.fx;
        const math::Vec2 row1 = n[s.i01] + (n[s.i11] - n[s.i01]) * s.fx;
        return row0 + (row1 - row0) * s.fy;
    }

    // The distance map and the normal map drawn from it.
    void CalcMaps();
    void CalcDistMap();
    void CalcNormalMap();

    math::Vec2List m_vertices;
    math::Vec2List m_worldVertices;
    LineList m_lines;
    LineList m_worldLines;
    BoundingCircle m_localCircle;
    BoundingCircle m_worldCircle;
    math::BoundingBox2f m_boundingBox;
    math::OBB2D m_obb{};
    math::OBB2D m_worldOBB{};
    math::OBB2D m_mapBox{};
    math::TMatrix3<float> m_localToMap;
    math::TMatrix3<float> m_mapToLocal;
    util::Array2D<float> m_distMap;
    util::Array2D<float> m_outlineMap;
    util::Array2D<math::Vec2> m_normalMap;
    math::real m_area = 0;
    math::real m_inertiaPerMass = 0;
    math::real m_perimeter = 0;
    mutable std::atomic<MapState> m_mapState{MapState::Ready};
    BackgroundMapBuilds* m_mapBuilds = nullptr;
};

// Splits the sides of a closed outline so that none is longer than maxDist. Coinciding
// neighbours collapse; a closing point equal to the first is dropped.
math::Vec2List AssertMaxDist(const math::Vec2List& points, math::real maxDist);

// Whether two segments meet. Segments sharing their start or their end point meet; a segment
// that starts where the other ends does not, so that neighbours in a chain never count.
// Parallel segments never meet.
bool Intersects(const Line& lineA, const Line& lineB);
// Whether any two of the lines meet, by the test above; lines in runs whose boxes lie apart
// are passed over together.
bool AnyIntersect(const LineList& lines);

// The cheap test that two polygons may touch: bounding circles strictly closer than their
// radii, oriented boxes overlapping, and each circle's centre within the other's reach.
bool MayTouch(const Polygon& a, const Polygon& b);

// Whether polygon inner lies wholly within polygon outer: all its vertices inside outer and
// no vertex of outer inside it.
bool IsInside(const Polygon& inner, const Polygon& outer);

// How many pairs of a world line of a and a world line of b meet.
size_t CountCrossings(const Polygon& a, const Polygon& b);

}  // namespace physics
