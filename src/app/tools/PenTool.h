#pragma once

#include "app/tools/Tool.h"

namespace app {

class PenTool : public Tool {
public:
    PenTool();
    ~PenTool() override;
};

}  // namespace app
