#include "app/entities/HingeEntity.h"

#include <cmath>

#include "app/Painter.h"
#include "app/entities/ControlInputs.h"
#include "math/MathUtil.h"
#include "physics/Simulation.h"

namespace app {

HingeEntity::HingeEntity(float jointSize) : JointEntity("Hinge", jointSize) {
    AddAttrib(motor, "motor", false);
    AddAttrib(ccw, "ccw", false);
    AddAttrib(motorSpeed, "motorSpeed", 1.5707964f);
    AddAttrib(motorTorque, "motorTorque", 100.0f);
    AddAttrib(autoBrake, "autoBrake", false);
    AddAttrib(impulseLimit, "impulseLimit", math::Infinity());
    AddAttrib(distanceLimit, "distanceLimit", math::Infinity());
}

HingeEntity::~HingeEntity() = default;

JointEntityPtr HingeEntity::Clone() const {
    JointEntityPtr clone(new HingeEntity(size->Get()));
    clone->CopyAttributes(*this);
    HingeEntity& hinge = static_cast<HingeEntity&>(*clone);
    hinge.buttonForward = buttonForward;
    hinge.buttonBack = buttonBack;
    hinge.buttonBrake = buttonBrake;
    return clone;
}

void HingeEntity::Draw(Painter& painter) const {
    if (!painter.GetOptions().drawJoints) {
        return;
    }
    const math::Vec2 center = (m_world0 + m_world1) * 0.5f;
    const float side = size->Get();
    if (side >= 5 * painter.GetPixelSize()) {
        const math::Vec4 fill = color->Get();
        painter.Sprite(IsBackground() ? "hinge_bg" : "hinge", center, side, 0, fill);
        painter.Line(m_world0, m_world1, fill);
    }
    if (selected || mouseOver) {
        painter.Sprite("ring", center, 1.4f * side, 0, GetBorderColor());
    }
}

void HingeEntity::Rebuild() {
    RemoveFromSimulation();
    m_hinge.Reset();
    if (!m_geom0 || !m_geom1) {
        return;
    }
    m_hinge = physics::HingePtr(new physics::Hinge(m_geom0, m_geom1, m_local0, m_local1));
    if (JointEntity::IsInSimulation()) {
        AddToSimulation();
    }
}

void HingeEntity::AddToSimulation() {
    if (m_hinge) {
        physics::Simulation::Get().AddConstraint(m_hinge);
    }
}

void HingeEntity::RemoveFromSimulation() {
    if (m_hinge) {
        physics::Simulation::Get().RemoveConstraint(m_hinge);
    }
}

bool HingeEntity::IsInSimulation() const {
    return JointEntity::IsInSimulation() && m_hinge &&
           physics::Simulation::Get().GetHinges().count(m_hinge) != 0;
}

void HingeEntity::EndTransform() {
    JointEntity::EndTransform();
    const math::Vec2 points[2] = {m_world0, m_world1};
    Attach(points);
}

void HingeEntity::Update(math::real dt) {
    JointEntity::Update(dt);
    if (!m_hinge) {
        return;
    }
    m_hinge->SetImpulseLimit(impulseLimit->Get());
    m_hinge->SetDistanceLimit(distanceLimit->Get());
    if (motorSpeed->Get() < 0) {
        motorSpeed->SetNative(std::fabs(motorSpeed->Get()));
        ccw->SetNative(!ccw->Get());
    }
    const float speed = ccw->Get() ? -motorSpeed->Get() : motorSpeed->Get();
    m_hinge->SetMotorSpeed(speed);
    m_hinge->SetMotorTorque(motorTorque->Get());
    const ControlInputs& inputs = ControlInputs::Get();
    if (inputs.IsPressed(buttonBrake)) {
        m_hinge->SetMotorSpeed(0);
        m_hinge->SetMotor(true);
    } else if (inputs.IsPressed(buttonForward)) {
        m_hinge->SetMotor(true);
    } else if (inputs.IsPressed(buttonBack)) {
        m_hinge->SetMotorSpeed(-speed);
        m_hinge->SetMotor(true);
    } else if (autoBrake->Get()) {
        m_hinge->SetMotorSpeed(0);
        m_hinge->SetMotor(true);
    } else {
        m_hinge->SetMotor(motor->Get());
    }
}

void HingeEntity::Serialize(AttributeMap& out) const {
    JointEntity::Serialize(out);
    const std::pair<const char*, const util::String*> buttons[] = {
        {"buttonForward", &buttonForward},
        {"buttonBack", &buttonBack},
        {"buttonBrake", &buttonBrake}};
    for (const auto& [key, value] : buttons) {
        if (!value->empty()) {
            out[key] = script::ValueToObject(*value);
        }
    }
}

void HingeEntity::Deserialize(const AttributeMap& in) {
    JointEntity::Deserialize(in);
    util::String controller;
    if (ReadKey(in, "controller", controller) && controller == "arrowkeys") {
        motor->SetNative(true);
        buttonForward = "right";
        buttonBack = "left";
        buttonBrake = "down";
    }
    ReadKey(in, "buttonForward", buttonForward);
    ReadKey(in, "buttonBack", buttonBack);
    // An old spelling, read where the right one is missing.
    if (!ReadKey(in, "buttonBrake", buttonBrake)) {
        ReadKey(in, "buttonBreak", buttonBrake);
    }
    const ControlInputs& inputs = ControlInputs::Get();
    for (const util::String* buttons : {&buttonForward, &buttonBack, &buttonBrake}) {
        inputs.CheckButtons(*buttons);
    }
}

JointEntity::LinkState HingeEntity::GetLinkState() const {
    if (!m_hinge) {
        return {};
    }
    LinkState state = GetAnchorState(*m_hinge);
    state.warm = m_hinge->GetWarmState();
    return state;
}

void HingeEntity::SetLinkState(const LinkState& state) {
    if (m_hinge && SetAnchorState(*m_hinge, state)) {
        m_hinge->SetWarmState(state.warm);
    }
}

}  // namespace app
