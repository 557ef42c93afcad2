#pragma once

#include "app/entities/FiniteGeomEntity.h"
#include "physics/Polygon.h"

namespace app {

// A drawn polygon. Its file key "vecs" is the outline in the polygon's own frame.
class PolyEntity : public FiniteGeomEntity {
public:
    explicit PolyEntity(physics::PolygonPtr polygon);

    EntityPtr Clone() const override;
    EntityPtr CloneScaled(float sx, float sy) const override;
    // The shape, then the debug overlays the options ask for, in world units.
    void Draw(Painter& painter) const override;
    void DrawSilhouette(Painter& painter, const math::Vec4& color) const override;
    // More than one crossing of the outline: the stroke passes through.
    bool IntersectsLines(const physics::LineList& stroke) const override;
    bool IsInside(const physics::Polygon& polygon) const override;
    void Serialize(AttributeMap& out) const override;

    physics::Polygon& GetPolygon() const { return *m_polygon; }
    // The scale of the distance texture: 0.04 of the larger side of the distance map.
    float GetTextureScale() const { return m_textureScale; }

private:
    void DrawShape(Painter& painter, const ShapeStyle& style) const;
    void DrawOverlays(Painter& painter) const;

    physics::PolygonPtr m_polygon;
    float m_textureScale;
    // What the painter built from the distance map, kept for as long as the polygon.
    mutable util::SharedPtr<util::Pointee> m_drawCache;
};

}  // namespace app
