#pragma once

#include "app/tools/Tool.h"

namespace app {

class RotateTool : public Tool {
public:
    RotateTool();
    ~RotateTool() override;
};

}  // namespace app
