#include "app/entities/FiniteGeomEntity.h"

#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

namespace app {

FiniteGeomEntity::FiniteGeomEntity(const util::String& reflectedName, physics::GeomPtr geom)
    : GeomEntity(reflectedName, std::move(geom)) {
    physics::Simulation& sim = physics::Simulation::Get();
    const float acceleration = sim.gravitySwitch->Get() ? sim.gravity->Get().Length() + 1 : 1;
    AddAttrib(density, "density", m_geom->density);
    AddAttrib(airFrictionMult, "airFrictionMult", m_geom->airFrictionMult);
    AddAttrib(controllerAcc, "controllerAcc", acceleration);
    AddAttrib(controllerReverseXY, "controllerReverseXY", false);
    AddAttrib(controllerInvertX, "controllerInvertX", false);
    AddAttrib(controllerInvertY, "controllerInvertY", false);
    const util::WeakPtr<util::Pointee> self(this);
    // The owner's mass follows a change of density at once.
    density->GetOnChange().Add(self, [this]() {
        m_geom->density = density->Get();
        m_geom->RecalcGeoms();
    });
    airFrictionMult->GetOnChange().Add(
        self, [this]() { m_geom->airFrictionMult = airFrictionMult->Get(); });
}

FiniteGeomEntity::~FiniteGeomEntity() = default;

math::real FiniteGeomEntity::GetEnergy() const {
    const physics::BodyPtr& body = GetBody();
    if (!body) {
        return 0;
    }
    const math::real mass = m_geom->density * m_geom->Area();
    const math::Vec2 centre = m_geom->GetPosition();
    const math::Vec2 arm = centre - body->position;
    const math::Vec2 velocity = body->velocity + math::Vec2(-arm.y, arm.x) * body->angularVelocity;
    const math::real inertia = m_geom->InertiaPerMass() * mass;
    const math::real spin = body->angularVelocity;
    const math::Vec2 g = physics::Simulation::Get().GetEffectiveGravity();
    return 0.5f * mass * velocity.SquaredLength() + 0.5f * inertia * spin * spin +
           mass * -Dot(g, centre);
}

}  // namespace app
