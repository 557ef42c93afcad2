#pragma once

#include "app/entities/JointEntity.h"
#include "physics/Hinge.h"

namespace app {

// A revolute joint with a motor that buttons can drive: brake beats forward, forward beats
// back, and with none held the motor runs when it is switched on, or holds still under
// autoBrake.
class HingeEntity : public JointEntity {
public:
    explicit HingeEntity(float size);
    ~HingeEntity() override;

    JointEntityPtr Clone() const override;
    // Only while the options show joints; a hinge too small to see shows only its ring.
    void Draw(Painter& painter) const override;
    void Rebuild() override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    bool IsInSimulation() const override;
    LinkState GetLinkState() const override;
    void SetLinkState(const LinkState& state) override;
    // Moved by the user, it takes hold of what lies under it.
    void EndTransform() override;
    // Follows the geoms and hands the motor settings and the buttons to the hinge.
    void Update(math::real dt) override;
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;

    const physics::HingePtr& GetHinge() const { return m_hinge; }

    // The buttons by their text forms; empty for none.
    util::String buttonForward;
    util::String buttonBack;
    util::String buttonBrake;

    script::AttribPtr<bool> motor;
    script::AttribPtr<bool> ccw;
    script::AttribPtr<float> motorSpeed;
    script::AttribPtr<float> motorTorque;
    script::AttribPtr<bool> autoBrake;
    script::AttribPtr<float> impulseLimit;
    script::AttribPtr<float> distanceLimit;

private:
    physics::HingePtr m_hinge;
};

}  // namespace app
