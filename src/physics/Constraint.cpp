#include "physics/Constraint.h"

namespace physics {

Constraint::~Constraint() = default;

}  // namespace physics
