#pragma once

#include "app/tools/Tool.h"

namespace app {

class PanTool : public Tool {
public:
    PanTool();
    ~PanTool() override;
};

}  // namespace app
