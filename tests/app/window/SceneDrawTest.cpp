// Whole frames of the application, read back from a real window: the program's order of
// objects, a scene, core::Subsystem::RunFrame, then glReadPixels. Shapes show their colours
// where the camera puts them, selection and depth show, water lies over the sky, the echo
// of the last frame comes and goes with the fade colour, shaders on and off agree, and bad
// input never spoils a later frame.

#include <GL/glew.h>
#include <SDL.h>
#include <SDL_image.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "../../rendering/SanitizerSafeDriver.h"
#include "../SceneFixture.h"
#include "app/App.h"
#include "app/Background.h"
#include "app/Camera.h"
#include "app/Thumbnail.h"
#include "app/entities/PolyEntity.h"
#include "app/widgets/WidgetFactory.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "gui/Console.h"
#include "gui/GUI.h"
#include "input/Input.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "rendering/ShaderManager.h"
#include "script/Parser.h"
#include "util/FileSystem.h"

namespace {

using math::Vec2;
using math::Vec4;

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr float kPi = 3.14159265358979f;
// Pixels a world unit: the camera's default, so the view spans about 4.3 by 3.2 units.
constexpr float kZoom = 150;
// Where the mouse rests: a corner no test looks at, away from every shape.
constexpr int kMouseX = 1;
constexpr int kMouseY = 1;

const Vec4 kSky(0.9f, 0.85f, 0.6f, 1);
const Vec4 kRed(0.8f, 0.2f, 0.1f, 1);
const Vec4 kGreen(0.1f, 0.7f, 0.3f, 1);
const Vec4 kBlue(0.2f, 0.3f, 0.9f, 1);

struct Rgb {
    int r, g, b;
};

Rgb ToRgb(const Vec4& c) {
    return {static_cast<int>(std::lround(255 * c.x)), static_cast<int>(std::lround(255 * c.y)),
            static_cast<int>(std::lround(255 * c.z))};
}

// The colour over an opaque one, as (GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA) blends it.
Rgb Over(const Vec4& top, const Vec4& below) {
    const float a = top.w;
    return ToRgb(Vec4(top.x * a + below.x * (1 - a), top.y * a + below.y * (1 - a),
                      top.z * a + below.z * (1 - a), 1));
}

// Half the fill: the border of a shape that is neither selected nor under the mouse.
Vec4 Darker(const Vec4& fill) {
    return Vec4(fill.x / 2, fill.y / 2, fill.z / 2, fill.w);
}

int Distance(Rgb a, Rgb b) {
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}

// One frame as glReadPixels gives it: rows from the bottom, RGB.
class Picture {
public:
    Picture() : m_rgb(kWidth * kHeight * 3) {}

    // Called after the swap. Mesa's software driver under Xvfb copies the back buffer to
    // the window and keeps it, so the back buffer still holds the frame; its front buffer
    // reads back black.
    static Picture Read() {
        Picture picture;
        GLint alignment = 4;
        glGetIntegerv(GL_PACK_ALIGNMENT, &alignment);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGB, GL_UNSIGNED_BYTE, picture.m_rgb.data());
        glPixelStorei(GL_PACK_ALIGNMENT, alignment);
        return picture;
    }

    // x from the left, y from the bottom.
    Rgb Pixel(int x, int y) const {
        const size_t i = (static_cast<size_t>(y) * kWidth + static_cast<size_t>(x)) * 3;
        return {m_rgb[i], m_rgb[i + 1], m_rgb[i + 2]};
    }

private:
    std::vector<unsigned char> m_rgb;
};

