#pragma once

#include <cstddef>

#include "util/Assert.h"
#include "util/VectorPOD.h"

namespace util {

// A grid of width by height elements stored row after row: (x, y) lies at y * width + x.
template <class T, class Data = VectorPOD<T>>
class Array2D {
public:
    Array2D() = default;
    Array2D(size_t width, size_t height, const T& value = T()) { Resize(width, height, value); }

    // All elements become value; the old contents are not kept in place.
    void Resize(size_t width, size_t height, const T& value = T()) {
        m_width = width;
        m_height = height;
        m_data.clear();
        m_data.resize(width * height, value);
    }

    void Fill(const T& value) {
        for (size_t i = 0; i < m_data.size(); ++i) {
            m_data[i] = value;
        }
    }

    T& operator()(size_t x, size_t y) {
        CODE_ASSERT(x < m_width && y < m_height);
        return m_data[y * m_width + x];
    }
    const T& operator()(size_t x, size_t y) const {
        CODE_ASSERT(x < m_width && y < m_height);
        return m_data[y * m_width + x];
    }

    size_t GetWidth() const { return m_width; }
    size_t GetHeight() const { return m_height; }
    size_t size() const { return m_data.size(); }
    bool empty() const { return m_data.empty(); }

    // The rows one after the other, as a texture upload wants them.
    T* data() { return m_data.data(); }
    const T* data() const { return m_data.data(); }
    Data& Elements() { return m_data; }
    const Data& Elements() const { return m_data; }

private:
    size_t m_width = 0;
    size_t m_height = 0;
    Data m_data;
};

}  // namespace util
