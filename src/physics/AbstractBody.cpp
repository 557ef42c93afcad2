#include "physics/AbstractBody.h"

#include "math/MathUtil.h"

namespace physics {

namespace {

// Bodies and particles share one sequence; the world body, made first, is 0.
size_t s_nextID = 0;

}  // namespace

AbstractBody::AbstractBody()
    : m_inertia(math::Infinity()), m_mass(math::Infinity()), m_id(s_nextID++) {}

// Mass, inertia and area follow from geoms, which a copy does not have: those start out as
// for a new body.
AbstractBody::AbstractBody(const AbstractBody& other)
    : util::Pointee(other),
      position(other.position),
      velocity(other.velocity),
      force(other.force),
      angle(other.angle),
      angularVelocity(other.angularVelocity),
      torque(other.torque),
      m_inertia(math::Infinity()),
      m_mass(math::Infinity()),
      m_id(s_nextID++) {}

AbstractBody::~AbstractBody() = default;

bool AbstractBody::IsBad() const {
    return !math::IsFinite(position) || !math::IsFinite(velocity) || !math::IsFinite(angle) ||
           !math::IsFinite(angularVelocity);
}

size_t AbstractBody::PeekNextID() {
    return s_nextID;
}

}  // namespace physics
