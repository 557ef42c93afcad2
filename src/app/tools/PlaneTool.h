#pragma once

#include "app/tools/Tool.h"

namespace app {

class PlaneTool : public Tool {
public:
    PlaneTool();
    ~PlaneTool() override;
};

}  // namespace app
