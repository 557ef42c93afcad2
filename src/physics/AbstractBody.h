#pragma once

#include <cstddef>
#include <cstdint>

#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/Forward.h"

namespace physics {

// What the driver, the integrators and the solver see of rigid bodies and particles alike.
class AbstractBody : public util::Pointee {
public:
    // Zero state; infinite mass and inertia, so that the inverses are 0. Draws a new ID.
    AbstractBody();
    // Copies the motion state only; adjacency, velocity change and static flag start
    // afresh, and the copy has an ID of its own.
    AbstractBody(const AbstractBody& other);
    AbstractBody& operator=(const AbstractBody&) = delete;
    ~AbstractBody() override;

    virtual void UpdateTransforms() {}
    // Non-finite position, velocity, angle or angular velocity.
    virtual bool IsBad() const;

    size_t GetID() const { return m_id; }
    bool IsStatic() const { return m_static; }
    void SetStatic(bool isStatic) { m_static = isStatic; }
    // Static or of infinite mass: the solver and integrators leave it alone.
    bool IsImmovable() const { return m_static || m_massInv == 0; }
    // Inverse mass and inertia as the solver sees them: 0 when static.
    math::real SolverMassInv() const { return m_static ? 0 : m_massInv; }
    math::real SolverInertiaInv() const { return m_static ? 0 : m_inertiaInv; }

    // In the simulation's body list: kept by the simulation, so that links can ask cheaply
    // whether their bodies still take part.
    bool IsInWorld() const { return m_inWorld; }
    void SetInWorld(bool inWorld) { m_inWorld = inWorld; }

    // The next ID to be drawn, for tests of the running counter.
    static size_t PeekNextID();

    // Public so that the integrators and the solver read and write them directly, as plain
    // records in their inner loops.
    util::VectorPOD<Constraint*> adjacency;  // used by the prioritized solver only
    // Place in the Gauss-Seidel sweep's body array, valid while solveStamp is that solve's.
    uint32_t solveIndex = 0;
    uint32_t solveStamp = 0;
    math::Vec2 velocityChange{0, 0};
    math::real angularChange = 0;
    math::Vec2 position{0, 0};
    math::Vec2 velocity{0, 0};
    math::Vec2 force{0, 0};
    math::real angle = 0;
    math::real angularVelocity = 0;
    math::real torque = 0;

protected:
    math::real m_inertia;
    math::real m_inertiaInv = 0;
    math::real m_mass;
    math::real m_massInv = 0;
    math::real m_area = 0;
    bool m_inWorld = false;

public:
    math::real GetInertia() const { return m_inertia; }
    math::real GetInertiaInv() const { return m_inertiaInv; }
    math::real GetMass() const { return m_mass; }
    math::real GetMassInv() const { return m_massInv; }
    math::real GetArea() const { return m_area; }
    // Of translation and rotation together.
    math::real GetKineticEnergy() const {
        return 0.5f * m_mass * velocity.SquaredLength() +
               0.5f * m_inertia * angularVelocity * angularVelocity;
    }

private:
    size_t m_id;
    bool m_static = false;
};

}  // namespace physics
