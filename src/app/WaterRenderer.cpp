#include "app/WaterRenderer.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

#include "app/Painter.h"
#include "app/entities/GeomEntity.h"
#include "gui/Primitives.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Particle.h"
#include "rendering/GLMatrix.h"
#include "rendering/GraphicsContext.h"
#include "rendering/Renderer.h"
#include "rendering/ShaderManager.h"
#include "util/Profiler.h"

namespace app {

namespace {

const char* const kNoTransparency =
    "Water transparency not supported by your computer. Try switching on shaders "
    "(anti-aliasing in the options menu), or upgrade your graphics drivers.";

// The shape keeps water out and water behind it would show through.
bool CutsWaterOut(const Entity& entity) {
    const auto* shape = dynamic_cast<const GeomEntity*>(&entity);
    return shape && shape->color->Get().w < 1 && shape->collideWater->Get();
}

}  // namespace

WaterRenderer::WaterRenderer() = default;

WaterRenderer::~WaterRenderer() = default;

rendering::ImageRGBA32Ptr WaterRenderer::MakeBlobImage() {
    const int n = kBlobSize;
    rendering::ImageRGBA32Ptr image(
        new rendering::ImageRGBA32(n, n, true, math::Pixel(255, 255, 255, 0)));
    for (int y = 1; y < n - 1; ++y) {
        for (int x = 1; x < n - 1; ++x) {
            const float u = 8.0f * x / (n - 1) - 4;
            const float v = 8.0f * y / (n - 1) - 4;
            const float f = (1 / (u * u + v * v) - 1.0f / 16) / (1 - 1.0f / 16);
            const float alpha = f < 0 ? 0 : (f > 1 ? 255 : std::round(255 * f));
            (*image)(x, y).w = static_cast<unsigned char>(alpha);
        }
    }
    return image;
}

float WaterRenderer::Elongation(math::Vec2 velocity, const WaterLook& look) {
    const float e = 1 + velocity.Length() * look.elongation;
    const float low = std::min(1.0f, look.maxElongation);
    const float high = std::max(1.0f, look.maxElongation);
    return std::isfinite(e) ? std::clamp(e, low, high) : high;
}

void WaterRenderer::BuildSprites(const physics::ParticleList& particles,
                                 const math::BoundingBox2f& view, float side, float margin,
                                 bool stretch, const WaterLook& look) {
    m_vertices.clear();
    m_spriteBox = math::BoundingBox2f();
    const math::BoundingBox2f area = view.Expanded(margin);
    const float h = side / 2;
    static constexpr float kCorners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (const physics::ParticlePtr& particle : particles) {
        const math::Vec2 p = particle->position;
        // A particle off any finite place fails the test too.
        if (!area.Contains(p)) {
            continue;
        }
        math::Vec2 along(h, 0);
        math::Vec2 across(0, h);
        if (stretch) {
            const math::Vec2 v = particle->velocity;
            const float angle = v.x == 0 && v.y == 0 ? 0.0f : std::atan2(v.y, v.x);
            const float e = Elongation(v, look);
            if (!std::isfinite(angle)) {
                continue;
            }
            const math::Vec2 axis(std::cos(angle), std::sin(angle));
            along = axis * (h * e);
            across = math::Vec2(-axis.y, axis.x) * (h / e);
        }
        for (const auto& corner : kCorners) {
            const math::Vec2 q = p + along * corner[0] + across * corner[1];
            m_spriteBox.Add(q);
            m_vertices.insert(m_vertices.end(),
                              {q.x, q.y, (corner[0] + 1) / 2, (corner[1] + 1) / 2});
        }
    }
}

void WaterRenderer::DrawSprites() const {
    if (m_vertices.empty()) {
        return;
    }
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glVertexPointer(2, GL_FLOAT, 4 * sizeof(float), m_vertices.data());
    glTexCoordPointer(2, GL_FLOAT, 4 * sizeof(float), m_vertices.data() + 2);
    glDrawArrays(GL_QUADS, 0, static_cast<GLsizei>(m_vertices.size() / 4));
    glPopClientAttrib();
}

void WaterRenderer::DrawMetaTex(const math::Mat3& camera, const math::BoundingBox2f& view,
                                const physics::ParticleList& particles, float radius,
                                const std::vector<EntityPtr>& visible, Painter& painter,
                                math::Vec2 viewport, const WaterLook& look) {
    VORRA_PROFILE("DrawMetaTex");
    if (!m_blob) {
        // The blob is smooth: bilinear filtering alone sums the same field as mip-maps
        // would, at half the cost per pixel on a software rasteriser.
        m_blob = rendering::TexturePtr(
            new rendering::Texture(MakeBlobImage(), rendering::Texture::ImageType{GL_RGBA, false}));
    }
    if (!m_field) {
        rendering::Texture::ImageType type{GL_RGBA, false, 1, 1, 1, 1, 0};
        m_field = rendering::TexturePtr(new rendering::Texture(kFieldSize, kFieldSize, type));
    }
    rendering::Renderer& renderer = rendering::Renderer::Get();
    const math::Vec2 field = FieldSize(viewport);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);

