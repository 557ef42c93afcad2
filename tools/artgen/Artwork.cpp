#include "Artwork.h"

#include <SDL.h>
#include <SDL_image.h>

namespace artgen {

std::vector<Artwork> AllArtwork() {
    std::vector<Artwork> all;
    for (auto group : {EntityTextures, Cursors, ToolIcons, Clouds, Emblems}) {
        for (Artwork& artwork : group()) {
            all.push_back(std::move(artwork));
        }
    }
    return all;
}

bool SavePicture(const Canvas& canvas, const std::filesystem::path& path, std::string& error) {
    std::vector<uint8_t> rgba = canvas.ToRgba8();
    const bool bmp = path.extension() == ".bmp";
    // SDL saves a 32-bit surface with an alpha mask as a BMP whose alpha SDL_LoadBMP reads back.
    if (bmp) {
        for (size_t i = 0; i < rgba.size(); i += 4) {
            const uint32_t argb = static_cast<uint32_t>(rgba[i + 3]) << 24 |
                                  static_cast<uint32_t>(rgba[i]) << 16 |
                                  static_cast<uint32_t>(rgba[i + 1]) << 8 | rgba[i + 2];
            SDL_memcpy(&rgba[i], &argb, 4);
        }
    }
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormatFrom(
        rgba.data(), canvas.Width(), canvas.Height(), 32, canvas.Width() * 4,
        bmp ? SDL_PIXELFORMAT_ARGB8888 : SDL_PIXELFORMAT_RGBA32);
    if (!surface) {
        error = SDL_GetError();
        return false;
    }
    const std::string name = path.string();
    const int result =
        bmp ? SDL_SaveBMP(surface, name.c_str()) : IMG_SavePNG(surface, name.c_str());
    SDL_FreeSurface(surface);
    if (result != 0) {
        error = "can't write " + name + ": " + SDL_GetError();
        return false;
    }
    return true;
}

bool WriteArtwork(const Artwork& artwork, const std::filesystem::path& workdir,
                  std::string& error) {
    const std::filesystem::path path = workdir / artwork.path;
    std::error_code code;
    std::filesystem::create_directories(path.parent_path(), code);
    if (code) {
        error = "can't make " + path.parent_path().string() + ": " + code.message();
        return false;
    }
    return SavePicture(artwork.render(), path, error);
}

}  // namespace artgen
