// Textures, screenshots and shaders on a real OpenGL context (Mesa under the virtual X
// server), and the data tree's own files: every one that the program names is there and
// loads, and every shipped program compiles, links and has the uniforms its users set.

#include <GL/glew.h>

#include "FullScreenQuad.h"
#include "RenderingFixture.h"
#include "rendering/ImageManager.h"
#include "rendering/Renderer.h"
#include "rendering/ShaderManager.h"
#include "rendering/TextureManager.h"

namespace {

using rendering::ImageRGBA32;
using rendering::Texture;
using test_rendering::DrawFullScreen;
using test_rendering::GraphicsTest;

TEST_F(GraphicsTest, TexturesGoToTheCardAndComeBack) {
    rendering::ImageRGBA32Ptr image(new ImageRGBA32(2, 2));
    (*image)(0, 0) = math::Pixel(200, 0, 0, 255);
    (*image)(1, 1) = math::Pixel(0, 0, 200, 77);
    const Texture texture(image, Texture::ImageType{GL_RGBA, false, 1, 1, 0, 0, 0});
    ASSERT_NE(texture.GetName(), 0u);
    const rendering::ImageRGBA32Ptr back = texture.Read();
    EXPECT_EQ((*back)(0, 0), (*image)(0, 0));
    EXPECT_EQ((*back)(1, 1), (*image)(1, 1));

    // Drawn over the window, the bottom-left texel lands at the bottom left.
    DrawFullScreen(texture);
    EXPECT_EQ(PixelAt(2, 2), (std::vector<int>{200, 0, 0, 255}));

    // The frame buffer copied into an empty texture.
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    Texture target(kSide, kSide, Texture::ImageType{GL_RGBA, true});
    EXPECT_FALSE(target.GetImageType().mipmaps);
    target.Copy(kSide, kSide);
    EXPECT_EQ((*target.Read())(kSide - 1, kSide - 1), math::Pixel(0, 255, 0, 255));

    // A second unit binds where multi-texturing is there.
    ASSERT_TRUE(rendering::GraphicsContext::HasMultiTexturing());
    texture.Bind(1);
    GLint active = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    EXPECT_EQ(active, GL_TEXTURE0);
    Texture::Unbind(1);
}

TEST_F(GraphicsTest, DepthAndMipMappedTexturesGetTheirParameters) {
    const Texture depth(16, 16, Texture::ImageType{GL_DEPTH_COMPONENT24, false, 1, 1, 0, 0, 0});
    ASSERT_NE(depth.GetName(), 0u);
    depth.Bind();
    GLint compare = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, &compare);
    EXPECT_EQ(compare, GL_COMPARE_R_TO_TEXTURE);
    GLint wrap = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrap);
    EXPECT_EQ(wrap, GL_CLAMP_TO_EDGE);

    const Texture mipmapped(rendering::ImgPtr(new ImageRGBA32(8, 8)),
                            Texture::ImageType{GL_RGBA, true, 0, 0, 1, 1, 0});
    mipmapped.Bind();
    GLint minFilter = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &minFilter);
    EXPECT_EQ(minFilter, GL_LINEAR_MIPMAP_NEAREST);
    GLint smallest = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 3, GL_TEXTURE_WIDTH, &smallest);
    EXPECT_EQ(smallest, 1);
    Texture::Unbind();
}

