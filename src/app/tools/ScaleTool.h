#pragma once

#include "app/tools/Tool.h"

namespace app {

class ScaleTool : public Tool {
public:
    ScaleTool();
    ~ScaleTool() override;
};

}  // namespace app
