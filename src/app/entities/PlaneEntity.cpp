#include "app/entities/PlaneEntity.h"

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
    const math::Vec2 n = math::Normalized(normal);
    if (n == math::Vec2(0, 0) || !std::isfinite(dist)) {
        VORRA_THROW(BadDataException, "Bad plane");
    }
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
    out["normal"] = script::ValueToObject(m_plane->GetNormal());
    out["dist"] = script::ValueToObject(m_plane->GetOffset());
}

void PlaneEntity::Deserialize(const AttributeMap& in) {
    GeomEntity::Deserialize(in);
    // The normal and offset are exact where an angle is not: they win when both are there.
    math::Vec2 normal;
    float dist = 0;
    if (ReadKey(in, "normal", normal) && ReadKey(in, "dist", dist)) {
        m_plane->SetTransform(PlaceAt(normal, dist));
    }
}

}  // namespace app
