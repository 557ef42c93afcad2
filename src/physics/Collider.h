#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "math/BoundingBox2.h"
#include "math/Vector2.h"
#include "physics/BroadPhase.h"
#include "physics/Forward.h"
#include "physics/Particle.h"  // complete, for the default empty particle list

namespace physics {

// Turns the bodies of one step into contacts. Shapes are sorted into lists by kind and the
// lists are paired in a fixed order, which fixes the order of the contacts and so the order
// in which the solver meets them.
//
// The pairs of each group are found by a grid over bounding boxes that are conservative
// for that group's own tests, then walked in the same (i, j) order as a plain walk over all
// pairs would: the contacts are the same, in the same order, with the same indices, but a
// scene of mostly separate bodies costs about linearly in its size.
class Collider {
public:
    explicit Collider(bool broadPhase = true) : m_broadPhase(broadPhase) {}

    // Sorts the bodies' geoms into the shape lists and takes the particles, with the skin
    // that the fluid's present radius gives them.
    void AssignBodies(const BodyList& bodies, const ParticleList& particles = ParticleList());
    void Collide(std::vector<ContactPtr>& contacts);

    // The only way a contact is made; one with non-finite data is logged and dropped.
    static void AddContact(std::vector<ContactPtr>& contacts, Geom* a, Geom* b, size_t index,
                           const math::Vec2& point, const math::Vec2& normal, float depth);

private:
    struct PolygonEntry {
        AbstractBody* body;
        Polygon* polygon;
    };
    struct CircleEntry {
        AbstractBody* body;
        Circle* circle;
        math::Vec2 centre;
        float radius;
    };

    void CollidePlanes(std::vector<ContactPtr>& contacts);
    void CollidePolygonPolygon(std::vector<ContactPtr>& contacts, PolygonEntry& a, PolygonEntry& b);
    void CollideCircleCircle(std::vector<ContactPtr>& contacts, const CircleEntry& a,
                             const CircleEntry& b);
    void CollideCirclePolygon(std::vector<ContactPtr>& contacts, const CircleEntry& c,
                              PolygonEntry& p);
    void CollideBoxBox(std::vector<ContactPtr>& contacts, Box* a, Box* b);
    void CollideBoxPolygon(std::vector<ContactPtr>& contacts, Box* box, PolygonEntry& p);
    void CollideBoxCircle(std::vector<ContactPtr>& contacts, Box* box, const CircleEntry& c);
    // The water groups: each shape that can reach the water's box against every particle.
    void CollideWater(std::vector<ContactPtr>& contacts);
    // Particles closer than the skin to the geom touch it. Particles outside the reach,
    // a box beyond which the geom's distance exceeds the skin, are skipped untested.
    void WaterAgainst(std::vector<ContactPtr>& contacts, Geom* geom,
                      const math::BoundingBox2f& reach);

    bool m_broadPhase;
    std::vector<Plane*> m_planes;
    std::vector<PolygonEntry> m_polygons;
    std::vector<CircleEntry> m_circles;
    std::vector<Box*> m_boxes;
    std::vector<Particle*> m_particles;
    float m_particleMargin = 0;

    // Per list, boxes that contain every place where that shape can touch another.
    std::vector<math::BoundingBox2f> m_polygonBounds;
    std::vector<math::BoundingBox2f> m_circleBounds;
    std::vector<math::BoundingBox2f> m_boxBounds;
    BroadPhase m_pairFinder;
    BroadPhase::PairList m_pairs;
};

}  // namespace physics
