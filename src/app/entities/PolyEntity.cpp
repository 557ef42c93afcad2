#include "app/entities/PolyEntity.h"

#include <algorithm>

namespace app {

PolyEntity::PolyEntity(physics::PolygonPtr polygon)
    : FiniteGeomEntity("Polygon", polygon), m_polygon(polygon) {
    const math::Vec2 halfExtents = m_polygon->GetMapBox().halfExtents;
    m_textureScale = 0.04f * 2 * std::max(halfExtents.x, halfExtents.y);
}

EntityPtr PolyEntity::Clone() const {
    return CloneWithGeom(*this, *m_polygon);
}

void PolyEntity::Serialize(AttributeMap& out) const {
    FiniteGeomEntity::Serialize(out);
    script::ObjectList points;
    for (const math::Vec2& vertex : m_polygon->GetVertices()) {
        points.push_back(script::ValueToObject(vertex));
    }
    out["vecs"] = script::ObjectPtr(new script::List(std::move(points)));
}

}  // namespace app
