#include "physics/MaterialDefaults.h"

namespace physics {

MaterialDefaults& MaterialDefaults::Current() {
    static MaterialDefaults defaults;
    return defaults;
}

}  // namespace physics
