#include "physics/Collider.h"

#include <algorithm>
#include <cmath>

#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/OBBOverlap.h"
#include "physics/Particle.h"
#include "physics/Polygon.h"
#include "physics/SPH.h"
#include "physics/Shapes.h"
#include "physics/StepWorkers.h"
#include "util/LexicalCast.h"
#include "util/Profiler.h"

namespace physics {
namespace {

using math::Vec2;

// Candidate pairs, or particles, per part of a parallel walk: fewer go on one thread. The
// tests of boxes and circles cost little beside handing their contacts from one core's
// cache to the other's: boxes are shared only in large piles, circles not at all; polygons'
// distance maps and the water's particles are worth sharing.
constexpr size_t kPolygonPairGrain = 64;
constexpr size_t kBoxPairGrain = 2048;
constexpr size_t kOnOneThread = SIZE_MAX;
constexpr size_t kParticleGrain = 1024;

// Where a helper thread counts the bad contacts it met, to be logged once its part is
// joined; null on the thread that steps, which logs them at once.
thread_local size_t* t_deferredBadContacts = nullptr;

math::BoundingBox2f BoxOfCircle(const Vec2& centre, float radius) {
    math::BoundingBox2f box;
    box.Add(centre - Vec2(radius, radius));
    box.Add(centre + Vec2(radius, radius));
    return box;
}

math::BoundingBox2f BoxOfOBB(const math::OBB2D& obb) {
    Vec2 corners[4];
    obb.GetCorners(corners);
    math::BoundingBox2f box;
    for (const Vec2& corner : corners) {
        box.Add(corner);
    }
    return box;
}

// Where a polygon can touch anything: its bounding circle (the polygon pairs' first test)
// and the box of its distance map, outside of which its distance is that of its tight box
// and so positive. The map grows the tight box by two cells of at least 0.1.
math::BoundingBox2f BoundsOfPolygon(const Polygon& polygon) {
    const BoundingCircle circle = polygon.GetBoundingCircle();
    math::BoundingBox2f box = BoxOfCircle(circle.centre, circle.radius);
    math::OBB2D map = polygon.GetOBB();
    map.halfExtents.x += 2 * std::max(2 * map.halfExtents.x / 128, 0.1f);
    map.halfExtents.y += 2 * std::max(2 * map.halfExtents.y / 128, 0.1f);
    const math::BoundingBox2f mapBox = BoxOfOBB(map);
    box.Add(mapBox.min);
    box.Add(mapBox.max);
    return box;
}

// Corners in the order the contacts number them.
void BoxCorners(const math::OBB2D& o, Vec2 corners[4]) {
    const Vec2 u = o.axis1 * o.halfExtents.x;
    const Vec2 v = o.axis2 * o.halfExtents.y;
    corners[0] = o.centre + u + v;
    corners[1] = o.centre + u - v;
    corners[2] = o.centre - u - v;
    corners[3] = o.centre - u + v;
}

float Extent(const math::OBB2D& o, const Vec2& axis) {
    return o.halfExtents.x * std::fabs(Dot(o.axis1, axis)) +
           o.halfExtents.y * std::fabs(Dot(o.axis2, axis));
}

// Vertices of one shape against the distance field of the other, with a running index that
// steps before each use: the first vertex tested is 1.
void VerticesAgainstField(ContactList& contacts, const Vec2* vertices, size_t count, Geom* field,
                          Geom* owner, size_t& index) {
    for (size_t i = 0; i < count; ++i) {
        const Vec2& v = vertices[i];
        ++index;
        const float d = field->Dist(v);
        if (d < 0) {
            Collider::AddContact(contacts, field, owner, index, v, field->Normal(v), -d);
        }
    }
}

}  // namespace

void Collider::LogBadContact() {
    Log(logging::Error, "Collision detection reported bad contact");
}

template <class Test>
void Collider::InParts(ContactList& contacts, size_t count, size_t grain, Test test) {
    StepWorkers& workers = StepWorkers::Get();
    const size_t parts = workers.PartsFor(count, grain);
    if (parts <= 1) {
        test(contacts, size_t{0}, count);
        return;
    }
    m_partContacts.resize(parts);
    m_partBadContacts.resize(parts);
    std::fill(m_partBadContacts.begin(), m_partBadContacts.end(), size_t{0});
    workers.ForParts(count, grain, [&](size_t part, size_t first, size_t last) {
        // The first part writes straight into the list; the others are appended after it.
        if (part == 0) {
            test(contacts, first, last);
            return;
        }
        ContactList& out = m_partContacts[part];
        out.clear();
        t_deferredBadContacts = &m_partBadContacts[part];
        test(out, first, last);
        t_deferredBadContacts = nullptr;
    });
    for (size_t part = 1; part < parts; ++part) {
        contacts.insert(contacts.end(), m_partContacts[part].begin(), m_partContacts[part].end());
        for (size_t bad = 0; bad < m_partBadContacts[part]; ++bad) {
            LogBadContact();
        }
    }
}

void Collider::AddContact(ContactList& contacts, Geom* a, Geom* b, size_t index, const Vec2& point,
                          const Vec2& normal, float depth) {
    if (!math::IsFinite(point) || !math::IsFinite(normal) || !math::IsFinite(depth)) {
        if (t_deferredBadContacts) {
            ++*t_deferredBadContacts;
        } else {
            LogBadContact();
        }
        return;
    }
    contacts.emplace_back(a, b, index, point, normal, depth);
}

void Collider::AssignBodies(const BodyList& bodies, const ParticleList& particles) {
    VORRA_PROFILE("Collider::AssignBodies");
    m_planes.clear();
    m_polygons.clear();
    m_circles.clear();
    m_boxes.clear();
    m_particles.clear();
    m_knownPlaces = nullptr;
    m_particleMargin = static_cast<float>(0.1L * SPH::Get().radius->Get());
    for (const ParticlePtr& particle : particles) {
        m_particles.push_back(particle.Get());
    }
    size_t planesLeftOut = 0;
    for (const BodyPtr& body : bodies) {
        // The placed list is in ID order, the same in every run.
        for (const Body::PlacedGeom& placed : body->GetPlacedGeoms()) {
            CODE_ASSERT(placed.geom->GetBody());
            Geom* g = placed.geom.Get();
            switch (g->GetCollides()) {
                case Geom::Collides::AsPolygon:
                    // The pair tests read the maps on several threads.
                    static_cast<Polygon*>(g)->FinishPendingMaps();
                    m_polygons.push_back({body.Get(), static_cast<Polygon*>(g)});
                    break;
                case Geom::Collides::AsCircle: {
                    Circle* circle = static_cast<Circle*>(g);
                    m_circles.push_back(
                        {body.Get(), circle, circle->GetCentre(), circle->GetRadius()});
                    break;
                }
                case Geom::Collides::AsPlane:
                    if (m_planes.size() < kMaxPlanes) {
                        m_planes.push_back(static_cast<Plane*>(g));
                    } else {
                        ++planesLeftOut;
                    }
                    break;
                case Geom::Collides::AsBox:
                    m_boxes.push_back(static_cast<Box*>(g));
                    break;
                case Geom::Collides::Never:
                    break;
            }
        }
    }
    if (planesLeftOut > 0 && !m_planesLogged) {
        Log(logging::Warning, "Too many planes: " + util::LexicalCast<util::String>(planesLeftOut) +
                                  " beyond the first " +
                                  util::LexicalCast<util::String>(kMaxPlanes) +
                                  " collide with nothing");
    }
    m_planesLogged = planesLeftOut > 0;
    m_polygonBounds.clear();
    m_circleBounds.clear();
    m_boxBounds.clear();
    m_leftOutCount = 0;
    if (m_broadPhase) {
        for (const PolygonEntry& entry : m_polygons) {
            m_polygonBounds.push_back(BoundsOfPolygon(*entry.polygon));
        }
        for (const CircleEntry& entry : m_circles) {
            m_circleBounds.push_back(BoxOfCircle(entry.centre, entry.radius));
        }
        for (Box* box : m_boxes) {
            m_boxBounds.push_back(BoxOfOBB(box->GetOBB()));
        }
        MarkCrowds();
    }
    // A step that stayed within the limit lets the next one that reaches it say so again.
    m_fullLogged = m_fullLogged && m_full;
    m_full = false;
    m_contactLimit = kContactsBase + kContactsPerBody * (m_polygons.size() + m_circles.size() +
                                                         m_boxes.size() + m_particles.size());
}

void Collider::MarkCrowds() {
    m_crowdShapes.clear();
    for (const PolygonEntry& entry : m_polygons) {
        m_crowdShapes.push_back({entry.polygon->GetBoundingBox(), entry.polygon->Area()});
    }
    // A circle's and a box's own boxes are those of the pair search.
    for (size_t i = 0; i < m_circles.size(); ++i) {
        m_crowdShapes.push_back({m_circleBounds[i], m_circles[i].circle->Area()});
    }
    for (size_t i = 0; i < m_boxes.size(); ++i) {
        m_crowdShapes.push_back({m_boxBounds[i], m_boxes[i]->Area()});
    }
    m_leftOutCount = m_crowds.Mark(m_crowdShapes.data(), m_crowdShapes.size(), m_leftOut);
    if (m_leftOutCount == 0) {
        m_crowdLogged = false;
        return;
    }
    if (!m_crowdLogged) {
        Log(logging::Warning, "Too many shapes piled up in one place: " +
                                  util::LexicalCast<util::String>(m_leftOutCount) +
                                  " of them pass through one another");
        m_crowdLogged = true;
    }
    size_t next = 0;
    auto flag = [&](AbstractBody* body) -> uint8_t {
        return static_cast<uint8_t>((body->IsImmovable() ? BroadPhase::kImmovable : 0) |
                                    (m_leftOut[next++] ? BroadPhase::kLeftOut : 0));
    };
    m_polygonFlags.clear();
    for (const PolygonEntry& entry : m_polygons) {
        m_polygonFlags.push_back(flag(entry.body));
    }
    m_circleFlags.clear();
    for (const CircleEntry& entry : m_circles) {
        m_circleFlags.push_back(flag(entry.body));
    }
    m_boxFlags.clear();
    for (Box* box : m_boxes) {
        m_boxFlags.push_back(flag(box->GetBody()));
    }
}

bool Collider::Full(const ContactList& contacts) {
    if (contacts.size() < m_contactLimit) {
        return false;
    }
    if (!m_fullLogged) {
        Log(logging::Warning, "Too many contacts in one step: after " +
                                  util::LexicalCast<util::String>(m_contactLimit) +
                                  " the step's further pairs of shapes are not tested");
        m_fullLogged = true;
    }
    m_full = true;
    return true;
}

void Collider::Collide(ContactList& contacts) {
    VORRA_PROFILE("Collider::Collide");
    {
        VORRA_PROFILE("Plane");
        CollidePlanes(contacts);
    }
    // Each group walks its candidate pairs in (i, j) order, or all pairs without the
    // broad phase, and stops testing once the step has all the contacts it may have.
    const bool crowded = m_leftOutCount > 0;
    auto flagsOf = [crowded](const util::VectorPOD<uint8_t>& flags) {
        return crowded ? flags.data() : nullptr;
    };
    // The pairs are cut into parts for the step's threads, and the parts' contacts joined
    // in pair order. Only where the join reaches the contact limit could a plain walk have
    // stopped early: then the group is walked again, in order, checking before each pair.
    // A part stops once it alone would reach the limit, so memory stays bounded.
    auto walkPairs = [&](size_t grain, auto test) {
        const size_t before = contacts.size();
        if (StepWorkers::Get().PartsFor(m_pairs.size(), grain) > 1 && !Full(contacts)) {
            const size_t room = m_contactLimit - before;
            InParts(contacts, m_pairs.size(), grain,
                    [&](ContactList& out, size_t first, size_t last) {
                        const size_t start = out.size();
                        for (size_t k = first; k < last && out.size() - start < room; ++k) {
                            test(out, m_pairs[k].first, m_pairs[k].second);
                        }
                    });
            if (contacts.size() < m_contactLimit) {
                return;
            }
            contacts.erase(contacts.begin() + static_cast<ptrdiff_t>(before), contacts.end());
        }
        for (const auto& [i, j] : m_pairs) {
            if (Full(contacts)) {
                return;
            }
            test(contacts, i, j);
        }
    };
    auto walkWithin = [&](BroadPhase& finder, size_t grain, size_t n,
                          const std::vector<math::BoundingBox2f>& bounds,
                          const util::VectorPOD<uint8_t>& flags, auto test) {
        if (!m_broadPhase) {
            for (size_t i = 0; i < n; ++i) {
                for (size_t j = i + 1; j < n && !Full(contacts); ++j) {
                    test(contacts, i, j);
                }
            }
            return;
        }
        {
            VORRA_PROFILE("Pairs");
            finder.Within(bounds, m_pairs, flagsOf(flags));
        }
        walkPairs(grain, test);
    };
    auto walkAcross = [&](BroadPhase& finder, size_t grain, size_t n, size_t m,
                          const std::vector<math::BoundingBox2f>& first,
                          const util::VectorPOD<uint8_t>& firstFlags,
                          const std::vector<math::BoundingBox2f>& second,
                          const util::VectorPOD<uint8_t>& secondFlags, auto test) {
        if (!m_broadPhase) {
            for (size_t i = 0; i < n; ++i) {
                for (size_t j = 0; j < m && !Full(contacts); ++j) {
                    test(contacts, i, j);
                }
            }
            return;
        }
        {
            VORRA_PROFILE("Pairs");
            finder.Across(first, second, m_pairs, flagsOf(firstFlags), flagsOf(secondFlags));
        }
        walkPairs(grain, test);
    };
    {
        VORRA_PROFILE("Polygon-Polygon");
        walkWithin(m_pairFinders.polygons, kPolygonPairGrain, m_polygons.size(), m_polygonBounds,
                   m_polygonFlags, [&](ContactList& out, size_t i, size_t j) {
                       CollidePolygonPolygon(out, m_polygons[i], m_polygons[j]);
                   });
    }
    {
        VORRA_PROFILE("Circle-Circle");
        walkWithin(m_pairFinders.circles, kOnOneThread, m_circles.size(), m_circleBounds,
                   m_circleFlags, [&](ContactList& out, size_t i, size_t j) {
                       CollideCircleCircle(out, m_circles[i], m_circles[j]);
                   });
    }
    {
        VORRA_PROFILE("Circle-Polygon");
        walkAcross(m_pairFinders.circlePolygon, kPolygonPairGrain, m_circles.size(),
                   m_polygons.size(), m_circleBounds, m_circleFlags, m_polygonBounds,
                   m_polygonFlags, [&](ContactList& out, size_t i, size_t j) {
                       CollideCirclePolygon(out, m_circles[i], m_polygons[j]);
                   });
    }
    {
        VORRA_PROFILE("Box-Box");
        walkWithin(m_pairFinders.boxes, kBoxPairGrain, m_boxes.size(), m_boxBounds, m_boxFlags,
                   [&](ContactList& out, size_t i, size_t j) {
                       CollideBoxBox(out, m_boxes[i], m_boxes[j]);
                   });
    }
    {
        VORRA_PROFILE("Box-Polygon");
        walkAcross(m_pairFinders.boxPolygon, kPolygonPairGrain, m_boxes.size(), m_polygons.size(),
                   m_boxBounds, m_boxFlags, m_polygonBounds, m_polygonFlags,
                   [&](ContactList& out, size_t i, size_t j) {
                       CollideBoxPolygon(out, m_boxes[i], m_polygons[j]);
                   });
    }
    {
        VORRA_PROFILE("Box-Circle");
        walkAcross(m_pairFinders.boxCircle, kOnOneThread, m_boxes.size(), m_circles.size(),
                   m_boxBounds, m_boxFlags, m_circleBounds, m_circleFlags,
                   [&](ContactList& out, size_t i, size_t j) {
                       CollideBoxCircle(out, m_boxes[i], m_circles[j]);
                   });
    }
    CollideWater(contacts);
}

void Collider::CollideWater(ContactList& contacts) {
    if (m_particles.empty()) {
        return;
    }
    VORRA_PROFILE("Water");
    math::BoundingBox2f water;
    {
        VORRA_PROFILE("Creating BB");
        // The places the step read already, or else a copy read here, for the walks over
        // the particles that follow.
        if (!m_knownPlaces) {
            m_particlePlaces.resize(m_particles.size());
            StepWorkers::Get().ForParts(m_particles.size(), kParticleGrain,
                                        [&](size_t, size_t first, size_t last) {
                                            for (size_t i = first; i < last; ++i) {
                                                m_particlePlaces[i] = m_particles[i]->position;
                                            }
                                        });
        }
        const Vec2* places = ParticlePlaces();
        // Each part's box, joined coordinate by coordinate: a NaN coordinate is left out
        // of its own axis only, as in one walk over the list.
        math::BoundingBox2f parts[StepWorkers::kMaxThreads];
        StepWorkers::Get().ForParts(m_particles.size(), kParticleGrain,
                                    [&](size_t part, size_t first, size_t last) {
                                        for (size_t i = first; i < last; ++i) {
                                            parts[part].Add(places[i]);
                                        }
                                    });
        for (const math::BoundingBox2f& part : parts) {
            water.min.x = part.min.x < water.min.x ? part.min.x : water.min.x;
            water.min.y = part.min.y < water.min.y ? part.min.y : water.min.y;
            water.max.x = part.max.x > water.max.x ? part.max.x : water.max.x;
            water.max.y = part.max.y > water.max.y ? part.max.y : water.max.y;
        }
        water = water.Expanded(m_particleMargin);
    }
    const Vec2 centre = water.Centre();
    const Vec2 half = water.Size() * 0.5f;
    const math::OBB2D waterOBB{centre, {1, 0}, {0, 1}, half};
    // Each geom's reach is grown by more than the skin, so that rounding in its distance
    // can never drop a touching particle.
    const float slack = 2 * m_particleMargin + 1e-3f;
    auto circleMeetsWater = [&](const Vec2& c, float r) {
        const float dx = std::fabs(c.x - centre.x) - half.x;
        const float dy = std::fabs(c.y - centre.y) - half.y;
        if (dx > r || dy > r) {
            return false;
        }
        if (dx > 0 && dy > 0) {
            return dx * dx + dy * dy < r * r;
        }
        return true;
    };
    auto shapeMeetsWater = [&](const Geom& geom) {
        const BoundingCircle circle = geom.GetBoundingCircle();
        return circleMeetsWater(circle.centre, circle.radius) &&
               OBBOverlap(geom.GetOBB(), waterOBB);
    };
    // Shapes left out of a crowd keep out of the water too.
    auto takesPart = [this](const util::VectorPOD<uint8_t>& flags, size_t i) {
        return m_leftOutCount == 0 || !(flags[i] & BroadPhase::kLeftOut);
    };
    {
        VORRA_PROFILE("Plane-Water");
        const math::BoundingBox2f everywhere(Vec2(-math::Infinity(), -math::Infinity()),
                                             Vec2(math::Infinity(), math::Infinity()));
        for (Plane* plane : m_planes) {
            const Vec2 n = plane->GetNormal();
            if (plane->collideWater && Dot(n, centre) + plane->GetOffset() <=
                                           std::fabs(n.x) * half.x + std::fabs(n.y) * half.y) {
                WaterAgainst(contacts, plane, everywhere);
            }
        }
    }
    {
        VORRA_PROFILE("Circle-Water");
        for (size_t i = 0; i < m_circles.size(); ++i) {
            const CircleEntry& c = m_circles[i];
            if (c.circle->collideWater && takesPart(m_circleFlags, i) &&
                circleMeetsWater(c.centre, c.radius)) {
                WaterAgainst(contacts, c.circle, BoxOfCircle(c.centre, c.radius).Expanded(slack));
            }
        }
    }
    {
        VORRA_PROFILE("Poly-Water");
        for (size_t i = 0; i < m_polygons.size(); ++i) {
            const PolygonEntry& p = m_polygons[i];
            if (p.polygon->collideWater && takesPart(m_polygonFlags, i) &&
                shapeMeetsWater(*p.polygon)) {
                WaterAgainst(contacts, p.polygon, BoundsOfPolygon(*p.polygon).Expanded(slack));
            }
        }
    }
    {
        VORRA_PROFILE("Box-Water");
        for (size_t i = 0; i < m_boxes.size(); ++i) {
            Box* box = m_boxes[i];
            if (box->collideWater && takesPart(m_boxFlags, i) && shapeMeetsWater(*box)) {
                WaterAgainst(contacts, box, BoxOfOBB(box->GetOBB()).Expanded(slack));
            }
        }
    }
}

void Collider::WaterAgainst(ContactList& contacts, Geom* geom, const math::BoundingBox2f& reach) {
    const float margin = m_particleMargin;
    if (Full(contacts)) {
        return;
    }
    const Vec2* places = ParticlePlaces();
    // The limit is checked once per geom, so the parts' joined contacts are exactly what
    // one walk over the particles would give.
    InParts(contacts, m_particles.size(), kParticleGrain,
            [&](ContactList& out, size_t first, size_t last) {
                for (size_t k = first; k < last; ++k) {
                    const Vec2& p = places[k];
                    if (!reach.Contains(p)) {
                        continue;
                    }
                    const float d = geom->Dist(p);
                    if (d < margin) {
                        AddContact(out, geom, &m_particles[k]->GetGeom(), 0, p, geom->Normal(p),
                                   margin - d);
                    }
                }
            });
}

void Collider::CollidePlanes(ContactList& contacts) {
    for (Plane* plane : m_planes) {
        if (Full(contacts)) {
            return;
        }
        AbstractBody* planeBody = plane->GetBody();
        const Vec2 n = plane->GetNormal();
        const float offset = plane->GetOffset();
        for (const CircleEntry& c : m_circles) {
            if (!CanCollide(planeBody, plane, c.body, c.circle)) {
                continue;
            }
            const float d = plane->Dist(c.centre);
            if (c.radius <= d) {
                continue;
            }
            AddContact(contacts, plane, c.circle, 0, c.centre - n * c.radius, n, c.radius - d);
        }
        for (PolygonEntry& p : m_polygons) {
            if (!CanCollide(planeBody, plane, p.body, p.polygon)) {
                continue;
            }
            const BoundingCircle circle = p.polygon->GetBoundingCircle();
            if (Dot(n, circle.centre) + offset > circle.radius) {
                continue;
            }
            const math::OBB2D obb = p.polygon->GetOBB();
            if (Extent(obb, n) < Dot(n, obb.centre) + offset) {
                continue;
            }
            const math::Vec2List& vertices = p.polygon->GetWorldVertices();
            for (size_t i = 0; i < vertices.size(); ++i) {
                const float s = Dot(n, vertices[i]) + offset;
                if (s < 0) {
                    AddContact(contacts, plane, p.polygon, i, vertices[i], n, -s);
                }
            }
        }
        for (Box* box : m_boxes) {
            if (!CanCollide(planeBody, plane, box->GetBody(), box)) {
                continue;
            }
            const math::OBB2D obb = box->GetOBB();
            if (Dot(n, obb.centre) + offset > Extent(obb, n)) {
                continue;
            }
            Vec2 corners[4];
            BoxCorners(obb, corners);
            for (size_t i = 0; i < 4; ++i) {
                const float s = Dot(n, corners[i]) + offset;
                if (s < 0) {
                    AddContact(contacts, plane, box, i, corners[i], n, -s);
                }
            }
        }
    }
}

void Collider::CollidePolygonPolygon(ContactList& contacts, PolygonEntry& a, PolygonEntry& b) {
    if (!CanCollide(a.body, a.polygon, b.body, b.polygon)) {
        return;
    }
    const BoundingCircle ca = a.polygon->GetBoundingCircle();
    const BoundingCircle cb = b.polygon->GetBoundingCircle();
    const float reach = ca.radius + cb.radius;
    if (!((cb.centre - ca.centre).SquaredLength() < reach * reach)) {
        return;
    }
    if (!OBBOverlap(a.polygon->GetOBB(), b.polygon->GetOBB())) {
        return;
    }
    if (a.polygon->Dist(cb.centre) > cb.radius || b.polygon->Dist(ca.centre) > ca.radius) {
        return;
    }
    size_t index = 0;
    const math::Vec2List& va = a.polygon->GetWorldVertices();
    VerticesAgainstField(contacts, va.data(), va.size(), b.polygon, a.polygon, index);
    const math::Vec2List& vb = b.polygon->GetWorldVertices();
    VerticesAgainstField(contacts, vb.data(), vb.size(), a.polygon, b.polygon, index);
}

void Collider::CollideCircleCircle(ContactList& contacts, const CircleEntry& a,
                                   const CircleEntry& b) {
    if (!CanCollide(a.body, a.circle, b.body, b.circle)) {
        return;
    }
    const Vec2 delta = b.centre - a.centre;
    const float d2 = delta.SquaredLength();
    const float reach = a.radius + b.radius;
    if (reach * reach <= d2) {
        return;
    }
    const float distance = std::sqrt(d2);
    const Vec2 n = math::NearZero(distance) ? Vec2(0, 0) : delta / distance;
    const float overlap = reach - distance;
    AddContact(contacts, a.circle, b.circle, 0, a.centre + n * (a.radius - overlap / 2), n,
               overlap);
}

void Collider::CollideCirclePolygon(ContactList& contacts, const CircleEntry& c, PolygonEntry& p) {
    if (!CanCollide(c.body, c.circle, p.body, p.polygon)) {
        return;
    }
    const float d = p.polygon->Dist(c.centre);
    if (d > c.radius) {
        return;
    }
    if (d < 0) {
        AddContact(contacts, c.circle, p.polygon, static_cast<size_t>(-1), c.centre,
                   -p.polygon->Normal(c.centre), c.radius - d);
        return;
    }
    const float r2 = c.radius * c.radius;
    size_t index = 0;
    auto touch = [&](const Vec2& q) {
        const Vec2 delta = q - c.centre;
        if (delta.SquaredLength() < r2) {
            float distance = delta.Length();
            Vec2 n(0, 0);
            if (math::NearZero(distance)) {
                distance = 0;
            } else {
                n = delta / distance;
            }
            AddContact(contacts, c.circle, p.polygon, index, q, n, c.radius - distance);
        }
    };
    const math::Vec2List& vertices = p.polygon->GetWorldVertices();
    const size_t count = vertices.size();
    for (size_t i = 0; i < count; ++i) {
        const Vec2& a = vertices[i];
        const Vec2& b = vertices[(i + 1) % count];
        ++index;
        const Vec2 edge = b - a;
        const float t = Dot(c.centre - a, edge) / edge.SquaredLength();
        Vec2 q;
        if (!math::IsFinite(t)) {
            q = c.centre;
        } else if (t <= 0) {
            q = a;
        } else if (t >= 1) {
            q = b;
        } else {
            q = a + edge * t;
        }
        if (q == a || q == b) {
            continue;  // the vertices come next
        }
        touch(q);
    }
    for (size_t i = 0; i < count; ++i) {
        ++index;
        touch(vertices[i]);
    }
}

void Collider::CollideBoxBox(ContactList& contacts, Box* a, Box* b) {
    if (!CanCollide(a->GetBody(), a, b->GetBody(), b)) {
        return;
    }
    const math::OBB2D boxes[2] = {a->GetOBB(), b->GetOBB()};
    Box* const geoms[2] = {a, b};
    // Separating axes; per box the axis of greatest separation, the later one at a tie.
    float bestSep[2];
    int bestAxis[2];
    float sign[2][2];
    for (int i = 0; i < 2; ++i) {
        const math::OBB2D& own = boxes[i];
        const math::OBB2D& other = boxes[1 - i];
        bestSep[i] = -math::Infinity();
        bestAxis[i] = 0;
        for (int j = 0; j < 2; ++j) {
            const Vec2 axis = j == 0 ? own.axis1 : own.axis2;
            const float t = Dot(other.centre - own.centre, axis);
            sign[i][j] = t < 0 ? -1.0f : 1.0f;
            const float sep = std::fabs(t) - (Extent(own, axis) + Extent(other, axis));
            if (sep > 0) {
                return;
            }
            if (sep >= bestSep[i]) {
                bestSep[i] = sep;
                bestAxis[i] = j;
            }
        }
    }
    const int r = bestSep[1] >= bestSep[0] ? 1 : 0;
    const int q = 1 - r;
    const math::OBB2D& ref = boxes[r];
    const math::OBB2D& inc = boxes[q];
    const int j = bestAxis[r];
    const Vec2 n = (j == 0 ? ref.axis1 : ref.axis2) * sign[r][j];
    const float h = j == 0 ? ref.halfExtents.x : ref.halfExtents.y;

    // The incident face: the one of the other box turned most against n.
    const float A = inc.halfExtents.x * Dot(inc.axis1, n);
    const float B = inc.halfExtents.y * Dot(inc.axis2, n);
    const bool mainIsFirst = !(std::fabs(A) < std::fabs(B));
    const Vec2 au = mainIsFirst ? inc.axis1 : inc.axis2;
    const Vec2 aw = mainIsFirst ? inc.axis2 : inc.axis1;
    const float eu = mainIsFirst ? inc.halfExtents.x : inc.halfExtents.y;
    const float ew = mainIsFirst ? inc.halfExtents.y : inc.halfExtents.x;
    const float su = (mainIsFirst ? A : B) >= 0 ? -1.0f : 1.0f;
    const float sw = (mainIsFirst ? B : A) >= 0 ? -1.0f : 1.0f;
    Vec2 p1 = inc.centre + au * (su * eu) + aw * (sw * ew);
    Vec2 p2 = inc.centre + au * (su * eu) - aw * (sw * ew);
    auto d = [&](const Vec2& p) { return Dot(p - ref.centre, n) - h; };

    if (d(p2) > 0) {
        AddContact(contacts, geoms[r], geoms[q], 0, p1, n, -d(p1));
        return;
    }
    // Clip the segment to the side slab of the reference box; depths follow linearly.
    const Vec2 side = j == 0 ? ref.axis2 : ref.axis1;
    const float H = j == 0 ? ref.halfExtents.y : ref.halfExtents.x;
    const Vec2 slab = Dot(p2 - p1, side) >= 0 ? side : -side;
    float d1 = d(p1);
    float d2 = d(p2);
    const Vec2 start = p1;
    const Vec2 end = p2;
    const float s1 = Dot(start - ref.centre, slab);
    const float s2 = Dot(end - ref.centre, slab);
    if (s2 > H && s2 != s1) {
        const float f = (H - s1) / (s2 - s1);
        p2 = start + (end - start) * f;
        d2 = d1 + (d2 - d1) * f;
    }
    if (s1 < -H && s2 != s1) {
        const float f = (-H - s1) / (s2 - s1);
        const float startDepth = d(start);
        const float endDepth = d(end);
        p1 = start + (end - start) * f;
        d1 = startDepth + (endDepth - startDepth) * f;
    }
    const size_t index1 = p2.x <= p1.x ? 1 : 0;
    AddContact(contacts, geoms[r], geoms[q], index1, p1, n, -d1);
    AddContact(contacts, geoms[r], geoms[q], 1 - index1, p2, n, -d2);
}

void Collider::CollideBoxPolygon(ContactList& contacts, Box* box, PolygonEntry& p) {
    if (!CanCollide(box->GetBody(), box, p.body, p.polygon)) {
        return;
    }
    const math::OBB2D obb = box->GetOBB();
    if (!OBBOverlap(obb, p.polygon->GetOBB())) {
        return;
    }
    size_t index = 0;
    const math::Vec2List& vertices = p.polygon->GetWorldVertices();
    VerticesAgainstField(contacts, vertices.data(), vertices.size(), box, p.polygon, index);
    Vec2 corners[4];
    BoxCorners(obb, corners);
    VerticesAgainstField(contacts, corners, 4, p.polygon, box, index);
}

void Collider::CollideBoxCircle(ContactList& contacts, Box* box, const CircleEntry& c) {
    if (!CanCollide(box->GetBody(), box, c.body, c.circle)) {
        return;
    }
    const math::OBB2D obb = box->GetOBB();
    const Vec2 axes[2] = {obb.axis1, obb.axis2};
    const float e[2] = {obb.halfExtents.x, obb.halfExtents.y};
    float t[2];
    float q[2];
    int inside = 0;
    for (int i = 0; i < 2; ++i) {
        t[i] = Dot(c.centre - obb.centre, axes[i]);
        if (std::fabs(t[i]) > c.radius + e[i]) {
            return;
        }
        q[i] = std::clamp(t[i], -e[i], e[i]);
        if (std::fabs(t[i]) <= e[i]) {
            ++inside;
        }
    }
    if (inside < 2) {
        const Vec2 v(t[0] - q[0], t[1] - q[1]);
        if (c.radius * c.radius <= v.SquaredLength()) {
            return;
        }
        const Vec2 nl = math::Normalized(v);
        const Vec2 n = axes[0] * nl.x + axes[1] * nl.y;
        AddContact(contacts, box, c.circle, 0, obb.centre + axes[0] * q[0] + axes[1] * q[1], n,
                   c.radius - v.Length());
        return;
    }
    const int i = e[1] - std::fabs(t[1]) < e[0] - std::fabs(t[0]) ? 1 : 0;
    const float m = e[i] - std::fabs(t[i]);
    const float direction = t[i] > 0 ? 1.0f : -1.0f;
    float deepest[2] = {t[0], t[1]};
    deepest[i] -= c.radius * direction;
    AddContact(contacts, box, c.circle, 0, obb.centre + axes[0] * deepest[0] + axes[1] * deepest[1],
               axes[i] * direction, m + c.radius);
}

}  // namespace physics
