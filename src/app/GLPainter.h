#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "app/BatchOrder.h"
#include "app/Painter.h"
#include "app/PolygonAtlas.h"
#include "math/BoundingBox2.h"
#include "math/Vector4.h"
#include "rendering/Texture.h"
#include "rendering/TextureManager.h"
#include "util/Pointee.h"
#include "util/String.h"

namespace rendering {
class Shader;
}  // namespace rendering

namespace app {

// The painter of the window: entities draw through OpenGL, with the shape programs where
// shaders are on and compiled, the fixed pipeline otherwise.
//
// The caller sets up the entity pass: the camera's matrix on the model-view stack (the
// current matrix mode), each entity at its own z, the depth test on with GL_LESS, blending
// with (GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA), line width and point size.
//
// A shape program stays bound from one shape to the next, which saves the driver a
// program switch per shape: whoever draws without the painter after a shape, and before
// EndFrame, calls ReleaseProgram first. Every call leaves texture unit 0 with texturing on
// or off as it found it and no texture bound.
//
// Boxes, circles, sprites and lines are drawn from vertex arrays of their kind. Outside a
// batching pass each shape is drawn at once. Within one (BeginBatching to EndBatching) they
// gather by program, texture and state and are drawn in a few calls, in an order that keeps
// every two overlapping pieces as they came (BatchOrder): the picture is the same, but the
// driver sees a handful of draws instead of one or more a shape. In the pass the painter
// places the pieces itself: the model-view matrix at BeginBatching is their frame,
// PushTransform and SetDepth move what follows, and the caller leaves the matrices alone
// until EndBatching.
class GLPainter final : public Painter {
public:
    GLPainter();
    ~GLPainter() override;
    GLPainter(const GLPainter&) = delete;
    GLPainter& operator=(const GLPainter&) = delete;

    // Sizes in world units at the current zoom, and the settings of this frame's drawing.
    // Needs the graphics context.
    void BeginFrame(float pixelSize, float inchInWorld, float borderWidth,
                    const DrawOptions& options);
    // The same for a caller that has the world's visible box at hand. The painter does not
    // need it: a half plane covers the viewport as the matrices in force when it is drawn
    // show it, preview transforms included.
    void BeginFrame(float pixelSize, float inchInWorld, float borderWidth,
                    const math::BoundingBox2f& view, const DrawOptions& options);
    // Unbinds the shape program kept bound since the last shape; the next shape binds it
    // again.
    void ReleaseProgram();
    // Leaves no program bound.
    void EndFrame();

    // A pass of many pieces drawn in batches. Needs the graphics context; EndBatching draws
    // what is held and puts the model-view matrix back as it was.
    void BeginBatching();
    // The z of the pieces that follow, in the frame of BeginBatching; 0 outside a pass.
    void SetDepth(float z);
    void EndBatching();

    float GetPixelSize() const override { return m_pixelSize; }
    float GetInchInWorld() const override { return m_inchInWorld; }
    float GetBorderWidth() const override { return m_borderWidth; }
    const DrawOptions& GetOptions() const override { return m_options; }

    void PushTransform(const math::Mat3& transform) override;
    void PopTransform() override;

    void Box(math::Vec2 halfSize, const ShapeStyle& style) override;
    void Circle(float radius, const ShapeStyle& style) override;
    void Polygon(const physics::Polygon& polygon, float textureScale,
                 util::SharedPtr<util::Pointee>& cache, const ShapeStyle& style) override;
    void HalfPlane(math::Vec2 normal, float offset, const ShapeStyle& style) override;

    void Sprite(const char* texture, math::Vec2 center, float side, float angle,
                const math::Vec4& color) override;
    void Strip(const char* texture, const char* endTexture, math::Vec2 a, math::Vec2 b, float width,
               const math::Vec4& color) override;
    void Line(math::Vec2 a, math::Vec2 b, const math::Vec4& color) override;
    void RoundedRect(math::Vec2 center, math::Vec2 halfSize, float angle, float radius,
                     const math::Vec4& color) override;
    void Trail(const TrailVertex* vertices, size_t count, float width,
               const math::Vec4& color) override;

    void Points(const math::Vec2* points, size_t count, float size,
                const math::Vec4& color) override;
    void Outline(const math::Vec2* points, size_t count, const math::Vec4& color) override;
    void Disc(math::Vec2 center, float radius, const math::Vec4& color) override;

    // The side of the pre-rendered disc textures of opaque circles, in texels.
    static constexpr int kDiscTextureSide = 1024;
    // Steps of the unit circle's table: the fans of circles, discs and rounded corners.
    static constexpr int kCircleSteps = 128;

private:
    enum Slot {
        kBoxSlot,
        kCircleSlot,
        // Untextured triangles in the caller's depth test.
        kPlainSlot,
        // The two disc textures of opaque circles: all borders, then all fills.
        kDiscSlot,
        kLineSlot,
        // Polygons on each page of the atlas.
        kFirstPolygonSlot,
        kFirstSpriteSlot = kFirstPolygonSlot + 4,
        kSlotCount = kFirstSpriteSlot + 6
    };
    struct PlainVertex;
    struct Batch;

public:
    struct ShapeVertex;

private:
    enum ProgramId { kBoxProgram, kCircleProgram, kPolygonProgram, kPlaneProgram, kLineProgram };
    static constexpr int kProgramCount = 5;
    static constexpr int kNoProgram = -1;
    struct Program;
    struct SpriteTexture {
        util::String name;
        rendering::TextureHandle handle;
    };

