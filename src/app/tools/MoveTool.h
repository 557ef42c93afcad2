#pragma once

#include "app/tools/Tool.h"

namespace app {

class MoveTool : public Tool {
public:
    MoveTool();
    ~MoveTool() override;
};

}  // namespace app
