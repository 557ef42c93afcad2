#pragma once

#include "math/BoundingBox2.h"
#include "math/OBB2D.h"
#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/Geom.h"

namespace physics {

// A disc about the geom's origin.
class Circular : public Geom {
public:
    explicit Circular(math::real radius = 1) : m_radius(radius) {}

    math::real Dist(const math::Vec2& worldPoint) const override;
    math::Vec2 Normal(const math::Vec2& worldPoint) const override;
    math::real Area() const override;
    math::real InertiaPerMass() const override;
    math::Vec2 ClosestPoint(const math::Vec2& worldPoint) const override;
    math::BoundingBox2f GetBoundingBox() const override;
    math::OBB2D GetOBB() const override;
    BoundingCircle GetBoundingCircle() const override;

    // World centre.
    const math::Vec2& GetCentre() const { return GetPosition(); }
    math::real GetRadius() const { return m_radius; }
    // The owner's mass follows only at its next RecalcGeoms.
    void SetRadius(math::real radius) { m_radius = radius; }

private:
    math::real m_radius;
};

class Circle : public Circular {
public:
    explicit Circle(math::real radius = 1) : Circular(radius) {}

    Collides GetCollides() const override { return Collides::AsCircle; }
};

// An oriented rectangle, kept in local form and, after each SetTransform, in world form.
class Box : public Geom {
public:
    // The unit box at the origin.
    Box();
    explicit Box(const math::Vec2& halfExtents);
    explicit Box(const math::OBB2D& localBox);

    math::real Dist(const math::Vec2& worldPoint) const override;
    math::Vec2 Normal(const math::Vec2& worldPoint) const override;
    math::real Area() const override;
    math::real InertiaPerMass() const override;
    math::Vec2 ClosestPoint(const math::Vec2& worldPoint) const override;
    math::BoundingBox2f GetBoundingBox() const override;
    math::OBB2D GetOBB() const override { return m_worldBox; }
    BoundingCircle GetBoundingCircle() const override;
    void SetTransform(const Transform& localToWorld) override;
    Collides GetCollides() const override { return Collides::AsBox; }

    const math::OBB2D& GetLocalBox() const { return m_localBox; }
    // Resizes about the box's own centre; the owner's mass follows at its next RecalcGeoms.
    void SetHalfExtents(const math::Vec2& halfExtents);
    const math::OBB2D& GetWorldBox() const { return m_worldBox; }

private:
    math::OBB2D m_localBox;
    math::OBB2D m_worldBox;
};

// An infinite half-plane, solid behind its normal. Locally the normal is (1, 0) through the
// origin, so the transform alone places it: n and d given here last only until the first
// SetTransform.
class Plane : public Geom {
public:
    Plane() = default;
    Plane(const math::Vec2& normal, math::real offset) : m_normal(normal), m_offset(offset) {}

    math::real Dist(const math::Vec2& worldPoint) const override;
    math::Vec2 Normal(const math::Vec2&) const override { return m_normal; }
    math::real Area() const override;
    math::real InertiaPerMass() const override;
    math::Vec2 ClosestPoint(const math::Vec2& worldPoint) const override;
    math::BoundingBox2f GetBoundingBox() const override;
    math::OBB2D GetOBB() const override;
    BoundingCircle GetBoundingCircle() const override;
    void SetTransform(const Transform& localToWorld) override;
    Collides GetCollides() const override { return Collides::AsPlane; }

    // World normal n and offset d: the plane is n . p + d = 0.
    const math::Vec2& GetNormal() const { return m_normal; }
    math::real GetOffset() const { return m_offset; }

private:
    math::Vec2 m_normal{1, 0};
    math::real m_offset = 0;
};

// The world body's geom: everything lies inside it, and its bounds overlap nothing. It gives
// the world body a body-shaped presence and infinite mass.
class WorldGeom : public Geom {
public:
    math::real Dist(const math::Vec2&) const override { return -1; }
    math::Vec2 Normal(const math::Vec2&) const override { return {0, 0}; }
    math::real Area() const override;
    math::real InertiaPerMass() const override;
    math::Vec2 ClosestPoint(const math::Vec2& worldPoint) const override { return worldPoint; }
    math::BoundingBox2f GetBoundingBox() const override { return {}; }
    math::OBB2D GetOBB() const override;
    BoundingCircle GetBoundingCircle() const override;
};

}  // namespace physics