class SceneDrawTest : public test_app::SceneTest {
protected:
    // The program's start as main makes it, in a window of the test's size; the objects
    // the scene environment published (simulation, fluid, scene) are already at the root.
    static void SetUpTestSuite() {
        if (s_ready) {
            return;
        }
        test_rendering::UseSanitizerSafeDriver();
        testing::internal::CaptureStdout();
        util::FileSystem::Get().SetArgv0("app_window_tests");
        testing::internal::GetCapturedStdout();
        core::Subsystem& subsystem = core::Subsystem::Get();
        // The log file stays beside the executable; shaders, textures and fonts come from
        // the source tree's data.
        util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
        script::AddToRoot(&subsystem);
        script::AddToRoot(&core::ResourceManager::Get());
        gui::GUI& gui = gui::GUI::Get();
        script::AddToRoot(&gui);
        app::App* application = new app::App();
        gui.GetMainLayer()->Add(gui::ComponentPtr(application));
        script::AddToRoot(script::ReflectedPtr(gui.GetConsole()));
        script::AddToRoot(application);
        script::AddToRoot(script::ReflectedPtr(application->GetBackground()));

        core::WindowParams params;
        params.resolution = math::Vec2i(kWidth, kHeight);
        params.resizable = false;
        subsystem.CreateWindow(params);
        test_rendering::KeepDriverLoaded();
        subsystem.SetMaxFPS(std::numeric_limits<float>::infinity());
        subsystem.BeginRun();
        // The mouse to a corner, at the X server too, so that no later crossing event
        // brings it back over a shape: the cursor and the mouse-over border stay out of
        // the checked pixels.
        SDL_WarpMouseInWindow(SDL_GL_GetCurrentWindow(), kMouseX, kMouseY);
        SDL_Event motion{};
        motion.type = SDL_MOUSEMOTION;
        motion.motion.x = kMouseX;
        motion.motion.y = kMouseY;
        SDL_PushEvent(&motion);
        for (int i = 0; i < 3; ++i) {
            if (!subsystem.RunFrame()) {
                return;
            }
        }
        s_ready = true;
    }

    void SetUp() override {
        ASSERT_TRUE(s_ready) << SDL_GetError();
        SceneTest::SetUp();
        ASSERT_EQ(App().GetSize(), Vec2(kWidth, kHeight));
        ASSERT_EQ(input::Input::Get().GetMousePos(), Vec2(kMouseX, kMouseY));
        // The clouds are random per run: a plain sky of a known colour.
        Sky().drawClouds->SetNative(false);
        Sky().skyColor->SetNative(kSky);
        Sim().running->SetNative(false);
        UseShaders(false);
        Camera().SetZoom(kZoom);
        Camera().SetPan(Vec2(0, 0));
    }
    void TearDown() override {
        UseShaders(false);
        SceneTest::TearDown();
    }

    static app::App& App() { return app::App::Get(); }
    static app::Background& Sky() { return *App().GetBackground(); }
    static app::Camera& Camera() { return GetScene().GetCamera(); }
    static physics::Simulation& Sim() { return physics::Simulation::Get(); }

    // As the console's "Resources.shaders = ..." does it: every program is built again.
    static void UseShaders(bool on) { core::ResourceManager::Get().shaders->SetNative(on); }

    // One pass of the program's loop, then what it drew.
    static Picture Frame() {
        EXPECT_TRUE(core::Subsystem::Get().RunFrame());
        return Picture::Read();
    }

    // The pixel that shows the world point, with rows from the bottom as read back.
    static void PixelOf(Vec2 world, int& x, int& y) {
        const Vec2 window = Camera().WorldToGUI(world);
        x = static_cast<int>(std::floor(window.x));
        y = kHeight - 1 - static_cast<int>(std::floor(window.y));
    }
    static Rgb At(const Picture& picture, Vec2 world) {
        int x = 0;
        int y = 0;
        PixelOf(world, x, y);
        if (x < 0 || y < 0 || x >= kWidth || y >= kHeight) {
            ADD_FAILURE() << "(" << world.x << ", " << world.y << ") lies outside the window";
            return {-1000, -1000, -1000};
        }
        return picture.Pixel(x, y);
    }
    static testing::AssertionResult Shows(const Picture& picture, Vec2 world, Rgb want,
                                          int tolerance = 4) {
        const Rgb got = At(picture, world);
        if (Distance(got, want) <= tolerance) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure()
               << "at (" << world.x << ", " << world.y << ") the colour is (" << got.r << ", "
               << got.g << ", " << got.b << "), not (" << want.r << ", " << want.g << ", " << want.b
               << ")";
    }
    static testing::AssertionResult Shows(const Picture& picture, Vec2 world, const Vec4& want,
                                          int tolerance = 4) {
        return Shows(picture, world, ToRgb(want), tolerance);
    }

