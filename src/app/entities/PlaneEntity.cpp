#include "app/entities/PlaneEntity.h"

namespace app {

PlaneEntity::PlaneEntity(util::SharedPtr<physics::Plane> plane)
    : GeomEntity("Plane", plane), m_plane(plane) {
    collideSet->SetNative(-1);
}

EntityPtr PlaneEntity::Clone() const {
    return CloneWithGeom(*this, *m_plane);
}

}  // namespace app
