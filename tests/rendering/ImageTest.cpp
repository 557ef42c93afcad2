// Images in memory and the caches around them, without a graphics context: decoding and
// the RAW format, the search for files and their aliases, texture keys, memory reckoning
// and screenshot names.

#include <SDL.h>
#include <SDL_image.h>

#include "RenderingFixture.h"
#include "rendering/ImageManager.h"
#include "rendering/ImageRGBA32.h"
#include "rendering/Renderer.h"
#include "rendering/Shader.h"
#include "rendering/TextureManager.h"
#include "util/Exception.h"

namespace {

using rendering::ImageRGBA32;
using test_rendering::DataTreeTest;

std::string Bytes(std::initializer_list<int> values) {
    std::string bytes;
    for (int v : values) {
        bytes.push_back(static_cast<char>(v));
    }
    return bytes;
}

// An uncompressed TGA of one column, bottom row first, as the format stores it.
std::string Tga(int bits, const std::vector<std::string>& pixelsBottomUp) {
    std::string file = Bytes({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0});
    file += Bytes({static_cast<int>(pixelsBottomUp.size()), 0, bits, bits == 32 ? 8 : 0});
    for (const std::string& pixel : pixelsBottomUp) {
        file += pixel;
    }
    return file;
}

std::vector<int> Rgba(const math::Pixel& p) {
    return {p.x, p.y, p.z, p.w};
}

class ImageTest : public DataTreeTest {};

TEST_F(ImageTest, RawPicturesAreSquareAndTheFirstFileRowIsTheTop) {
    std::string sixteen;
    for (int i = 0; i < 16; ++i) {
        sixteen.push_back(static_cast<char>(i));
    }
    // Through LoadFile a RAW file is the alpha form: white, the byte is alpha.
    const rendering::ImageRGBA32Ptr alpha = ImageRGBA32::LoadFile(Write("a.raw", sixteen));
    ASSERT_EQ(alpha->GetWidth(), 4u);
    ASSERT_EQ(alpha->GetHeight(), 4u);
    EXPECT_TRUE(alpha->HasAlpha());
    EXPECT_EQ(Rgba((*alpha)(1, 3)), (std::vector<int>{255, 255, 255, 1}));
    EXPECT_EQ((*alpha)(3, 3).w, 3);
    EXPECT_EQ((*alpha)(0, 0).w, 12);

    const std::string rgb = Write("b.raw", std::string(27, '\x40'));
    const rendering::ImageRGBA32Ptr colour = ImageRGBA32::LoadRAW(rgb, ImageRGBA32::kRawRGB);
    EXPECT_EQ(colour->GetWidth(), 3u);
    EXPECT_FALSE(colour->HasAlpha());
    EXPECT_EQ(Rgba((*colour)(2, 2)), (std::vector<int>{64, 64, 64, 255}));

    const std::string odd = Write("c.raw", std::string(26, '\x40'));
    try {
        ImageRGBA32::LoadRAW(odd, ImageRGBA32::kRawRGB);
        FAIL() << "a picture of 26 bytes is no square of pixels";
    } catch (const FileReadException& e) {
        EXPECT_EQ(std::string(e.what()),
                  "The RAW-file \"" + odd + "\" contained a non quadratic picture.");
    }
    // The sized form runs out of data at the first pixel it cannot read whole.
    EXPECT_THROW(ImageRGBA32::LoadRAW(odd, ImageRGBA32::kRawRGBA, 3, 3), FileReadException);
    EXPECT_THROW(ImageRGBA32::LoadFile(Path("missing.raw")), FileReadException);
}

TEST_F(ImageTest, DecodedFilesKeepTheirColoursWithTheBottomRowFirst) {
    // TGA with alpha comes from the decoder blue first and is swapped back; without alpha
    // it comes right. Either way the file's colours are what the image holds.
    const rendering::ImageRGBA32Ptr withAlpha = ImageRGBA32::LoadFile(
        Write("a.tga", Tga(32, {Bytes({30, 20, 10, 200}), Bytes({3, 2, 1, 100})})));
    EXPECT_TRUE(withAlpha->HasAlpha());
    EXPECT_EQ(Rgba((*withAlpha)(0, 0)), (std::vector<int>{10, 20, 30, 200}));
    EXPECT_EQ(Rgba((*withAlpha)(0, 1)), (std::vector<int>{1, 2, 3, 100}));
    const rendering::ImageRGBA32Ptr opaque =
        ImageRGBA32::LoadFile(Write("b.tga", Tga(24, {Bytes({30, 20, 10}), Bytes({3, 2, 1})})));
    EXPECT_FALSE(opaque->HasAlpha());
    EXPECT_EQ(Rgba((*opaque)(0, 0)), (std::vector<int>{10, 20, 30, 255}));

    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 1, 2, 32, SDL_PIXELFORMAT_RGBA32);
    auto* pixels = static_cast<unsigned char*>(surface->pixels);
    const unsigned char top[4] = {255, 0, 0, 255};
    const unsigned char bottom[4] = {0, 0, 255, 128};
    std::copy(top, top + 4, pixels);
    std::copy(bottom, bottom + 4, pixels + surface->pitch);
    ASSERT_EQ(IMG_SavePNG(surface, Path("p.png").c_str()), 0);
    SDL_FreeSurface(surface);
    const rendering::ImageRGBA32Ptr png = ImageRGBA32::LoadFile(Path("p.png"));
    EXPECT_EQ(Rgba((*png)(0, 0)), (std::vector<int>{0, 0, 255, 128}));
    EXPECT_EQ(Rgba((*png)(0, 1)), (std::vector<int>{255, 0, 0, 255}));
    EXPECT_EQ(png->GetPath(), Path("p.png"));
}

