#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "math/BoundingBox2.h"
#include "math/Vector2.h"
#include "physics/BroadPhase.h"
#include "physics/CrowdLimit.h"
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
//
// Two limits keep a step's work bounded whatever a scene holds; no sensible scene reaches
// them. Shapes piled up at one place beyond what it can hold are left out of the pile (see
// CrowdLimit): they still meet planes and immovable shapes, but not one another nor water.
// A step makes at most kContactsBase contacts and kContactsPerBody more for each shape and
// particle; pairs after that are not tested. And planes, which meet everything, collide only
// up to kMaxPlanes of them. Each limit is logged when it begins to act.
class Collider {
public:
    static constexpr size_t kContactsBase = size_t{1} << 17;
    static constexpr size_t kContactsPerBody = 8;
    static constexpr size_t kMaxPlanes = 64;

    explicit Collider(bool broadPhase = true) : m_broadPhase(broadPhase) {}

    // Sorts the bodies' geoms into the shape lists and takes the particles, with the skin
    // that the fluid's present radius gives them.
    void AssignBodies(const BodyList& bodies, const ParticleList& particles = ParticleList());
    // The particles' places as the step has already read them, in the order AssignBodies
    // took the particles, valid through the next Collide; null (the default) to read them
    // from the particles. AssignBodies forgets them.
    void TakeParticlePlaces(const math::Vec2* places) { m_knownPlaces = places; }
    void Collide(ContactList& contacts);

    // Of the last AssignBodies: shapes left out of crowds, and the contact limit.
    size_t GetLeftOutCount() const { return m_leftOutCount; }
    size_t GetContactLimit() const { return m_contactLimit; }

    // The only way a contact is made; one with non-finite data is logged and dropped.
    static void AddContact(ContactList& contacts, Geom* a, Geom* b, size_t index,
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

    // Runs test(out, first, last) over [0, count) in parts on the step's threads, the
    // parts' contacts joined to the list in order, as one call over all would give them.
    template <class Test>
    void InParts(ContactList& contacts, size_t count, size_t grain, Test test);
    static void LogBadContact();

    // Finds the crowds among the shapes and sets the flags that the pair searches read.
    void MarkCrowds();
    // True once the step has all the contacts it may have; logs the first time.
    bool Full(const ContactList& contacts);
    void CollidePlanes(ContactList& contacts);
    void CollidePolygonPolygon(ContactList& contacts, PolygonEntry& a, PolygonEntry& b);
    void CollideCircleCircle(ContactList& contacts, const CircleEntry& a, const CircleEntry& b);
    void CollideCirclePolygon(ContactList& contacts, const CircleEntry& c, PolygonEntry& p);
    void CollideBoxBox(ContactList& contacts, Box* a, Box* b);
    void CollideBoxPolygon(ContactList& contacts, Box* box, PolygonEntry& p);
    void CollideBoxCircle(ContactList& contacts, Box* box, const CircleEntry& c);
    // The water groups: each shape that can reach the water's box against every particle.
    void CollideWater(ContactList& contacts);
    // Particles closer than the skin to the geom touch it. Particles outside the reach,
    // a box beyond which the geom's distance exceeds the skin, are skipped untested.
    void WaterAgainst(ContactList& contacts, Geom* geom, const math::BoundingBox2f& reach);

    bool m_broadPhase;
    std::vector<Plane*> m_planes;
    std::vector<PolygonEntry> m_polygons;
    std::vector<CircleEntry> m_circles;
    std::vector<Box*> m_boxes;
    std::vector<Particle*> m_particles;
    // Of m_particles, alike indexed: those taken, or else read into m_particlePlaces.
    util::VectorPOD<math::Vec2> m_particlePlaces;
    const math::Vec2* m_knownPlaces = nullptr;
    const math::Vec2* ParticlePlaces() const {
        return m_knownPlaces ? m_knownPlaces : m_particlePlaces.data();
    }
    float m_particleMargin = 0;

    // Per list, boxes that contain every place where that shape can touch another.
    std::vector<math::BoundingBox2f> m_polygonBounds;
    std::vector<math::BoundingBox2f> m_circleBounds;
    std::vector<math::BoundingBox2f> m_boxBounds;
    // A pair search for each kind of pair, as each keeps what it found for the next step.
    struct PairFinders {
        BroadPhase polygons;
        BroadPhase circles;
        BroadPhase circlePolygon;
        BroadPhase boxes;
        BroadPhase boxPolygon;
        BroadPhase boxCircle;
    };
    PairFinders m_pairFinders;
    BroadPhase::PairList m_pairs;
    // Each part's contacts and bad-contact count in a parallel walk, kept for the capacity.
    std::vector<ContactList> m_partContacts;
    util::VectorPOD<size_t> m_partBadContacts;

    // The pair searches' flags per list (BroadPhase::Flags), kept only while some shape
    // is left out of a crowd.
    CrowdLimit m_crowds;
    util::VectorPOD<CrowdLimit::Shape> m_crowdShapes;
    util::VectorPOD<uint8_t> m_leftOut;
    util::VectorPOD<uint8_t> m_polygonFlags;
    util::VectorPOD<uint8_t> m_circleFlags;
    util::VectorPOD<uint8_t> m_boxFlags;
    size_t m_leftOutCount = 0;
    bool m_crowdLogged = false;
    bool m_planesLogged = false;
    size_t m_contactLimit = kContactsBase;
    bool m_full = false;
    bool m_fullLogged = false;
};

}  // namespace physics
