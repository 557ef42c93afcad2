#include "app/Background.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "app/Camera.h"
#include "app/Scene.h"
#include "math/MathUtil.h"
#include "math/Matrix3.h"
#include "physics/Simulation.h"
#include "rendering/GLMatrix.h"
#include "rendering/Renderer.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"

namespace app {
namespace {

constexpr const char* kFolder = "background/";
constexpr const char* kExtensions[] = {".png", ".tga", ".bmp", ".jpg"};
// The layer moves and zooms at this fraction of the scene's rate.
constexpr float kParallax = 0.7f;
// The wrap rectangle is a window of this many pixels at the smallest zoom, seen through
// the parallax scale: large enough that no window shows the same cloud twice.
constexpr float kWrapPixelsX = 2048;
constexpr float kWrapPixelsY = 1280;
// Every saved attribute group: glPushAttrib's mask for all of them.
constexpr GLbitfield kAllAttribs = 0xFFFFF;

// Uniform in [min, max): the generator can round up to max itself.
float UniformBelow(util::Random& random, float min, float max) {
    const float value = random.GetUniform(min, max);
    return value < max ? value : std::nextafter(max, min);
}

bool IsImageName(const util::String& name) {
    return std::any_of(std::begin(kExtensions), std::end(kExtensions),
                       [&](const char* extension) { return name.ends_with(extension); });
}

// The one way every quad here is drawn: the texture's corners at the rectangle's.
void Quad(float x0, float y0, float x1, float y1) {
    glTexCoord2f(0, 0);
    glVertex2f(x0, y0);
    glTexCoord2f(0, 1);
    glVertex2f(x0, y1);
    glTexCoord2f(1, 1);
    glVertex2f(x1, y1);
    glTexCoord2f(1, 0);
    glVertex2f(x1, y0);
}

// One correction a frame: a cloud farther away comes back over several frames.
void Wrap(float& coordinate, float centre, float extent) {
    if (coordinate < centre - extent * 0.5f) {
        coordinate += extent;
    }
    if (coordinate > centre + extent * 0.5f) {
        coordinate -= extent;
    }
}

}  // namespace

Background::Background() : Background(util::Random()) {}

Background::Background(uint32_t seed) : Background(util::Random(seed)) {}

Background::Background(const util::Random& random)
    : gui::Component("Background"),
      BackgroundSettings(static_cast<script::Reflected&>(*this)),
      m_random(random) {
    SetReflectedName("Background");
}

Background::~Background() = default;

void Background::LoadTextures() {
    m_textures.clear();
    const util::FileSystem& fileSystem = util::FileSystem::Get();
    const util::String folder = fileSystem.GetWorkDirectory() + kFolder;
    std::vector<util::String> names;
    if (fileSystem.Exists(folder)) {
        try {
            names = fileSystem.ListFiles(folder, "*");
        } catch (const std::filesystem::filesystem_error&) {
            // An unreadable folder is an empty one: the sky still gets its clouds.
        }
    }
    rendering::TextureManager& textures = rendering::TextureManager::Get();
    for (const util::String& name : names) {
        if (!IsImageName(name)) {
            continue;
        }
        const rendering::TextureHandle handle =
            textures.Load(kFolder + name, GL_RGBA, true, 1, 1, 1, 1, 1);
        if (!rendering::TextureManager::IsDefault(handle)) {
            m_textures.push_back(handle);
        }
    }
    if (m_textures.empty()) {
        // Every record needs a texture to bind.
        m_textures.push_back(textures.Load("blank", GL_RGBA, true, 0, 0, 1, 1, 1));
    }
}

void Background::Init() {
    LoadTextures();
    m_wrapExtents = math::Vec2(kWrapPixelsX / Camera::kMinZoom / kParallax,
                               kWrapPixelsY / Camera::kMinZoom / kParallax);
    m_clouds.assign(kCloudCount, Cloud());
    const int textureCount = static_cast<int>(m_textures.size());
    for (int i = 0; i < kCloudCount; ++i) {
        Cloud& cloud = m_clouds[i];
        cloud.size = UniformBelow(m_random, 5, 15);
        cloud.position.x = UniformBelow(m_random, 0, m_wrapExtents.x);
        cloud.position.y = UniformBelow(m_random, 0, m_wrapExtents.y);
        cloud.velocity = math::Vec2(cloud.size * UniformBelow(m_random, 0.1f, 0.2f), 0);
        cloud.texture = i % textureCount;
    }
    // Larger clouds are drawn later and lie on top.
    std::sort(m_clouds.begin(), m_clouds.end(),
              [](const Cloud& a, const Cloud& b) { return a.size < b.size; });
}

void Background::Update(float dt) {
    gui::Component::Update(dt);
    if (!drawClouds->Get()) {
        return;
    }
    if (m_clouds.empty()) {
        Init();
    }
    const physics::Simulation& simulation = physics::Simulation::Get();
    const double now = simulation.GetSimulatedTime();
    const double step = now - m_lastTime;
    m_lastTime = now;
    // Clouds follow simulated time: they stand while it is paused, and a jump (a scene
    // load, an undo) moves nothing.
    if (!(std::isfinite(step) && step <= 1.0 && step > 0 && simulation.running->Get())) {
        return;
    }
    VORRA_PROFILE("Background::Update");
    const float delta = static_cast<float>(step);
    for (Cloud& cloud : m_clouds) {
        cloud.position += cloud.velocity * delta;
        cloud.rotation += cloud.rotationSpeed * delta;
    }
}

void Background::DrawComp() {}

void Background::DrawClouds(float width, float height) {
    // The layer: the scene's world-to-window matrix, then the parallax scale about the
    // window's centre.
    const math::Mat3 parallax(kParallax, 0, (1 - kParallax) * width * 0.5f, 0, kParallax,
                              (1 - kParallax) * height * 0.5f, 0, 0, 1);
    const math::Mat3 layer = parallax * Scene::Get().GetCamera().GetTransform();
    // A view that cannot be mapped back (math::Inverted would throw on a singular one, and
    // a pan near the float range gives no finite inverse) skips the clouds for this frame.
    const float determinant = layer.Determinant();
    if (!math::IsFinite(layer) || !std::isfinite(determinant) || determinant == 0) {
        return;
    }
    const math::Mat3 inverse = math::Inverted(layer);
    if (!math::IsFinite(inverse)) {
        return;
    }
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const math::Vec2 centre = inverse.TransformPoint(math::Vec2(width * 0.5f, height * 0.5f));
    {
        VORRA_PROFILE("Wrapping");
        for (Cloud& cloud : m_clouds) {
            Wrap(cloud.position.x, centre.x, m_wrapExtents.x);
            Wrap(cloud.position.y, centre.y, m_wrapExtents.y);
        }
    }
    rendering::LoadMatrix(layer);
    glEnable(GL_TEXTURE_2D);
    rendering::Renderer::Get().SetColor(math::Colour(1, 1, 1, cloudOpacity->Get()));

    const math::Vec2 corner0 = inverse.TransformPoint(math::Vec2(width, height));
    const math::Vec2 corner1 = inverse.TransformPoint(math::Vec2(0, 0));
    const math::Vec2 viewMin(std::min(corner0.x, corner1.x), std::min(corner0.y, corner1.y));
    const math::Vec2 viewMax(std::max(corner0.x, corner1.x), std::max(corner0.y, corner1.y));
    const math::Vec2 viewCentre = (viewMin + viewMax) * 0.5f;
    const math::Vec2 viewHalf = (viewMax - viewMin) * 0.5f;
    for (const Cloud& cloud : m_clouds) {
        const float half = cloud.size * 0.5f;
        if (!(std::abs(cloud.position.x - viewCentre.x) < viewHalf.x + half) ||
            !(std::abs(cloud.position.y - viewCentre.y) < viewHalf.y + half)) {
            continue;
        }
        const rendering::TexturePtr& texture = m_textures[cloud.texture]->Get();
        if (texture) {
            texture->Bind();
        } else {
            glBindTexture(GL_TEXTURE_2D, 0);
        }
        glBegin(GL_QUADS);
        Quad(cloud.position.x - half, cloud.position.y - half, cloud.position.x + half,
             cloud.position.y + half);
        glEnd();
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glDisable(GL_BLEND);
}

void Background::Draw() {
    VORRA_PROFILE("Background::Draw");
    rendering::Renderer& renderer = rendering::Renderer::Get();
    glPushMatrix();
    const math::Colour savedColor = renderer.GetColor();
    glPushAttrib(kAllAttribs);
    const float width = GetSize().x;
    const float height = GetSize().y;
    {
        VORRA_PROFILE("Draw sky color");
        renderer.SetColor(skyColor->Get());
        glBegin(GL_QUADS);
        Quad(0, 0, width, height);
        glEnd();
    }

    if (drawClouds->Get()) {
        DrawClouds(width, height);
    }
    glPopAttrib();
    renderer.SetColor(savedColor);
    glPopMatrix();
}

}  // namespace app
