#include "physics/Shapes.h"

#include <algorithm>
#include <cmath>

#include "math/MathUtil.h"
#include "math/Matrix3.h"
#include "math/Vector3.h"

namespace physics {

namespace {

// The float pi the physics uses throughout.
constexpr math::real kPi = 3.1415927f;

// Sign with 0 counting as positive, so that a point on an axis still picks a face.
math::real FaceSign(math::real x) {
    return x >= 0 ? 1.0f : -1.0f;
}

}  // namespace

// --- Circular ---

math::real Circular::Dist(const math::Vec2& worldPoint) const {
    return (worldPoint - GetCentre()).Length() - m_radius;
}

math::Vec2 Circular::Normal(const math::Vec2& worldPoint) const {
    return math::Normalized(worldPoint - GetCentre());
}

math::real Circular::Area() const {
    return kPi * m_radius * m_radius;
}

math::real Circular::InertiaPerMass() const {
    return m_radius * m_radius / 2;
}

math::Vec2 Circular::ClosestPoint(const math::Vec2& worldPoint) const {
    const math::Vec2 direction = math::Normalized(worldPoint - GetCentre());
    // At the centre every surface point is nearest; pick one rather than the centre itself.
    if (direction.x == 0 && direction.y == 0) {
        return GetCentre() + math::Vec2(m_radius, 0);
    }
    return GetCentre() + direction * m_radius;
}

math::BoundingBox2f Circular::GetBoundingBox() const {
    const math::Vec2 extent(m_radius, m_radius);
    return {GetCentre() - extent, GetCentre() + extent};
}

math::OBB2D Circular::GetOBB() const {
    return {GetCentre(), {1, 0}, {0, 1}, {m_radius, m_radius}};
}

BoundingCircle Circular::GetBoundingCircle() const {
    return {GetCentre(), m_radius};
}

// --- Box ---

Box::Box() : Box(math::Vec2(0.5f, 0.5f)) {}

Box::Box(const math::Vec2& halfExtents) : Box(math::OBB2D{{0, 0}, {1, 0}, {0, 1}, halfExtents}) {}

Box::Box(const math::OBB2D& localBox) : m_localBox(localBox), m_worldBox(localBox) {}

math::real Box::Dist(const math::Vec2& worldPoint) const {
    const math::Vec2 q = worldPoint - m_worldBox.centre;
    const math::real dx = std::fabs(math::Dot(q, m_worldBox.axis1)) - m_worldBox.halfExtents.x;
    const math::real dy = std::fabs(math::Dot(q, m_worldBox.axis2)) - m_worldBox.halfExtents.y;
    if (dx > 0 && dy > 0) {
        return std::sqrt(dx * dx + dy * dy);
    }
    return std::max(dx, dy);
}

// The nearer face; corners are not rounded.
math::Vec2 Box::Normal(const math::Vec2& worldPoint) const {
    const math::Vec2 q = worldPoint - m_worldBox.centre;
    const math::real tx = math::Dot(q, m_worldBox.axis1);
    const math::real ty = math::Dot(q, m_worldBox.axis2);
    const math::real gapY = std::fabs(std::fabs(ty) - m_worldBox.halfExtents.y);
    const math::real gapX = std::fabs(std::fabs(tx) - m_worldBox.halfExtents.x);
    if (gapY <= gapX) {
        return m_worldBox.axis2 * FaceSign(ty);
    }
    return m_worldBox.axis1 * FaceSign(tx);
}

math::real Box::Area() const {
    return 2 * m_localBox.halfExtents.x * 2 * m_localBox.halfExtents.y;
}

math::real Box::InertiaPerMass() const {
    const math::real w = 2 * m_localBox.halfExtents.x;
    const math::real h = 2 * m_localBox.halfExtents.y;
    return (w * w + h * h) / 12;
}

math::Vec2 Box::ClosestPoint(const math::Vec2& worldPoint) const {
    return worldPoint - Normal(worldPoint) * Dist(worldPoint);
}

math::BoundingBox2f Box::GetBoundingBox() const {
    math::Vec2 corners[4];
    m_worldBox.GetCorners(corners);
    return math::BoundingBox2f::FromPoints(corners, 4);
}

BoundingCircle Box::GetBoundingCircle() const {
    return {m_worldBox.centre, m_worldBox.halfExtents.Length()};
}

void Box::SetTransform(const Transform& localToWorld) {
    Geom::SetTransform(localToWorld);
    m_worldBox.centre = localToWorld.Apply(m_localBox.centre);
    m_worldBox.axis1 = localToWorld.ApplyToVector(m_localBox.axis1);
    m_worldBox.axis2 = localToWorld.ApplyToVector(m_localBox.axis2);
    m_worldBox.halfExtents = m_localBox.halfExtents;
}

void Box::SetHalfExtents(const math::Vec2& halfExtents) {
    m_localBox.halfExtents = halfExtents;
    SetTransform(GetTransform());
}

// --- Plane ---

math::real Plane::Dist(const math::Vec2& worldPoint) const {
    return math::Dot(m_normal, worldPoint) + m_offset;
}

math::real Plane::Area() const {
    return math::Infinity();
}

math::real Plane::InertiaPerMass() const {
    return math::Infinity();
}

math::Vec2 Plane::ClosestPoint(const math::Vec2& worldPoint) const {
    return worldPoint - m_normal * Dist(worldPoint);
}

math::BoundingBox2f Plane::GetBoundingBox() const {
    const math::real inf = math::Infinity();
    return {{-inf, -inf}, {inf, inf}};
}

math::OBB2D Plane::GetOBB() const {
    const math::real inf = math::Infinity();
    return {{0, 0}, {1, 0}, {0, 1}, {inf, inf}};
}

BoundingCircle Plane::GetBoundingCircle() const {
    return {{0, 0}, math::Infinity()};
}

// A plane as a row (a, b, c) maps through the transposed inverse of the point transform.
void Plane::SetTransform(const Transform& localToWorld) {
    Geom::SetTransform(localToWorld);
    const math::Vec2& r = localToWorld.rotation;
    const math::Vec2& t = localToWorld.translation;
    const math::Mat3 toWorld(r.x, -r.y, t.x, r.y, r.x, t.y, 0, 0, 1);
    const math::Vec3 world = math::Inverted(toWorld).Transposed() * math::Vec3(1, 0, 0);
    m_normal = math::Vec2(world.x, world.y);
    m_offset = world.z;
}

// --- WorldGeom ---

math::real WorldGeom::Area() const {
    return math::Infinity();
}

math::real WorldGeom::InertiaPerMass() const {
    return math::Infinity();
}

math::OBB2D WorldGeom::GetOBB() const {
    const math::real inf = math::Infinity();
    return {{0, 0}, {1, 0}, {0, 1}, {-inf, -inf}};
}

BoundingCircle WorldGeom::GetBoundingCircle() const {
    return {{0, 0}, -math::Infinity()};
}

}  // namespace physics
