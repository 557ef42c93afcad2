// The window's painter draws what the entities ask for, read back from a real frame buffer:
// with the shape programs and with the fixed pipeline, each way a shape can take.

#include "app/GLPainter.h"

#include <GL/glew.h>
#include <SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "../../rendering/SanitizerSafeDriver.h"
#include "logging/LogCapture.h"
#include "physics/Polygon.h"
#include "rendering/GraphicsContext.h"
#include "rendering/Renderer.h"
#include "rendering/ShaderManager.h"
#include "util/FileSystem.h"

namespace {

using math::Vec2;
using math::Vec4;

constexpr float kPi = 3.14159265358979f;

// The window shows the world from -4 to 4 on both axes.
constexpr int kSide = 256;
constexpr float kHalfView = 4;
constexpr float kPixelSize = 2 * kHalfView / kSide;

const Vec4 kRed(1, 0, 0, 1);
const Vec4 kGreen(0, 1, 0, 1);
const Vec4 kBlue(0, 0, 1, 1);

std::string DataDirectory() {
#ifdef VORRA_DATA_DIR
    return VORRA_DATA_DIR;
#else
    return (std::filesystem::path(__FILE__).parent_path() / "../../../workdir/")
        .lexically_normal()
        .string();
#endif
}

math::Mat3 Place(float angle, Vec2 at) {
    return math::Mat3::Translation(at) * math::Mat3::Rotation(angle);
}

struct Rgb {
    int r, g, b;
};

class GLPainterTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_previousWork = util::FileSystem::Get().GetWorkDirectory();
        util::FileSystem::Get().SetWorkDirectory(DataDirectory());
        test_rendering::UseSanitizerSafeDriver();
        if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
            return;
        }
        SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, 8);
        SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
        s_window = SDL_CreateWindow("painter test", 0, 0, kSide, kSide,
                                    SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN);
        if (!s_window) {
            return;
        }
        s_context = SDL_GL_CreateContext(s_window);
        if (!s_context) {
            return;
        }
        // Without GL there is no context for the tests, which then say so instead of
        // drawing nothing.
        const std::string glewError = rendering::GraphicsContext::ContextCreated();
        if (!glewError.empty()) {
            SDL_SetError("GLEW: %s", glewError.c_str());
            SDL_GL_DeleteContext(s_context);
            s_context = nullptr;
            return;
        }
        test_rendering::KeepDriverLoaded();
    }
    static void TearDownTestSuite() {
        UseShaders(false);
        rendering::GraphicsContext::ContextLost();
        if (s_context) {
            SDL_GL_DeleteContext(s_context);
        }
        if (s_window) {
            SDL_DestroyWindow(s_window);
        }
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        s_context = nullptr;
        s_window = nullptr;
        util::FileSystem::Get().SetWorkDirectory(s_previousWork);
    }

    // The entity pass as the application sets it up: the camera, the entity's depth, the
    // depth test, blending, and texturing left on from the passes before.
    void SetUp() override {
        ASSERT_NE(s_context, nullptr) << SDL_GetError();
        UseShaders(false);
        glViewport(0, 0, kSide, kSide);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-kHalfView, kHalfView, -kHalfView, kHalfView, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        Clear(0, 0, 0);
        glDepthMask(GL_TRUE);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LESS);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glEnable(GL_TEXTURE_2D);
        glTranslatef(0, 0, 0.5f);
        rendering::Renderer::Get().ForgetState();
    }
    void TearDown() override {
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }

    static void Clear(float r, float g, float b) {
        glClearColor(r, g, b, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    // Shaders on or off as the resource settings switch them: every program is built again.
    static void UseShaders(bool on) {
        rendering::GraphicsContext::SetShadersEnabled(on);
        if (!rendering::GraphicsContext::IsLoaded()) {
            return;
        }
        for (const char* name : {"box", "circle", "polygon", "plane", "line"}) {
            const rendering::ShaderHandle handle = rendering::ShaderManager::Get().Load(name);
            handle->Unload();
            handle->Load();
            if (on) {
                ASSERT_TRUE(rendering::ShaderManager::IsUsable(handle)) << name;
            }
        }
    }

    void Begin(float pixelSize = kPixelSize) {
        m_painter.BeginFrame(pixelSize, pixelSize * 86, pixelSize * 8.6f, app::DrawOptions());
    }

    static Rgb PixelAt(int x, int y) {
        unsigned char rgba[4] = {};
        glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
        return {rgba[0], rgba[1], rgba[2]};
    }
    static Rgb At(Vec2 world) {
        return PixelAt(static_cast<int>(std::floor((world.x + kHalfView) / kPixelSize)),
                       static_cast<int>(std::floor((world.y + kHalfView) / kPixelSize)));
    }
    static testing::AssertionResult Shows(Vec2 world, Rgb want, int tolerance = 6) {
        const Rgb got = At(world);
        if (std::abs(got.r - want.r) <= tolerance && std::abs(got.g - want.g) <= tolerance &&
            std::abs(got.b - want.b) <= tolerance) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure()
               << "at (" << world.x << ", " << world.y << ") the colour is (" << got.r << ", "
               << got.g << ", " << got.b << "), not (" << want.r << ", " << want.g << ", " << want.b
               << ")";
    }

    static int CurrentProgram() {
        GLint program = 0;
        glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        return program;
    }

    static inline SDL_Window* s_window = nullptr;
    static inline SDL_GLContext s_context = nullptr;
    static inline util::String s_previousWork;
    app::GLPainter m_painter;
};

// Boxes

class BoxTest : public GLPainterTest, public testing::WithParamInterface<bool> {};

TEST_P(BoxTest, FillInsideBorderAlongTheEdgesNothingBeyond) {
    UseShaders(GetParam());
    Begin();
    app::ShapeStyle style;
    style.fill = kRed;
    style.border = kBlue;
    style.borderWidth = 0.5f;
    m_painter.PushTransform(Place(0, {0.5f, 0}));
    m_painter.Box({2, 1.5f}, style);
    m_painter.PopTransform();
    m_painter.EndFrame();
    // The box spans x from -1.5 to 2.5 and y from -1.5 to 1.5.
    EXPECT_TRUE(Shows({0.5f, 0}, {255, 0, 0}));
    EXPECT_TRUE(Shows({0.5f, 0.8f}, {255, 0, 0}));
    EXPECT_TRUE(Shows({2.25f, 0}, {0, 0, 255}));
    EXPECT_TRUE(Shows({-1.25f, 0}, {0, 0, 255}));
    EXPECT_TRUE(Shows({0.5f, 1.25f}, {0, 0, 255}));
    EXPECT_TRUE(Shows({0.5f, -1.25f}, {0, 0, 255}));
    EXPECT_TRUE(Shows({2.7f, 0}, {0, 0, 0}));
    EXPECT_TRUE(Shows({-1.7f, 0}, {0, 0, 0}));
    EXPECT_TRUE(Shows({0.5f, 1.7f}, {0, 0, 0}));
}

TEST_P(BoxTest, SeeThroughFillAndBorderBlendOnce) {
    UseShaders(GetParam());
    Clear(1, 1, 1);
    Begin();
    app::ShapeStyle style;
    style.fill = Vec4(1, 0, 0, 0.5f);
    style.border = Vec4(0, 0, 1, 0.5f);
    style.borderWidth = 0.5f;
    m_painter.Box({2, 1.5f}, style);
    m_painter.EndFrame();
    EXPECT_TRUE(Shows({0, 0}, {255, 128, 128}));
    EXPECT_TRUE(Shows({1.75f, 0}, {128, 128, 255}));
    EXPECT_TRUE(Shows({2.3f, 0}, {255, 255, 255}));
}

TEST_P(BoxTest, NoBorderIsAllFill) {
    UseShaders(GetParam());
    Begin();
    app::ShapeStyle style;
    style.fill = kGreen;
    style.border = kBlue;
    m_painter.Box({2, 1.5f}, style);
    m_painter.EndFrame();
    EXPECT_TRUE(Shows({1.9f, 0}, {0, 255, 0}));
    EXPECT_TRUE(Shows({0, -1.4f}, {0, 255, 0}));
    EXPECT_TRUE(Shows({2.1f, 0}, {0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, BoxTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                             return std::string(info.param ? "Shaders" : "FixedPipeline");
                         });

// Circles: the program, the disc textures and the fans. The slice shows the turn: turned a
// quarter, it points up.

struct CircleCase {
    const char* name;
    bool shaders;
    float alpha;
    // A tiny pixel makes the circle wider than the disc textures allow.
    bool large;
};

class CircleTest : public GLPainterTest,
                   public testing::WithParamInterface<std::tuple<CircleCase, bool>> {};

TEST_P(CircleTest, SliceTowardLocalXInBorderColourFillElsewhere) {
    const auto& [circle, withBorder] = GetParam();
    UseShaders(circle.shaders);
    Begin(circle.large ? 0.001f : kPixelSize);
    app::ShapeStyle style;
    style.fill = Vec4(1, 0, 0, circle.alpha);
    style.border = kBlue;
    style.borderWidth = withBorder ? 0.25f : 0;
    m_painter.PushTransform(Place(kPi / 2, {0, 0}));
    m_painter.Circle(3, style);
    m_painter.PopTransform();
    m_painter.EndFrame();
    const Rgb fill{static_cast<int>(std::lround(255 * circle.alpha)), 0, 0};
    // The slice, up; the fill down, left and right.
    EXPECT_TRUE(Shows({0, 2.3f}, {0, 0, 255}));
    EXPECT_TRUE(Shows({0, 1.2f}, {0, 0, 255}));
    EXPECT_TRUE(Shows({0, -2.3f}, fill));
    EXPECT_TRUE(Shows({2.3f, 0}, fill));
    EXPECT_TRUE(Shows({-2.3f, 0}, fill));
    // Beside the slice, a little more than its half angle away.
    EXPECT_TRUE(Shows({2.3f * std::sin(0.3f), 2.3f * std::cos(0.3f)}, fill));
    // The border ring, or the fill to the edge.
    EXPECT_TRUE(Shows({0, -2.87f}, withBorder ? Rgb{0, 0, 255} : fill));
    EXPECT_TRUE(Shows({-2.87f, 0}, withBorder ? Rgb{0, 0, 255} : fill));
    EXPECT_TRUE(Shows({0, -3.2f}, {0, 0, 0}));
    EXPECT_TRUE(Shows({2.2f, 2.2f}, {0, 0, 0}));
}

const CircleCase kCircleCases[] = {
    {"ShadersSmallOpaqueUseTextures", true, 1, false},
    {"ShadersLargeOpaqueUseTheProgram", true, 1, true},
    {"ShadersSeeThroughUseTheProgram", true, 0.5f, false},
    {"FixedSmallOpaqueUseTextures", false, 1, false},
    {"FixedLargeOpaqueUseFans", false, 1, true},
    {"FixedSeeThroughUseFans", false, 0.5f, false},
};

INSTANTIATE_TEST_SUITE_P(EveryPath, CircleTest,
                         testing::Combine(testing::ValuesIn(kCircleCases), testing::Bool()),
                         [](const testing::TestParamInfo<std::tuple<CircleCase, bool>>& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) ? "WithBorder" : "WithoutBorder");
                         });

// Polygons: the distance texture must lie exactly over the shape. An L, so that a texture
// mirrored or turned shows.

class PolygonTest : public GLPainterTest, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        GLPainterTest::SetUp();
        math::Vec2List outline;
        for (const Vec2& p : {Vec2(-3.5f, -3), Vec2(3.5f, -3), Vec2(3.5f, -0.5f), Vec2(0, -0.5f),
                              Vec2(0, 3), Vec2(-3.5f, 3)}) {
            outline.push_back(p);
        }
        m_polygon = util::SharedPtr<physics::Polygon>(new physics::Polygon(outline));
        const math::OBB2D& map = m_polygon->GetMapBox();
        // As a polygon's entity reckons it.
        m_scale = 0.04f * 2 * std::max(map.halfExtents.x, map.halfExtents.y);
    }
    // The outline's own coordinates turned a little and moved, so that any misplaced texel
    // shows; the polygon's frame has its origin at the centroid.
    static math::Mat3 Transform() { return Place(0.1f, {0.1f, -0.1f}); }
    static Vec2 World(Vec2 p) { return Transform().TransformPoint(p); }

    void Draw(const app::ShapeStyle& style) {
        m_painter.PushTransform(Transform() *
                                math::Mat3::Translation(m_polygon->GetTransform().translation));
        m_painter.Polygon(*m_polygon, m_scale, m_cache, style);
        m_painter.PopTransform();
    }

    // Points on the outline, with the outward normal there.
    struct Edge {
        Vec2 point;
        Vec2 normal;
    };
    static constexpr Edge kEdges[] = {
        {{3.5f, -1.75f}, {1, 0}}, {{-3.5f, 1}, {-1, 0}},    {{-3.5f, -2}, {-1, 0}},
        {{0, 1.5f}, {1, 0}},      {{1.75f, -0.5f}, {0, 1}}, {{-1.75f, 3}, {0, 1}},
        {{2, -3}, {0, -1}},       {{-2, -3}, {0, -1}},
    };

    physics::PolygonPtr m_polygon;
    float m_scale = 0;
    util::SharedPtr<util::Pointee> m_cache;
};

