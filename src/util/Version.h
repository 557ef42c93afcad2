#pragma once

#include "util/String.h"

namespace util {

// "Vorra beta 4.13": heads the caption, the log file and saved files.
const String& GetVersionString();

}  // namespace util