TEST_F(GraphicsTest, ScreenshotIsA24BitTgaOfTheViewport) {
    glClearColor(0.2f, 0.4f, 0.6f, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    const util::String name = rendering::Renderer::Get().SaveScreenshot(Path("shots/vorra"));
    ASSERT_TRUE(name.ends_with("_0000.tga")) << name;
    EXPECT_TRUE(Logged("Screenshot saved to \"" + name + "\""));

    std::ifstream file(name, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    ASSERT_EQ(bytes.size(), 18u + kSide * kSide * 3);
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
    EXPECT_EQ(byte(2), 2);
    EXPECT_EQ(byte(12) + 256 * byte(13), kSide);
    EXPECT_EQ(byte(14) + 256 * byte(15), kSide);
    EXPECT_EQ(byte(16), 24);
    EXPECT_EQ(byte(17), 0);
    // Blue, green, red.
    EXPECT_EQ((std::vector<int>{byte(18), byte(19), byte(20)}), (std::vector<int>{153, 102, 51}));
    // The file reads back through the image loader with the same colour.
    const rendering::ImageRGBA32Ptr shot = ImageRGBA32::LoadFile(name);
    EXPECT_EQ((*shot)(kSide - 1, kSide - 1), math::Pixel(51, 102, 153, 255));
    EXPECT_TRUE(
        rendering::Renderer::Get().SaveScreenshot(Path("shots/vorra")).ends_with("_0001.tga"));
}

TEST_F(GraphicsTest, RendererSetsTheColourOnlyWhenItChanges) {
    rendering::Renderer& renderer = rendering::Renderer::Get();
    renderer.SetColor(math::Colour(1, 0, 0, 1));
    // Changed behind the renderer's back: its cache still believes red is set.
    glColor4f(0, 1, 0, 1);
    renderer.SetColor(math::Colour(1, 0, 0, 1));
    GLfloat current[4] = {};
    glGetFloatv(GL_CURRENT_COLOR, current);
    EXPECT_EQ(current[1], 1.0f);
    renderer.ForgetState();
    renderer.SetColor(math::Colour(1, 0, 0, 1));
    glGetFloatv(GL_CURRENT_COLOR, current);
    EXPECT_EQ(current[0], 1.0f);
    renderer.MultiplyColor(math::Colour(0.5f, 1, 1, 0.5f));
    EXPECT_EQ(renderer.GetColor(), math::Colour(0.5f, 0, 0, 0.5f));
}

// Counts the questions to the driver.
class CountingUniform : public rendering::Uniform {
public:
    using Uniform::Uniform;
    int QueryLocation() override {
        ++queries;
        return Uniform::QueryLocation();
    }
    void Apply() override {}
    int queries = 0;
};

TEST_F(GraphicsTest, ShaderVariablesAskForTheirLocationAgainAfterARebuild) {
    rendering::GraphicsContext::SetShadersEnabled(true);
    Write("shaders/default/tint.frag", "uniform vec4 Color; void main() { gl_FragColor = Color; }");
    rendering::ShaderManager& shaders = rendering::ShaderManager::Get();
    const rendering::ShaderHandle tint = shaders.Load("tint");
    ASSERT_TRUE(rendering::ShaderManager::IsUsable(tint));

    util::SharedPtr<CountingUniform> color(new CountingUniform(tint, "Color"));
    const int location = color->GetLocation();
    EXPECT_NE(location, -1);
    color->GetLocation();
    EXPECT_EQ(color->queries, 1);
    tint->Unload();
    tint->Load();
    EXPECT_EQ(color->GetLocation(), location);
    color->GetLocation();
    EXPECT_EQ(color->queries, 2);

    // The program draws what the uniform says.
    tint->Get()->Bind();
    rendering::Uniform::SetUniform(color->GetLocation(), math::Vec4(0, 0, 1, 1));
    glBegin(GL_QUADS);
    glVertex2f(-1, -1);
    glVertex2f(1, -1);
    glVertex2f(1, 1);
    glVertex2f(-1, 1);
    glEnd();
    tint->Get()->Unbind();
    EXPECT_EQ(PixelAt(10, 10), (std::vector<int>{0, 0, 255, 255}));

    EXPECT_EQ(tint->Get()->GetUniformLocation("Nope"), -1);
    EXPECT_TRUE(Logged("Uniform \"Nope\" not found in shader"));
    m_log.clear();
    const rendering::ShaderPtr null = rendering::ShaderManager::MakeNullProgram();
    EXPECT_EQ(null->GetHandle(), 0u);
    EXPECT_EQ(null->GetUniformLocation("Color"), -1);
    EXPECT_TRUE(m_log.empty());
}

TEST_F(GraphicsTest, ABrokenProgramGivesTheFixedPipelineAndShadersOffReadNothing) {
    Write("shaders/default/broken.frag", "void main() { this is not GLSL }");
    rendering::ShaderManager& shaders = rendering::ShaderManager::Get();
    rendering::GraphicsContext::SetShadersEnabled(false);
    const rendering::ShaderHandle off = shaders.Load("broken");
    ASSERT_TRUE(off->Get());
    EXPECT_EQ(off->Get()->GetHandle(), 0u);
    EXPECT_FALSE(Logged("broken"));

    rendering::GraphicsContext::SetShadersEnabled(true);
    off->Unload();
    off->Load();
    ASSERT_TRUE(off->Get());
    EXPECT_FALSE(rendering::ShaderManager::IsUsable(off));
    EXPECT_TRUE(Logged("-- Compilation results for shader: broken"));
    EXPECT_TRUE(Logged("Failed to compile shader"));

    // A program may have one stage only.
    const rendering::Shader vertexOnly("void main() { gl_Position = ftransform(); }", "", "v");
    EXPECT_NE(vertexOnly.GetHandle(), 0u);
}

// The data tree as it ships: what the program asks for by name must be there.
class DataTreeFilesTest : public GraphicsTest {
protected:
    void SetUp() override {
        GraphicsTest::SetUp();
        util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
    }
    static std::string Data(const std::string& relative) { return VORRA_DATA_DIR + relative; }
};

TEST_F(DataTreeFilesTest, EveryNamedImageLoadsWithTransparentEdgesWhereItOverlaps) {
    const std::vector<std::string> overlapping = {"hinge",
                                                  "hinge_bg",
                                                  "fixjoint",
                                                  "fixjoint_bg",
                                                  "ring",
                                                  "dot",
                                                  "simpleWater",
                                                  "spring_attachment",
                                                  "rotate_origo.png",
                                                  "cursors/mouse",
                                                  "cursors/arrow",
                                                  "cursors/arrow_north-west",
                                                  "cursors/arrow_north-south",
                                                  "cursors/arrow_north-east",
                                                  "cursors/arrow_west-east"};
    const std::vector<std::string> others = {"spring", "blank", "language/English.png",
                                             "language/German.png"};
    const std::vector<std::string> tools = {"move",   "rotate",   "pan",    "sketch", "brush",
                                            "drag",   "plane",    "circle", "box",    "chain",
                                            "spring", "fixjoint", "hinge",  "pen",    "scale"};
    rendering::ImageManager& images = rendering::ImageManager::Get();
    std::vector<std::string> all = overlapping;
    all.insert(all.end(), others.begin(), others.end());
    for (const std::string& tool : tools) {
        all.push_back("tools/" + tool);
    }
    for (const std::string& name : all) {
        EXPECT_TRUE(images.Get(name)) << name;
    }
    for (const std::string& name : overlapping) {
        const auto image = util::DynamicPointerCast<ImageRGBA32>(images.Get(name));
        ASSERT_TRUE(image) << name;
        const size_t w = image->GetWidth();
        const size_t h = image->GetHeight();
        for (size_t i = 0; i < std::max(w, h); ++i) {
            const size_t x = std::min(i, w - 1);
            const size_t y = std::min(i, h - 1);
            ASSERT_EQ(
                (*image)(x, 0).w + (*image)(x, h - 1).w + (*image)(0, y).w + (*image)(w - 1, y).w,
                0)
                << name << " has an opaque edge";
        }
    }
    const std::vector<util::String> clouds =
        util::FileSystem::Get().ListFiles(Data("background/"), "*.png");
    EXPECT_GE(clouds.size(), 3u);
    for (const util::String& cloud : clouds) {
        EXPECT_TRUE(images.Get("background/" + cloud)) << cloud;
    }
    SDL_Surface* icon = SDL_LoadBMP(Data("Vorra.bmp").c_str());
    ASSERT_NE(icon, nullptr) << SDL_GetError();
    SDL_FreeSurface(icon);
}

TEST_F(DataTreeFilesTest, FontsAreSquareGridsWithTheirWidths) {
    for (const char* font : {"arial_black", "fixedsys"}) {
        const auto image = ImageRGBA32::LoadFile(Data(std::string("fonts/") + font + ".raw"));
        EXPECT_EQ(image->GetWidth() % 16, 0u) << font;
        const size_t widths =
            std::filesystem::file_size(Data(std::string("fonts/") + font + ".dat"));
        EXPECT_TRUE(widths == 256 || widths == 512) << font;
    }
    // Every file of the preload pass loads: nothing falls back on the default.
    EXPECT_EQ(rendering::TextureManager::Get().Preload(), std::vector<util::String>());
}

TEST_F(DataTreeFilesTest, EveryShippedProgramCompilesLinksAndHasItsUniforms) {
    rendering::GraphicsContext::SetShadersEnabled(true);
    const std::vector<std::pair<std::string, std::vector<std::string>>> programs = {
        {"water", {"Cutoff", "Color"}},
        // Boxes and circles are drawn in batches: what differs by shape comes with the
        // vertices.
        {"circle", {"PixelSize", "CakeSize"}},
        {"polygon", {"DistSampler"}},
        {"box", {"PixelSize"}},
        {"plane", {"InsideColor", "BorderColor", "BorderWidth", "PixelSize", "Normal", "Offset"}},
        {"line", {"Color", "Width", "PixelSize"}},
    };
    rendering::ShaderManager& shaders = rendering::ShaderManager::Get();
    shaders.Preload();
    for (const auto& [name, uniforms] : programs) {
        const rendering::ShaderHandle handle = shaders.Load(name);
        ASSERT_TRUE(rendering::ShaderManager::IsUsable(handle)) << name;
        for (const std::string& uniform : uniforms) {
            EXPECT_NE(handle->Get()->GetUniformLocation(uniform), -1) << name << "." << uniform;
        }
    }
    EXPECT_FALSE(Logged("Failed to"));
}

}  // namespace
