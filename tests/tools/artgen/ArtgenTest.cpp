#include <SDL.h>
#include <SDL_image.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "Artwork.h"

namespace fs = std::filesystem;

namespace {

const fs::path kWorkdir = VORRA_WORKDIR;

struct Image {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgba;
    const uint8_t* At(int x, int y) const {
        return &rgba[(static_cast<size_t>(y) * width + x) * 4];
    }
    uint8_t Alpha(int x, int y) const { return At(x, y)[3]; }
};

// Decodes a PNG or BMP into straight 8-bit RGBA.
bool Load(const fs::path& path, Image& image) {
    SDL_Surface* loaded = IMG_Load(path.string().c_str());
    if (!loaded) {
        return false;
    }
    SDL_Surface* rgba = SDL_ConvertSurfaceFormat(loaded, SDL_PIXELFORMAT_RGBA32, 0);
    SDL_FreeSurface(loaded);
    if (!rgba) {
        return false;
    }
    image.width = rgba->w;
    image.height = rgba->h;
    image.rgba.resize(static_cast<size_t>(rgba->w) * rgba->h * 4);
    for (int y = 0; y < rgba->h; ++y) {
        SDL_memcpy(&image.rgba[static_cast<size_t>(y) * rgba->w * 4],
                   static_cast<const uint8_t*>(rgba->pixels) + y * rgba->pitch, rgba->w * 4);
    }
    SDL_FreeSurface(rgba);
    return true;
}

Image LoadCommitted(const std::string& path) {
    Image image;
    EXPECT_TRUE(Load(kWorkdir / path, image)) << path << ": " << SDL_GetError();
    return image;
}

std::vector<std::string> PathsStartingWith(const std::string& prefix) {
    std::vector<std::string> paths;
    for (const artgen::Artwork& artwork : artgen::AllArtwork()) {
        if (artwork.path.rfind(prefix, 0) == 0) {
            paths.push_back(artwork.path);
        }
    }
    return paths;
}

bool IsPowerOfTwo(int n) {
    return n > 0 && (n & (n - 1)) == 0;
}

}  // namespace

// The images under workdir/ are the generator's output, untouched: run it afresh and compare
// every pixel, so that a stale or hand-edited image fails here.
TEST(ArtGen, RegeneratedImagesMatchTheCommittedOnes) {
    const fs::path out =
        fs::temp_directory_path() / ("vorra-artgen-test-" + std::to_string(getpid()));
    fs::remove_all(out);
    const std::string command = std::string("\"") + VORRA_ARTGEN + "\" \"" + out.string() + "\"";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;

    size_t generated = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(out)) {
        if (!entry.is_regular_file()) {
            continue;
        }
        ++generated;
        const fs::path relative = fs::relative(entry.path(), out);
        SCOPED_TRACE(relative.string());
        Image fresh;
        Image committed;
        ASSERT_TRUE(Load(entry.path(), fresh)) << SDL_GetError();
        if (!fs::exists(kWorkdir / relative)) {
            ADD_FAILURE() << "not committed under workdir/; run vorra-artgen workdir";
            continue;
        }
        ASSERT_TRUE(Load(kWorkdir / relative, committed)) << SDL_GetError();
        ASSERT_EQ(committed.width, fresh.width);
        ASSERT_EQ(committed.height, fresh.height);
        size_t differing = 0;
        for (size_t i = 0; i < fresh.rgba.size(); i += 4) {
            differing += std::memcmp(&fresh.rgba[i], &committed.rgba[i], 4) != 0;
        }
        EXPECT_EQ(differing, 0u) << "pixels differ from a fresh run of vorra-artgen";
    }
    EXPECT_EQ(generated, artgen::AllArtwork().size());
    fs::remove_all(out);
}

// Textures are drawn as filtered quads over the scene: nothing may show at their edges, and
// mip-maps want power-of-two sides. The spring's segment runs on across its left and right
// edges into the next one.
TEST(ArtGen, SceneImagesAreClearAtTheirBorders) {
    std::vector<std::string> paths = PathsStartingWith("textures/");
    for (const std::string& path : PathsStartingWith("background/")) {
        paths.push_back(path);
    }
    ASSERT_FALSE(paths.empty());
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const Image image = LoadCommitted(path);
        EXPECT_TRUE(IsPowerOfTwo(image.width) && IsPowerOfTwo(image.height));
        const bool tiles = path == "textures/spring.png";
        int inked = 0;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const bool border =
                    (!tiles && (x == 0 || x == image.width - 1)) || y == 0 || y == image.height - 1;
                inked += border && image.Alpha(x, y) != 0;
            }
        }
        EXPECT_EQ(inked, 0) << "border pixels that are not fully transparent";
    }
}

