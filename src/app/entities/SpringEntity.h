#pragma once

#include "app/entities/JointEntity.h"
#include "physics/Joint.h"

namespace app {

// A damped spring between two points. Its rest length, strength and damping read and
// write through to the physics spring while there is one.
class SpringEntity : public JointEntity {
public:
    explicit SpringEntity(float size);
    ~SpringEntity() override;

    JointEntityPtr Clone() const override;
    // A strip between the ends; selected or under the mouse, a rounded outline around it.
    void Draw(Painter& painter) const override;
    void Rebuild() override;
    void AddToSimulation() override;
    void RemoveFromSimulation() override;
    bool IsInSimulation() const override;
    LinkState GetLinkState() const override;
    void SetLinkState(const LinkState& state) override;
    // Near the segment between the ends, strictly between them.
    bool Contains(const math::Vec2& point) const override;
    bool IntersectsLines(const physics::LineList& stroke) const override;
    math::BoundingBox2f GetBoundingBox() const override;
    // The stretch's potential and the motion along the axis.
    math::real GetEnergy() const override;

    const util::SharedPtr<physics::SpringJoint>& GetSpring() const { return m_spring; }

    script::AttribGetSetPtr<float> length;
    script::AttribGetSetPtr<float> strengthFactor;
    script::AttribGetSetPtr<float> dampingFactor;

private:
    // An attribute that reads the spring's value, or the stored one while there is no
    // spring, and writes both.
    void AddWriteThrough(script::AttribGetSetPtr<float>& out, const util::String& name,
                         float (physics::SpringJoint::*getter)() const,
                         void (physics::SpringJoint::*setter)(float), float& stored);

    util::SharedPtr<physics::SpringJoint> m_spring;
    float m_length = 1.0f;
    float m_strength = 0.05f;
    float m_damping = 0.1f;
};

}  // namespace app
