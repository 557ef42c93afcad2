#pragma once

#include "app/widgets/ScrollList.h"
#include "app/widgets/Window.h"

namespace app {

// The help text of the language, wrapped to the window's width, one line a row of a list
// that the wheel and the bar at its side scroll.
class HelpWindow : public Window {
public:
    HelpWindow();
    ~HelpWindow() override;

    const ScrollListPtr& GetList() const { return m_list; }

    // Of the list, which shows as many lines as fit.
    static constexpr float kWidth = 560;
    static constexpr float kListHeight = 360;

private:
    ScrollListPtr m_list;
};

}  // namespace app