    // The window's width of a shape's border at the present zoom, in world units.
    static float BorderWidth() { return App().GetBorderWidth(); }

    static util::SharedPtr<app::BoxEntity> Box(Vec2 at, Vec2 halfExtents, const Vec4& color,
                                               float angle = 0) {
        auto box = AddBox(at, halfExtents, angle);
        box->color->SetNative(color);
        return box;
    }
    static util::SharedPtr<app::CircleEntity> Circle(Vec2 at, float radius, const Vec4& color,
                                                     float angle = 0) {
        util::SharedPtr<physics::Circle> circle(new physics::Circle(radius));
        circle->SetTransform(physics::Transform::FromAngle(angle, at));
        util::SharedPtr<app::CircleEntity> entity(new app::CircleEntity(circle));
        entity->color->SetNative(color);
        GetScene().AddEntity(entity);
        return entity;
    }
    // Solid below y = height.
    static util::SharedPtr<app::PlaneEntity> Floor(float height, const Vec4& color) {
        util::SharedPtr<physics::Plane> plane(new physics::Plane());
        plane->SetTransform(app::PlaneEntity::PlaceAt({0, 1}, -height));
        util::SharedPtr<app::PlaneEntity> entity(new app::PlaneEntity(plane));
        entity->color->SetNative(color);
        GetScene().AddEntity(entity);
        return entity;
    }
    // A block of particles at the spacing a scene's water has, resting where it is put.
    static void Water(Vec2 lowerLeft, int columns, int rows, float spacing) {
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const Vec2 at = lowerLeft + Vec2(static_cast<float>(column) * spacing,
                                                 static_cast<float>(row) * spacing);
                Sim().AddParticle(physics::ParticlePtr(new physics::Particle(at, Vec2(0, 0))));
            }
        }
    }

    static inline bool s_ready = false;
};

std::string ShaderName(const testing::TestParamInfo<bool>& info) {
    return info.param ? "Shaders" : "FixedPipeline";
}

// Shapes

class ShapeDrawTest : public SceneDrawTest, public testing::WithParamInterface<bool> {};

TEST_P(ShapeDrawTest, ABoxFromSceneTextShowsItsColourOnTheSky) {
    UseShaders(GetParam());
    // As a scene file adds it: 1.2 by 0.8 about (0.5, 0.3).
    script::Parser::Get().Execute(
        "Scene.addBox({pos = [0.5, 0.3]; size = [1.2, 0.8]; angle = 0.0; "
        "color = [0.8, 0.2, 0.1, 1.0]; collideSet = 1; zDepth = 0.0})");
    ASSERT_EQ(GetScene().GetEntities().size(), 1u);
    const Picture picture = Frame();
    const float inset = BorderWidth() * 0.5f;
    ASSERT_GT(inset, 0.02f);
    // The fill inside, the border (half the fill) along the edges, the sky beyond.
    for (Vec2 p : {Vec2(0.5f, 0.3f), Vec2(0.2f, 0.5f), Vec2(0.85f, 0.1f)}) {
        EXPECT_TRUE(Shows(picture, p, kRed));
    }
    for (Vec2 p : {Vec2(1.1f - inset, 0.3f), Vec2(-0.1f + inset, 0.3f), Vec2(0.5f, 0.7f - inset),
                   Vec2(0.5f, -0.1f + inset)}) {
        EXPECT_TRUE(Shows(picture, p, Darker(kRed)));
    }
    for (Vec2 p : {Vec2(1.3f, 0.3f), Vec2(-0.3f, 0.3f), Vec2(0.5f, 0.9f), Vec2(0.5f, -0.3f),
                   Vec2(-1.5f, -1), Vec2(1.8f, 1.2f)}) {
        EXPECT_TRUE(Shows(picture, p, kSky));
    }
}

