#pragma once

#include "app/entities/JointEntity.h"

namespace app {

// Makes two geoms one rigid body. A body is thus everything that fix joints hold together,
// and fixing to the ground makes the rest static. Removing one splits the body only where
// no other fix joint still holds the parts together.
class FixJointEntity : public JointEntity {
public:
    explicit FixJointEntity(float size);
    ~FixJointEntity() override;

    JointEntityPtr Clone() const override;
    // Only while the options show joints and the two ends are one body; it turns with it.
    void Draw(Painter& painter) const override;
    // Anew only when the ends differ from those it fixed.
    void Rebuild() override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    // Both ends in one body of the simulation.
    bool IsInSimulation() const override;

private:
    void Split();

    physics::GeomPtr m_stored0;
    physics::GeomPtr m_stored1;
};

}  // namespace app
