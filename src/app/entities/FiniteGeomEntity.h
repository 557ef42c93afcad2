#pragma once

#include "app/entities/GeomEntity.h"

namespace app {

// A geom entity of finite area: it has mass, so a density, an air friction factor and the
// settings of a direction controller.
class FiniteGeomEntity : public GeomEntity {
public:
    FiniteGeomEntity(const util::String& reflectedName, physics::GeomPtr geom);
    ~FiniteGeomEntity() override;

    // Kinetic energy of the shape's own mass, with its rotation, plus its height energy.
    math::real GetEnergy() const override;

    script::AttribPtr<float> density;
    script::AttribPtr<float> airFrictionMult;
    script::AttribPtr<float> controllerAcc;
    script::AttribPtr<bool> controllerReverseXY;
    script::AttribPtr<bool> controllerInvertX;
    script::AttribPtr<bool> controllerInvertY;
};

}  // namespace app
