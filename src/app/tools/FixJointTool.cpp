#include "app/tools/FixJointTool.h"

namespace app {

FixJointTool::FixJointTool() : Tool("FixJointTool") {}

FixJointTool::~FixJointTool() = default;

}  // namespace app