    const math::Colour savedColor = renderer.GetColor();
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushMatrix();
    // The same picture in a corner of the frame buffer, smaller by the field's scale.
    glViewport(0, 0, static_cast<GLsizei>(field.x), static_cast<GLsizei>(field.y));
    renderer.SetColor(math::Colour(1, 1, 1, 1));
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    rendering::LoadMatrix(camera);

    if (!particles.empty()) {
        VORRA_PROFILE("Drawing particles");
        const float side = 8 * radius;
        const float margin = look.maxElongation * side / 2;
        BuildSprites(particles, view, side, margin * margin, true, look);
        m_blob->Bind();
        DrawSprites();
        rendering::Texture::Unbind();
    }
    {
        VORRA_PROFILE("Drawing black bodies");
        glDisable(GL_BLEND);
        glDisable(GL_TEXTURE_2D);
        const math::Vec4 black(0, 0, 0, 1);
        for (const EntityPtr& entity : visible) {
            if (CutsWaterOut(*entity)) {
                static_cast<const GeomEntity&>(*entity).DrawSilhouette(painter, black);
            }
        }
    }
    m_field->Copy(static_cast<size_t>(field.x), static_cast<size_t>(field.y));

    glPopMatrix();
    glPopAttrib();
    renderer.ForgetState();
    renderer.SetColor(savedColor);
}

void WaterRenderer::Composite(const math::Mat3& camera, const math::BoundingBox2f& view,
                              const physics::ParticleList& particles, float radius,
                              math::Vec2 screen, math::Vec2 viewport, const WaterLook& look) {
    if (particles.empty()) {
        return;
    }
    if (look.simple) {
        DrawSimple(camera, view, particles, radius, look);
    } else if (m_field) {
        DrawField(camera, screen, viewport, look);
    }
}

