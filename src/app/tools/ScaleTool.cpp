#include "app/tools/ScaleTool.h"

namespace app {

ScaleTool::ScaleTool() : Tool("ScaleTool") {}

ScaleTool::~ScaleTool() = default;

}  // namespace app
