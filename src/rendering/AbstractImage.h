#pragma once

#include <cstddef>

#include "util/Array2D.h"
#include "util/Pointee.h"
#include "util/String.h"

namespace rendering {

// Pixel data in memory, ready for upload: row 0 is the bottom row, as OpenGL wants it.
class AbstractImage : public util::Pointee {
public:
    AbstractImage(size_t width, size_t height) : m_width(width), m_height(height) {}

    virtual const void* GetData() const = 0;
    virtual bool HasAlpha() const = 0;
    // The OpenGL pixel format and type of GetData.
    virtual unsigned int GetFormat() const = 0;
    virtual unsigned int GetType() const = 0;

    size_t GetWidth() const { return m_width; }
    size_t GetHeight() const { return m_height; }

protected:
    size_t m_width;
    size_t m_height;
};

using ImgPtr = util::SharedPtr<AbstractImage>;

// An image of one pixel type, with the file it came from.
template <class T>
class TImage : public AbstractImage {
public:
    TImage(size_t width, size_t height, const T& fill = T())
        : AbstractImage(width, height), m_pixels(width, height, fill) {}

    const void* GetData() const override { return m_pixels.data(); }

    T& operator()(size_t x, size_t y) { return m_pixels(x, y); }
    const T& operator()(size_t x, size_t y) const { return m_pixels(x, y); }
    util::Array2D<T>& GetPixels() { return m_pixels; }
    const util::Array2D<T>& GetPixels() const { return m_pixels; }

    const util::String& GetPath() const { return m_path; }
    void SetPath(const util::String& path) { m_path = path; }

private:
    util::Array2D<T> m_pixels;
    util::String m_path;
};

}  // namespace rendering
