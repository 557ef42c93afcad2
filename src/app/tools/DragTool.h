#pragma once

#include "app/tools/Tool.h"

namespace app {

class DragTool : public Tool {
public:
    DragTool();
    ~DragTool() override;
};

}  // namespace app
