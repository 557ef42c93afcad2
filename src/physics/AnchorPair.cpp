#include "physics/AnchorPair.h"

#include <atomic>
#include <utility>

#include "physics/Geom.h"

namespace physics {
namespace {

std::atomic<uint64_t> s_nextSerial{0};

}  // namespace

AnchorPair::AnchorPair(GeomPtr a, GeomPtr b, const math::Vec2& localAnchorA,
                       const math::Vec2& localAnchorB)
    : m_geomA(std::move(a)),
      m_geomB(std::move(b)),
      m_anchorA(localAnchorA),
      m_anchorB(localAnchorB),
      m_serial(s_nextSerial++) {}

AnchorPair::~AnchorPair() = default;

math::Vec2 AnchorPair::GetWorldAnchorA() const {
    return m_geomA->GetTransform().Apply(m_anchorA);
}

math::Vec2 AnchorPair::GetWorldAnchorB() const {
    return m_geomB->GetTransform().Apply(m_anchorB);
}

}  // namespace physics
