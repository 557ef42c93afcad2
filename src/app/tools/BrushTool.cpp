#include "app/tools/BrushTool.h"

namespace app {

BrushTool::BrushTool() : Tool("BrushTool") {}

BrushTool::~BrushTool() = default;

}  // namespace app
