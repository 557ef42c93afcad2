// The sky and its clouds: the field the first update makes, from the data tree's cloud
// images or from "blank"; drift that follows simulated time only; wrapping round the view
// one extent a frame; and what lands in the frame buffer.

#include "app/Background.h"

#include <GL/glew.h>
#include <SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <tuple>
#include <vector>

#include "../../rendering/SanitizerSafeDriver.h"
#include "../SceneFixture.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "physics/Simulation.h"
#include "rendering/GraphicsContext.h"
#include "rendering/Renderer.h"
#include "rendering/TextureManager.h"
#include "util/FileSystem.h"
#include "util/Random.h"

namespace {

using app::Background;
using Clouds = std::vector<Background::Cloud>;

constexpr uint32_t kSeed = 20240611;
constexpr int kWidth = 160;
constexpr int kHeight = 120;

class BackgroundTest : public test_app::SceneTest {
protected:
    // One hidden window for the suite: textures go to a real card and Draw is read back.
    static void SetUpTestSuite() {
        test_rendering::UseSanitizerSafeDriver();
        ASSERT_EQ(SDL_InitSubSystem(SDL_INIT_VIDEO), 0) << SDL_GetError();
        SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, 8);
        s_window = SDL_CreateWindow("background test", 0, 0, kWidth, kHeight,
                                    SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
        ASSERT_NE(s_window, nullptr) << SDL_GetError();
        s_context = SDL_GL_CreateContext(s_window);
        ASSERT_NE(s_context, nullptr) << SDL_GetError();
        ASSERT_EQ(rendering::GraphicsContext::ContextCreated(), "");
        test_rendering::KeepDriverLoaded();
    }
    static void TearDownTestSuite() {
        rendering::GraphicsContext::ContextLost();
        SDL_GL_DeleteContext(s_context);
        SDL_DestroyWindow(s_window);
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }

    void SetUp() override {
        ASSERT_NE(s_context, nullptr);
        SceneTest::SetUp();
        Sim().running->SetNative(false);
        Sim().SetSimulatedTime(0);
        // The window's size, so that the view's centre is the camera's pan.
        GetScene().GetCamera().SetViewport(math::Vec2(0, 0), math::Vec2(kWidth, kHeight));
        m_workDirectory = util::FileSystem::Get().GetWorkDirectory();
        util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
    }
    void TearDown() override {
        Sim().running->SetNative(false);
        Sim().SetSimulatedTime(0);
        // The viewport the camera is made with, and the work directory as it was.
        GetScene().GetCamera().SetViewport(math::Vec2(0, 0), math::Vec2(800, 600));
        util::FileSystem::Get().SetWorkDirectory(m_workDirectory);
        if (!m_tree.empty()) {
            std::error_code ignored;
            std::filesystem::remove_all(m_tree, ignored);
        }
        SceneTest::TearDown();
    }

    static physics::Simulation& Sim() { return physics::Simulation::Get(); }
    static app::Camera& Camera() { return GetScene().GetCamera(); }

    // A private data tree with the real "blank" and what the test puts in "background/".
    void UsePrivateTree() {
        char pattern[] = "/tmp/vorra_background_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_tree = pattern;
        std::filesystem::create_directories(m_tree / "textures");
        std::filesystem::copy_file(std::filesystem::path(VORRA_DATA_DIR) / "textures/blank.png",
                                   m_tree / "textures/blank.png");
        util::FileSystem::Get().SetWorkDirectory(m_tree.string());
    }
    void WriteFile(const std::string& relative, const std::string& bytes) const {
        const std::filesystem::path path = m_tree / relative;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
    }

    static rendering::TextureHandle Blank() {
        return rendering::TextureManager::Get().Load("blank", GL_RGBA, true, 0, 0, 1, 1, 1);
    }

