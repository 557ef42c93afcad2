#pragma once

#include <cstdint>

#include "math/Vector2.h"
#include "physics/Forward.h"

namespace physics {

// Two geoms and an anchor on each in the geom's local space: what hinges and joints hold.
// The bodies are found through the geoms at each use, so a link survives its bodies being
// rebuilt around the same geoms.
class AnchorPair {
public:
    AnchorPair(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA,
               const math::Vec2& localAnchorB);
    ~AnchorPair();

    const GeomPtr& GetGeomA() const { return m_geomA; }
    const GeomPtr& GetGeomB() const { return m_geomB; }
    const math::Vec2& GetLocalAnchorA() const { return m_anchorA; }
    const math::Vec2& GetLocalAnchorB() const { return m_anchorB; }
    void SetLocalAnchorA(const math::Vec2& anchor) { m_anchorA = anchor; }
    void SetLocalAnchorB(const math::Vec2& anchor) { m_anchorB = anchor; }
    // The anchors where the geoms now put them.
    math::Vec2 GetWorldAnchorA() const;
    math::Vec2 GetWorldAnchorB() const;

    // Creation order, the same in every run: the simulation walks its links by it.
    uint64_t GetSerial() const { return m_serial; }
    // A link made anew in place of an earlier one, as a restore makes it, takes the earlier
    // one's place in that order. Only while the link is in no simulation: the simulation's
    // sets are ordered by it.
    void SetSerial(uint64_t serial) { m_serial = serial; }

private:
    GeomPtr m_geomA;
    GeomPtr m_geomB;
    math::Vec2 m_anchorA;
    math::Vec2 m_anchorB;
    uint64_t m_serial;
};

}  // namespace physics
