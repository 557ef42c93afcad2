#pragma once

#include "physics/AbstractBody.h"
#include "physics/Geom.h"

namespace test_physics {

// A body whose mass and inertia are set directly, not derived from shapes.
class TestBody : public physics::AbstractBody {
public:
    TestBody(float mass, float inertia, const math::Vec2& at) {
        m_mass = mass;
        m_massInv = 1 / mass;
        m_inertia = inertia;
        m_inertiaInv = 1 / inertia;
        position = at;
    }
};

// Contacts and the solver read only a geom's ID, owner and material, so the shape can be
// a dummy.
class TestGeom : public physics::Geom {
public:
    math::real Dist(const math::Vec2&) const override { return 0; }
    math::Vec2 Normal(const math::Vec2&) const override { return {0, 1}; }
    math::real Area() const override { return 1; }
    math::real InertiaPerMass() const override { return 1; }
    math::Vec2 ClosestPoint(const math::Vec2& p) const override { return p; }
    math::BoundingBox2f GetBoundingBox() const override { return {}; }
    math::OBB2D GetOBB() const override { return {}; }
    physics::BoundingCircle GetBoundingCircle() const override { return {}; }
};

struct Piece {
    util::SharedPtr<TestBody> body;
    util::SharedPtr<TestGeom> geom;
};

inline Piece MakePiece(float mass, float inertia, const math::Vec2& at, bool isStatic,
                       float restitution) {
    Piece piece{new TestBody(mass, inertia, at), new TestGeom()};
    piece.body->SetStatic(isStatic);
    piece.geom->SetBody(piece.body);
    piece.geom->friction = 0.5f;
    piece.geom->restitution = restitution;
    return piece;
}

}  // namespace test_physics
