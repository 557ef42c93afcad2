#pragma once

#include "app/tools/Tool.h"

namespace app {

class BrushTool : public Tool {
public:
    BrushTool();
    ~BrushTool() override;
};

}  // namespace app
