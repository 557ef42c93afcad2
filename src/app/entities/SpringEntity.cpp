#include "app/entities/SpringEntity.h"

#include <algorithm>
#include <cmath>

#include "app/Painter.h"
#include "math/MathUtil.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

namespace app {

SpringEntity::SpringEntity(float jointSize) : JointEntity("Spring", jointSize) {
    AddWriteThrough(length, "length", &physics::SpringJoint::GetRestLength,
                    &physics::SpringJoint::SetRestLength, m_length);
    AddWriteThrough(strengthFactor, "strengthFactor", &physics::SpringJoint::GetStrength,
                    &physics::SpringJoint::SetStrength, m_strength);
    AddWriteThrough(dampingFactor, "dampingFactor", &physics::SpringJoint::GetDamping,
                    &physics::SpringJoint::SetDamping, m_damping);
}

void SpringEntity::AddWriteThrough(script::AttribGetSetPtr<float>& out, const util::String& name,
                                   float (physics::SpringJoint::*getter)() const,
                                   void (physics::SpringJoint::*setter)(float), float& stored) {
    AddAttrib(out, name, std::function<float()>([this, getter, &stored]() {
                  return m_spring ? (m_spring.Get()->*getter)() : stored;
              }),
              std::function<void(const float&)>([this, setter, &stored](const float& value) {
                  stored = value;
                  if (m_spring) {
                      (m_spring.Get()->*setter)(value);
                  }
              }),
              stored);
}

SpringEntity::~SpringEntity() = default;

void SpringEntity::Draw(Painter& painter) const {
    const float width = size->Get();
    painter.Strip("spring", "spring_attachment", m_world0, m_world1, width, color->Get());
    if (!selected && !mouseOver) {
        return;
    }
    const math::Vec2 axis = m_world1 - m_world0;
    const float around = 1.15f * width;
    const math::Vec2 halfSize((axis.Length() + around) / 2, around / 2);
    const float radius = std::min(0.3f * painter.GetInchInWorld(), 0.15f * around);
    math::Vec4 border = GetBorderColor();
    border.w *= 0.5f;
    painter.RoundedRect((m_world0 + m_world1) * 0.5f, halfSize, std::atan2(axis.y, axis.x), radius,
                        border);
}

JointEntityPtr SpringEntity::Clone() const {
    JointEntityPtr clone(new SpringEntity(size->Get()));
    clone->CopyAttributes(*this);
    return clone;
}

void SpringEntity::Rebuild() {
    RemoveFromSimulation();
    m_spring.Reset();
    if (!m_geom0 || !m_geom1) {
        return;
    }
    m_spring = util::SharedPtr<physics::SpringJoint>(new physics::SpringJoint(
        m_geom0, m_geom1, m_geom0->GetTransform().Inverted().Apply(m_world0),
        m_geom1->GetTransform().Inverted().Apply(m_world1), m_length, m_strength, m_damping));
    if (JointEntity::IsInSimulation()) {
        AddToSimulation();
    }
}

void SpringEntity::AddToSimulation() {
    if (m_spring) {
        physics::Simulation::Get().AddJoint(m_spring);
    }
}

void SpringEntity::RemoveFromSimulation() {
    if (m_spring) {
        physics::Simulation::Get().RemoveJoint(m_spring);
    }
}

bool SpringEntity::IsInSimulation() const {
    return JointEntity::IsInSimulation() && m_spring &&
           physics::Simulation::Get().GetJoints().count(physics::JointPtr(m_spring)) != 0;
}

bool SpringEntity::Contains(const math::Vec2& point) const {
    const math::Vec2 axis = m_world1 - m_world0;
    const float lengthSq = axis.SquaredLength();
    if (!(lengthSq > 0)) {
        return false;
    }
    const float t = math::Dot(point - m_world0, axis) / lengthSq;
    return t > 0 && t < 1 && math::PointSegmentDist(point, m_world0, m_world1) < size->Get() / 3;
}

bool SpringEntity::IntersectsLines(const physics::LineList& stroke) const {
    const physics::Line spring{m_world0, m_world1};
    for (const physics::Line& segment : stroke) {
        if (physics::Intersects(spring, segment)) {
            return true;
        }
    }
    return false;
}

math::BoundingBox2f SpringEntity::GetBoundingBox() const {
    const math::Vec2 along = math::Normalized(m_world1 - m_world0);
    const math::Vec2 across = math::Vec2(-along.y, along.x) * (size->Get() / 2);
    math::BoundingBox2f box;
    for (const math::Vec2& end : {m_world0, m_world1}) {
        box.Add(end + across);
        box.Add(end - across);
    }
    return box;
}

math::real SpringEntity::GetEnergy() const {
    return m_spring && m_geom0 && m_geom1 ? m_spring->GetEnergy() : 0;
}

JointEntity::LinkState SpringEntity::GetLinkState() const {
    return m_spring ? GetAnchorState(*m_spring) : LinkState();
}

void SpringEntity::SetLinkState(const LinkState& state) {
    if (m_spring) {
        SetAnchorState(*m_spring, state);
    }
}

}  // namespace app