TEST_P(ShapeDrawTest, ASelectedShapeHasAWhiteBorderAnotherKeepsItsOwn) {
    UseShaders(GetParam());
    ASSERT_TRUE(App().GetModel().borders->Get());
    const auto selected = Box({-0.8f, 0}, {0.5f, 0.5f}, kGreen);
    const auto plain = Box({0.8f, 0}, {0.5f, 0.5f}, kGreen);
    const auto circle = Circle({0, -1}, 0.35f, kBlue);
    GetScene().GetSelection()->Add(selected);
    GetScene().GetSelection()->Add(circle);
    const Picture picture = Frame();
    EXPECT_TRUE(selected->selected);
    EXPECT_FALSE(plain->selected);
    EXPECT_FALSE(selected->mouseOver);
    const float inset = BorderWidth() * 0.5f;
    const Rgb white{255, 255, 255};
    for (Vec2 edge : {Vec2(0.5f - inset, 0), Vec2(-0.5f + inset, 0), Vec2(0, 0.5f - inset),
                      Vec2(0, -0.5f + inset)}) {
        EXPECT_TRUE(Shows(picture, Vec2(-0.8f, 0) + edge, white));
        EXPECT_TRUE(Shows(picture, Vec2(0.8f, 0) + edge, Darker(kGreen)));
    }
    EXPECT_TRUE(Shows(picture, {-0.8f, 0}, kGreen));
    EXPECT_TRUE(Shows(picture, {0.8f, 0}, kGreen));
    // The circle's ring; its slice, to the right, is white as well.
    EXPECT_TRUE(Shows(picture, {0, -1.35f + inset}, white));
    EXPECT_TRUE(Shows(picture, {-0.35f + inset, -1}, white));
    EXPECT_TRUE(Shows(picture, {0, -1.15f}, kBlue));

    // Out of the selection, the next frame gives it its own border back.
    GetScene().GetSelection()->Clear();
    const Picture after = Frame();
    EXPECT_TRUE(Shows(after, Vec2(-0.8f + 0.5f - inset, 0), Darker(kGreen)));
    EXPECT_TRUE(Shows(after, {0, -1.35f + inset}, Darker(kBlue)));
}

TEST_P(ShapeDrawTest, ACirclesSliceLiesWhereItsAngleSays) {
    UseShaders(GetParam());
    // Turned a quarter the slice points up the world, which is up the window; unturned it
    // points to the right.
    const float r = 0.8f;
    Circle({-1, 0}, r, kBlue, kPi / 2);
    Circle({1, 0}, r, kRed, 0);
    const Picture picture = Frame();
    const Vec2 turned(-1, 0);
    EXPECT_TRUE(Shows(picture, turned + Vec2(0, 0.6f * r), Darker(kBlue)));
    EXPECT_TRUE(Shows(picture, turned + Vec2(0, 0.4f * r), Darker(kBlue)));
    EXPECT_TRUE(Shows(picture, turned + Vec2(0, -0.6f * r), kBlue));
    EXPECT_TRUE(Shows(picture, turned + Vec2(0.6f * r, 0), kBlue));
    EXPECT_TRUE(Shows(picture, turned + Vec2(-0.6f * r, 0), kBlue));
    // Beside the slice, half a radian off its axis.
    EXPECT_TRUE(
        Shows(picture, turned + Vec2(0.6f * r * std::sin(0.5f), 0.6f * r * std::cos(0.5f)), kBlue));

    const Vec2 plain(1, 0);
    EXPECT_TRUE(Shows(picture, plain + Vec2(0.6f * r, 0), Darker(kRed)));
    EXPECT_TRUE(Shows(picture, plain + Vec2(0, 0.6f * r), kRed));
    EXPECT_TRUE(Shows(picture, plain + Vec2(0, -0.6f * r), kRed));
    EXPECT_TRUE(Shows(picture, plain + Vec2(-0.6f * r, 0), kRed));
    // The sky between and around them.
    EXPECT_TRUE(Shows(picture, {0, 0}, kSky));
    EXPECT_TRUE(Shows(picture, {-1, 1.0f}, kSky));
}

