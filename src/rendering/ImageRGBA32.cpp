#include "rendering/ImageRGBA32.h"

#include <GL/glew.h>
#include <SDL.h>
#include <SDL_image.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

#include "util/Exception.h"
#include "util/StringUtil.h"

namespace rendering {
namespace {

bool EndsWith(const std::string& text, const char* ending) {
    return util::ToLower(text).ends_with(ending);
}

std::ifstream OpenRaw(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        VORRA_THROW(FileReadException, "Could not open the RAW-file \"" + path + "\".");
    }
    return file;
}

// SDL_image hands most 32-bit pictures over with red first in memory; its TGA reader
// gives blue first, which the caller swaps back for files that have alpha.
bool NeedsConversion(const SDL_Surface* surface, bool isTga) {
    if (surface->format->BitsPerPixel != 32) {
        return true;
    }
    return !isTga && surface->format->format != SDL_PIXELFORMAT_ABGR8888;
}

}  // namespace

unsigned int ImageRGBA32::GetFormat() const {
    return GL_RGBA;
}

unsigned int ImageRGBA32::GetType() const {
    return GL_UNSIGNED_BYTE;
}

size_t ImageRGBA32::RawBytesPerPixel(RAWFormat format) {
    switch (format) {
        case kRawAlpha:
            return 1;
        case kRawRGB:
            return 3;
        case kRawRGBA:
            return 4;
    }
    return 1;
}

ImageRGBA32Ptr ImageRGBA32::LoadFile(const std::string& path) {
    if (EndsWith(path, ".raw")) {
        return LoadRAW(path, kRawAlpha);
    }
    SDL_Surface* picture = IMG_Load(path.c_str());
    if (!picture) {
        VORRA_THROW(FileReadException, "Could not load image file \"" + path +
                                           "\". SDL_image error: " + IMG_GetError() + ".");
    }
    const int bits = picture->format->BitsPerPixel;
    const bool hasAlpha = bits == 32 || bits == 8;
    const bool isTga = EndsWith(path, ".tga");
    if (NeedsConversion(picture, isTga)) {
        SDL_Surface* converted = SDL_ConvertSurfaceFormat(picture, SDL_PIXELFORMAT_ABGR8888, 0);
        SDL_FreeSurface(picture);
        if (!converted) {
            VORRA_THROW(FileReadException, "Could not load image file \"" + path +
                                               "\". SDL_image error: " + SDL_GetError() + ".");
        }
        picture = converted;
    }

    ImageRGBA32Ptr image(new ImageRGBA32(picture->w, picture->h, hasAlpha));
    image->SetPath(path);
    SDL_LockSurface(picture);
    const size_t rowBytes = static_cast<size_t>(picture->w) * 4;
    for (int y = 0; y < picture->h; ++y) {
        // The surface's top row becomes the image's last.
        const auto* source = static_cast<const unsigned char*>(picture->pixels) +
                             static_cast<size_t>(picture->pitch) * (picture->h - 1 - y);
        std::copy(source, source + rowBytes, reinterpret_cast<unsigned char*>(&(*image)(0, y)));
    }
    SDL_UnlockSurface(picture);
    SDL_FreeSurface(picture);

    if (hasAlpha && isTga) {
        for (math::Pixel& pixel : image->GetPixels().Elements()) {
            std::swap(pixel.x, pixel.z);
        }
    }
    return image;
}

ImageRGBA32Ptr ImageRGBA32::LoadRAW(const std::string& path, RAWFormat format) {
    std::ifstream file = OpenRaw(path);
    file.seekg(0, std::ios::end);
    const size_t count = static_cast<size_t>(file.tellg()) / RawBytesPerPixel(format);
    const auto side = static_cast<unsigned int>(std::sqrt(static_cast<double>(count)));
    if (static_cast<size_t>(side) * side != count) {
        VORRA_THROW(FileReadException,
                    "The RAW-file \"" + path + "\" contained a non quadratic picture.");
    }
    return LoadRAW(path, format, side, side);
}

ImageRGBA32Ptr ImageRGBA32::LoadRAW(const std::string& path, RAWFormat format, unsigned int width,
                                    unsigned int height) {
    std::ifstream file = OpenRaw(path);
    const std::string bytes((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    const size_t bytesPerPixel = RawBytesPerPixel(format);
    ImageRGBA32Ptr image(new ImageRGBA32(width, height, format != kRawRGB));
    image->SetPath(path);
    util::VectorPOD<math::Pixel>& pixels = image->GetPixels().Elements();
    for (size_t i = 0; i < pixels.size(); ++i) {
        if ((i + 1) * bytesPerPixel > bytes.size()) {
            VORRA_THROW(FileReadException, "File \"" + path + "\" is corrupt.");
        }
        const auto* in = reinterpret_cast<const unsigned char*>(bytes.data()) + i * bytesPerPixel;
        math::Pixel& pixel = pixels[i];
        if (format == kRawAlpha) {
            pixel.w = in[0];
        } else {
            pixel.x = in[0];
            pixel.y = in[1];
            pixel.z = in[2];
            if (format == kRawRGBA) {
                pixel.w = in[3];
            }
        }
    }
    // Reversing every row and then the whole array turns the picture upside down: the
    // file's first row becomes the top.
    for (size_t y = 0; y < height; ++y) {
        std::reverse(pixels.data() + y * width, pixels.data() + (y + 1) * width);
    }
    std::reverse(pixels.data(), pixels.data() + pixels.size());
    return image;
}

}  // namespace rendering