void WaterRenderer::DrawField(const math::Mat3& camera, math::Vec2 screen, math::Vec2 viewport,
                              const WaterLook& look) {
    rendering::Renderer& renderer = rendering::Renderer::Get();
    if (!m_shader) {
        m_shader = rendering::ShaderManager::Get().Load("water");
    }
    const bool useShader = rendering::GraphicsContext::GetShadersEnabled() &&
                           rendering::ShaderManager::IsUsable(m_shader);
    // Only the part of the window where sprites were summed can hold water.
    if (m_spriteBox.IsEmpty()) {
        return;
    }
    math::BoundingBox2f area;
    area.Add(camera.TransformPoint(m_spriteBox.min));
    area.Add(camera.TransformPoint(m_spriteBox.max));
    area.Add(camera.TransformPoint(math::Vec2(m_spriteBox.min.x, m_spriteBox.max.y)));
    area.Add(camera.TransformPoint(math::Vec2(m_spriteBox.max.x, m_spriteBox.min.y)));
    area.min =
        math::Vec2(std::max(std::floor(area.min.x), 0.0f), std::max(std::floor(area.min.y), 0.0f));
    area.max = math::Vec2(std::min(std::ceil(area.max.x), screen.x),
                          std::min(std::ceil(area.max.y), screen.y));
    if (area.IsEmpty()) {
        return;
    }
    const math::Vec2 field = FieldSize(viewport);
    // Window units to the field's texture coordinates; the frame's rows run upward.
    const auto fieldAt = [&](float x, float y) {
        return math::Vec2(x / screen.x * field.x, (1 - y / screen.y) * field.y) *
               (1.0f / kFieldSize);
    };
    const math::Vec2 lowerLeft = fieldAt(area.min.x, area.max.y);
    const math::Vec2 upperRight = fieldAt(area.max.x, area.min.y);
    const math::Vec2 size = area.Size();
    const auto drawQuad = [&] {
        m_field->Bind();
        gui::DrawTexturedRect(area.min.x, area.min.y, size.x, size.y, lowerLeft, upperRight);
        rendering::Texture::Unbind();
    };
    if (useShader) {
        rendering::Shader& shader = *m_shader->Get();
        shader.Bind();
        glUniform1f(shader.GetUniformLocation("Cutoff"), look.cutoff);
        rendering::Uniform::SetUniform(shader.GetUniformLocation("Color"), look.color);
        rendering::Uniform::SetUniform(shader.GetUniformLocation("Field"), 0);
        drawQuad();
        shader.Unbind();
        return;
    }
    glPushAttrib(GL_COLOR_BUFFER_BIT | GL_STENCIL_BUFFER_BIT | GL_ENABLE_BIT);
    glDisable(GL_BLEND);
    const bool seeThrough = look.color.w < 1;
    const bool blendColor = seeThrough && rendering::GraphicsContext::HasImaging();
    const bool stencil = seeThrough && !blendColor && HasStencil();
    if (blendColor) {
        glBlendColor(1, 1, 1, look.color.w);
        glEnable(GL_BLEND);
        glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE_MINUS_CONSTANT_ALPHA);
    } else if (seeThrough && !stencil) {
        Log(logging::Warning, kNoTransparency);
    }
    renderer.SetColor(math::Colour(look.color.x, look.color.y, look.color.z, 1));
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, look.cutoff);
    if (stencil) {
        // Without constant-alpha blending the cut field marks the stencil, and one
        // see-through quad in the water's colour fills the marks.
        glClearStencil(0);
        glClear(GL_STENCIL_BUFFER_BIT);
        glEnable(GL_STENCIL_TEST);
        glStencilFunc(GL_ALWAYS, 1, 1);
        glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        drawQuad();
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glDisable(GL_ALPHA_TEST);
        glStencilFunc(GL_EQUAL, 1, 1);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glDisable(GL_TEXTURE_2D);
        renderer.SetColor(look.color);
        glRectf(area.min.x, area.min.y, area.max.x, area.max.y);
    } else {
        drawQuad();
    }
    glDisable(GL_ALPHA_TEST);
    renderer.SetColor(math::Colour(1, 1, 1, 1));
    if (blendColor) {
        glBlendColor(1, 1, 1, 1);
    }
    glPopAttrib();
}

math::Vec2 WaterRenderer::FieldSize(math::Vec2 viewport) {
    const auto side = [](float pixels) {
        return std::clamp(std::floor(pixels * kFieldScale), 1.0f, static_cast<float>(kFieldSize));
    };
    return math::Vec2(side(viewport.x), side(viewport.y));
}

bool WaterRenderer::HasStencil() {
    GLint bits = 0;
    glGetIntegerv(GL_STENCIL_BITS, &bits);
    return bits > 0;
}

void WaterRenderer::DrawSimple(const math::Mat3& camera, const math::BoundingBox2f& view,
                               const physics::ParticleList& particles, float radius,
                               const WaterLook& look) {
    if (!m_simpleTexture) {
        m_simpleTexture = rendering::TextureManager::Get().Load("simpleWater", GL_RGBA);
    }
    const float r = 2 * radius;
    BuildSprites(particles, view, 2 * r, r, false, look);
    glPushMatrix();
    rendering::LoadMatrix(camera);
    rendering::Renderer::Get().SetColor(look.color);
    m_simpleTexture->Get()->Bind();
    DrawSprites();
    rendering::Texture::Unbind();
    glPopMatrix();
}

}  // namespace app
