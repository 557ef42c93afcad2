#include "app/entities/GeomEntity.h"

#include "app/entities/PolyEntity.h"

#include <cmath>

#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "util/Assert.h"

namespace app {

GeomEntity::GeomEntity(const util::String& reflectedName, physics::GeomPtr geom)
    : Entity(reflectedName), m_geom(std::move(geom)) {
    AddAttrib(friction, "friction", m_geom->friction);
    AddAttrib(restitution, "restitution", m_geom->restitution);
    AddAttrib(collideWater, "collideWater", m_geom->collideWater);
    AddAttrib(collideSet, "collideSet", static_cast<int>(m_geom->collideSet));
    const util::WeakPtr<util::Pointee> self(this);
    friction->GetOnChange().Add(self, [this]() { m_geom->friction = friction->Get(); });
    restitution->GetOnChange().Add(self, [this]() { m_geom->restitution = restitution->Get(); });
    collideWater->GetOnChange().Add(self, [this]() { m_geom->collideWater = collideWater->Get(); });
    collideSet->GetOnChange().Add(
        self, [this]() { m_geom->collideSet = static_cast<uint32_t>(collideSet->Get()); });
}

GeomEntity::~GeomEntity() = default;

ShapeStyle GeomEntity::GetShapeStyle(const Painter& painter) const {
    ShapeStyle style;
    style.fill = color->Get();
    style.border = GetBorderColor();
    if (painter.GetOptions().borders || selected || mouseOver) {
        style.borderWidth = painter.GetBorderWidth();
    }
    return style;
}

ShapeStyle GeomEntity::GetSilhouetteStyle(const math::Vec4& fill) {
    ShapeStyle style;
    style.fill = fill;
    style.border = fill;
    style.silhouette = true;
    return style;
}

math::Mat3 GeomEntity::ToMatrix(const physics::Transform& transform) {
    const math::Vec2& r = transform.rotation;
    const math::Vec2& t = transform.translation;
    return math::Mat3(r.x, -r.y, t.x, r.y, r.x, t.y, 0, 0, 1);
}

const physics::BodyPtr& GeomEntity::GetBody() const {
    m_body = physics::BodyPtr(dynamic_cast<physics::Body*>(m_geom->GetBody()));
    return m_body;
}

void GeomEntity::Update(math::real) {
    GetBody();
}

bool GeomEntity::Contains(const math::Vec2& point) const {
    return m_geom->Dist(point) <= 0;
}

void GeomEntity::AddToSimulation() {
    physics::BodyPtr body = GetBody();
    if (!body) {
        body = physics::BodyPtr(new physics::Body());
        body->SetGeom(m_geom);
        m_body = body;
    }
    body->SetStatic(false);
    physics::Simulation::Get().AddBody(body);
}

void GeomEntity::RemoveFromSimulation() {
    const physics::BodyPtr body = GetBody();
    if (!body) {
        return;
    }
    physics::GeomSet geoms = body->GetGeoms();
    if (!geoms.Contains(m_geom)) {
        ::AssertionFailed("geoms.count(m_geom)", true, true, __PRETTY_FUNCTION__, __FILE__,
                          __LINE__);
    }
    geoms.erase(m_geom);
    body->SetGeoms(geoms);
    if (geoms.empty()) {
        physics::Simulation::Get().RemoveBody(body);
    }
    m_body = physics::BodyPtr();
}

bool GeomEntity::IsInSimulation() const {
    const physics::BodyPtr& body = GetBody();
    return body && body->IsInWorld();
}

void GeomEntity::Transform(const physics::Transform& transform) {
    if (!GetBody()) {
        return;
    }
    MoveGeom(transform);
}

void GeomEntity::MoveGeom(const physics::Transform& transform) {
    m_geom->SetTransform(transform * m_geom->GetTransform());
    // The owner recomputes its centre and mass from its geoms as they now lie.
    m_geom->RecalcGeoms();
}

void GeomEntity::Serialize(AttributeMap& out) const {
    Entity::Serialize(out);
    out["geomID"] = script::ValueToObject(static_cast<int>(m_geom->GetID()));
    out["pos"] = script::ValueToObject(m_geom->GetPosition());
    const math::Vec2& rotation = m_geom->GetTransform().rotation;
    out["angle"] = script::ValueToObject(std::atan2(rotation.y, rotation.x));
    const physics::BodyPtr& body = GetBody();
    if (body && body->GetGeoms().size() > 1) {
        out["body"] = script::ValueToObject(static_cast<int>(body->GetID()));
    }
}

void GeomEntity::Deserialize(const AttributeMap& in) {
    Entity::Deserialize(in);
    math::Vec2 position;
    float angle = 0;
    const bool hasPosition = ReadKey(in, "pos", position);
    const bool hasAngle = ReadKey(in, "angle", angle);
    if (hasPosition && hasAngle) {
        m_geom->SetTransform(physics::Transform::FromAngle(angle, position));
        m_geom->RecalcGeoms();
    }
}

int GeomEntity::CountCrossings(const math::Vec2* outline, size_t count,
                               const physics::LineList& stroke) {
    int crossings = 0;
    for (size_t i = 0; i < count; ++i) {
        const physics::Line edge{outline[i], outline[(i + 1) % count]};
        for (const physics::Line& segment : stroke) {
            crossings += physics::Intersects(edge, segment) ? 1 : 0;
        }
    }
    return crossings;
}

EntityPtr GeomEntity::CloneAsPolygon(const math::Vec2List& worldPoints) const {
    EntityPtr clone(new PolyEntity(physics::PolygonPtr(new physics::Polygon(worldPoints))));
    clone->CopyAttributes(*this);
    return clone;
}

math::BoundingBox2f GeomEntity::GetBoundingBox() const {
    return m_geom->GetBoundingBox();
}

}  // namespace app
