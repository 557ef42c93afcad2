// Every image of the data tree, by its path below the work directory, and how it is written.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Canvas.h"

namespace artgen {

struct Artwork {
    std::string path;  // below the work directory; ".bmp" is written as a BMP, else PNG
    std::function<Canvas()> render;
};

// The groups, each made in a file of its own.
std::vector<Artwork> EntityTextures();
std::vector<Artwork> Cursors();
std::vector<Artwork> ToolIcons();
std::vector<Artwork> Clouds();
std::vector<Artwork> Emblems();  // the language flags and the window icon

std::vector<Artwork> AllArtwork();

// Writes the picture as a PNG, or as a 32-bit BMP with alpha when the path ends in ".bmp".
bool SavePicture(const Canvas& canvas, const std::filesystem::path& path, std::string& error);

// Renders the image and writes it below the work directory, making its folder.
bool WriteArtwork(const Artwork& artwork, const std::filesystem::path& workdir, std::string& error);

}  // namespace artgen
