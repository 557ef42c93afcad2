#include "app/PolygonAtlas.h"

#include <GL/glew.h>

#include <algorithm>

#include "rendering/GraphicsContext.h"

namespace app {

PolygonAtlas::PolygonAtlas() : m_contextGeneration(rendering::GraphicsContext::GetGeneration()) {}

void PolygonAtlas::Follow() {
    const uint32_t generation = rendering::GraphicsContext::GetGeneration();
    if (generation == m_contextGeneration) {
        return;
    }
    m_contextGeneration = generation;
    ++m_epoch;
    for (Page& page : m_pages) {
        page.texture.Reset();
        page.free.clear();
    }
}

PolygonAtlas::Place PolygonAtlas::Add(const rendering::ImageFloat& map) {
    Follow();
    const size_t width = map.GetWidth();
    const size_t height = map.GetHeight();
    if (width == 0 || height == 0 || width > kMapSide || height > kMapSide ||
        !rendering::GraphicsContext::IsLoaded()) {
        return Place();
    }
    for (int p = 0; p < kPages; ++p) {
        Page& page = m_pages[p];
        if (!page.texture) {
            const rendering::Texture::ImageType type{GL_ALPHA, false, 1, 1, 1, 1, 0};
            page.texture =
                rendering::TexturePtr(new rendering::Texture(kPageSide, kPageSide, type));
            // Handed out from the back of the list: cell 0 first.
            for (int cell = kCellsAcross * kCellsAcross - 1; cell >= 0; --cell) {
                page.free.push_back(cell);
            }
        }
        if (page.free.empty() || page.texture->GetName() == 0) {
            continue;
        }
        const int cell = page.free.back();
        page.free.pop_back();
        // The map with its edge texels repeated once around it.
        rendering::ImageFloat padded(width + 2, height + 2);
        const float* in = map.GetPixels().data();
        float* out = padded.GetPixels().data();
        for (size_t y = 0; y < height + 2; ++y) {
            const size_t sy = std::min(std::max<size_t>(y, 1) - 1, height - 1);
            for (size_t x = 0; x < width + 2; ++x) {
                const size_t sx = std::min(std::max<size_t>(x, 1) - 1, width - 1);
                out[y * (width + 2) + x] = in[sy * width + sx];
            }
        }
        page.texture->Update(static_cast<size_t>(cell % kCellsAcross) * kCellSide,
                             static_cast<size_t>(cell / kCellsAcross) * kCellSide, padded);
        return Place{p, cell, m_epoch};
    }
    return Place();
}

void PolygonAtlas::Remove(const Place& place) {
    if (place.page >= 0 && place.epoch == m_epoch) {
        m_pages[place.page].free.push_back(place.cell);
    }
}

bool PolygonAtlas::Holds(const Place& place) const {
    return place.page >= 0 && place.epoch == m_epoch &&
           m_contextGeneration == rendering::GraphicsContext::GetGeneration();
}

const rendering::Texture* PolygonAtlas::GetPage(int page) const {
    return page >= 0 && page < kPages ? m_pages[page].texture.Get() : nullptr;
}

math::Mat3 PolygonAtlas::MapToPage(const Place& place) const {
    const float x = static_cast<float>((place.cell % kCellsAcross) * kCellSide + 1);
    const float y = static_cast<float>((place.cell / kCellsAcross) * kCellSide + 1);
    constexpr float kTexel = 1.0f / kPageSide;
    return math::Mat3::Scale(kTexel, kTexel) *
           math::Mat3::Translation(math::Vec2(x + 0.5f, y + 0.5f));
}

}  // namespace app