// A picture of noise, which compresses badly, as a PNG.
std::string NoisePng(const std::string& path) {
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 32, 32, 32, SDL_PIXELFORMAT_RGBA32);
    auto* pixels = static_cast<unsigned char*>(surface->pixels);
    for (int i = 0; i < 32 * 32 * 4; ++i) {
        pixels[i] = static_cast<unsigned char>(i * 7919 % 251);
    }
    IMG_SavePNG(surface, path.c_str());
    SDL_FreeSurface(surface);
    std::ifstream file(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), {});
}

TEST_F(ImageTest, BrokenFilesThrowAndTryLoadGivesNull) {
    const std::string garbage = Write("bad.png", "this is no picture");
    EXPECT_THROW(ImageRGBA32::LoadFile(garbage), FileReadException);
    const std::string whole = NoisePng(Path("whole.png"));
    const std::string truncated = Write("cut.png", whole.substr(0, whole.size() / 2));
    EXPECT_TRUE(rendering::TryLoad(Path("whole.png")));
    EXPECT_FALSE(rendering::TryLoad(truncated));
    EXPECT_FALSE(rendering::TryLoad(garbage));
    EXPECT_TRUE(Logged("Could not load image file \"" + garbage + "\". SDL_image error: "));
}

TEST_F(ImageTest, ImagesAreFoundBelowTexturesAndDataUnderEveryAlias) {
    Write("textures/hinge.png", "");  // replaced below by a real picture
    const std::string opaque = Tga(24, {Bytes({0, 0, 200})});
    Write("textures/hinge.tga", opaque);
    Write("data/thing.tga", Tga(24, {Bytes({50, 0, 0})}));
    rendering::ImageManager& images = rendering::ImageManager::Get();

    // An empty .png is tried first and fails: the name costs only itself.
    EXPECT_FALSE(images.Get("hinge"));
    EXPECT_TRUE(Logged("Failed to load image \"hinge\""));
    std::filesystem::remove(Path("textures/hinge.png"));

    const rendering::ImgPtr hinge = images.Get("hinge");
    ASSERT_TRUE(hinge);
    for (const char* alias : {"hinge.tga", "textures/hinge", "textures/hinge.tga"}) {
        EXPECT_EQ(images.Get(alias), hinge) << alias;
    }
    const rendering::ImgPtr thing = images.Get("thing");
    ASSERT_TRUE(thing);
    EXPECT_EQ(images.Get("data/thing.tga"), thing);

    EXPECT_FALSE(images.Get("nothing"));
    EXPECT_TRUE(Logged("Failed to find image \"nothing\""));

    // A reload reads the disk again for every file asked for so far.
    Write("textures/hinge.tga", Tga(24, {Bytes({0, 99, 0})}));
    EXPECT_EQ(images.Get("hinge"), hinge);
    images.Reload();
    const auto reloaded = util::DynamicPointerCast<ImageRGBA32>(images.Get("hinge"));
    ASSERT_TRUE(reloaded);
    EXPECT_EQ((*reloaded)(0, 0).y, 99);
    EXPECT_EQ(images.Get("thing.tga"), images.Get("data/thing"));
}

