#include "app/tools/MoveTool.h"

namespace app {

MoveTool::MoveTool() : Tool("MoveTool") {}

MoveTool::~MoveTool() = default;

}  // namespace app
