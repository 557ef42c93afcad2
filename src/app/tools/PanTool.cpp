#include "app/tools/PanTool.h"

namespace app {

PanTool::PanTool() : Tool("PanTool") {}

PanTool::~PanTool() = default;

}  // namespace app
