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

void PolyEntity::Draw(Painter& painter) const {
    DrawShape(painter, GetShapeStyle(painter));
    DrawOverlays(painter);
}

void PolyEntity::DrawSilhouette(Painter& painter, const math::Vec4& fill) const {
    DrawShape(painter, GetSilhouetteStyle(fill));
}

void PolyEntity::DrawShape(Painter& painter, const ShapeStyle& style) const {
    painter.PushTransform(ToMatrix(m_geom->GetTransform()));
    painter.Polygon(*m_polygon, m_textureScale, m_drawCache, style);
    painter.PopTransform();
}

// In world units like joints and pens, outside the shape's frame: the polygon keeps its
// boxes, circle and vertices in world form already.
void PolyEntity::DrawOverlays(Painter& painter) const {
    const DrawOptions& options = painter.GetOptions();
    math::Vec2 corners[4];
    // The polygon keeps no tree of boxes: its one tight box stands for it.
    if (options.drawOBBs) {
        m_polygon->GetOBB().GetCorners(corners);
        painter.Outline(corners, 4, {1, 1, 1, 1});
    }
    if (options.drawMapOBBs) {
        m_polygon->GetMapBox().GetCorners(corners);
        for (math::Vec2& corner : corners) {
            corner = m_geom->GetTransform().Apply(corner);
        }
        painter.Outline(corners, 4, {1, 0.5f, 0.5f, 1});
    }
    if (options.drawBCs) {
        const physics::BoundingCircle circle = m_polygon->GetBoundingCircle();
        painter.Disc(circle.centre, circle.radius, {0.2f, 0.5f, 0.2f, 0.5f});
    }
    if (options.drawVertices) {
        const math::Vec2List& vertices = m_polygon->GetWorldVertices();
        const float pixel = painter.GetPixelSize();
        painter.Points(vertices.data(), vertices.size(), 4 * pixel, {0, 1, 0, 1});
        const math::Vec2 origin = m_geom->GetPosition();
        painter.Points(&origin, 1, 6 * pixel, {0.5f, 0.5f, 1, 1});
    }
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
