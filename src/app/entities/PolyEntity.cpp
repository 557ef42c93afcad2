#include "app/entities/PolyEntity.h"

#include <algorithm>

#include "math/MathUtil.h"

namespace app {

PolyEntity::PolyEntity(physics::PolygonPtr polygon)
    : FiniteGeomEntity("Polygon", polygon), m_polygon(polygon) {
    const math::Vec2 halfExtents = m_polygon->GetMapBox().halfExtents;
    m_textureScale = 0.04f * 2 * std::max(halfExtents.x, halfExtents.y);
}

EntityPtr PolyEntity::Clone() const {
    return CloneWithGeom(*this, *m_polygon);
}

EntityPtr PolyEntity::CloneScaled(float sx, float sy) const {
    if (sx == 1 && sy == 1) {
        return Clone();
    }
    math::Vec2List points;
    for (const math::Vec2& vertex : m_polygon->GetWorldVertices()) {
        points.push_back(math::ScaledBy(vertex, math::Vec2(sx, sy)));
    }
    return CloneAsPolygon(points);
}

bool PolyEntity::IntersectsLines(const physics::LineList& stroke) const {
    const math::Vec2List& outline = m_polygon->GetWorldVertices();
    return CountCrossings(outline.data(), outline.size(), stroke) > 1;
}

bool PolyEntity::IsInside(const physics::Polygon& polygon) const {
    return physics::IsInside(*m_polygon, polygon);
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