    // As the application draws it: the GUI's projection, in window units with y down.
    static void DrawFrame(Background& background) {
        glViewport(0, 0, kWidth, kHeight);
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, kWidth, kHeight, 0, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        background.Draw();
    }
    // The frame, RGB, 0 to 255 a channel.
    static std::vector<unsigned char> ReadFrame() {
        std::vector<unsigned char> rgb(kWidth * kHeight * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
        return rgb;
    }
    // The share of the pixels of `after` that differ by more than a few steps from those of
    // `before` moved by (dx, dy) window pixels (y down), over the part both frames show.
    static double ShiftMismatch(const std::vector<unsigned char>& before,
                                const std::vector<unsigned char>& after, int dx, int dy) {
        const auto at = [](const std::vector<unsigned char>& rgb, int x, int y, int c) {
            return static_cast<int>(rgb[((kHeight - 1 - y) * kWidth + x) * 3 + c]);
        };
        int compared = 0;
        int differing = 0;
        for (int y = std::max(0, dy); y < kHeight + std::min(0, dy); ++y) {
            for (int x = std::max(0, dx); x < kWidth + std::min(0, dx); ++x) {
                ++compared;
                for (int c = 0; c < 3; ++c) {
                    if (std::abs(at(after, x, y, c) - at(before, x - dx, y - dy, c)) > 8) {
                        ++differing;
                        break;
                    }
                }
            }
        }
        return static_cast<double>(differing) / compared;
    }
    // Pixels farther than one step from the colour in some channel.
    static int CountOtherThan(const std::vector<unsigned char>& rgb, const math::Colour& colour) {
        const int expected[3] = {static_cast<int>(std::lround(colour.x * 255)),
                                 static_cast<int>(std::lround(colour.y * 255)),
                                 static_cast<int>(std::lround(colour.z * 255))};
        int count = 0;
        for (size_t i = 0; i < rgb.size(); i += 3) {
            for (int c = 0; c < 3; ++c) {
                if (std::abs(rgb[i + c] - expected[c]) > 1) {
                    ++count;
                    break;
                }
            }
        }
        return count;
    }

    // Each cloud's move since `before` on one axis: none, or one extent either way, and
    // nothing else. Gives how many moved by -extent, 0 and +extent.
    static std::array<int, 3> Shifts(const Clouds& before, const Clouds& after, bool xAxis,
                                     float extent) {
        std::array<int, 3> counts{0, 0, 0};
        EXPECT_EQ(before.size(), after.size());
        for (size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
            const float from = xAxis ? before[i].position.x : before[i].position.y;
            const float to = xAxis ? after[i].position.x : after[i].position.y;
            if (to == from) {
                ++counts[1];
            } else if (to == from + extent) {
                ++counts[2];
            } else if (to == from - extent) {
                ++counts[0];
            } else {
                ADD_FAILURE() << "cloud " << i << " moved from " << from << " to " << to;
            }
        }
        return counts;
    }

    std::filesystem::path m_tree;
    util::String m_workDirectory;
    static inline SDL_Window* s_window = nullptr;
    static inline SDL_GLContext s_context = nullptr;
};

TEST_F(BackgroundTest, WithoutCloudImagesEveryCloudUsesBlank) {
    UsePrivateTree();
    // No folder at all, then one with a broken image, a note, and a good picture under a
    // name that is no image's.
    for (int round = 0; round < 2; ++round) {
        if (round == 1) {
            WriteFile("background/broken.png", "not a picture");
            WriteFile("background/notes.txt", "clouds go here");
            std::filesystem::copy_file(std::filesystem::path(VORRA_DATA_DIR) / "textures/blank.png",
                                       m_tree / "background/cloud.png.txt");
        }
        Background background(kSeed);
        EXPECT_TRUE(background.GetClouds().empty());
        background.Update(0.02f);
        ASSERT_EQ(background.GetClouds().size(), 2500u) << "round " << round;
        ASSERT_EQ(background.GetTextures().size(), 1u) << "round " << round;
        // The manager's own "blank": whether its file gave a picture is the manager's affair.
        EXPECT_EQ(background.GetTextures()[0], Blank());
        for (const Background::Cloud& cloud : background.GetClouds()) {
            ASSERT_EQ(cloud.texture, 0);
        }
    }
}

TEST_F(BackgroundTest, TheDataTreesCloudsMakeASortedFieldInTheirRanges) {
    Background background(kSeed);
    background.Update(0);
    const Clouds& clouds = background.GetClouds();
    ASSERT_EQ(clouds.size(), 2500u);

    // Every image of the shipped folder, loaded clamped, in the folder's sorted order.
    std::vector<std::string> images;
    for (const auto& entry : std::filesystem::directory_iterator(
             std::filesystem::path(VORRA_DATA_DIR) / "background")) {
        const std::string ext = entry.path().extension().string();
        if (ext == ".png" || ext == ".tga" || ext == ".bmp" || ext == ".jpg") {
            images.push_back(entry.path().filename().string());
        }
    }
    std::sort(images.begin(), images.end());
    ASSERT_GE(images.size(), 2u);
    ASSERT_EQ(background.GetTextures().size(), images.size());
    for (size_t i = 0; i < images.size(); ++i) {
        const rendering::TextureHandle& texture = background.GetTextures()[i];
        EXPECT_EQ(texture, rendering::TextureManager::Get().Load("background/" + images[i], GL_RGBA,
                                                                 true, 1, 1, 1, 1, 1));
        EXPECT_FALSE(rendering::TextureManager::IsDefault(texture));
        ASSERT_TRUE(texture->Get());
        EXPECT_NE(texture->Get()->GetName(), 0u);
    }
    EXPECT_NE(background.GetTextures()[0], Blank());

    const math::Vec2 extents = background.GetWrapExtents();
    EXPECT_NEAR(extents.x, 1950.476f, 1e-3f);
    EXPECT_NEAR(extents.y, 1219.048f, 1e-3f);
    for (size_t i = 0; i < clouds.size(); ++i) {
        const Background::Cloud& c = clouds[i];
        if (i > 0) {
            ASSERT_LE(clouds[i - 1].size, c.size) << i;
        }
        ASSERT_GE(c.size, 5.0f);
        ASSERT_LT(c.size, 15.0f);
        ASSERT_GE(c.position.x, 0.0f);
        ASSERT_LT(c.position.x, extents.x);
        ASSERT_GE(c.position.y, 0.0f);
        ASSERT_LT(c.position.y, extents.y);
        ASSERT_GE(c.velocity.x, c.size * 0.1f * 0.99999f);
        ASSERT_LT(c.velocity.x, c.size * 0.2f * 1.00001f);
        ASSERT_EQ(c.velocity.y, 0.0f);
        ASSERT_EQ(c.rotation, 0.0f);
        ASSERT_EQ(c.rotationSpeed, 0.0f);
        ASSERT_FALSE(c.flag);
        ASSERT_EQ(c.color, math::Colour(1, 1, 1, 1));
    }

    // The same seed gives the same field: size, x, y and speed drawn in that order, and the
    // texture fixed by the place before sorting.
    util::Random random(kSeed);
    const int textures = static_cast<int>(images.size());
    Clouds expected(2500);
    for (int i = 0; i < 2500; ++i) {
        expected[i].size = random.GetUniform(5, 15);
        expected[i].position.x = random.GetUniform(0, extents.x);
        expected[i].position.y = random.GetUniform(0, extents.y);
        expected[i].velocity.x = expected[i].size * random.GetUniform(0.1f, 0.2f);
        expected[i].texture = i % textures;
    }
    Clouds actual = clouds;
    const auto byFields = [](const Background::Cloud& a, const Background::Cloud& b) {
        return std::tie(a.size, a.position.x, a.position.y) <
               std::tie(b.size, b.position.x, b.position.y);
    };
    std::sort(expected.begin(), expected.end(), byFields);
    std::sort(actual.begin(), actual.end(), byFields);
    for (size_t i = 0; i < actual.size(); ++i) {
        ASSERT_EQ(actual[i].size, expected[i].size) << i;
        ASSERT_EQ(actual[i].position, expected[i].position) << i;
        ASSERT_EQ(actual[i].velocity.x, expected[i].velocity.x) << i;
        ASSERT_EQ(actual[i].texture, expected[i].texture) << i;
    }
}

TEST_F(BackgroundTest, CloudsFollowSimulatedTimeWhileItRuns) {
    Background background(kSeed);
    // A first time far from the stored 0: a jump, nothing moves, the time is kept.
    Sim().SetSimulatedTime(10);
    background.Update(0.02f);
    const Clouds start = background.GetClouds();
    ASSERT_EQ(start.size(), 2500u);
    const auto movedBy = [&](const Clouds& from, double dt) {
        const Clouds& now = background.GetClouds();
        for (size_t i = 0; i < now.size(); ++i) {
            const math::Vec2 want = from[i].position + from[i].velocity * static_cast<float>(dt);
            if (std::abs(now[i].position.x - want.x) > 1e-3f || now[i].position.y != want.y) {
                return testing::AssertionFailure()
                       << "cloud " << i << " at " << now[i].position.x << " instead of " << want.x;
            }
        }
        return testing::AssertionSuccess();
    };

    // Paused: the clouds stand, whatever frame time the caller passes.
    Sim().SetSimulatedTime(10.5);
    background.Update(0.5f);
    EXPECT_TRUE(movedBy(start, 0));

    // Running: the time since the last update, the paused half second not counted.
    Sim().running->SetNative(true);
    Sim().SetSimulatedTime(10.75);
    background.Update(0.02f);
    EXPECT_TRUE(movedBy(start, 0.25));

    // More than a second (a load, an undo) moves nothing; exactly one second moves.
    Clouds before = background.GetClouds();
    Sim().SetSimulatedTime(12.5);
    background.Update(0.02f);
    EXPECT_TRUE(movedBy(before, 0));
    Sim().SetSimulatedTime(13.5);
    background.Update(0.02f);
    EXPECT_TRUE(movedBy(before, 1));

    // Back in time, or a time that is no number, moves nothing either; the stored time
    // follows, so the next good time counts from it.
    before = background.GetClouds();
    Sim().SetSimulatedTime(13.25);
    background.Update(0.02f);
    EXPECT_TRUE(movedBy(before, 0));
    Sim().SetSimulatedTime(std::numeric_limits<double>::quiet_NaN());
    background.Update(0.02f);
    Sim().SetSimulatedTime(13.5);
    background.Update(0.02f);
    EXPECT_TRUE(movedBy(before, 0));
    Sim().SetSimulatedTime(13.625);
    background.Update(0.02f);
    EXPECT_TRUE(movedBy(before, 0.125));
}

TEST_F(BackgroundTest, CloudsOffFromTheStartMakeNothingUntilTurnedOn) {
    Background background(kSeed);
    background.drawClouds->SetNative(false);
    Sim().running->SetNative(true);
    for (double t : {0.25, 0.5}) {
        Sim().SetSimulatedTime(t);
        background.Update(0.02f);
    }
    EXPECT_TRUE(background.GetClouds().empty());
    EXPECT_TRUE(background.GetTextures().empty());
    // Drawn so, it is the sky alone.
    background.SetSize(kWidth, kHeight);
    DrawFrame(background);
    EXPECT_EQ(CountOtherThan(ReadFrame(), background.skyColor->Get()), 0);

    background.drawClouds->SetNative(true);
    background.Update(0.02f);
    EXPECT_EQ(background.GetClouds().size(), 2500u);
    EXPECT_FALSE(background.GetTextures().empty());
}

TEST_F(BackgroundTest, CloudsLeavingTheWrapRectangleComeBackOnTheOtherSide) {
    Background background(kSeed);
    background.SetSize(kWidth, kHeight);
    background.Update(0);
    const math::Vec2 extents = background.GetWrapExtents();
    // The field lies in [0, extent) on each axis; centred on it, nothing wraps.
    Camera().SetPan(extents * 0.5f);
    Clouds before = background.GetClouds();
    DrawFrame(background);
    EXPECT_EQ(Shifts(before, background.GetClouds(), true, extents.x)[1], 2500);
    EXPECT_EQ(Shifts(before, background.GetClouds(), false, extents.y)[1], 2500);

    // Half an extent to the right: the left half comes back on the right at its height.
    Camera().SetPan(math::Vec2(extents.x, extents.y * 0.5f));
    before = background.GetClouds();
    DrawFrame(background);
    std::array<int, 3> x = Shifts(before, background.GetClouds(), true, extents.x);
    EXPECT_EQ(x[0], 0);
    EXPECT_GT(x[1], 1000);
    EXPECT_GT(x[2], 1000);
    EXPECT_EQ(Shifts(before, background.GetClouds(), false, extents.y)[1], 2500);
    for (size_t i = 0; i < before.size(); ++i) {
        const bool moved = background.GetClouds()[i].position.x != before[i].position.x;
        ASSERT_EQ(moved, before[i].position.x < extents.x * 0.5f) << before[i].position.x;
    }

    // Back to the left: those come back the other way, and so do clouds above the view.
    Camera().SetPan(math::Vec2(extents.x * 0.5f, extents.y));
    before = background.GetClouds();
    DrawFrame(background);
    x = Shifts(before, background.GetClouds(), true, extents.x);
    EXPECT_GT(x[0], 500);
    EXPECT_EQ(x[2], 0);
    const std::array<int, 3> y = Shifts(before, background.GetClouds(), false, extents.y);
    EXPECT_EQ(y[0], 0);
    EXPECT_GT(y[2], 1000);

    // Three extents away, a frame brings each cloud one extent nearer, no more.
    Camera().SetPan(math::Vec2(extents.x * 3.5f, extents.y));
    for (int frame = 0; frame < 2; ++frame) {
        before = background.GetClouds();
        DrawFrame(background);
        EXPECT_EQ(Shifts(before, background.GetClouds(), true, extents.x)[2], 2500) << frame;
        EXPECT_EQ(Shifts(before, background.GetClouds(), false, extents.y)[1], 2500) << frame;
    }
}

TEST_F(BackgroundTest, TheSkyFillsTheWindowAndCloudsLieOnIt) {
    Background background(kSeed);
    background.SetSize(kWidth, kHeight);
    background.Update(0);
    background.skyColor->SetNative(math::Colour(0.2f, 0.6f, 0.4f, 1));
    // At the smallest zoom a few hundred clouds are in view.
    Camera().SetZoom(app::Camera::kMinZoom);
    Camera().SetPan(background.GetWrapExtents() * 0.5f);

    rendering::Renderer& renderer = rendering::Renderer::Get();
    renderer.ForgetState();
    renderer.SetColor(math::Colour(0.5f, 0.25f, 0.125f, 1));
    DrawFrame(background);
    const int clouded = CountOtherThan(ReadFrame(), background.skyColor->Get());
    EXPECT_GT(clouded, kWidth * kHeight / 100);
    EXPECT_LT(clouded, kWidth * kHeight);
    // The caller's state comes back: colour, matrix, blending.
    EXPECT_EQ(renderer.GetColor(), math::Colour(0.5f, 0.25f, 0.125f, 1));
    GLfloat colour[4] = {};
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[1], 0.25f);
    GLfloat modelview[16] = {};
    glGetFloatv(GL_MODELVIEW_MATRIX, modelview);
    EXPECT_EQ(modelview[12], 0.0f);
    EXPECT_EQ(modelview[0], 1.0f);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));

    // Clouds of no opacity leave the sky alone, and are still walked: they wrap.
    background.cloudOpacity->SetNative(0);
    Camera().SetPan(background.GetWrapExtents());
    Clouds before = background.GetClouds();
    DrawFrame(background);
    EXPECT_EQ(CountOtherThan(ReadFrame(), background.skyColor->Get()), 0);
    EXPECT_GT(Shifts(before, background.GetClouds(), true, background.GetWrapExtents().x)[2], 1000);

    // Clouds off: the sky alone, and nothing moves.
    background.cloudOpacity->SetNative(1);
    background.drawClouds->SetNative(false);
    Camera().SetPan(math::Vec2(0, 0));
    before = background.GetClouds();
    DrawFrame(background);
    EXPECT_EQ(CountOtherThan(ReadFrame(), background.skyColor->Get()), 0);
    EXPECT_EQ(Shifts(before, background.GetClouds(), true, background.GetWrapExtents().x)[1], 2500);
}

