#pragma once

#include <cmath>

#include "math/OBB2D.h"
#include "math/Vector2.h"

namespace physics {

namespace obb_detail {

// Half the width of the box's shadow on the axis u.
inline float ProjectedRadius(const math::OBB2D& box, const math::Vec2& u) {
    return box.halfExtents.x * std::fabs(math::Dot(box.axis1, u)) +
           box.halfExtents.y * std::fabs(math::Dot(box.axis2, u));
}

inline bool SeparatedOn(const math::OBB2D& a, const math::OBB2D& b, const math::Vec2& t,
                        const math::Vec2& u) {
    return !(std::fabs(math::Dot(t, u)) <= ProjectedRadius(a, u) + ProjectedRadius(b, u));
}

}  // namespace obb_detail

// Separating-axis test of two oriented boxes on the four face axes: a1, a2 of the first,
// then a1, a2 of the second. Touching counts as overlap. A box's own axis is projected like
// any other. A comparison that meets a NaN counts as a separation.
inline bool OBBOverlap(const math::OBB2D& a, const math::OBB2D& b) {
    const math::Vec2 t = b.centre - a.centre;
    return !obb_detail::SeparatedOn(a, b, t, a.axis1) &&
           !obb_detail::SeparatedOn(a, b, t, a.axis2) &&
           !obb_detail::SeparatedOn(a, b, t, b.axis1) && !obb_detail::SeparatedOn(a, b, t, b.axis2);
}

}  // namespace physics
