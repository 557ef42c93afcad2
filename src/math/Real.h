#pragma once

namespace math {

// The scalar of all physics state. Frame clocks keep doubles; nothing else does.
using real = float;

}  // namespace math
