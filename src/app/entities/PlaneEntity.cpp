#include "app/entities/PlaneEntity.h"

namespace app {

PlaneEntity::PlaneEntity(util::SharedPtr<physics::Plane> plane)
    : GeomEntity("Plane", plane), m_plane(plane) {
    collideSet->SetNative(-1);
}

EntityPtr PlaneEntity::Clone() const {
    util::SharedPtr<physics::Plane> plane(new physics::Plane(*m_plane));
    EntityPtr clone(new PlaneEntity(plane));
    clone->CopyAttributes(*this);
    return clone;
}

}  // namespace app
