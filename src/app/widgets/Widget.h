#pragma once

#include "gui/Component.h"

namespace app {

// A window of the application, found by its name.
class Widget : public gui::Component {
public:
    explicit Widget(const util::String& name);
    ~Widget() override;
};

}  // namespace app