TEST_F(ImageTest, TexturesAreKeyedByFileAndEverySetting) {
    Write("textures/a.tga", Tga(24, {Bytes({1, 2, 3})}));
    rendering::TextureManager& textures = rendering::TextureManager::Get();
    const rendering::TextureHandle linear = textures.Load("a", GL_RGBA);
    EXPECT_EQ(textures.Load("a", GL_RGBA), linear);
    const rendering::TextureHandle nearest = textures.Load("a", GL_RGBA, true, 0, 0, 1, 0, 1);
    ASSERT_NE(nearest, linear);
    EXPECT_NE(nearest->Get(), linear->Get());
    EXPECT_EQ(nearest->Get()->GetImage(), linear->Get()->GetImage());
    // Without a context a texture keeps its settings and has no name.
    EXPECT_EQ(linear->Get()->GetName(), 0u);

    using Key = rendering::TextureManager::Key;
    const rendering::TextureManager::KeyHasher hash;
    EXPECT_EQ(hash(Key{"ab", GL_RGBA, true, 0, 0, 1, 1, 1}), 0x61132eu);
    EXPECT_EQ(hash(Key{"ab", GL_RGB, false, 1, 1, 0, 1, 0}), 0x610103u);

    // A file that gives no picture gets the class-wide default: white at half alpha.
    const rendering::TextureHandle missing = textures.Load("missing", GL_RGBA);
    EXPECT_TRUE(rendering::TextureManager::IsDefault(missing));
    EXPECT_FALSE(rendering::TextureManager::IsDefault(linear));
    const auto fallback = util::DynamicPointerCast<ImageRGBA32>(missing->Get()->GetImage());
    ASSERT_TRUE(fallback);
    EXPECT_EQ(fallback->GetWidth(), 64u);
    EXPECT_EQ(Rgba((*fallback)(5, 5)), (std::vector<int>{255, 255, 255, 127}));
}

TEST_F(ImageTest, PreloadWalksTexturesLanguageAndFontsAndReportsFailures) {
    const std::string pixel = Tga(24, {Bytes({1, 2, 3})});
    Write("textures/a.tga", pixel);
    Write("textures/sub/b.tga", pixel);
    Write("textures/.hidden.tga", "broken, but never read");
    Write("textures/broken.png", "not a picture");
    Write("language/English.png", "");  // found by the pattern, fails
    Write("language/notes.txt", "not a picture, not matched");
    Write("fonts/f.raw", std::string(16, '\x7f'));
    Write("fonts/f.dat", std::string(256, '\x01'));
    const std::vector<util::String> failed = rendering::TextureManager::Get().Preload();
    EXPECT_EQ(failed, (std::vector<util::String>{"textures/broken.png", "language/English.png"}));
    EXPECT_FALSE(Logged(".hidden"));
    EXPECT_FALSE(Logged("notes.txt"));
    EXPECT_TRUE(rendering::ImageManager::Get().Get("textures/sub/b"));
    EXPECT_TRUE(rendering::ImageManager::Get().Get("fonts/f.raw"));
}

