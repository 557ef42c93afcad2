#include "app/entities/CircleEntity.h"

#include <cmath>

#include "math/MathUtil.h"
#include "util/Exception.h"

namespace app {

namespace {

// Outline points of a circle scaled into an ellipse.
constexpr int kEllipsePoints = 32;

}  // namespace

CircleEntity::CircleEntity(util::SharedPtr<physics::Circle> circle)
    : FiniteGeomEntity("Circle", circle), m_circle(circle) {}

EntityPtr CircleEntity::Clone() const {
    return CloneWithGeom(*this, *m_circle);
}

EntityPtr CircleEntity::CloneScaled(float sx, float sy) const {
    const math::Vec2 scale(sx, sy);
    const math::Vec2 centre = math::ScaledBy(m_circle->GetCentre(), scale);
    const float radius = m_circle->GetRadius();
    if (std::fabs(sx) == std::fabs(sy)) {
        util::SharedPtr<physics::Circle> circle(new physics::Circle(radius * std::fabs(sx)));
        physics::Transform placed = m_geom->GetTransform();
        placed.translation = centre;
        circle->SetTransform(placed);
        EntityPtr clone(new CircleEntity(circle));
        clone->CopyAttributes(*this);
        return clone;
    }
    math::Vec2List points;
    for (int i = 0; i < kEllipsePoints; ++i) {
        const float angle = 2 * static_cast<float>(M_PI) * static_cast<float>(i) / kEllipsePoints;
        points.push_back(
            centre + math::ScaledBy(math::Vec2(std::cos(angle), std::sin(angle)) * radius, scale));
    }
    return CloneAsPolygon(points);
}

void CircleEntity::Draw(Painter& painter) const {
    DrawShape(painter, GetShapeStyle(painter));
}

void CircleEntity::DrawSilhouette(Painter& painter, const math::Vec4& fill) const {
    DrawShape(painter, GetSilhouetteStyle(fill));
}

void CircleEntity::DrawShape(Painter& painter, const ShapeStyle& style) const {
    painter.PushTransform(ToMatrix(m_geom->GetTransform()));
    painter.Circle(m_circle->GetRadius(), style);
    painter.PopTransform();
}

bool CircleEntity::IntersectsLines(const physics::LineList& stroke) const {
    const math::Vec2& centre = m_circle->GetCentre();
    const float radius = m_circle->GetRadius();
    int count = 0;
    for (const physics::Line& segment : stroke) {
        const bool aInside = (segment.a - centre).Length() < radius;
        const bool bInside = (segment.b - centre).Length() < radius;
        if (aInside != bInside) {
            count += 1;
        } else if (!aInside && math::PointSegmentDist(centre, segment.a, segment.b) < radius) {
            count += 2;
        }
    }
    return count >= 2;
}

bool CircleEntity::IsInside(const physics::Polygon& polygon) const {
    return polygon.Dist(m_circle->GetCentre()) < -m_circle->GetRadius();
}

void CircleEntity::Serialize(AttributeMap& out) const {
    FiniteGeomEntity::Serialize(out);
    out["radius"] = script::ValueToObject(m_circle->GetRadius());
}

void CircleEntity::Deserialize(const AttributeMap& in) {
    FiniteGeomEntity::Deserialize(in);
    float radius = 0;
    // Any radius is taken; a body turns away a circle of no area ("Bad geometry").
    if (ReadKey(in, "radius", radius)) {
        m_circle->SetRadius(radius);
        m_circle->RecalcGeoms();
    }
}

}  // namespace app
