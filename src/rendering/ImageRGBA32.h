#pragma once

#include <string>

#include "math/Vector4.h"
#include "rendering/AbstractImage.h"

namespace rendering {

class ImageRGBA32;
using ImageRGBA32Ptr = util::SharedPtr<ImageRGBA32>;

// Eight bits a channel. Decoding of PNG, JPEG, BMP and TGA is SDL_image's; the RAW format,
// headerless square pictures, is the program's own.
class ImageRGBA32 : public TImage<math::Pixel> {
public:
    // Bytes a pixel in a RAW file: alpha only over white, red-green-blue, or all four.
    enum RAWFormat { kRawAlpha = 0, kRawRGB = 1, kRawRGBA = 2 };

    ImageRGBA32(size_t width, size_t height, bool hasAlpha = true,
                const math::Pixel& fill = math::Pixel(255, 255, 255, 255))
        : TImage<math::Pixel>(width, height, fill), m_hasAlpha(hasAlpha) {}

    bool HasAlpha() const override { return m_hasAlpha; }
    unsigned int GetFormat() const override;
    unsigned int GetType() const override;

    // Any format SDL_image reads, or a RAW file (".raw") in its alpha form. Throws
    // FileReadException with SDL_image's reason.
    static ImageRGBA32Ptr LoadFile(const std::string& path);
    // A square RAW picture: the side follows from the file's size.
    static ImageRGBA32Ptr LoadRAW(const std::string& path, RAWFormat format);
    static ImageRGBA32Ptr LoadRAW(const std::string& path, RAWFormat format, unsigned int width,
                                  unsigned int height);

    static size_t RawBytesPerPixel(RAWFormat format);

private:
    bool m_hasAlpha;
};

}  // namespace rendering
