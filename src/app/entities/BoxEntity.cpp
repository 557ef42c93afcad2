#include "app/entities/BoxEntity.h"

namespace app {

BoxEntity::BoxEntity(util::SharedPtr<physics::Box> box)
    : FiniteGeomEntity("Box", box), m_box(box) {}

EntityPtr BoxEntity::Clone() const {
    return CloneWithGeom(*this, *m_box);
}

void BoxEntity::Serialize(AttributeMap& out) const {
    FiniteGeomEntity::Serialize(out);
    out["size"] = script::ValueToObject(m_box->GetLocalBox().halfExtents * 2.0f);
}

void BoxEntity::Deserialize(const AttributeMap& in) {
    FiniteGeomEntity::Deserialize(in);
    math::Vec2 size;
    if (ReadKey(in, "size", size)) {
        m_box->SetHalfExtents(size * 0.5f);
        m_box->RecalcGeoms();
    }
}

}  // namespace app
