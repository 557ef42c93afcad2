#include "physics/Particle.h"

#include "math/MathUtil.h"
#include "physics/SPH.h"
#include "physics/Transform.h"

namespace physics {

Particle::Particle(const math::Vec2& position, const math::Vec2& velocity) {
    const SPH& fluid = SPH::Get();
    m_geom = util::SharedPtr<ParticleGeom>(new ParticleGeom(fluid.radius->Get()));
    m_geom->SetOwner(this);
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
    m_geom->friction = friction;
    m_geom->restitution = restitution;
}

void Particle::UpdateTransforms() {
    m_geom->SetTransform(Transform{{1, 0}, position});
}

}  // namespace physics
