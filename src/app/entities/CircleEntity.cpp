#include "app/entities/CircleEntity.h"

namespace app {

CircleEntity::CircleEntity(util::SharedPtr<physics::Circle> circle)
    : FiniteGeomEntity("Circle", circle), m_circle(circle) {}

EntityPtr CircleEntity::Clone() const {
    return CloneWithGeom(*this, *m_circle);
}

void CircleEntity::Serialize(AttributeMap& out) const {
    FiniteGeomEntity::Serialize(out);
    out["radius"] = script::ValueToObject(m_circle->GetRadius());
}

void CircleEntity::Deserialize(const AttributeMap& in) {
    FiniteGeomEntity::Deserialize(in);
    float radius = 0;
    if (ReadKey(in, "radius", radius)) {
        m_circle->SetRadius(radius);
        m_circle->RecalcGeoms();
    }
}

}  // namespace app