TEST_P(ShapeDrawTest, LaterEntitiesCoverEarlierOnes) {
    UseShaders(GetParam());
    // Two overlapping boxes, then the same two added the other way round elsewhere: the
    // overlap takes the colour of whichever came later in the scene's list.
    Box({-1.3f, 0.2f}, {0.5f, 0.5f}, kRed);
    Box({-0.8f, -0.2f}, {0.5f, 0.5f}, kGreen);
    Box({1.2f, -0.2f}, {0.5f, 0.5f}, kGreen);
    Box({0.7f, 0.2f}, {0.5f, 0.5f}, kRed);
    // A circle over a box over a plane.
    Floor(-1.2f, kBlue);
    Box({0, -1.2f}, {0.4f, 0.2f}, kRed);
    Circle({0, -1.2f}, 0.15f, kGreen);
    const Picture picture = Frame();
    // The overlaps: x from -1.3 to -0.8 and 0.7 to 1.2, y from -0.3 to 0.3.
    EXPECT_TRUE(Shows(picture, {-1.05f, 0.05f}, kGreen));
    EXPECT_TRUE(Shows(picture, {0.95f, 0.05f}, kRed));
    // Each alone where the other is not.
    EXPECT_TRUE(Shows(picture, {-1.55f, 0.5f}, kRed));
    EXPECT_TRUE(Shows(picture, {-0.55f, -0.45f}, kGreen));
    EXPECT_TRUE(Shows(picture, {0.45f, 0.5f}, kRed));
    EXPECT_TRUE(Shows(picture, {1.45f, -0.45f}, kGreen));
    EXPECT_TRUE(Shows(picture, {-0.07f, -1.25f}, kGreen));
    EXPECT_TRUE(Shows(picture, {0.25f, -1.3f}, kRed));
    EXPECT_TRUE(Shows(picture, {1.5f, -1.45f}, kBlue));
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, ShapeDrawTest, testing::Bool(), ShaderName);

