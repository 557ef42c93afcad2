#include "app/tools/SpringTool.h"

namespace app {

SpringTool::SpringTool() : Tool("SpringTool") {}

SpringTool::~SpringTool() = default;

}  // namespace app
