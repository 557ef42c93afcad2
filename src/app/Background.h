#pragma once

#include <cstdint>
#include <vector>

#include "app/BackgroundSettings.h"
#include "gui/Component.h"
#include "math/Vector2.h"
#include "math/Vector4.h"
#include "rendering/TextureManager.h"
#include "script/Attributes.h"
#include "util/Random.h"

namespace app {

class Background;
using BackgroundPtr = util::SharedPtr<Background>;

// What lies behind the scene: a flat sky and a field of cloud sprites that drift with
// simulated time and pan and zoom at seven tenths of the scene's rate. In the language it
// is "Background". The owner gives it the window's size.
//
// It paints only through Draw, which the application calls in its blended pass after it
// has cleared the frame; DrawComp paints nothing, so that the application's walk over its
// children before that clear leaves no trace of it.
class Background : public gui::Component, public BackgroundSettings {
public:
    // One sprite. Positions and sizes are in the cloud layer's units (world units seen
    // through the parallax scale).
    struct Cloud {
        float size = 0;  // side of its square
        math::Vec2 position{0, 0};
        math::Vec2 velocity{0, 0};
        float rotation = 0;  // integrated, never drawn
        float rotationSpeed = 0;
        int texture = 0;                 // index into GetTextures()
        bool flag = false;               // carried with the record; nothing reads it
        math::Colour color{1, 1, 1, 1};  // carried; Draw uses one colour for all
    };

    static constexpr int kCloudCount = 2500;

    Background();
    // A fixed seed for the clouds' random field, for users that must repeat themselves.
    explicit Background(uint32_t seed);
    ~Background() override;

    // Moves the clouds by the simulated time that passed since the last call, while the
    // simulation runs; the frame's own dt is not used. Makes the clouds at the first call
    // that finds them switched on.
    void Update(float dt) override;
    // Nothing: see Draw.
    void DrawComp() override;
    // The sky over the component's size and the clouds in view, with the GUI's projection
    // (window units, y down) and the modelview matrix current. Leaves the matrix, the GL
    // attributes and the renderer's colour as it found them.
    void Draw();

    const std::vector<Cloud>& GetClouds() const { return m_clouds; }
    const std::vector<rendering::TextureHandle>& GetTextures() const { return m_textures; }
    // The size of the rectangle, in layer units, within which the clouds wrap round.
    const math::Vec2& GetWrapExtents() const { return m_wrapExtents; }

private:
    explicit Background(const util::Random& random);
    void Init();
    void LoadTextures();
    // Wraps the clouds round the view and draws those in it; blending and texturing on.
    void DrawClouds(float width, float height);

    std::vector<Cloud> m_clouds;
    std::vector<rendering::TextureHandle> m_textures;
    math::Vec2 m_wrapExtents{0, 0};
    double m_lastTime = 0;
    util::Random m_random;
};

}  // namespace app
