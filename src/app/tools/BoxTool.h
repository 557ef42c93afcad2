#pragma once

#include "app/tools/Tool.h"

namespace app {

class BoxTool : public Tool {
public:
    BoxTool();
    ~BoxTool() override;
};

}  // namespace app
