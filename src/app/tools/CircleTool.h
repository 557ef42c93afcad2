#pragma once

#include "app/tools/Tool.h"

namespace app {

class CircleTool : public Tool {
public:
    CircleTool();
    ~CircleTool() override;
};

}  // namespace app