// Linear filtering mixes the colour of transparent pixels into the edges: they must carry the
// ink's colours, never a darker one (black would draw a dark fringe).
TEST(ArtGen, TransparentPixelsAreNoDarkerThanTheInk) {
    for (const artgen::Artwork& artwork : artgen::AllArtwork()) {
        SCOPED_TRACE(artwork.path);
        const Image image = LoadCommitted(artwork.path);
        uint8_t inkMin[3] = {255, 255, 255};
        uint8_t clearMin[3] = {255, 255, 255};
        for (size_t i = 0; i < image.rgba.size(); i += 4) {
            uint8_t* least = image.rgba[i + 3] > 0 ? inkMin : clearMin;
            for (int c = 0; c < 3; ++c) {
                least[c] = std::min(least[c], image.rgba[i + c]);
            }
        }
        for (int c = 0; c < 3; ++c) {
            EXPECT_GE(clearMin[c], inkMin[c]) << "channel " << c;
        }
    }
}

// The strip of a spring repeats the texture along s: the column after the last is the first.
TEST(ArtGen, SpringTilesAlongItsLength) {
    const Image spring = LoadCommitted("textures/spring.png");
    ASSERT_GT(spring.width, 2);
    const auto columnStep = [&](int a, int b) {
        int sum = 0;
        for (int y = 0; y < spring.height; ++y) {
            for (int c = 0; c < 4; ++c) {
                // Colour weighed by coverage: transparent pixels' colours don't show.
                const int ta = spring.At(a, y)[c] * (c == 3 ? 255 : spring.At(a, y)[3]) / 255;
                const int tb = spring.At(b, y)[c] * (c == 3 ? 255 : spring.At(b, y)[3]) / 255;
                sum += std::abs(ta - tb);
            }
        }
        return static_cast<double>(sum) / (spring.height * 4);
    };
    double steepest = 0;
    for (int x = 1; x < spring.width; ++x) {
        steepest = std::max(steepest, columnStep(x - 1, x));
    }
    const double seam = columnStep(spring.width - 1, 0);
    EXPECT_LE(seam, 2.0) << "mean step across the seam";
    EXPECT_LE(seam, steepest);
    EXPECT_EQ(spring.Alpha(spring.width / 2, 0), 0) << "clear above the coil";
    EXPECT_EQ(spring.Alpha(spring.width / 2, spring.height - 1), 0) << "clear below the coil";
}

// The program centres a cursor's 32x32 square on the mouse, so its hot spot is the middle.
TEST(ArtGen, CursorsAre32SquareWithInkAtTheHotSpot) {
    const std::vector<std::string> paths = PathsStartingWith("textures/cursors/");
    ASSERT_GE(paths.size(), 14u);
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const Image cursor = LoadCommitted(path);
        ASSERT_EQ(cursor.width, 32);
        ASSERT_EQ(cursor.height, 32);
        int strongest = 0;
        for (int y = 15; y <= 16; ++y) {
            for (int x = 15; x <= 16; ++x) {
                strongest = std::max<int>(strongest, cursor.Alpha(x, y));
            }
        }
        EXPECT_GE(strongest, 200) << "no ink on the four pixels around the hot spot";
    }
}

// SDL_LoadBMP reads the icon's alpha: its corners are clear and its middle is solid.
TEST(ArtGen, WindowIconKeepsItsAlpha) {
    SDL_Surface* icon = SDL_LoadBMP((kWorkdir / "Vorra.bmp").string().c_str());
    ASSERT_NE(icon, nullptr) << SDL_GetError();
    EXPECT_EQ(icon->w, 64);
    EXPECT_EQ(icon->h, 64);
    EXPECT_NE(icon->format->Amask, 0u);
    const auto alpha = [&](int x, int y) {
        uint32_t pixel = 0;
        SDL_memcpy(&pixel,
                   static_cast<const uint8_t*>(icon->pixels) + y * icon->pitch +
                       x * icon->format->BytesPerPixel,
                   icon->format->BytesPerPixel);
        uint8_t r, g, b, a;
        SDL_GetRGBA(pixel, icon->format, &r, &g, &b, &a);
        return a;
    };
    EXPECT_EQ(alpha(0, 0), 0);
    EXPECT_EQ(alpha(63, 63), 0);
    EXPECT_EQ(alpha(32, 32), 255);
    SDL_FreeSurface(icon);
}
