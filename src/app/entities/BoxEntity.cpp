#include "app/entities/BoxEntity.h"

#include <cmath>

#include "math/MathUtil.h"
#include "util/Exception.h"

namespace app {

BoxEntity::BoxEntity(util::SharedPtr<physics::Box> box)
    : FiniteGeomEntity("Box", box), m_box(box) {}

EntityPtr BoxEntity::Clone() const {
    return CloneWithGeom(*this, *m_box);
}

void BoxEntity::GetWorldCorners(math::Vec2 corners[4]) const {
    m_box->GetWorldBox().GetCorners(corners);
}

EntityPtr BoxEntity::CloneScaled(float sx, float sy) const {
    if (sx == 1 && sy == 1) {
        return Clone();
    }
    const math::OBB2D& world = m_box->GetWorldBox();
    const math::Vec2 scale(sx, sy);
    const math::Vec2 a = math::ScaledBy(world.axis1 * world.halfExtents.x, scale);
    const math::Vec2 b = math::ScaledBy(world.axis2 * world.halfExtents.y, scale);
    const float la = a.Length();
    const float lb = b.Length();
    // An axis scaled to nothing stands at no angle to the other: the clone is a box of no
    // area, which its body turns away.
    const bool flat = !(la > 0 && lb > 0);
    if (!flat && std::fabs(Dot(a / la, b / lb)) >= 0.0001f) {
        math::Vec2 corners[4];
        GetWorldCorners(corners);
        math::Vec2List points;
        for (const math::Vec2& corner : corners) {
            points.push_back(math::ScaledBy(corner, scale));
        }
        return CloneAsPolygon(points);
    }
    // A mirror turns the frame around: the second axis then leads.
    const bool mirrored = sx * sy < 0;
    const math::Vec2 lead = mirrored ? b : a;
    util::SharedPtr<physics::Box> box(
        new physics::Box(mirrored ? math::Vec2(lb, la) : math::Vec2(la, lb)));
    box->SetTransform(physics::Transform::FromAngle(std::atan2(lead.y, lead.x),
                                                    math::ScaledBy(m_geom->GetPosition(), scale)));
    EntityPtr clone(new BoxEntity(box));
    clone->CopyAttributes(*this);
    return clone;
}

void BoxEntity::Draw(Painter& painter) const {
    DrawShape(painter, GetShapeStyle(painter));
}

void BoxEntity::DrawSilhouette(Painter& painter, const math::Vec4& fill) const {
    DrawShape(painter, GetSilhouetteStyle(fill));
}

void BoxEntity::DrawShape(Painter& painter, const ShapeStyle& style) const {
    // The painter's box lies about the origin along the axes; the geom's box may have a
    // centre and axes of its own in the geom's frame.
    const math::OBB2D& local = m_box->GetLocalBox();
    const math::Mat3 boxFrame(local.axis1.x, local.axis2.x, local.centre.x, local.axis1.y,
                              local.axis2.y, local.centre.y, 0, 0, 1);
    painter.PushTransform(ToMatrix(m_geom->GetTransform()) * boxFrame);
    painter.Box(local.halfExtents, style);
    painter.PopTransform();
}

bool BoxEntity::IntersectsLines(const physics::LineList& stroke) const {
    math::Vec2 corners[4];
    GetWorldCorners(corners);
    return CountCrossings(corners, 4, stroke) == 2;
}

bool BoxEntity::IsInside(const physics::Polygon& polygon) const {
    math::Vec2 corners[4];
    GetWorldCorners(corners);
    for (const math::Vec2& corner : corners) {
        if (polygon.Dist(corner) > 0) {
            return false;
        }
    }
    return CountCrossings(corners, 4, polygon.GetWorldLines()) == 0;
}

void BoxEntity::Serialize(AttributeMap& out) const {
    FiniteGeomEntity::Serialize(out);
    out["size"] = script::ValueToObject(m_box->GetLocalBox().halfExtents * 2.0f);
}

void BoxEntity::Deserialize(const AttributeMap& in) {
    FiniteGeomEntity::Deserialize(in);
    math::Vec2 size;
    // Any size is taken; a body turns away a box of no area ("Bad geometry").
    if (ReadKey(in, "size", size)) {
        m_box->SetHalfExtents(size * 0.5f);
        m_box->RecalcGeoms();
    }
}

}  // namespace app
