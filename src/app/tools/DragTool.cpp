#include "app/tools/DragTool.h"

namespace app {

DragTool::DragTool() : Tool("DragTool") {}

DragTool::~DragTool() = default;

}  // namespace app