TEST_F(SceneDrawTest, ASavedScenesPictureShowsTheSceneAndNotTheWindowsOverIt) {
    // A window right over the middle of the sky.
    const app::WidgetPtr about = app::WidgetFactory::Get().Make("About");
    about->Show(*App().GetAppGUI());
    about->SetScreenPosition(Vec2(200, 150));
    ASSERT_TRUE(core::Subsystem::Get().RunFrame());
    const Vec2 placed = about->GetScreenPosition();

    const std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / ("vorra-thumb-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const util::String scene = (folder / "sky.vra").string();
    ASSERT_TRUE(app::Thumbnail::SaveBeside(scene));
    SDL_Surface* loaded = IMG_Load(app::Thumbnail::PathFor(scene).c_str());
    ASSERT_NE(loaded, nullptr) << IMG_GetError();
    SDL_Surface* image = SDL_ConvertSurfaceFormat(loaded, SDL_PIXELFORMAT_RGBA32, 0);
    SDL_FreeSurface(loaded);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->w, app::Thumbnail::kWidth);
    EXPECT_EQ(image->h, app::Thumbnail::kHeight);
    // Sky everywhere, where the window lies included.
    const auto* pixels = static_cast<const uint8_t*>(image->pixels);
    for (const Vec2 at : {Vec2(80, 60), Vec2(10, 10), Vec2(150, 110)}) {
        const uint8_t* p =
            pixels + static_cast<int>(at.y) * image->pitch + static_cast<int>(at.x) * 4;
        EXPECT_LE(Distance({p[0], p[1], p[2]}, ToRgb(kSky)), 3) << at.x << "," << at.y;
    }
    SDL_FreeSurface(image);
    // The interface is back where it was for the next frame.
    EXPECT_EQ(App().GetAppGUI()->GetPosition(), Vec2(0, 0));
    EXPECT_EQ(about->GetScreenPosition(), placed);
    about->Hide();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

// Water

class WaterDrawTest : public SceneDrawTest, public testing::WithParamInterface<bool> {};

TEST_P(WaterDrawTest, WaterInABasinShowsItsColourOverTheSkyAndTheSkyAboveIt) {
    UseShaders(GetParam());
    const Vec4 water(0.05f, 0.45f, 0.9f, 0.7f);
    App().GetModel().waterColor->SetNative(water);
    // A basin: a floor at y = -1 and two walls whose inner faces lie at x = -1.1 and 1.1.
    Floor(-1, kGreen);
    Box({-1.2f, -0.25f}, {0.1f, 0.75f}, kRed);
    Box({1.2f, -0.25f}, {0.1f, 0.75f}, kRed);
    // Particles of the fluid's radius two radii apart, from x = -1 to 1 and y = -0.95 to
    // -0.35.
    const float radius = physics::SPH::Get().radius->Get();
    Water({-1, -0.95f}, 21, 7, 2 * radius);
    ASSERT_NEAR(2 * radius, 0.1f, 1e-6f);
    const Picture picture = Frame();
    const Rgb wet = Over(water, kSky);
    for (float x : {-0.8f, -0.43f, 0.0f, 0.37f, 0.75f}) {
        for (float y : {-0.9f, -0.72f, -0.55f, -0.42f}) {
            EXPECT_TRUE(Shows(picture, {x, y}, wet));
        }
        // Above the surface, the sky between the walls.
        EXPECT_TRUE(Shows(picture, {x, -0.1f}, kSky));
        EXPECT_TRUE(Shows(picture, {x, 0.3f}, kSky));
    }
    // The shapes cover the water: walls and floor keep their fill.
    EXPECT_TRUE(Shows(picture, {-1.2f, -0.3f}, kRed));
    EXPECT_TRUE(Shows(picture, {0, -1.3f}, kGreen));
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, WaterDrawTest, testing::Bool(), ShaderName);

// The echo of the last frame

TEST_F(SceneDrawTest, TheFadeColourDecidesWhetherTheLastFrameLeavesAnEcho) {
    // The echo is drawn under the sky: a see-through sky lets it show. The box lies in
    // the window's middle, where the echo's shrink toward the middle keeps it.
    const Vec4 sky(0.2f, 0.3f, 0.4f, 0.5f);
    Sky().skyColor->SetNative(sky);
    const Vec4 white(1, 1, 1, 1);
    const Vec2 middle(0, 0);
    const Vec2 far(-1.8f, 1.3f);
    // The sky over the cleared frame.
    const Vec4 bareSky(sky.x * sky.w, sky.y * sky.w, sky.z * sky.w, 1);
    const Rgb bare = ToRgb(bareSky);

    // Black: no echo. The box is there, then it is gone and its place is sky again.
    ASSERT_EQ(App().GetModel().fadeColor->Get(), math::Vec3(0, 0, 0));
    auto box = Box(middle, {0.6f, 0.6f}, white);
    EXPECT_TRUE(Shows(Frame(), middle, white));
    GetScene().RemoveEntity(box);
    Picture picture = Frame();
    EXPECT_TRUE(Shows(picture, middle, bare, 2));
    EXPECT_TRUE(Shows(picture, far, bare, 2));

    // Grey: the box's place keeps half of what the last frame had there, under the sky.
    App().GetModel().fadeColor->SetNative(math::Vec3(0.5f, 0.5f, 0.5f));
    box = Box(middle, {0.6f, 0.6f}, white);
    EXPECT_TRUE(Shows(Frame(), middle, white));
    GetScene().RemoveEntity(box);
    picture = Frame();
    // Everywhere the last frame shows at half strength under the sky, whose alpha is one
    // half: far away that was the bare sky, in the middle the white box.
    const auto underSky = [&](const Vec4& last) {
        return ToRgb(Vec4(bareSky.x + last.x * 0.25f, bareSky.y + last.y * 0.25f,
                          bareSky.z + last.z * 0.25f, 1));
    };
    EXPECT_TRUE(Shows(picture, far, underSky(bareSky), 3));
    EXPECT_TRUE(Shows(picture, middle, underSky(white), 4));
    EXPECT_GT(Distance(At(picture, middle), At(picture, far)), 40);

    // Back to black, the echo goes with the next frame.
    App().GetModel().fadeColor->SetNative(math::Vec3(0, 0, 0));
    EXPECT_TRUE(Shows(Frame(), middle, bare, 2));
}

// Shaders on and off

TEST_F(SceneDrawTest, ShadersOnAndOffDrawTheSamePicture) {
    Floor(-1.2f, kGreen);
    const auto left = Box({-1.4f, -0.6f}, {0.3f, 0.6f}, kRed, 0.2f);
    Circle({-0.4f, 0.4f}, 0.45f, kBlue, 0.7f);
    math::Vec2List outline;
    for (Vec2 p : {Vec2(0.6f, 0.1f), Vec2(1.7f, 0.2f), Vec2(1.5f, 1.1f), Vec2(1.1f, 0.6f),
                   Vec2(0.7f, 1.0f)}) {
        outline.push_back(p);
    }
    const physics::PolygonPtr polygon(new physics::Polygon(outline));
    util::SharedPtr<app::PolyEntity> poly(new app::PolyEntity(polygon));
    poly->color->SetNative(Vec4(0.9f, 0.6f, 0.1f, 1));
    GetScene().AddEntity(poly);
    // A hinge pins the wheel to the ground.
    AddHinge({-0.4f, 0.4f}, {-0.4f, 0.4f});
    GetScene().GetSelection()->Add(left);
    // Water on the floor, right of the box.
    Water({0.2f, -1.15f}, 12, 5, 0.1f);

    UseShaders(true);
    for (const char* name : {"box", "circle", "polygon", "plane", "water"}) {
        ASSERT_TRUE(rendering::ShaderManager::IsUsable(rendering::ShaderManager::Get().Load(name)))
            << name;
    }
    Frame();
    const Picture shaded = Frame();
    UseShaders(false);
    Frame();
    const Picture fixed = Frame();

    // Pixels whose neighbourhood is all one colour in both pictures: edges are drawn a
    // little differently by each path and are left out.
    const auto uniform = [](const Picture& p, int x, int y) {
        const Rgb centre = p.Pixel(x, y);
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                if (Distance(p.Pixel(x + dx, y + dy), centre) > 3) {
                    return false;
                }
            }
        }
        return true;
    };
    long compared = 0;
    long agreeing = 0;
    long notSky = 0;
    for (int y = 1; y < kHeight - 1; ++y) {
        for (int x = 1; x < kWidth - 1; ++x) {
            if (!uniform(shaded, x, y) || !uniform(fixed, x, y)) {
                continue;
            }
            ++compared;
            agreeing += Distance(shaded.Pixel(x, y), fixed.Pixel(x, y)) <= 6 ? 1 : 0;
            notSky += Distance(shaded.Pixel(x, y), ToRgb(kSky)) > 6 ? 1 : 0;
        }
    }
    const double agreement = static_cast<double>(agreeing) / static_cast<double>(compared);
    RecordProperty("agreement", std::to_string(agreement));
    std::printf("shaders on and off agree on %ld of %ld uniform pixels (%.4f)\n", agreeing,
                compared, agreement);
    // Most of the window is compared, and much of it is the scene rather than the sky.
    EXPECT_GT(compared, kWidth * kHeight * 7 / 10);
    EXPECT_GT(notSky, kWidth * kHeight / 5);
    EXPECT_GE(agreement, 0.99);
    // Spot checks of each kind in the fixed pipeline's picture.
    EXPECT_TRUE(Shows(fixed, {1.2f, 0.4f}, Vec4(0.9f, 0.6f, 0.1f, 1)));
    EXPECT_TRUE(Shows(fixed, {-1.4f, -0.6f}, kRed));
    EXPECT_TRUE(Shows(fixed, {0, -1.45f}, kGreen));
    EXPECT_TRUE(Shows(fixed, {0.6f, -0.9f}, Over(App().GetModel().waterColor->Get(), kSky)));
}

