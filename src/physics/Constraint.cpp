#include "physics/Constraint.h"

namespace physics {

Constraint::~Constraint() noexcept(false) = default;

}  // namespace physics