    // Binds the program if shaders are on and it compiled; false for the fixed pipeline.
    bool UseProgram(ProgramId id);
    // Whether UseProgram would bind it.
    bool CanUseProgram(ProgramId id) const;
    // The fixed pipeline from here on.
    void UseFixed();
    void UnbindProgram();
    void SetUniform(Program& program, int index, float value);
    void SetUniform(Program& program, int index, const math::Vec2& value);
    void SetUniform(Program& program, int index, const math::Vec4& value);
    void SetShapeUniforms(Program& program, const ShapeStyle& style, float borderWidth,
                          float pixelSize);

    void SetColor(const math::Vec4& color);

    // The slot's batch, ready for a piece over the box (in the painter's frame), after what
    // must come before it was drawn. Outside a pass the batch is empty.
    Batch& Open(Slot slot, const math::BoundingBox2f& box);
    // Outside a pass, draws the piece just added.
    void Close(Slot slot);
    // Readies the matrices for a piece drawn at once, after the held pieces it may cover.
    void Immediate(const math::BoundingBox2f& box);
    void ImmediateEverywhere();
    void Flush(int slot);
    void DrawShapes(Batch& batch, ProgramId id);
    // A batch of polygons on its texture: by the program, or by the fixed pipeline with
    // the cut-offs on the vertices.
    void DrawPolygons(Batch& batch);
    // The quad's corners placed, each with its point in the shape's own frame (or on its
    // texture) and the shape's numbers and colours.
    void AddShapeQuad(Batch& batch, const math::Vec2* corners, const math::Vec2* locals,
                      const math::Vec4& params, const ShapeStyle& style);
    // The box of the points placed by the current transform, grown by a pixel.
    math::BoundingBox2f PlacedBox(const math::Vec2* points, size_t count) const;
    math::Vec2 Place(const math::Vec2& p) const { return m_transform.TransformPoint(p); }
    // A quad of a box or circle program from -half to half; params are the shape's own
    // numbers for the program.
    void AddShapeQuad(Slot slot, const math::Vec2& half, const math::Vec4& params,
                      const ShapeStyle& style);
    void AddPlain(std::vector<PlainVertex>& out, const math::Vec2& p, const math::Vec4& color,
                  const math::Vec2& texCoord = math::Vec2(0, 0));
    void AddPlainQuad(std::vector<PlainVertex>& out, const math::Vec2* corners,
                      const math::Vec4& color);
    void AddTexturedQuad(std::vector<PlainVertex>& out, const math::Vec2* corners,
                         const math::Vec2* texCoords, const math::Vec4& color);
    void AddFan(std::vector<PlainVertex>& out, const math::Vec2& centre, const math::Vec2* rim,
                int count, const math::Vec4& color);
    Slot SpriteSlot(const rendering::Texture* texture);

    // The texture of a sprite or strip by its data file's name; null if there is none.
    const rendering::Texture* FindTexture(const char* name);
    // The disc textures of opaque circles, made at the first need in each context.
    bool EnsureDiscTextures();

    // The circle as three plain primitives: the inside without its slice, the slice and
    // the border ring, none overlapping another.
    void CircleFans(float radius, float inner, const ShapeStyle& style);
    void CircleTextures(float radius, float inner, const ShapeStyle& style);
    // The step through the unit circle's table for a fan of the radius.
    int FanStride(float radius) const;
    void PolygonFixed(const rendering::Texture& texture, const math::Vec2* corners,
                      const math::Vec2* texCoords, float textureScale, const ShapeStyle& style);
    // The corners, in the painter's frame, of the viewport grown by a margin; false when the
    // current matrices make no plane of it.
    bool VisibleQuad(math::Vec2 corners[4]) const;

    float m_pixelSize = 1;
    float m_inchInWorld = 1;
    float m_borderWidth = 0;
    DrawOptions m_options;

    util::SharedPtr<Program> m_programs[kProgramCount];
    int m_current = kNoProgram;
    util::SharedPtr<rendering::Shader> m_bound;

    bool m_multiTexturing = false;
    bool m_imaging = false;
    bool m_warnedTransparency = false;

    std::vector<SpriteTexture> m_sprites;

    // The batching pass.
    bool m_batching = false;
    float m_depth = 0;
    math::Mat3 m_transform;
    std::vector<math::Mat3> m_transforms;
    // The model-view matrix at BeginBatching, and whether it or the current piece's is
    // loaded.
    float m_base[16] = {};
    enum class Loaded { kBase, kPiece, kNone } m_loaded = Loaded::kBase;
    float m_lineMargin = 0;
    BatchOrder m_order;
    std::vector<Batch> m_batches;
    // A polygon with a texture of its own, drawn at once by its program.
    std::unique_ptr<Batch> m_single;
    util::SharedPtr<PolygonAtlas> m_atlas;
    rendering::TexturePtr m_disc;
    rendering::TexturePtr m_slicedDisc;
    uint32_t m_discGeneration = 0;
};

}  // namespace app
