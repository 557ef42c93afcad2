#include "app/tools/SketchTool.h"

namespace app {

SketchTool::SketchTool() : Tool("SketchTool") {}

SketchTool::~SketchTool() = default;

}  // namespace app
