#pragma once

#include "gui/Component.h"

namespace app {

// The note that a control shows when the mouse rests on it: small text on the tooltip
// panel, wrapped to a comfortable width and no wider than the text needs.
gui::ComponentPtr MakeTooltip(const util::String& text);

}  // namespace app
