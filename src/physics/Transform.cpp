#include "physics/Transform.h"

#include <cmath>

namespace physics {

Transform Transform::FromAngle(float angle, const math::Vec2& translation) {
    return Transform{{std::cos(angle), std::sin(angle)}, translation};
}

float Transform::Angle() const {
    return std::atan2(rotation.y, rotation.x);
}

}  // namespace physics
