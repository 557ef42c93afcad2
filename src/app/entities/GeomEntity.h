#pragma once

#include "app/Painter.h"
#include "app/entities/Entity.h"
#include "math/Matrix3.h"
#include "physics/Forward.h"

namespace app {

// An entity made of one physics geom. Its material attributes write through to the geom at
// once, so a script assignment acts at the next step.
class GeomEntity : public Entity {
public:
    GeomEntity(const util::String& reflectedName, physics::GeomPtr geom);
    ~GeomEntity() override;

    // A new entity of the same shape, place and attributes, not in the simulation.
    virtual EntityPtr Clone() const = 0;
    // The same, with the shape scaled about the world origin along the world axes; a shape
    // that cannot keep its kind under the scale comes back as a polygon.
    virtual EntityPtr CloneScaled(float sx, float sy) const = 0;
    // The shape alone at its place, flat in the colour and without a border: the mask that
    // keeps water out of what one can see through.
    virtual void DrawSilhouette(Painter& painter, const math::Vec4& color) const = 0;

    void Update(math::real dt) override;
    // On the shape or inside it.
    bool Contains(const math::Vec2& point) const override;
    // Into a body of its own unless the geom already has one; the body moves.
    void AddToSimulation() override;
    // Out of its body; a body left without geoms leaves the simulation.
    void RemoveFromSimulation() override;
    bool IsInSimulation() const override;
    // Composes the transform onto the geom's place; nothing without a body.
    void Transform(const physics::Transform& transform) override;
    // The same for a geom that is not placed in the world yet.
    void MoveGeom(const physics::Transform& transform);
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;
    math::BoundingBox2f GetBoundingBox() const override;

    const physics::GeomPtr& GetGeom() const { return m_geom; }
    // The geom's owner as it is now, or null.
    const physics::BodyPtr& GetBody() const;

    script::AttribPtr<float> friction;
    script::AttribPtr<float> restitution;
    script::AttribPtr<bool> collideWater;
    script::AttribPtr<int> collideSet;

protected:
    // How many segments of the stroke cross the closed outline.
    static int CountCrossings(const math::Vec2* outline, size_t count,
                              const physics::LineList& stroke);
    // The corners of a box or a scaled shape as a polygon entity with this one's
    // attributes.
    EntityPtr CloneAsPolygon(const math::Vec2List& worldPoints) const;
    // The fill and border every shape draws with: a border of the painter's width when the
    // options want borders everywhere, or when the shape is selected or under the mouse.
    ShapeStyle GetShapeStyle(const Painter& painter) const;
    static ShapeStyle GetSilhouetteStyle(const math::Vec4& color);
    // The geom's local frame as the painter's transform takes it.
    static math::Mat3 ToMatrix(const physics::Transform& transform);

    physics::GeomPtr m_geom;

private:
    mutable physics::BodyPtr m_body;
};

// A new entity of the source's kind around a loose copy of its geom, with the source's
// attributes: the body of every Clone.
template <class EntityKind, class GeomKind>
EntityPtr CloneWithGeom(const EntityKind& source, const GeomKind& geom) {
    EntityPtr clone(new EntityKind(util::SharedPtr<GeomKind>(new GeomKind(geom))));
    clone->CopyAttributes(source);
    return clone;
}

}  // namespace app
