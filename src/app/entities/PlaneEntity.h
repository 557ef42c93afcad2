#pragma once

#include "app/entities/GeomEntity.h"
#include "physics/Shapes.h"

namespace app {

// A half plane, solid behind its normal. It collides with every set. Its file keys
// "normal" and "dist" place it where a file gives no position and angle.
class PlaneEntity : public GeomEntity {
public:
    explicit PlaneEntity(util::SharedPtr<physics::Plane> plane);

    EntityPtr Clone() const override;
    EntityPtr CloneScaled(float sx, float sy) const override;
    // The plane's normal and offset are world values already: it pushes no frame of its
    // own and lands in the caller's frame, as joints and pens do.
    void Draw(Painter& painter) const override;
    void DrawSilhouette(Painter& painter, const math::Vec4& color) const override;
    // Some segment of the stroke has its ends on both sides.
    bool IntersectsLines(const physics::LineList& stroke) const override;
    // Never: a plane has no end.
    bool IsInside(const physics::Polygon&) const override { return false; }
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;

    physics::Plane& GetPlane() const { return *m_plane; }

    // The transform that puts the plane n . p + d = 0 in place.
    static physics::Transform PlaceAt(const math::Vec2& normal, float dist);

private:
    void DrawShape(Painter& painter, const ShapeStyle& style) const;

    util::SharedPtr<physics::Plane> m_plane;
};

}  // namespace app
