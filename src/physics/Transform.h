#pragma once

#include "math/Vector2.h"

namespace physics {

// A rigid transform of the plane: rotation as (cos, sin), then translation.
struct Transform {
    math::Vec2 rotation{1, 0};
    math::Vec2 translation{0, 0};

    static Transform FromAngle(float angle, const math::Vec2& translation);

    math::Vec2 ApplyToVector(const math::Vec2& v) const {
        return {rotation.x * v.x - rotation.y * v.y, rotation.y * v.x + rotation.x * v.y};
    }
    math::Vec2 Apply(const math::Vec2& p) const { return ApplyToVector(p) + translation; }

    Transform Inverted() const {
        const math::Vec2 back{rotation.x, -rotation.y};
        Transform inverse{back, {0, 0}};
        inverse.translation = -inverse.ApplyToVector(translation);
        return inverse;
    }

    // This transform after the other: (this * other)(p) = this(other(p)).
    Transform operator*(const Transform& other) const {
        Transform product;
        product.rotation = ApplyToVector(other.rotation);
        product.translation = Apply(other.translation);
        return product;
    }

    float Angle() const;
};

// A finite angle moved into (-pi, pi] by fmod and at most one whole turn; a non-finite
// one becomes 0.
float WrappedAngle(float angle);

}  // namespace physics