TEST_F(BackgroundTest, TheCloudLayerPansAtSevenTenthsOfTheScene) {
    Background background(kSeed);
    background.SetSize(kWidth, kHeight);
    background.Update(0);
    background.cloudOpacity->SetNative(1);
    // Ten pixels a world unit: a pan of 1 moves the scene by 10 pixels, the clouds by 7.
    // The view is centred on the largest cloud.
    Camera().SetZoom(10);
    const math::Vec2 start = background.GetClouds().back().position;
    Camera().SetPan(start);
    DrawFrame(background);
    const std::vector<unsigned char> still = ReadFrame();
    ASSERT_GT(CountOtherThan(still, background.skyColor->Get()), kWidth * kHeight / 50);

    // The view to the right: the clouds go left.
    Camera().SetPan(start + math::Vec2(1, 0));
    DrawFrame(background);
    const std::vector<unsigned char> right = ReadFrame();
    EXPECT_LT(ShiftMismatch(still, right, -7, 0), 0.005);
    EXPECT_GT(ShiftMismatch(still, right, -10, 0), 0.02);
    EXPECT_GT(ShiftMismatch(still, right, 0, 0), 0.02);

    // The view up (y is up in the world): the clouds go down the window.
    Camera().SetPan(start + math::Vec2(0, 1));
    DrawFrame(background);
    const std::vector<unsigned char> up = ReadFrame();
    EXPECT_LT(ShiftMismatch(still, up, 0, 7), 0.005);
    EXPECT_GT(ShiftMismatch(still, up, 0, 10), 0.02);
    EXPECT_GT(ShiftMismatch(still, up, 0, -7), 0.02);
}

