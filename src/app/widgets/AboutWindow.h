#pragma once

#include "app/widgets/Window.h"

namespace app {

// The program's name and version, and what it is, in a few words of the language.
class AboutWindow : public Window {
public:
    AboutWindow();
    ~AboutWindow() override;

    static constexpr float kWidth = 300;
};

}  // namespace app
