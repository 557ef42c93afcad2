#pragma once

#include "app/tools/Tool.h"

namespace app {

class SketchTool : public Tool {
public:
    SketchTool();
    ~SketchTool() override;
};

}  // namespace app
