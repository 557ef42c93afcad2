#pragma once

#include "app/tools/Tool.h"

namespace app {

class ChainTool : public Tool {
public:
    ChainTool();
    ~ChainTool() override;
};

}  // namespace app
