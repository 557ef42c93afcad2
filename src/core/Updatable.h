#pragma once

#include "util/ClassTracker.h"

namespace core {

// Objects updated in the frame's "Interp::Update" stage. The stage keeps its place in the
// frame and in the profile even while nothing joins it.
class Updatable : public util::ClassTracker<Updatable> {
public:
    virtual void Update(float dt) = 0;
};

}  // namespace core