TEST_P(PolygonTest, FillInsideBorderAlongTheOutlineNothingOutside) {
    UseShaders(GetParam());
    Begin();
    app::ShapeStyle style;
    style.fill = kGreen;
    style.border = kBlue;
    // Just below the most the texture can hold, 127/256 of its scale.
    style.borderWidth = 0.14f;
    ASSERT_LT(style.borderWidth, m_scale * 127 / 256);
    Draw(style);
    m_painter.EndFrame();
    EXPECT_TRUE(m_cache);
    const Rgb none{0, 0, 0};
    const Rgb fill{0, 255, 0};
    const Rgb border{0, 0, 255};
    EXPECT_TRUE(Shows(World({-1.75f, 1.5f}), fill));
    EXPECT_TRUE(Shows(World({1.75f, -1.75f}), fill));
    EXPECT_TRUE(Shows(World({-3.2f, 2.7f}), fill));
    // The notch of the L.
    EXPECT_TRUE(Shows(World({1.75f, 1.5f}), none));
    // A pixel and a half inside the outline lies the border, as far outside nothing.
    const float step = 1.5f * kPixelSize;
    for (const Edge& edge : kEdges) {
        EXPECT_TRUE(Shows(World(edge.point - edge.normal * step), border));
        EXPECT_TRUE(Shows(World(edge.point + edge.normal * step), none));
        EXPECT_TRUE(Shows(World(edge.point - edge.normal * 0.3f), fill));
    }
    // Drawn again, the texture is the one made at the first draw.
    const util::Pointee* made = m_cache.Get();
    Begin();
    Draw(style);
    m_painter.EndFrame();
    EXPECT_EQ(m_cache.Get(), made);
}

