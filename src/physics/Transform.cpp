#include "physics/Transform.h"

#include <cmath>

#include "math/MathUtil.h"

namespace physics {

Transform Transform::FromAngle(float angle, const math::Vec2& translation) {
    return Transform{{std::cos(angle), std::sin(angle)}, translation};
}

float Transform::Angle() const {
    return std::atan2(rotation.y, rotation.x);
}

float WrappedAngle(float angle) {
    if (!math::IsFinite(angle)) {
        return 0;
    }
    angle = std::fmod(angle, 6.2831855f);
    if (angle <= -3.1415927f) {
        angle += 6.2831855f;
    } else if (angle > 3.1415927f) {
        angle -= 6.2831855f;
    }
    return angle;
}

}  // namespace physics
