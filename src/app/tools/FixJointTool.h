#pragma once

#include "app/tools/Tool.h"

namespace app {

class FixJointTool : public Tool {
public:
    FixJointTool();
    ~FixJointTool() override;
};

}  // namespace app
