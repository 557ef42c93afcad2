#pragma once

#include "app/tools/Tool.h"

namespace app {

class SpringTool : public Tool {
public:
    SpringTool();
    ~SpringTool() override;
};

}  // namespace app