// Bad input

class BadInputTest : public SceneDrawTest, public testing::WithParamInterface<bool> {};

TEST_P(BadInputTest, BadInputNeverSpoilsALaterFrame) {
    UseShaders(GetParam());
    Box({0.5f, 0.5f}, {0.4f, 0.3f}, kRed);
    Box({1e30f, 1e30f}, {0.5f, 0.5f}, kGreen);
    Box({-3e30f, 0}, {1e30f, 1e30f}, kGreen);
    Box({-0.5f, -0.5f}, {0, 0}, kGreen);
    Circle({-1, -0.5f}, 0, kBlue);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (Vec2 p : {Vec2(nan, 0), Vec2(0, inf), Vec2(-inf, nan), Vec2(1e30f, -1e30f)}) {
        Sim().AddParticle(physics::ParticlePtr(new physics::Particle(p, Vec2(nan, inf))));
    }
    // One good particle far from the box, so that the water passes run.
    Water({-1.5f, 1}, 1, 1, 0.1f);

    const auto frameRuns = [] {
        bool ran = false;
        EXPECT_NO_THROW(ran = core::Subsystem::Get().RunFrame());
        return ran;
    };
    EXPECT_TRUE(frameRuns());
    for (float zoom : {app::Camera::kMinZoom, app::Camera::kMaxZoom, 0.0f, -1.0f, nan, inf}) {
        Camera().SetZoom(zoom);
        for (Vec2 pan : {Vec2(0, 0), Vec2(1e30f, -1e30f), Vec2(-2e30f, 1e29f)}) {
            Camera().SetPan(pan);
            EXPECT_TRUE(frameRuns()) << zoom << " " << pan.x;
        }
    }
    // At the zoom limits the view still shows the box: filling the window at the largest
    // zoom, a dot in the window's middle with sky round it at the smallest.
    Camera().SetZoom(app::Camera::kMaxZoom);
    Camera().SetPan(Vec2(0.5f, 0.5f));
    Picture picture = Frame();
    EXPECT_TRUE(Shows(picture, {0.5f, 0.5f}, kRed));
    EXPECT_TRUE(Shows(picture, {0.45f, 0.55f}, kRed));
    Camera().SetZoom(app::Camera::kMinZoom);
    Camera().SetPan(Vec2(0, 0));
    picture = Frame();
    EXPECT_TRUE(Shows(picture, {-100, 60}, kSky));
    EXPECT_TRUE(Shows(picture, {100, -60}, kSky));

    // A normal view again: the known box, its border, and the sky beside it.
    Camera().SetZoom(kZoom);
    picture = Frame();
    EXPECT_TRUE(Shows(picture, {0.5f, 0.5f}, kRed));
    EXPECT_TRUE(Shows(picture, {0.9f - BorderWidth() * 0.5f, 0.5f}, Darker(kRed)));
    EXPECT_TRUE(Shows(picture, {1.2f, 0.5f}, kSky));
    EXPECT_TRUE(Shows(picture, {-0.5f, 0.5f}, kSky));
}

