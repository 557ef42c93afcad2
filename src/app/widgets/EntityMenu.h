#pragma once

#include "app/Group.h"
#include "app/widgets/Window.h"

namespace app {

// The "EntityOptions" popup's contents: the actions that fit the selection, then a button
// for each option panel that has something to show for it. They act on the selection as it
// was when the menu opened.
void FillEntityMenu(Window& menu, const GroupPtr& selection);

}  // namespace app
