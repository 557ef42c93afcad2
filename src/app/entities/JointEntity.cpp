#include "app/entities/JointEntity.h"

#include "app/Scene.h"
#include "math/MathUtil.h"
#include "physics/AbstractBody.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

namespace app {

namespace {

bool GeomInSimulation(const physics::GeomPtr& geom) {
    const physics::AbstractBody* body = geom ? geom->GetBody() : nullptr;
    return body && body->IsInWorld();
}

}  // namespace

JointEntity::JointEntity(const util::String& reflectedName, float jointSize)
    : Entity(reflectedName) {
    color->SetNative(math::Vec4(0.5f, 0.5f, 0.5f, 1));
    AddAttrib(size, "size", jointSize);
}

JointEntity::~JointEntity() = default;

void JointEntity::EnsureInSimulation() {
    if (!IsInSimulation()) {
        AddToSimulation();
    }
}

bool JointEntity::IsInSimulation() const {
    return GeomInSimulation(m_geom0) && GeomInSimulation(m_geom1);
}

void JointEntity::Update(math::real) {
    // While the user moves it, the points of record are the world points.
    if (!IsTransforming()) {
        UpdateWorldPoints();
    }
}

void JointEntity::Transform(const physics::Transform& transform) {
    m_world0 = transform.Apply(m_world0);
    m_world1 = transform.Apply(m_world1);
}

bool JointEntity::Contains(const math::Vec2& point) const {
    return (point - m_world0).Length() <= size->Get() / 2;
}

bool JointEntity::IntersectsLines(const physics::LineList& stroke) const {
    return StrokePassesNear(stroke, m_world0, size->Get() / 2);
}

bool JointEntity::IsInside(const physics::Polygon& polygon) const {
    return polygon.Dist(m_world0) < 0 && polygon.Dist(m_world1) < 0;
}

math::BoundingBox2f JointEntity::GetBoundingBox() const {
    math::BoundingBox2f box;
    box.Add(m_world0);
    box.Add(m_world1);
    return box.Expanded(size->Get() / 2);
}

void JointEntity::Attach(const math::Vec2 points[2]) {
    const physics::GeomPtr& ground = physics::Simulation::Get().GetWorldGeom();
    physics::GeomPtr candidates[2];
    const physics::GeomPtr present[2] = {m_geom0, m_geom1};
    for (int i = 0; i < 2; ++i) {
        const physics::GeomPtr& geom = present[i];
        if (geom && geom != ground && GeomInSimulation(geom) && geom->Dist(points[i]) < 0.001f) {
            candidates[i] = geom;
        }
    }
    for (int i = 0; i < 2; ++i) {
        if (candidates[i]) {
            continue;
        }
        for (const physics::GeomPtr& geom : Scene::Get().GetGeomsAt(points[i])) {
            if (geom != candidates[1 - i]) {
                candidates[i] = geom;
                break;
            }
        }
    }
    if (!candidates[0] || !candidates[1]) {
        RemoveFromSimulation();
        m_geom0.Reset();
        m_geom1.Reset();
        return;
    }
    m_geom0 = candidates[0];
    m_geom1 = candidates[1];
    m_world0 = points[0];
    m_world1 = points[1];
    m_local0 = m_geom0->GetTransform().Inverted().Apply(m_world0);
    m_local1 = m_geom1->GetTransform().Inverted().Apply(m_world1);
    Rebuild();
}

void JointEntity::SetEnds(const physics::GeomPtr& geom0, const math::Vec2& local0,
                          const physics::GeomPtr& geom1, const math::Vec2& local1) {
    m_geom0 = geom0;
    m_geom1 = geom1;
    m_local0 = local0;
    m_local1 = local1;
    UpdateWorldPoints();
    Rebuild();
}

void JointEntity::UpdateWorldPoints() {
    if (m_geom0 && m_geom1) {
        m_world0 = m_geom0->GetTransform().Apply(m_local0);
        m_world1 = m_geom1->GetTransform().Apply(m_local1);
    }
}

bool JointEntity::IsBackground() const {
    const physics::GeomPtr& ground = physics::Simulation::Get().GetWorldGeom();
    return m_geom0 == ground || m_geom1 == ground;
}

JointEntity::LinkState JointEntity::GetAnchorState(const physics::AnchorPair& link) const {
    LinkState state;
    state.valid = true;
    state.serial = link.GetSerial();
    state.anchorA = link.GetLocalAnchorA();
    state.anchorB = link.GetLocalAnchorB();
    return state;
}

bool JointEntity::SetAnchorState(physics::AnchorPair& link, const LinkState& state) {
    if (!state.valid || link.GetGeomA() != m_geom0 || link.GetGeomB() != m_geom1) {
        return false;
    }
    // The simulation's sets are ordered by the serial: out, renumbered, back in.
    const bool listed = IsInSimulation();
    RemoveFromSimulation();
    link.SetSerial(state.serial);
    link.SetLocalAnchorA(state.anchorA);
    link.SetLocalAnchorB(state.anchorB);
    if (listed) {
        AddToSimulation();
    }
    return true;
}

}  // namespace app