TEST_P(PolygonTest, WithoutBorderTheFillReachesTheOutline) {
    UseShaders(GetParam());
    Begin();
    app::ShapeStyle style;
    style.fill = kRed;
    style.border = kBlue;
    Draw(style);
    m_painter.EndFrame();
    const float step = 1.5f * kPixelSize;
    for (const Edge& edge : kEdges) {
        EXPECT_TRUE(Shows(World(edge.point - edge.normal * step), {255, 0, 0}));
        EXPECT_TRUE(Shows(World(edge.point + edge.normal * step), {0, 0, 0}));
    }
}

TEST_P(PolygonTest, SeeThroughFillBlendsOrIsReportedAndDrawnOpaque) {
    UseShaders(GetParam());
    std::vector<logging::CapturedLine> log;
    const logging::LogCapture capture(log);
    Begin();
    app::ShapeStyle style;
    style.fill = Vec4(0, 1, 0, 0.5f);
    style.border = Vec4(0, 0, 1, 0.5f);
    Draw(style);
    m_painter.EndFrame();
    const bool warned = std::any_of(log.begin(), log.end(), [](const logging::CapturedLine& line) {
        return line.level == logging::Warning &&
               line.text.find(
                   "Polygon transparency not supported by your computer. Try "
                   "switching on shaders (anti-aliasing in the options menu), "
                   "or upgrade your graphics drivers.") != util::String::npos;
    });
    const bool blends = GetParam() || rendering::GraphicsContext::HasImaging();
    EXPECT_EQ(warned, !blends);
    EXPECT_TRUE(Shows(World({-1.75f, 1.5f}), {0, blends ? 128 : 255, 0}));
    EXPECT_TRUE(Shows(World({1.75f, 1.5f}), {0, 0, 0}));
}

