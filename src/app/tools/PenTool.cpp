#include "app/tools/PenTool.h"

namespace app {

PenTool::PenTool() : Tool("PenTool") {}

PenTool::~PenTool() = default;

}  // namespace app
