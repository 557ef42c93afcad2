#pragma once

#include "app/entities/GeomEntity.h"
#include "physics/Shapes.h"

namespace app {

// A half plane, solid behind its normal. It collides with every set.
class PlaneEntity : public GeomEntity {
public:
    explicit PlaneEntity(util::SharedPtr<physics::Plane> plane);

    EntityPtr Clone() const override;

    physics::Plane& GetPlane() const { return *m_plane; }

private:
    util::SharedPtr<physics::Plane> m_plane;
};

}  // namespace app
