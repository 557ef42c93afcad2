#include "app/tools/CircleTool.h"

namespace app {

CircleTool::CircleTool() : Tool("CircleTool") {}

CircleTool::~CircleTool() = default;

}  // namespace app