TEST_P(PolygonTest, SilhouetteIsTheShapeAlone) {
    UseShaders(GetParam());
    Begin();
    app::ShapeStyle style;
    style.fill = Vec4(1, 1, 0, 1);
    style.border = kBlue;
    style.borderWidth = 0.14f;
    style.silhouette = true;
    Draw(style);
    m_painter.EndFrame();
    const float step = 1.5f * kPixelSize;
    for (const Edge& edge : kEdges) {
        EXPECT_TRUE(Shows(World(edge.point - edge.normal * step), {255, 255, 0}));
        EXPECT_TRUE(Shows(World(edge.point + edge.normal * step), {0, 0, 0}));
    }
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, PolygonTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                             return std::string(info.param ? "Shaders" : "FixedPipeline");
                         });

// Half planes cover all of the screen behind their line.

class HalfPlaneTest : public GLPainterTest, public testing::WithParamInterface<bool> {};

TEST_P(HalfPlaneTest, FillsTheVisibleHalfWithABorderStripAlongTheLine) {
    UseShaders(GetParam());
    Begin();
    app::ShapeStyle style;
    style.fill = kGreen;
    style.border = kBlue;
    style.borderWidth = 0.25f;
    m_painter.HalfPlane({0, 2}, 1, style);
    m_painter.EndFrame();
    // The line is y = 0.5.
    EXPECT_TRUE(Shows({0, -2}, {0, 255, 0}));
    EXPECT_TRUE(Shows({-3.98f, -3.98f}, {0, 255, 0}));
    EXPECT_TRUE(Shows({3.98f, 0.2f}, {0, 255, 0}));
    EXPECT_TRUE(Shows({0, 0.375f}, {0, 0, 255}));
    EXPECT_TRUE(Shows({-3.98f, 0.375f}, {0, 0, 255}));
    EXPECT_TRUE(Shows({0, 0.6f}, {0, 0, 0}));
    EXPECT_TRUE(Shows({3.98f, 3.98f}, {0, 0, 0}));
}