// Pans the camera takes whose view overflows the float range: near the top of the range
// the view's matrix, a little lower only its inverse (the mouse's place in the world). The
// frame is skipped or drawn, never thrown out of, and a usable view draws again.
TEST_P(BadInputTest, AViewBeyondTheFloatRangeNeverThrows) {
    UseShaders(GetParam());
    Box({0.5f, 0.5f}, {0.4f, 0.3f}, kRed);
    Water({-1.5f, 1}, 1, 1, 0.1f);
    for (float zoom : {app::Camera::kMinZoom, kZoom, app::Camera::kMaxZoom}) {
        for (Vec2 pan : {Vec2(-1e35f, 1e35f), Vec2(-3e38f, 3e38f)}) {
            Camera().SetZoom(zoom);
            Camera().SetPan(pan);
            ASSERT_EQ(Camera().GetPan(), pan);
            bool ran = false;
            EXPECT_NO_THROW(ran = core::Subsystem::Get().RunFrame()) << zoom << " " << pan.y;
            EXPECT_TRUE(ran) << zoom << " " << pan.y;
        }
    }
    Camera().SetZoom(kZoom);
    Camera().SetPan(Vec2(0, 0));
    const Picture picture = Frame();
    EXPECT_TRUE(Shows(picture, {0.5f, 0.5f}, kRed));
    EXPECT_TRUE(Shows(picture, {-0.5f, 0.5f}, kSky));
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, BadInputTest, testing::Bool(), ShaderName);

}  // namespace
