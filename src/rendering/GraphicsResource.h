#pragma once

#include <cstddef>

#include "util/ClassTracker.h"
#include "util/Pointee.h"

namespace rendering {

// Base of every object that holds OpenGL state. All live ones are tracked, so that the
// memory they take on the graphics card can be summed.
class GraphicsResource : public util::Pointee, public util::ClassTracker<GraphicsResource> {
public:
    ~GraphicsResource() override;
    // Bytes on the graphics card, as the requested format reckons them.
    virtual size_t MemoryUsage() const = 0;
};

}  // namespace rendering
