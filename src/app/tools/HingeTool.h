#pragma once

#include "app/tools/Tool.h"

namespace app {

class HingeTool : public Tool {
public:
    HingeTool();
    ~HingeTool() override;
};

}  // namespace app
