#pragma once

#include <string>
#include <unordered_set>

namespace util {

// The system's string: the standard narrow string.
using String = std::string;
using StringSet = std::unordered_set<String>;

}  // namespace util
