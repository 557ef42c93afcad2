#pragma once

#include "util/String.h"

namespace os {

// Writes "title: text" to stderr and the log, then shows a modal box with OK and Cancel.
// Returns true when the user pressed Cancel. Where no display exists the box cannot show,
// and the answer is OK.
bool ShowErrorPopup(const util::String& title, const util::String& text);

// Plain text copy and paste through the system clipboard. Getting gives an empty string
// when the clipboard holds no text or cannot be reached.
bool SetClipboardText(const util::String& text);
util::String GetClipboardText();

}  // namespace os
