#pragma once

#include <cstdint>
#include <vector>

#include "math/Matrix3.h"
#include "rendering/ImageFloat.h"
#include "rendering/Texture.h"
#include "util/Pointee.h"

namespace app {

// The distance textures of polygons side by side on a few large textures (pages), so that
// polygons can be drawn many to a call. Each map takes a cell with one texel of its own edge
// repeated around it: sampled at its rim it reads what a texture of its own would read with
// the edge clamped.
//
// Cells are handed out and given back on the processor; the pages are made at the first
// need and dropped with the graphics context, which makes every place handed out stale.
class PolygonAtlas final : public util::Pointee {
public:
    static constexpr int kPages = 4;
    static constexpr int kPageSide = 2048;
    // The largest map a cell holds, and the cell with its edge.
    static constexpr int kMapSide = 128;
    static constexpr int kCellSide = kMapSide + 2;
    static constexpr int kCellsAcross = kPageSide / kCellSide;

    struct Place {
        int page = -1;
        int cell = -1;
        uint32_t epoch = 0;
    };

    PolygonAtlas();

    // A cell for the map, filled; a place with page -1 when the map is too large, every
    // page is full, or there is no graphics context.
    Place Add(const rendering::ImageFloat& map);
    // The cell is free again; a stale or empty place is ignored.
    void Remove(const Place& place);
    // Whether the place still holds its map.
    bool Holds(const Place& place) const;

    const rendering::Texture* GetPage(int page) const;
    // From texel coordinates of the map (texel (x, y) at (x, y)) to the page's texture
    // coordinates of that texel's centre.
    math::Mat3 MapToPage(const Place& place) const;

private:
    // Drops the pages when the graphics context changed since they were made.
    void Follow();

    struct Page {
        rendering::TexturePtr texture;
        std::vector<int> free;
    };
    Page m_pages[kPages];
    uint32_t m_epoch = 1;
    uint32_t m_contextGeneration = 0;
};

}  // namespace app
