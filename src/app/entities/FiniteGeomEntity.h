#pragma once

#include "app/entities/GeomEntity.h"
#include "math/Vector2.h"

namespace app {

// A geom entity of finite area: it has mass, so a density, an air friction factor and a
// direction controller that pushes it about.
class FiniteGeomEntity : public GeomEntity {
public:
    // The most particles one shape turns into.
    static constexpr int kDefaultMaxSPHSpawn = 10000;

    FiniteGeomEntity(const util::String& reflectedName, physics::GeomPtr geom);
    ~FiniteGeomEntity() override;

    // Joins the simulation with the controller's force at every step.
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    // Kinetic energy of the shape's own mass, with its rotation, plus its height energy.
    math::real GetEnergy() const override;
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;

    // Where particles go when the shape turns to water: a grid over its box, as many as
    // fit one particle's area each, never more than maxPoints and never none.
    math::Vec2List GetLiquidPoints(int maxPoints = kDefaultMaxSPHSpawn) const;

    // The direction controller by its text form ("keys right up left down", "joy 0 axis 0
    // 1"); empty for none.
    const util::String& GetController() const { return m_controller; }
    // Throws for a controller that names a key that does not exist; the old one stays.
    void SetController(const util::String& controller);
    // The force the controller asks for now, in the controller's acceleration times the
    // shape's mass, after the swap and the inversions.
    math::Vec2 GetControllerForce() const;

    script::AttribPtr<float> density;
    script::AttribPtr<float> airFrictionMult;
    script::AttribPtr<float> controllerAcc;
    script::AttribPtr<bool> controllerReverseXY;
    script::AttribPtr<bool> controllerInvertX;
    script::AttribPtr<bool> controllerInvertY;

private:
    // Pushes the shape once a step. A small object of its own, so that leaving the
    // simulation ends the pushing by dropping it.
    class ControllerForceAdder : public util::Pointee {
    public:
        explicit ControllerForceAdder(FiniteGeomEntity* entity) : m_entity(entity) {}
        void Step(float dt) const;

    private:
        FiniteGeomEntity* m_entity;
    };

    util::String m_controller;
    util::SharedPtr<ControllerForceAdder> m_forceAdder;
};

}  // namespace app
