// Review sheets of the written images: each at a zoom and at 1:1 over light, dark and sky
// backgrounds, and tinted and shrunk as the program draws entity textures.
#pragma once

#include <filesystem>
#include <string>

namespace artgen {

// Reads every image of the artwork from the work directory and writes one sheet per group of
// images to prefix + "-<group>.png".
bool WriteContactSheets(const std::filesystem::path& workdir, const std::string& prefix,
                        std::string& error);

}  // namespace artgen
