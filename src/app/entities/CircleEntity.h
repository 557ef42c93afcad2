#pragma once

#include "app/entities/FiniteGeomEntity.h"
#include "physics/Shapes.h"

namespace app {

// A circle. Its file key "radius" is the circle's radius.
class CircleEntity : public FiniteGeomEntity {
public:
    explicit CircleEntity(util::SharedPtr<physics::Circle> circle);

    EntityPtr Clone() const override;
    // A circle under an even scale, otherwise a polygon around the ellipse.
    EntityPtr CloneScaled(float sx, float sy) const override;
    void Draw(Painter& painter) const override;
    void DrawSilhouette(Painter& painter, const math::Vec4& color) const override;
    // A segment with one end inside counts once, one that passes through twice; at least
    // two are wanted.
    bool IntersectsLines(const physics::LineList& stroke) const override;
    bool IsInside(const physics::Polygon& polygon) const override;
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;

    physics::Circle& GetCircle() const { return *m_circle; }

private:
    void DrawShape(Painter& painter, const ShapeStyle& style) const;

    util::SharedPtr<physics::Circle> m_circle;
};

}  // namespace app
