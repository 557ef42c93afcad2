#include "ContactSheet.h"

#include <SDL.h>
#include <SDL_image.h>

#include "Artwork.h"

namespace artgen {

namespace {

// A loaded image in straight colour, as the program uploads it.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Rgba> pixels;
    Rgba At(int x, int y) const { return pixels[static_cast<size_t>(y) * width + x]; }
};

bool Load(const std::filesystem::path& path, Picture& picture, std::string& error) {
    SDL_Surface* loaded = IMG_Load(path.string().c_str());
    SDL_Surface* rgba =
        loaded ? SDL_ConvertSurfaceFormat(loaded, SDL_PIXELFORMAT_RGBA32, 0) : nullptr;
    SDL_FreeSurface(loaded);
    if (!rgba) {
        error = "can't read " + path.string() + ": " + SDL_GetError();
        return false;
    }
    picture.width = rgba->w;
    picture.height = rgba->h;
    picture.pixels.clear();
    for (int y = 0; y < rgba->h; ++y) {
        const uint8_t* row = static_cast<const uint8_t*>(rgba->pixels) + y * rgba->pitch;
        for (int x = 0; x < rgba->w; ++x) {
            const uint8_t* p = row + x * 4;
            picture.pixels.push_back({p[0] / 255.0f, p[1] / 255.0f, p[2] / 255.0f, p[3] / 255.0f});
        }
    }
    SDL_FreeSurface(rgba);
    return true;
}

// Averages straight colours over boxes, as mip-mapping does: pixels that are transparent but
// dark would show here as a dark fringe.
Picture Shrunk(const Picture& picture, int side) {
    Picture small;
    const float step = static_cast<float>(std::max(picture.width, picture.height)) / side;
    small.width = std::max(1, static_cast<int>(picture.width / step));
    small.height = std::max(1, static_cast<int>(picture.height / step));
    for (int y = 0; y < small.height; ++y) {
        for (int x = 0; x < small.width; ++x) {
            Rgba sum;
            float n = 0;
            for (int j = static_cast<int>(y * step);
                 j < static_cast<int>(std::ceil((y + 1) * step)); ++j) {
                for (int i = static_cast<int>(x * step);
                     i < static_cast<int>(std::ceil((x + 1) * step)); ++i) {
                    const Rgba p = picture.At(i, j);
                    sum = {sum.r + p.r, sum.g + p.g, sum.b + p.b, sum.a + p.a};
                    n += 1;
                }
            }
            small.pixels.push_back({sum.r / n, sum.g / n, sum.b / n, sum.a / n});
        }
    }
    return small;
}

// The picture repeated along x, as a strip repeats a tiling texture.
Picture Tiled(const Picture& picture, int times) {
    Picture strip;
    strip.width = picture.width * times;
    strip.height = picture.height;
    for (int y = 0; y < strip.height; ++y) {
        for (int x = 0; x < strip.width; ++x) {
            strip.pixels.push_back(picture.At(x % picture.width, y));
        }
    }
    return strip;
}

class Sheet {
public:
    // Lays the picture at the cursor of the current row over a patch of the background.
    void Place(const Picture& picture, int zoom, Rgba background, Rgba tint = Grey(1)) {
        const int w = picture.width * zoom;
        const int h = picture.height * zoom;
        m_cells.push_back({m_x, m_y, w, h, background, tint, picture, zoom});
        m_x += w + kGap;
        m_rowHeight = std::max(m_rowHeight, h);
        m_width = std::max(m_width, m_x);
    }
    void NextRow() {
        m_y += m_rowHeight + kGap;
        m_x = kGap;
        m_rowHeight = 0;
    }
    Canvas Render() const {
        Canvas canvas(m_width, m_y + m_rowHeight + kGap);
        for (int y = 0; y < canvas.Height(); ++y) {
            for (int x = 0; x < canvas.Width(); ++x) {
                canvas.Set(x, y, Grey(0.5f));
            }
        }
        for (const Cell& cell : m_cells) {
            for (int y = -2; y < cell.h + 2; ++y) {
                for (int x = -2; x < cell.w + 2; ++x) {
                    Rgba out = cell.background;
                    if (x >= 0 && y >= 0 && x < cell.w && y < cell.h) {
                        const Rgba p = cell.picture.At(x / cell.zoom, y / cell.zoom);
                        const Rgba c{p.r * cell.tint.r, p.g * cell.tint.g, p.b * cell.tint.b,
                                     p.a * cell.tint.a};
                        out = Mix(out, WithAlpha(c, 1), c.a);
                    }
                    canvas.Set(cell.x + x, cell.y + y, WithAlpha(out, 1));
                }
            }
        }
        return canvas;
    }

private:
    static constexpr int kGap = 6;
    struct Cell {
        int x, y, w, h;
        Rgba background;
        Rgba tint;
        Picture picture;
        int zoom;
    };
    std::vector<Cell> m_cells;
    int m_x = kGap;
    int m_y = kGap;
    int m_rowHeight = 0;
    int m_width = 0;
};

const Rgba kLight = Grey(0.86f);
const Rgba kDark = Grey(0.13f);
const Rgba kSky{0.3f, 0.4f, 1.0f, 1};
const Rgba kRed{1.0f, 0.25f, 0.2f, 1};
const Rgba kNavy{0.12f, 0.16f, 0.5f, 1};

}  // namespace

bool WriteContactSheets(const std::filesystem::path& workdir, const std::string& prefix,
                        std::string& error) {
    const std::pair<const char*, std::vector<Artwork> (*)()> groups[] = {
        {"textures", EntityTextures},
        {"cursors", Cursors},
        {"tools", ToolIcons},
        {"clouds", Clouds},
        {"emblems", Emblems}};
    for (const auto& [name, group] : groups) {
        Sheet sheet;
        for (const Artwork& artwork : group()) {
            Picture picture;
            if (!Load(workdir / artwork.path, picture, error)) {
                return false;
            }
            const int side = std::max(picture.width, picture.height);
            const int zoom = side <= 64 ? 4 : side <= 128 ? 2 : 1;
            sheet.Place(picture, zoom, kLight);
            sheet.Place(picture, zoom, kDark);
            sheet.Place(picture, 1, kLight);
            sheet.Place(picture, 1, kDark);
            sheet.Place(picture, 1, kSky, Grey(1, 0.9f));
            sheet.Place(picture, 1, kLight, kRed);
            sheet.Place(picture, 1, kDark, kNavy);
            for (int shrunk : {48, 24, 16}) {
                if (shrunk < side) {
                    sheet.Place(Shrunk(picture, shrunk), 1, kLight, kRed);
                    sheet.Place(Shrunk(picture, shrunk), 1, kDark, Grey(1));
                }
            }
            // A tiling texture is shown repeated, to show its seams.
            if (artwork.path == "textures/spring.png") {
                sheet.NextRow();
                sheet.Place(Tiled(picture, 5), 1, kLight);
                sheet.Place(Tiled(picture, 5), 1, kDark, kRed);
                sheet.Place(Tiled(Shrunk(picture, 24), 8), 1, kLight, kRed);
                sheet.Place(Tiled(Shrunk(picture, 24), 8), 1, kDark, Grey(1));
                sheet.Place(Tiled(picture, 3), 2, kLight);
            }
            sheet.NextRow();
        }
        if (!SavePicture(sheet.Render(), prefix + "-" + name + ".png", error)) {
            return false;
        }
    }
    return true;
}

}  // namespace artgen
