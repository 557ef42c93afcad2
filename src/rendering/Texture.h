#pragma once

#include <cstdint>

#include "rendering/GraphicsResource.h"
#include "rendering/ImageFloat.h"
#include "rendering/ImageRGBA32.h"

namespace rendering {

class Texture;
using TexturePtr = util::SharedPtr<Texture>;

// An OpenGL texture made from an image, or an empty one to copy the frame buffer into.
// Without a graphics context it keeps its settings and has name 0, which binds nothing.
class Texture : public GraphicsResource {
public:
    // How a texture is made; the internal format also decides its memory reckoning.
    struct ImageType {
        unsigned int format;
        bool mipmaps = true;
        // 0 repeats; otherwise the edge is clamped.
        int clampS = 0;
        int clampT = 0;
        int minLinear = 1;
        int magLinear = 1;
        int mipLinear = 1;

        bool operator==(const ImageType&) const = default;
    };

    Texture(const ImgPtr& image, const ImageType& type);
    // No pixels: the contents come from Copy. Mip-maps are not built for it.
    Texture(size_t width, size_t height, const ImageType& type);
    ~Texture() override;

    // Binds on a texture unit; a unit other than 0 needs multi-texturing.
    void Bind(int unit = 0) const;
    static void Unbind(int unit = 0);
    // The lower left of the frame buffer into the texture.
    void Copy(size_t width, size_t height);
    // The image into the texture with its lower left corner at (x, y).
    void Update(size_t x, size_t y, const AbstractImage& image);
    // The texture's pixels back from the graphics card.
    ImageRGBA32Ptr Read() const;

    size_t MemoryUsage() const override;
    // Bytes a pixel of an internal format; asserts for a format it does not know.
    static size_t BytesPerPixel(unsigned int format);

    unsigned int GetName() const { return m_name; }
    size_t GetWidth() const { return m_width; }
    size_t GetHeight() const { return m_height; }
    const ImageType& GetImageType() const { return m_type; }
    const ImgPtr& GetImage() const { return m_image; }

private:
    void Create();
    void SetParameters() const;

    ImgPtr m_image;
    size_t m_width;
    size_t m_height;
    ImageType m_type;
    unsigned int m_name = 0;
    uint32_t m_contextGeneration = 0;
};

Texture* TextureFromImage(ImageRGBA32Ptr image, Texture::ImageType type);
Texture* TextureFromImageFloat(ImageFloatPtr image, Texture::ImageType type);

}  // namespace rendering
