#include "app/tools/PlaneTool.h"

namespace app {

PlaneTool::PlaneTool() : Tool("PlaneTool") {}

PlaneTool::~PlaneTool() = default;

}  // namespace app
