#pragma once

#include "math/Real.h"

namespace physics {

// What a new geom is made of. The simulation keeps these in step with its attributes
// defaultBodyDensity, defaultBodyFriction and defaultBodyRestitution.
struct MaterialDefaults {
    math::real density = 2;
    math::real friction = 0.5f;
    math::real restitution = 0.5f;

    static MaterialDefaults& Current();
};

}  // namespace physics
