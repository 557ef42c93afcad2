#include "app/tools/HingeTool.h"

namespace app {

HingeTool::HingeTool() : Tool("HingeTool") {}

HingeTool::~HingeTool() = default;

}  // namespace app
