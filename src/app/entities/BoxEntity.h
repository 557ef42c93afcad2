#pragma once

#include "app/entities/FiniteGeomEntity.h"
#include "physics/Shapes.h"

namespace app {

// A box. Its file key "size" is the full width and height.
class BoxEntity : public FiniteGeomEntity {
public:
    explicit BoxEntity(util::SharedPtr<physics::Box> box);

    EntityPtr Clone() const override;
    // A box while the scaled axes stay square, otherwise a polygon of its corners.
    EntityPtr CloneScaled(float sx, float sy) const override;
    void Draw(Painter& painter) const override;
    void DrawSilhouette(Painter& painter, const math::Vec4& color) const override;
    // Only a stroke that passes through: two crossings of the outline.
    bool IntersectsLines(const physics::LineList& stroke) const override;
    bool IsInside(const physics::Polygon& polygon) const override;
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;

    physics::Box& GetBox() const { return *m_box; }

private:
    void GetWorldCorners(math::Vec2 corners[4]) const;
    void DrawShape(Painter& painter, const ShapeStyle& style) const;

    util::SharedPtr<physics::Box> m_box;
};

}  // namespace app