TEST_F(ImageTest, MemoryIsReckonedByTheRequestedFormat) {
    const rendering::ImgPtr image(new ImageRGBA32(64, 32));
    using Type = rendering::Texture::ImageType;
    EXPECT_EQ(rendering::Texture(image, Type{GL_RGBA, false}).MemoryUsage(), 64u * 32 * 4);
    EXPECT_EQ(rendering::Texture(image, Type{GL_RGBA, true}).MemoryUsage(), 64u * 32 * 4 * 4 / 3);
    // Sixteen bits a channel count two bytes a pixel: the reckoning this program has kept.
    EXPECT_EQ(rendering::Texture(image, Type{GL_RGBA16, false}).MemoryUsage(), 64u * 32 * 2);
    EXPECT_EQ(rendering::Texture(16, 16, Type{GL_DEPTH_COMPONENT24}).MemoryUsage(), 16u * 16 * 3);
    EXPECT_EQ(rendering::Texture(image, Type{GL_RGBA32F_ARB, false}).MemoryUsage(), 64u * 32 * 16);
    rendering::GraphicsContext::SetForce16BitTextures(true);
    EXPECT_EQ(rendering::Texture(image, Type{GL_RGBA, false}).MemoryUsage(), 64u * 32 * 4);
    rendering::GraphicsContext::SetForce16BitTextures(false);
    EXPECT_THROW(rendering::Texture(image, Type{GL_LUMINANCE, false}).MemoryUsage(),
                 BadCoderException);
}

TEST_F(ImageTest, ScreenshotNamesCountUpAndRunOutAtTenThousand) {
    const std::string base = Path("shots/vorra");
    const util::String first = rendering::Renderer::ScreenshotName(base);
    ASSERT_EQ(first.size(), base.size() + 16);  // _YYMMDD_NNNN.tga
    EXPECT_TRUE(first.ends_with("_0000.tga")) << first;
    Write("shots/" + first.substr(first.rfind('/') + 1), "");
    EXPECT_TRUE(rendering::Renderer::ScreenshotName(base).ends_with("_0001.tga"));
    const util::String stem = first.substr(0, first.size() - 8);
    for (int n = 0; n < 10000; ++n) {
        char number[8];
        std::snprintf(number, sizeof(number), "%04d", n);
        std::ofstream(stem + number + ".tga");
    }
    EXPECT_EQ(rendering::Renderer::ScreenshotName(base), "to_many_screenshots.tga");
}

TEST_F(ImageTest, ShadersNeedAContextAndEveryEntryPoint) {
    try {
        rendering::Shader("", "", "any");
        FAIL() << "a shader without a context";
    } catch (const Exception& e) {
        EXPECT_EQ(std::string(e.what()), "Tried to create shader when GL wasn't loaded");
    }
    const rendering::ShaderEntryPoint all[] = {{"gl_CreateProgram", true},
                                               {"gl_LinkProgram", true}};
    EXPECT_NO_THROW(rendering::CheckShaderSupport(true, all, 2));
    try {
        rendering::CheckShaderSupport(false, all, 2);
        FAIL() << "no shader objects";
    } catch (const Exception& e) {
        EXPECT_EQ(std::string(e.what()),
                  "This system doesn't support shaders. Please update your graphics driver and "
                  "try again");
    }
    const rendering::ShaderEntryPoint gap[] = {
        {"gl_CreateProgram", true}, {"gl_LinkProgram", false}, {"gl_UseProgram", false}};
    try {
        rendering::CheckShaderSupport(true, gap, 3);
        FAIL() << "a missing entry point";
    } catch (const Exception& e) {
        EXPECT_EQ(std::string(e.what()), "Unsupported shader function: gl_LinkProgram");
    }
}

}  // namespace
