#include "physics/Particle.h"

#include <bit>
#include <cstdint>

#include "math/MathUtil.h"
#include "physics/SPH.h"
#include "physics/Transform.h"

namespace physics {

Particle::Particle(const math::Vec2& position, const math::Vec2& velocity) {
    const SPH& fluid = SPH::Get();
    m_geom = util::SharedPtr<ParticleGeom>(new ParticleGeom(fluid.radius->Get()));
    m_geom->SetOwner(this);
    m_geomFriction = m_geom->friction;
    m_geomRestitution = m_geom->restitution;
    this->position = position;
    this->velocity = velocity;
    SetProps(fluid.radius->Get(), fluid.density->Get(), fluid.friction->Get(),
             fluid.restitution->Get());
    UpdateTransforms();
}

Particle::~Particle() {
    // The geom may outlive its particle in someone's hands; it must not point here then.
    m_geom->SetOwner(nullptr);
}

void Particle::SetProps(math::real radius, math::real density, math::real friction,
                        math::real restitution) {
    m_area = math::Pi * radius * radius;
    m_mass = m_area * density;
    m_inertia = m_mass;
    m_massInv = 1 / m_mass;
    m_inertiaInv = 1 / m_inertia;
    // Bit by bit, so that even a zero's sign is passed on.
    if (std::bit_cast<uint32_t>(friction) != std::bit_cast<uint32_t>(m_geomFriction) ||
        std::bit_cast<uint32_t>(restitution) != std::bit_cast<uint32_t>(m_geomRestitution)) {
        m_geom->friction = m_geomFriction = friction;
        m_geom->restitution = m_geomRestitution = restitution;
    }
}

void Particle::UpdateTransforms() {
    m_geom->SetTransform(Transform{{1, 0}, position});
}

}  // namespace physics
