#include "app/entities/PlaneEntity.h"

#include <cmath>

#include "math/MathUtil.h"
#include "util/Exception.h"

namespace app {

PlaneEntity::PlaneEntity(util::SharedPtr<physics::Plane> plane)
    : GeomEntity("Plane", plane), m_plane(plane) {
    collideSet->SetNative(-1);
}

EntityPtr PlaneEntity::Clone() const {
    return CloneWithGeom(*this, *m_plane);
}

physics::Transform PlaneEntity::PlaceAt(const math::Vec2& normal, float dist) {
    // A unit normal stays as it is, so that a plane read back is the plane written.
    // A normal of no length places no plane: the plane's transform finds no inverse.
    const float length = normal.Length();
    const math::Vec2 n = std::fabs(length - 1) < 1e-6f ? normal : math::Normalized(normal);
    return physics::Transform{n, n * -dist};
}

EntityPtr PlaneEntity::CloneScaled(float sx, float sy) const {
    // A normal maps by the inverse transpose of the scale, a point on the plane by the scale.
    const math::Vec2& n = m_plane->GetNormal();
    const math::Vec2 normal = math::Normalized(math::Vec2(n.x / sx, n.y / sy));
    const math::Vec2 point = math::ScaledBy(n * -m_plane->GetOffset(), math::Vec2(sx, sy));
    util::SharedPtr<physics::Plane> plane(new physics::Plane(*m_plane));
    plane->SetTransform(PlaceAt(normal, -math::Dot(normal, point)));
    EntityPtr clone(new PlaneEntity(plane));
    clone->CopyAttributes(*this);
    return clone;
}

void PlaneEntity::Draw(Painter& painter) const {
    DrawShape(painter, GetShapeStyle(painter));
}

void PlaneEntity::DrawSilhouette(Painter& painter, const math::Vec4& fill) const {
    DrawShape(painter, GetSilhouetteStyle(fill));
}

void PlaneEntity::DrawShape(Painter& painter, const ShapeStyle& style) const {
    // The geom keeps n . p + d = 0, solid where that is negative; the painter wants the
    // points behind n . p = offset.
    painter.HalfPlane(m_plane->GetNormal(), -m_plane->GetOffset(), style);
}

bool PlaneEntity::IntersectsLines(const physics::LineList& stroke) const {
    for (const physics::Line& segment : stroke) {
        if ((m_plane->Dist(segment.a) < 0) != (m_plane->Dist(segment.b) < 0)) {
            return true;
        }
    }
    return false;
}

void PlaneEntity::Serialize(AttributeMap& out) const {
    GeomEntity::Serialize(out);
    // The plane as the written position and angle will make it again, so that its normal
    // and offset read the same after every load.
    const math::Vec2& rotation = m_plane->GetTransform().rotation;
    physics::Plane placed;
    placed.SetTransform(
        physics::Transform::FromAngle(std::atan2(rotation.y, rotation.x), m_plane->GetPosition()));
    out["normal"] = script::ValueToObject(placed.GetNormal());
    out["dist"] = script::ValueToObject(placed.GetOffset());
}

void PlaneEntity::Deserialize(const AttributeMap& in) {
    GeomEntity::Deserialize(in);
    if (in.find("pos") != in.end() && in.find("angle") != in.end()) {
        return;
    }
    math::Vec2 normal;
    float dist = 0;
    if (ReadKey(in, "normal", normal) && ReadKey(in, "dist", dist)) {
        m_plane->SetTransform(PlaceAt(normal, dist));
    }
}

}  // namespace app
