#include "rendering/Texture.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include "rendering/GraphicsContext.h"
#include "util/Assert.h"
#include "util/Profiler.h"

namespace rendering {
namespace {

bool IsDepthFormat(unsigned int format) {
    return format == GL_DEPTH_COMPONENT || format == GL_DEPTH_COMPONENT16 ||
           format == GL_DEPTH_COMPONENT24 || format == GL_DEPTH_COMPONENT32;
}

// What goes to the card, which may be less than what was asked for.
unsigned int UploadFormat(unsigned int format) {
    if (!GraphicsContext::GetForce16BitTextures()) {
        return format;
    }
    if (format == GL_RGB) {
        return GL_RGB5;
    }
    if (format == GL_RGBA) {
        return GL_RGB5_A1;
    }
    return format;
}

GLint WrapMode(int clamp) {
    if (clamp == 0) {
        return GL_REPEAT;
    }
    return GraphicsContext::HasBorderClamp() ? GL_CLAMP_TO_EDGE : GL_CLAMP;
}

GLint MinFilter(const Texture::ImageType& type) {
    if (!type.mipmaps) {
        return type.minLinear ? GL_LINEAR : GL_NEAREST;
    }
    if (type.minLinear) {
        return type.mipLinear ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR_MIPMAP_NEAREST;
    }
    return type.mipLinear ? GL_NEAREST_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_NEAREST;
}

bool HasMultiTexturing() {
    return GraphicsContext::HasMultiTexturing();
}

}  // namespace

Texture::Texture(const ImgPtr& image, const ImageType& type)
    : m_image(image),
      m_width(image ? image->GetWidth() : 0),
      m_height(image ? image->GetHeight() : 0),
      m_type(type) {
    Create();
}

Texture::Texture(size_t width, size_t height, const ImageType& type)
    : m_width(width), m_height(height), m_type(type) {
    m_type.mipmaps = false;
    Create();
}

Texture::~Texture() {
    if (m_name != 0 && GraphicsContext::IsLoaded() &&
        m_contextGeneration == GraphicsContext::GetGeneration()) {
        glDeleteTextures(1, &m_name);
    }
}

void Texture::Create() {
    if (!GraphicsContext::IsLoaded()) {
        return;
    }
    m_contextGeneration = GraphicsContext::GetGeneration();
    glGenTextures(1, &m_name);
    glBindTexture(GL_TEXTURE_2D, m_name);
    const GLint internal = static_cast<GLint>(UploadFormat(m_type.format));
    const auto width = static_cast<GLsizei>(m_width);
    const auto height = static_cast<GLsizei>(m_height);
    if (m_image && m_type.mipmaps) {
        gluBuild2DMipmaps(GL_TEXTURE_2D, internal, width, height, m_image->GetFormat(),
                          m_image->GetType(), m_image->GetData());
    } else if (m_image) {
        glTexImage2D(GL_TEXTURE_2D, 0, internal, width, height, 0, m_image->GetFormat(),
                     m_image->GetType(), m_image->GetData());
    } else {
        const bool depth = IsDepthFormat(m_type.format);
        glTexImage2D(GL_TEXTURE_2D, 0, internal, width, height, 0,
                     depth ? GL_DEPTH_COMPONENT : GL_RGBA,
                     depth ? GL_UNSIGNED_INT : GL_UNSIGNED_BYTE, nullptr);
    }
    SetParameters();
    glBindTexture(GL_TEXTURE_2D, 0);
}

void Texture::SetParameters() const {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, WrapMode(m_type.clampS));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, WrapMode(m_type.clampT));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, MinFilter(m_type));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER,
                    m_type.magLinear ? GL_LINEAR : GL_NEAREST);
    if (IsDepthFormat(m_type.format)) {
        glTexParameteri(GL_TEXTURE_2D, GL_DEPTH_TEXTURE_MODE, GL_INTENSITY);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    }
}

void Texture::Bind(int unit) const {
    if (unit != 0) {
        CODE_ASSERT(HasMultiTexturing());
    }
    if (!GraphicsContext::IsLoaded()) {
        return;
    }
    if (unit != 0) {
        glActiveTexture(GL_TEXTURE0 + unit);
    }
    // A texture of an older context has a name that means nothing now.
    const bool current = m_contextGeneration == GraphicsContext::GetGeneration();
    glBindTexture(GL_TEXTURE_2D, current ? m_name : 0);
    if (unit != 0) {
        glActiveTexture(GL_TEXTURE0);
    }
}

void Texture::Unbind(int unit) {
    if (!GraphicsContext::IsLoaded()) {
        return;
    }
    if (unit != 0) {
        glActiveTexture(GL_TEXTURE0 + unit);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    if (unit != 0) {
        glActiveTexture(GL_TEXTURE0);
    }
}

void Texture::Copy(size_t width, size_t height) {
    VORRA_PROFILE("Texture::Copy");
    if (m_name == 0) {
        return;
    }
    Bind();
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, static_cast<GLsizei>(width),
                        static_cast<GLsizei>(height));
    Unbind();
}

void Texture::Update(size_t x, size_t y, const AbstractImage& image) {
    if (m_name == 0 || !GraphicsContext::IsLoaded()) {
        return;
    }
    Bind();
    glTexSubImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(x), static_cast<GLint>(y),
                    static_cast<GLsizei>(image.GetWidth()), static_cast<GLsizei>(image.GetHeight()),
                    image.GetFormat(), image.GetType(), image.GetData());
    Unbind();
}

ImageRGBA32Ptr Texture::Read() const {
    VORRA_PROFILE("Read");
    ImageRGBA32Ptr image(new ImageRGBA32(m_width, m_height));
    if (m_name == 0 || !GraphicsContext::IsLoaded()) {
        return image;
    }
    Bind();
    GLint packAlignment = 4;
    glGetIntegerv(GL_PACK_ALIGNMENT, &packAlignment);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image->GetPixels().data());
    glPixelStorei(GL_PACK_ALIGNMENT, packAlignment);
    Unbind();
    return image;
}

size_t Texture::BytesPerPixel(unsigned int format) {
    switch (format) {
        case GL_ALPHA:
            return 1;
        case GL_ALPHA16:
        case GL_RGB16:
        case GL_RGBA16:
        case GL_DEPTH_COMPONENT16:
        case GL_ALPHA16F_ARB:
            return 2;
        case GL_RGB:
        case GL_DEPTH_COMPONENT24:
            return 3;
        case GL_RGBA:
        case GL_DEPTH_COMPONENT:
        case GL_DEPTH_COMPONENT32:
        case GL_ALPHA32F_ARB:
            return 4;
        case GL_RGBA16F_ARB:
            return 8;
        case GL_RGBA32F_ARB:
            return 16;
        default:
            break;
    }
    CODE_ASSERT(!"Bad image format");
    return 0;
}

size_t Texture::MemoryUsage() const {
    const size_t bytes = m_width * m_height * BytesPerPixel(m_type.format);
    return m_type.mipmaps ? bytes * 4 / 3 : bytes;
}

Texture* TextureFromImage(ImageRGBA32Ptr image, Texture::ImageType type) {
    return new Texture(ImgPtr(image), type);
}

Texture* TextureFromImageFloat(ImageFloatPtr image, Texture::ImageType type) {
    return new Texture(ImgPtr(image), type);
}

}  // namespace rendering
