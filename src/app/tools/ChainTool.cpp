#include "app/tools/ChainTool.h"

namespace app {

ChainTool::ChainTool() : Tool("ChainTool") {}

ChainTool::~ChainTool() = default;

}  // namespace app
