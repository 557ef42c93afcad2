#pragma once

#include <vector>

#include "app/entities/Entity.h"
#include "math/BoundingBox2.h"
#include "math/Matrix3.h"
#include "math/Vector2.h"
#include "math/Vector4.h"
#include "physics/Forward.h"
#include "rendering/ImageRGBA32.h"
#include "rendering/ShaderVariable.h"
#include "rendering/Texture.h"
#include "rendering/TextureManager.h"

namespace app {

class Painter;

// How water looks: the application's settings of the frame.
struct WaterLook {
    math::Vec4 color{0.1f, 0.1f, 1.0f, 0.7f};
    // The summed field shows as water above this.
    float cutoff = 0.5f;
    // How much a sprite stretches a unit of speed, and the most it stretches.
    float elongation = 0.05f;
    float maxElongation = 2.0f;
    // One plain sprite a particle, without the summed field.
    bool simple = false;
};

// Water as metaballs: every particle adds a soft blob to a field summed off screen, and the
// field shows as one liquid where it passes the cut-off. The sum uses the frame buffer as
// scratch space before the frame is cleared, so no render target is needed.
class WaterRenderer {
public:
    // The sum texture's side: it must be at least as large as the viewport.
    static constexpr size_t kFieldSize = 2048;
    // The blob image's side.
    static constexpr int kBlobSize = 64;
    // The field is summed at half the window's resolution: it is smooth, and the
    // composite's linear filter and soft cut give the same outline, for a quarter of the
    // pixel work of thousands of overlapping sprites.
    static constexpr float kFieldScale = 0.5f;

    WaterRenderer();
    ~WaterRenderer();

    // Sums the particles in view into the field, stretched along their motion, and cuts the
    // silhouettes of see-through shapes that keep water out from it. Draws in the frame
    // buffer: call before the frame is cleared. The camera maps the world to the window;
    // the viewport is the window's size in pixels.
    void DrawMetaTex(const math::Mat3& camera, const math::BoundingBox2f& view,
                     const physics::ParticleList& particles, float radius,
                     const std::vector<EntityPtr>& visible, Painter& painter, math::Vec2 viewport,
                     const WaterLook& look);
    // The water over the background: the field cut at the cut-off, in the water's colour,
    // through the "water" shader or the alpha test; or, in the simple look, one sprite a
    // particle. The screen is the window's size and the viewport its size in pixels.
    void Composite(const math::Mat3& camera, const math::BoundingBox2f& view,
                   const physics::ParticleList& particles, float radius, math::Vec2 screen,
                   math::Vec2 viewport, const WaterLook& look);

    // One particle's field: 1/r² shifted to reach zero at r = 4 and scaled to reach one at
    // r = 1, white with the field as alpha, clear on the border.
    static rendering::ImageRGBA32Ptr MakeBlobImage();
    // How far a sprite stretches along the velocity: between 1 and the limit, whichever
    // is larger.
    static float Elongation(math::Vec2 velocity, const WaterLook& look);

    // The field of the latest frame, for tests.
    const rendering::TexturePtr& GetFieldTexture() const { return m_field; }

private:
    // The quads of the particles in the box grown by the margin: each a square of the side
    // turned along its velocity and stretched by the look, or plain when stretch is false.
    void BuildSprites(const physics::ParticleList& particles, const math::BoundingBox2f& view,
                      float side, float margin, bool stretch, const WaterLook& look);
    // The built quads in one call.
    void DrawSprites() const;
    void DrawField(const math::Mat3& camera, math::Vec2 screen, math::Vec2 viewport,
                   const WaterLook& look);
    // The field's size in pixels for a viewport.
    static math::Vec2 FieldSize(math::Vec2 viewport);
    // The frame buffer has a stencil, for see-through water without constant-alpha
    // blending.
    static bool HasStencil();
    void DrawSimple(const math::Mat3& camera, const math::BoundingBox2f& view,
                    const physics::ParticleList& particles, float radius, const WaterLook& look);

    rendering::TexturePtr m_blob;
    rendering::TexturePtr m_field;
    rendering::TextureHandle m_simpleTexture;
    rendering::ShaderHandle m_shader;
    // Interleaved x, y, s, t of every corner, kept between frames.
    std::vector<float> m_vertices;
    // The world box of the latest sprites.
    math::BoundingBox2f m_spriteBox;
};

}  // namespace app