TEST_P(HalfPlaneTest, InAMovedAndTurnedFrame) {
    UseShaders(GetParam());
    Begin();
    app::ShapeStyle style;
    style.fill = kRed;
    style.border = kBlue;
    // In the frame turned an eighth and moved right, the local half plane x <= 0.
    m_painter.PushTransform(Place(kPi / 4, {1, 0}));
    m_painter.HalfPlane({1, 0}, 0, style);
    m_painter.PopTransform();
    m_painter.EndFrame();
    // That is, in the world, x + y <= 1.
    EXPECT_TRUE(Shows({-3.9f, -3.9f}, {255, 0, 0}));
    EXPECT_TRUE(Shows({-3.9f, 3.9f}, {255, 0, 0}));
    EXPECT_TRUE(Shows({3.9f, -3.9f}, {255, 0, 0}));
    EXPECT_TRUE(Shows({0.2f, 0.6f}, {255, 0, 0}));
    EXPECT_TRUE(Shows({0.5f, 0.7f}, {0, 0, 0}));
    EXPECT_TRUE(Shows({1.5f, 0.1f}, {0, 0, 0}));
    EXPECT_TRUE(Shows({3.9f, 3.9f}, {0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, HalfPlaneTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                             return std::string(info.param ? "Shaders" : "FixedPipeline");
                         });

// Pictures, trails and overlays lie over what is below, whatever its depth.

class TrailTest : public GLPainterTest, public testing::WithParamInterface<bool> {};

TEST_P(TrailTest, AStripThatFadesWithFreshness) {
    UseShaders(GetParam());
    Begin();
    std::vector<app::TrailVertex> trail;
    for (int i = 0; i <= 12; ++i) {
        app::TrailVertex vertex;
        vertex.position = Vec2(-3 + 0.5f * static_cast<float>(i), 0);
        vertex.normal = Vec2(0, 1);
        vertex.freshness = static_cast<float>(i) / 12;
        trail.push_back(vertex);
    }
    m_painter.Trail(trail.data(), trail.size(), 0.5f, Vec4(1, 1, 0, 1));
    m_painter.EndFrame();
    // Freshness runs from 0 at x = -3 to 1 at x = 3.
    EXPECT_TRUE(Shows({2.9f, 0}, {251, 251, 0}, 12));
    EXPECT_TRUE(Shows({0, 0}, {128, 128, 0}, 12));
    EXPECT_LT(At({-2.95f, 0}).r, 20);
    EXPECT_TRUE(Shows({2.5f, 0.4f}, {0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, TrailTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                             return std::string(info.param ? "Shaders" : "FixedPipeline");
                         });

TEST_F(GLPainterTest, PicturesAndOverlaysIgnoreDepthAndLeaveTheStateAsFound) {
    Begin();
    // A box in front of everything that follows.
    glPushMatrix();
    glTranslatef(0, 0, 0.4f);
    app::ShapeStyle style;
    style.fill = kGreen;
    m_painter.Box({4, 4}, style);
    glPopMatrix();

    m_painter.Sprite("dot", {-2, 2}, 1.5f, 0, kRed);
    m_painter.Disc({2, 2}, 1, kRed);
    const Vec2 points[] = {{-2, -2}};
    m_painter.Points(points, 1, 0.25f, kBlue);
    // Half a pixel above a row's lower edge, so that the line takes that row.
    m_painter.Line({0.5f, -3 + kPixelSize / 2}, {3.5f, -3 + kPixelSize / 2}, kBlue);
    m_painter.Strip("spring", "spring_attachment", {-3, 0}, {3, 0}, 1, Vec4(1, 1, 1, 1));
    // Outlines on the middle of a row of pixels, so that each edge takes one row.
    const float h = kPixelSize / 2;
    const Vec2 square[] = {{-1, -1 + h}, {1, -1 + h}, {1, 1 + h}, {-1, 1 + h}};
    m_painter.Outline(square, 4, kRed);
    m_painter.RoundedRect({0, -2 + h}, {1.5f, 0.5f}, 0, 0.25f, kBlue);
    m_painter.EndFrame();

    // The dot's texture times red; the disc's red added to the green.
    EXPECT_GT(At({-2, 2}).r, 180);
    EXPECT_LT(At({-2, 2}).g, 20);
    EXPECT_TRUE(Shows({-2, 2.9f}, {0, 255, 0}));
    EXPECT_TRUE(Shows({2, 2}, {255, 255, 0}));
    EXPECT_TRUE(Shows({2, 3.1f}, {0, 255, 0}));
    // Points of a quarter unit: eight pixels across.
    EXPECT_TRUE(Shows({-2.09f, -1.91f}, {0, 0, 255}));
    EXPECT_TRUE(Shows({-2.2f, -2}, {0, 255, 0}));
    EXPECT_TRUE(Shows({2, -3}, {0, 0, 255}, 40));
    // The spring's wire shows along the strip, and not beyond its width.
    int wire = 0;
    for (float x = -2.5f; x < 2.5f; x += kPixelSize) {
        const Rgb seen = At({x, 0.1f});
        wire += seen.r > 60 && seen.b > 60 ? 1 : 0;
    }
    EXPECT_GT(wire, 20);
    EXPECT_TRUE(Shows({0, 0.7f}, {0, 255, 0}));
    // The outline adds its red to the green; inside it nothing changed.
    EXPECT_TRUE(Shows({0, -1 + h}, {255, 255, 0}));
    EXPECT_TRUE(Shows({0, -0.8f}, {0, 255, 0}));
    // The rounded rectangle's straight sides, and its corner cut round.
    EXPECT_TRUE(Shows({0, -1.5f + h}, {0, 0, 255}, 40));
    EXPECT_TRUE(Shows({0, -2.5f + h}, {0, 0, 255}, 40));
    EXPECT_TRUE(Shows({1.5f - 0.02f, -1.5f + h}, {0, 255, 0}));
    EXPECT_TRUE(Shows({1.5f - 0.02f, -1.5f - 0.02f}, {0, 255, 0}));

    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    GLint source = 0;
    GLint destination = 0;
    glGetIntegerv(GL_BLEND_SRC_RGB, &source);
    glGetIntegerv(GL_BLEND_DST_RGB, &destination);
    EXPECT_EQ(source, GL_SRC_ALPHA);
    EXPECT_EQ(destination, GL_ONE_MINUS_SRC_ALPHA);
    GLfloat pointSize = 0;
    glGetFloatv(GL_POINT_SIZE, &pointSize);
    EXPECT_EQ(pointSize, 1.0f);
    GLint texture = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    EXPECT_EQ(texture, 0);
}

TEST_F(GLPainterTest, AProgramStaysBoundFromShapeToShapeUntilReleased) {
    UseShaders(true);
    Begin();
    app::ShapeStyle style;
    style.fill = kRed;
    style.border = kBlue;
    style.borderWidth = 0.25f;
    m_painter.Box({1, 1}, style);
    const int box = CurrentProgram();
    EXPECT_NE(box, 0);
    m_painter.Box({0.5f, 0.5f}, style);
    EXPECT_EQ(CurrentProgram(), box);
    style.fill.w = 0.5f;
    m_painter.Circle(1, style);
    EXPECT_NE(CurrentProgram(), box);
    EXPECT_NE(CurrentProgram(), 0);
    m_painter.ReleaseProgram();
    EXPECT_EQ(CurrentProgram(), 0);
    m_painter.Box({1, 1}, style);
    EXPECT_EQ(CurrentProgram(), box);
    // Overlays draw with the fixed pipeline.
    m_painter.Line({0, 0}, {1, 1}, kRed);
    EXPECT_EQ(CurrentProgram(), 0);
    m_painter.Box({1, 1}, style);
    m_painter.EndFrame();
    EXPECT_EQ(CurrentProgram(), 0);
}

TEST_F(GLPainterTest, ShapesAfterTheProgramsWereRebuiltStillGetTheirUniforms) {
    UseShaders(true);
    Begin();
    app::ShapeStyle style;
    style.fill = kRed;
    m_painter.PushTransform(Place(0, {-2, 0}));
    m_painter.Box({1, 1}, style);
    m_painter.PopTransform();
    // Rebuilt in the middle of the frame: the old locations, and the values the painter
    // gave the old programs, mean nothing to the new ones.
    UseShaders(true);
    m_painter.PushTransform(Place(0, {2, 0}));
    m_painter.Box({1, 1}, style);
    m_painter.PopTransform();
    m_painter.EndFrame();
    EXPECT_TRUE(Shows({-2, 0}, {255, 0, 0}));
    EXPECT_TRUE(Shows({2, 0}, {255, 0, 0}));
}

}  // namespace

namespace {

// Batching

class BatchTest : public GLPainterTest, public testing::WithParamInterface<bool> {
protected:
    // A heap of every kind of piece, overlapping each other, each at its own depth as the
    // entity pass gives it; the frame buffer read back.
    std::vector<unsigned char> DrawHeap(bool batched) {
        Clear(0.3f, 0.4f, 1);
        Begin();
        if (batched) {
            m_painter.BeginBatching();
        }
        const math::Vec2List outline = {{-0.8f, -0.6f}, {0.9f, -0.5f}, {0.5f, 0.8f}, {-0.6f, 0.5f}};
        const physics::Polygon polygon(outline);
        util::SharedPtr<util::Pointee> cache;
        std::mt19937 random(7);
        std::uniform_real_distribution<float> unit(0, 1);
        for (int i = 0; i < 60; ++i) {
            const float z = 0.005f * static_cast<float>(i + 1);
            if (batched) {
                m_painter.SetDepth(z);
            } else {
                glPushMatrix();
                glTranslatef(0, 0, z);
            }
            const Vec2 at(6 * unit(random) - 3, 6 * unit(random) - 3);
            app::ShapeStyle style;
            style.fill = Vec4(unit(random), unit(random), unit(random), i % 7 == 0 ? 0.5f : 1);
            style.border = Vec4(0.5f * style.fill.x, 0.5f * style.fill.y, 0.5f * style.fill.z, 1);
            style.borderWidth = i % 3 == 0 ? 0 : 0.1f;
            m_painter.PushTransform(Place(unit(random) * 2 * kPi, at));
            switch (i % 6) {
                case 0:
                case 1:
                    m_painter.Box({0.3f + unit(random), 0.2f + unit(random)}, style);
                    break;
                case 2:
                    m_painter.Circle(0.2f + unit(random), style);
                    break;
                case 3:
                    m_painter.Polygon(polygon, 0.1f, cache, style);
                    break;
                case 4:
                    m_painter.Sprite(i % 4 ? "hinge" : "ring", {0, 0}, 0.8f, 0, style.fill);
                    break;
                default:
                    m_painter.Line({-1, 0}, {1, 0.5f}, style.fill);
                    break;
            }
            m_painter.PopTransform();
            if (!batched) {
                glPopMatrix();
            }
        }
        if (batched) {
            m_painter.EndBatching();
        }
        m_painter.EndFrame();
        std::vector<unsigned char> pixels(kSide * kSide * 4);
        glReadPixels(0, 0, kSide, kSide, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }
};

TEST_P(BatchTest, ABatchedPassDrawsWhatShapesDrawnOneByOneDraw) {
    UseShaders(GetParam());
    const std::vector<unsigned char> alone = DrawHeap(false);
    const std::vector<unsigned char> batched = DrawHeap(true);
    int differing = 0;
    for (size_t i = 0; i < alone.size(); i += 4) {
        for (size_t c = 0; c < 3; ++c) {
            if (std::abs(alone[i + c] - batched[i + c]) > 2) {
                ++differing;
                break;
            }
        }
    }
    // The placement is rounded differently on the processor: a few pixels on edges at most.
    EXPECT_LE(differing, 20) << "of " << kSide * kSide;
    // And the pass leaves the model-view matrix as it found it.
    GLfloat matrix[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
    EXPECT_FLOAT_EQ(matrix[14], 0.5f);
}

INSTANTIATE_TEST_SUITE_P(ShadersOnAndOff, BatchTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                             return std::string(info.param ? "Shaders" : "FixedPipeline");
                         });

}  // namespace
