#include "app/tools/BoxTool.h"

namespace app {

BoxTool::BoxTool() : Tool("BoxTool") {}

BoxTool::~BoxTool() = default;

}  // namespace app