TEST_F(BackgroundTest, AViewAtItsLimitsNeverFailsTheFrame) {
    Background background(kSeed);
    background.SetSize(kWidth, kHeight);
    background.Update(0);
    // The largest zoom with a pan so far out that the view's matrix is no longer finite:
    // the sky is drawn, the clouds wait for a usable view.
    Camera().SetZoom(app::Camera::kMaxZoom);
    Camera().SetPan(math::Vec2(1e36f, -1e36f));
    const Clouds before = background.GetClouds();
    EXPECT_NO_THROW(DrawFrame(background));
    EXPECT_EQ(CountOtherThan(ReadFrame(), background.skyColor->Get()), 0);
    EXPECT_EQ(Shifts(before, background.GetClouds(), true, background.GetWrapExtents().x)[1], 2500);
    EXPECT_EQ(Shifts(before, background.GetClouds(), false, background.GetWrapExtents().y)[1],
              2500);

    // Both zoom limits at the origin draw clouds as usual.
    for (float zoom : {app::Camera::kMinZoom, app::Camera::kMaxZoom}) {
        Camera().SetZoom(zoom);
        Camera().SetPan(math::Vec2(0, 0));
        EXPECT_NO_THROW(DrawFrame(background)) << zoom;
    }
}

}  // namespace
