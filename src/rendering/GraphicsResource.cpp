#include "rendering/GraphicsResource.h"

namespace rendering {

GraphicsResource::~GraphicsResource() = default;

}  // namespace rendering
