#include "app/tools/RotateTool.h"

namespace app {

RotateTool::RotateTool() : Tool("RotateTool") {}

RotateTool::~RotateTool() = default;

}  // namespace app
