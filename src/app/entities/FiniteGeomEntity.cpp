#include "app/entities/FiniteGeomEntity.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/entities/ControlInputs.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/SPH.h"
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

void FiniteGeomEntity::AddToSimulation() {
    GeomEntity::AddToSimulation();
    m_forceAdder = util::SharedPtr<ControllerForceAdder>(new ControllerForceAdder(this));
    const ControllerForceAdder* adder = m_forceAdder.Get();
    physics::Simulation::Get().GetStepCallbacks().Add(util::WeakPtr<util::Pointee>(m_forceAdder),
                                                      [adder](float dt) { adder->Step(dt); });
}

void FiniteGeomEntity::RemoveFromSimulation() {
    GeomEntity::RemoveFromSimulation();
    m_forceAdder.Reset();
}

math::Vec2 FiniteGeomEntity::GetControllerForce() const {
    math::Vec2 dir = ControlInputs::Get().GetDirection(m_controller);
    if (controllerReverseXY->Get()) {
        std::swap(dir.x, dir.y);
    }
    if (controllerInvertX->Get()) {
        dir.x = -dir.x;
    }
    if (controllerInvertY->Get()) {
        dir.y = -dir.y;
    }
    const float mass = m_geom->density * m_geom->Area();
    return dir * (controllerAcc->Get() * mass);
}

void FiniteGeomEntity::ControllerForceAdder::Step(float dt) const {
    if (m_entity->m_controller.empty() || !(dt > 0)) {
        return;
    }
    const physics::BodyPtr& body = m_entity->GetBody();
    if (!body || body->IsImmovable()) {
        return;
    }
    const math::Vec2 force = m_entity->GetControllerForce();
    const math::Vec2 arm = m_entity->m_geom->GetPosition() - body->position;
    body->force += force;
    body->torque += arm.x * force.y - arm.y * force.x;
}

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

void FiniteGeomEntity::Serialize(AttributeMap& out) const {
    GeomEntity::Serialize(out);
    if (!m_controller.empty()) {
        out["forceController"] = script::ValueToObject(m_controller);
    }
}

void FiniteGeomEntity::Deserialize(const AttributeMap& in) {
    GeomEntity::Deserialize(in);
    util::String controller;
    ReadKey(in, "forceController", controller);
    SetController(controller);
}

void FiniteGeomEntity::SetController(const util::String& controller) {
    ControlInputs::Get().CheckController(controller);
    m_controller = controller;
}

math::Vec2List FiniteGeomEntity::GetLiquidPoints(int maxPoints) const {
    const float area = m_geom->Area();
    const float radius = physics::SPH::Get().radius->Get();
    const float perParticle = radius * radius * static_cast<float>(M_PI);
    const long wanted = std::lround(area / perParticle + 0.5f);
    const long count = std::clamp<long>(wanted, 1, std::max(maxPoints, 1));
    const math::BoundingBox2f box = m_geom->GetBoundingBox();
    const math::Vec2 half = box.Size() * 0.5f;
    const float n = static_cast<float>(count) * static_cast<float>(M_PI);
    const long rows = std::max(1L, std::lround(std::sqrt(n * half.y * half.y / area) + 0.5f));
    const long columns = std::max(1L, std::lround(std::sqrt(n * half.x * half.x / area) + 0.5f));
    math::Vec2List points;
    for (long row = 0; row < rows && static_cast<long>(points.size()) < count; ++row) {
        const float y = box.min.y + (static_cast<float>(row) + 0.5f) * box.Height() / rows;
        for (long column = 0; column < columns && static_cast<long>(points.size()) < count;
             ++column) {
            const math::Vec2 p(
                box.min.x + (static_cast<float>(column) + 0.5f) * box.Width() / columns, y);
            if (m_geom->Dist(p) < 0) {
                points.push_back(p);
            }
        }
    }
    if (points.empty()) {
        points.push_back(m_geom->GetPosition());
    }
    return points;
}

}  // namespace app
