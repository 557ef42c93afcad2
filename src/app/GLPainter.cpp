#include "app/GLPainter.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <typeinfo>

#include "logging/Log.h"
#include "physics/Polygon.h"
#include "rendering/GLMatrix.h"
#include "rendering/GraphicsContext.h"
#include "rendering/ImageFloat.h"
#include "rendering/Renderer.h"
#include "rendering/ShaderManager.h"

namespace app {

using math::Vec2;
using math::Vec4;

namespace {

constexpr float kPi = 3.14159265358979f;

// The circle's slice: one sixteenth of the turn, centred on the local +x axis.
constexpr float kCakeSize = 0.0625f;
// The circle program draws a square this much larger than the disc, for the soft edge.
constexpr float kSquareScale = 1.2f;
// Entries of the unit circle's table that leave the slice out of the inside's fan.
constexpr int kSliceSteps = 4;
// The polygon's border may take at most this much of the distance texture's range: its
// inner edge must stay a distance the texture can hold.
constexpr float kMaxBorderOfScale = 127.0f / 256.0f;

constexpr char kTransparencyMessage[] =
    "Polygon transparency not supported by your computer. Try switching on shaders "
    "(anti-aliasing in the options menu), or upgrade your graphics drivers.";

// The unit circle in kCircleSteps steps, the first point repeated last, so that a fan over
// all entries closes.
struct UnitCircle {
    Vec2 points[GLPainter::kCircleSteps + 1];
    UnitCircle() {
        for (int i = 0; i < GLPainter::kCircleSteps; ++i) {
            const float angle = 2 * kPi * static_cast<float>(i) / GLPainter::kCircleSteps;
            points[i] = Vec2(std::cos(angle), std::sin(angle));
        }
        points[GLPainter::kCircleSteps] = points[0];
    }
};
const UnitCircle kUnitCircle;

// The uniforms of the polygon and plane programs, the ones they share first.
enum ShapeUniform { kInsideColor, kBorderColor, kBorderWidth, kPixelSize, kFirstOwn };
enum PolygonUniform { kDistSampler };
enum PlaneUniform { kNormal = kFirstOwn, kOffset };
enum LineUniform { kLineColor, kLineWidth, kLinePixelSize };
// The box, circle and polygon programs draw batches: what differs from shape to shape comes
// with the vertices, the rest as uniforms.
enum BatchUniform { kBatchPixelSize, kBatchCakeSize };

const char* const kBoxUniforms[] = {"PixelSize"};
const char* const kCircleUniforms[] = {"PixelSize", "CakeSize"};
const char* const kPolygonUniforms[] = {"DistSampler"};
const char* const kPlaneUniforms[] = {"InsideColor", "BorderColor", "BorderWidth",
                                      "PixelSize",   "Normal",      "Offset"};
const char* const kLineUniforms[] = {"Color", "Width", "PixelSize"};

struct ProgramDescription {
    const char* name;
    const char* const* uniforms;
    int count;
};
template <size_t N>
constexpr ProgramDescription Describe(const char* name, const char* const (&uniforms)[N]) {
    return {name, uniforms, static_cast<int>(N)};
}
// In the order of GLPainter's program ids.
const ProgramDescription kPrograms[] = {
    Describe("box", kBoxUniforms),         Describe("circle", kCircleUniforms),
    Describe("polygon", kPolygonUniforms), Describe("plane", kPlaneUniforms),
    Describe("line", kLineUniforms),
};

// What a polygon's entity keeps for the painter: the distance texture, and how it lies in
// the polygon's frame.
class PolygonTexture final : public util::Pointee {
public:
    ~PolygonTexture() override {
        if (atlas) {
            atlas->Remove(place);
        }
    }

    // The map's cell on the painter's atlas, or a texture of its own where the atlas had
    // no room.
    util::SharedPtr<PolygonAtlas> atlas;
    PolygonAtlas::Place place;
    rendering::TexturePtr texture;
    const physics::Polygon* polygon = nullptr;
    float scale = 0;
    uint32_t generation = 0;
    // The map had no cells: the outline stands in.
    bool empty = false;
    // From the polygon's frame to texture coordinates.
    math::Mat3 localToTexture;
    // The tight box of the polygon and the larger one that the map covers, about the same
    // centre and axes.
    math::OBB2D box;
    Vec2 mapHalfExtents;

    bool InAtlas() const { return atlas && atlas->Holds(place); }
    const rendering::Texture* GetTexture() const {
        return InAtlas() ? atlas->GetPage(place.page) : texture.Get();
    }
};

// The distance map as the texture holds it: (d / scale + 1) / 2, so that 0.5 is the outline
// and less is inside. A cell that is not a number reads as far outside.
rendering::ImageFloatPtr MakeDistanceImage(const util::Array2D<float>& map, float scale) {
    const size_t width = map.GetWidth();
    const size_t height = map.GetHeight();
    rendering::ImageFloatPtr image(new rendering::ImageFloat(width, height));
    float* out = image->GetPixels().data();
    const float* in = map.data();
    for (size_t i = 0; i < width * height; ++i) {
        const float v = (in[i] / scale + 1) * 0.5f;
        out[i] = !(v < 1) ? 1 : (v < 0 ? 0 : v);
    }
    return image;
}

// The fixed pipeline's alpha test against a per-vertex cut-off: the fragment's alpha is the
// texture's plus the colour's alpha less one half, so that a colour alpha of 1 - c passes
// the test "below one half" exactly where the texture is below c. The colour is the
// vertex's own. For the scope; afterwards texture unit 0 modulates again.
class CutoffFromColour {
public:
    CutoffFromColour() {
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE);
        glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_REPLACE);
        glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_RGB, GL_PRIMARY_COLOR);
        glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND0_RGB, GL_SRC_COLOR);
        glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_ALPHA, GL_ADD_SIGNED);
        glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_ALPHA, GL_TEXTURE);
        glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND0_ALPHA, GL_SRC_ALPHA);
        glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE1_ALPHA, GL_PRIMARY_COLOR);
        glTexEnvi(GL_TEXTURE_ENV, GL_OPERAND1_ALPHA, GL_SRC_ALPHA);
    }
    ~CutoffFromColour() { glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE); }
    CutoffFromColour(const CutoffFromColour&) = delete;
    CutoffFromColour& operator=(const CutoffFromColour&) = delete;
};

// A white disc touching the texture's edges less one texel, with a soft edge one texel
// wide; sliced, the slice toward +x is cut out of it with the same soft edges.
rendering::TexturePtr MakeDiscTexture(bool sliced) {
    constexpr int n = GLPainter::kDiscTextureSide;
    constexpr float centre = n / 2.0f;
    constexpr float radius = centre - 1;
    const float halfSlice = kCakeSize * kPi;
    rendering::ImageFloatPtr image(new rendering::ImageFloat(n, n));
    float* out = image->GetPixels().data();
    for (int y = 0; y < n; ++y) {
        const float py = static_cast<float>(y) + 0.5f - centre;
        for (int x = 0; x < n; ++x) {
            const float px = static_cast<float>(x) + 0.5f - centre;
            const float r = std::sqrt(px * px + py * py);
            float alpha = std::clamp(radius - r + 0.5f, 0.0f, 1.0f);
            if (sliced && alpha > 0) {
                // Distance to the nearer side of the slice, negative inside it.
                const float beyond = std::fabs(std::atan2(py, px)) - halfSlice;
                const float distance = beyond < kPi / 2 ? r * std::sin(beyond) : r;
                alpha *= 1 - std::clamp(0.5f - distance, 0.0f, 1.0f);
            }
            out[y * n + x] = alpha;
        }
    }
    // The nearer mip-map level only: the disc hardly changes between levels, and one level
    // costs half the texel reads of two.
    const rendering::Texture::ImageType type{GL_ALPHA, true, 1, 1, 1, 1, 0};
    return rendering::TexturePtr(rendering::TextureFromImageFloat(image, type));
}

void SetCapability(GLenum capability, GLboolean on) {
    if (on) {
        glEnable(capability);
    } else {
        glDisable(capability);
    }
}

// A capability off for the scope, and back on afterwards if it was on: overlays lie over
// whatever is below them without the depth test, plain shapes draw without texturing.
template <GLenum Capability>
class CapabilityOff {
public:
    CapabilityOff() : m_was(glIsEnabled(Capability)) {
        if (m_was) {
            glDisable(Capability);
        }
    }
    ~CapabilityOff() {
        if (m_was) {
            glEnable(Capability);
        }
    }
    CapabilityOff(const CapabilityOff&) = delete;
    CapabilityOff& operator=(const CapabilityOff&) = delete;

private:
    GLboolean m_was;
};
using DepthTestOff = CapabilityOff<GL_DEPTH_TEST>;
using NoTexturing = CapabilityOff<GL_TEXTURE_2D>;

// The blending of the caller, put back at the end of the scope.
class SavedBlending {
public:
    SavedBlending() : m_enabled(glIsEnabled(GL_BLEND)) {
        glGetIntegerv(GL_BLEND_SRC_RGB, &m_srcRGB);
        glGetIntegerv(GL_BLEND_DST_RGB, &m_dstRGB);
        glGetIntegerv(GL_BLEND_SRC_ALPHA, &m_srcAlpha);
        glGetIntegerv(GL_BLEND_DST_ALPHA, &m_dstAlpha);
    }
    ~SavedBlending() {
        glBlendFuncSeparate(static_cast<GLenum>(m_srcRGB), static_cast<GLenum>(m_dstRGB),
                            static_cast<GLenum>(m_srcAlpha), static_cast<GLenum>(m_dstAlpha));
        SetCapability(GL_BLEND, m_enabled);
    }
    SavedBlending(const SavedBlending&) = delete;
    SavedBlending& operator=(const SavedBlending&) = delete;

private:
    GLboolean m_enabled;
    GLint m_srcRGB = GL_ONE;
    GLint m_dstRGB = GL_ZERO;
    GLint m_srcAlpha = GL_ONE;
    GLint m_dstAlpha = GL_ZERO;
};

// The caller's alpha test, put back at the end of the scope.
class SavedAlphaTest {
public:
    SavedAlphaTest() : m_enabled(glIsEnabled(GL_ALPHA_TEST)) {
        glGetIntegerv(GL_ALPHA_TEST_FUNC, &m_func);
        glGetFloatv(GL_ALPHA_TEST_REF, &m_ref);
    }
    ~SavedAlphaTest() {
        glAlphaFunc(static_cast<GLenum>(m_func), m_ref);
        SetCapability(GL_ALPHA_TEST, m_enabled);
    }
    SavedAlphaTest(const SavedAlphaTest&) = delete;
    SavedAlphaTest& operator=(const SavedAlphaTest&) = delete;

private:
    GLboolean m_enabled;
    GLint m_func = GL_ALWAYS;
    GLfloat m_ref = 0;
};

// Blending off and the alpha test passing below one half, for the scope: what the
// distance textures' cut-offs need.
class BelowHalfOpaque {
public:
    BelowHalfOpaque() {
        glDisable(GL_BLEND);
        glEnable(GL_ALPHA_TEST);
        glAlphaFunc(GL_LESS, 0.5f);
    }

private:
    SavedBlending m_blending;
    SavedAlphaTest m_alphaTest;
};

// Additive blending for the scope: debug overlays add their colour to what lies below.
class AdditiveBlending {
public:
    AdditiveBlending() {
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
    }

private:
    SavedBlending m_saved;
};

// Texture unit 0 for one textured draw: texturing on, and afterwards as it was, with no
// texture bound. The caller's own drawing in between may change either, so nothing of it
// is cached.
class Texturing {
public:
    Texturing() : m_was(glIsEnabled(GL_TEXTURE_2D)) {
        if (!m_was) {
            glEnable(GL_TEXTURE_2D);
        }
    }
    ~Texturing() {
        rendering::Texture::Unbind();
        if (!m_was) {
            glDisable(GL_TEXTURE_2D);
        }
    }
    Texturing(const Texturing&) = delete;
    Texturing& operator=(const Texturing&) = delete;

private:
    GLboolean m_was;
};

void Vertex(const Vec2& p) {
    glVertex2f(p.x, p.y);
}

void TexturedQuad(const Vec2* corners, const Vec2* texCoords) {
    glBegin(GL_QUADS);
    for (int i = 0; i < 4; ++i) {
        glTexCoord2f(texCoords[i].x, texCoords[i].y);
        Vertex(corners[i]);
    }
    glEnd();
}

// A fan around the centre over table entries first to last, at the radius.
void CircleFan(const Vec2& centre, float radius, int first, int last, int stride = 1) {
    glBegin(GL_TRIANGLE_FAN);
    Vertex(centre);
    for (int i = first; i <= last; i += stride) {
        Vertex(centre + kUnitCircle.points[i] * radius);
    }
    glEnd();
}

void ConvexFan(const Vec2* points, int count) {
    if (count < 3) {
        return;
    }
    glBegin(GL_TRIANGLE_FAN);
    for (int i = 0; i < count; ++i) {
        Vertex(points[i]);
    }
    glEnd();
}

// The part of a convex polygon where dot(normal, p) <= offset; out has room for count + 1.
int ClipBelow(const Vec2* in, int count, const Vec2& normal, float offset, Vec2* out) {
    int n = 0;
    for (int i = 0; i < count; ++i) {
        const Vec2& a = in[i];
        const Vec2& b = in[(i + 1) % count];
        const float da = math::Dot(normal, a) - offset;
        const float db = math::Dot(normal, b) - offset;
        if (da <= 0) {
            out[n++] = a;
        }
        if ((da <= 0) != (db <= 0)) {
            out[n++] = a + (b - a) * (da / (da - db));
        }
    }
    return n;
}

Vec4 WithAlpha(const Vec4& color, float alpha) {
    return Vec4(color.x, color.y, color.z, alpha);
}

Vec4 Opaque(const Vec4& color) {
    return WithAlpha(color, 1);
}

}  // namespace

// A shape program and what the painter caches of it: the uniforms' locations, asked for
// again after the program was rebuilt, and the values last given, so that shapes alike in
// colour or size do not repeat them.
struct GLPainter::Program : public util::Pointee {
    static constexpr int kMaxUniforms = 8;
    rendering::ShaderHandle handle;
    const char* const* names = nullptr;
    int count = 0;
    int locations[kMaxUniforms] = {};
    Vec4 values[kMaxUniforms];
    bool known[kMaxUniforms] = {};
    bool located = false;

    void Forget() {
        for (bool& k : known) {
            k = false;
        }
    }
};

// A vertex of the box and circle programs: where it lies, where in the shape's frame, the
// shape's own numbers, and its colours.
struct GLPainter::ShapeVertex {
    float position[3];
    float local[2];
    float params[4];
    float fill[4];
    float border[4];
};

// A vertex of the fixed pipeline's batches.
struct GLPainter::PlainVertex {
    float position[3];
    float texCoord[2];
    float color[4];
};

struct GLPainter::Batch {
    std::vector<ShapeVertex> shapes;
    std::vector<PlainVertex> plain;
    // The disc slot's fills, drawn after all its borders.
    std::vector<PlainVertex> second;
    // A sprite slot's texture.
    const rendering::Texture* texture = nullptr;

    bool IsEmpty() const { return shapes.empty() && plain.empty() && second.empty(); }
    void Clear() {
        shapes.clear();
        plain.clear();
        second.clear();
    }
};

GLPainter::GLPainter() : m_batches(kSlotCount), m_single(new Batch), m_atlas(new PolygonAtlas) {
    rendering::ShaderManager& shaders = rendering::ShaderManager::Get();
    for (int i = 0; i < kProgramCount; ++i) {
        util::SharedPtr<Program> program(new Program);
        program->handle = shaders.Load(kPrograms[i].name);
        program->names = kPrograms[i].uniforms;
        program->count = kPrograms[i].count;
        Program* raw = program.Get();
        program->handle->OnUnload().Add(util::WeakPtr<util::Pointee>(raw), [raw]() {
            raw->located = false;
            raw->Forget();
        });
        m_programs[i] = program;
    }
}

GLPainter::~GLPainter() {
    if (m_bound && rendering::GraphicsContext::IsLoaded()) {
        UnbindProgram();
    }
}

void GLPainter::BeginFrame(float pixelSize, float inchInWorld, float borderWidth,
                           const DrawOptions& options) {
    m_pixelSize = pixelSize;
    m_inchInWorld = inchInWorld;
    m_borderWidth = borderWidth;
    m_options = options;
    m_multiTexturing = rendering::GraphicsContext::HasMultiTexturing();
    m_imaging = rendering::GraphicsContext::HasImaging();
    m_warnedTransparency = false;
    ReleaseProgram();
    const bool shaders = rendering::GraphicsContext::GetShadersEnabled();
    for (const util::SharedPtr<Program>& program : m_programs) {
        if (shaders) {
            program->handle->Load();
        }
        // Others may have set the programs' uniforms since the last frame.
        program->Forget();
    }
}

void GLPainter::BeginFrame(float pixelSize, float inchInWorld, float borderWidth,
                           const math::BoundingBox2f& /*view*/, const DrawOptions& options) {
    BeginFrame(pixelSize, inchInWorld, borderWidth, options);
}

void GLPainter::EndFrame() {
    EndBatching();
    UnbindProgram();
}

void GLPainter::PushTransform(const math::Mat3& t) {
    if (m_batching) {
        m_transforms.push_back(m_transform);
        m_transform = m_transform * t;
        m_loaded = Loaded::kNone;
        return;
    }
    glPushMatrix();
    rendering::MultMatrix(t);
}

void GLPainter::PopTransform() {
    if (m_batching) {
        if (!m_transforms.empty()) {
            m_transform = m_transforms.back();
            m_transforms.pop_back();
            m_loaded = Loaded::kNone;
        }
        return;
    }
    glPopMatrix();
}

// Batches

void GLPainter::BeginBatching() {
    ReleaseProgram();
    m_batching = true;
    m_depth = 0;
    m_transform = math::Mat3::Identity();
    m_transforms.clear();
    glGetFloatv(GL_MODELVIEW_MATRIX, m_base);
    m_loaded = Loaded::kBase;
    GLfloat lineWidth = 1;
    glGetFloatv(GL_LINE_WIDTH, &lineWidth);
    m_lineMargin = lineWidth * m_pixelSize;
    // Cells of about 32 pixels: a shape at a usual zoom touches a few.
    m_order.Reset(32 * m_pixelSize);
}

void GLPainter::SetDepth(float z) {
    if (m_batching && z != m_depth) {
        m_depth = z;
        m_loaded = m_loaded == Loaded::kPiece ? Loaded::kNone : m_loaded;
    }
}

void GLPainter::EndBatching() {
    if (!m_batching) {
        return;
    }
    m_order.FlushAll([this](int slot) { Flush(slot); });
    glLoadMatrixf(m_base);
    m_batching = false;
    m_depth = 0;
    m_transform = math::Mat3::Identity();
    m_transforms.clear();
}

GLPainter::Batch& GLPainter::Open(Slot slot, const math::BoundingBox2f& box) {
    if (m_batching) {
        m_order.Add(slot, box, slot == kDiscSlot, [this](int s) { Flush(s); });
    }
    return m_batches[slot];
}

void GLPainter::Close(Slot slot) {
    if (!m_batching) {
        Flush(slot);
    }
}

void GLPainter::Immediate(const math::BoundingBox2f& box) {
    if (!m_batching) {
        return;
    }
    m_order.Before(box, [this](int s) { Flush(s); });
    if (m_loaded != Loaded::kPiece) {
        glLoadMatrixf(m_base);
        glTranslatef(0, 0, m_depth);
        rendering::MultMatrix(m_transform);
        m_loaded = Loaded::kPiece;
    }
}

void GLPainter::ImmediateEverywhere() {
    Immediate(math::BoundingBox2f(Vec2(-math::Infinity(), -math::Infinity()),
                                  Vec2(math::Infinity(), math::Infinity())));
}

math::BoundingBox2f GLPainter::PlacedBox(const Vec2* points, size_t count) const {
    math::BoundingBox2f box;
    if (!m_batching) {
        return box;
    }
    for (size_t i = 0; i < count; ++i) {
        box.Add(Place(points[i]));
    }
    // A pixel is drawn when its centre lies in the piece, so pieces whose boxes are apart
    // share none; the margin covers the rounding of the placement.
    return box.Expanded(0.25f * m_pixelSize);
}

GLPainter::Slot GLPainter::SpriteSlot(const rendering::Texture* texture) {
    for (int slot = kFirstSpriteSlot; slot < kSlotCount; ++slot) {
        if (m_batches[slot].texture == texture && !m_batches[slot].IsEmpty()) {
            return static_cast<Slot>(slot);
        }
    }
    for (int slot = kFirstSpriteSlot; slot < kSlotCount; ++slot) {
        if (m_batches[slot].IsEmpty()) {
            return static_cast<Slot>(slot);
        }
    }
    // More textures than slots in one pass: the first slot is drawn and taken over.
    m_order.FlushSlot(kFirstSpriteSlot, [this](int s) { Flush(s); });
    return kFirstSpriteSlot;
}

void GLPainter::AddShapeQuad(Slot slot, const Vec2& half, const Vec4& params,
                             const ShapeStyle& style) {
    const Vec2 corners[4] = {-half, Vec2(half.x, -half.y), half, Vec2(-half.x, half.y)};
    AddShapeQuad(Open(slot, PlacedBox(corners, 4)), corners, corners, params, style);
    Close(slot);
}

void GLPainter::AddPlain(std::vector<PlainVertex>& out, const Vec2& p, const Vec4& color,
                         const Vec2& texCoord) {
    const Vec2 placed = Place(p);
    out.push_back({{placed.x, placed.y, m_depth},
                   {texCoord.x, texCoord.y},
                   {color.x, color.y, color.z, color.w}});
}

void GLPainter::AddPlainQuad(std::vector<PlainVertex>& out, const Vec2* corners,
                             const Vec4& color) {
    for (const int i : {0, 1, 2, 0, 2, 3}) {
        AddPlain(out, corners[i], color);
    }
}

void GLPainter::AddTexturedQuad(std::vector<PlainVertex>& out, const Vec2* corners,
                                const Vec2* texCoords, const Vec4& color) {
    for (int i = 0; i < 4; ++i) {
        AddPlain(out, corners[i], color, texCoords[i]);
    }
}

void GLPainter::AddFan(std::vector<PlainVertex>& out, const Vec2& centre, const Vec2* rim,
                       int count, const Vec4& color) {
    for (int i = 0; i + 1 < count; ++i) {
        AddPlain(out, centre, color);
        AddPlain(out, rim[i], color);
        AddPlain(out, rim[i + 1], color);
    }
}

namespace {

// Draws fixed-pipeline vertices with their colours, and their texture coordinates if
// textured.
template <class Vertex>
void DrawArrays(const std::vector<Vertex>& vertices, GLenum mode, bool textured) {
    if (vertices.empty()) {
        return;
    }
    const GLsizei stride = sizeof(Vertex);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, stride, vertices[0].position);
    glEnableClientState(GL_COLOR_ARRAY);
    glColorPointer(4, GL_FLOAT, stride, vertices[0].color);
    if (textured) {
        glClientActiveTexture(GL_TEXTURE0);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(2, GL_FLOAT, stride, vertices[0].texCoord);
    }
    glDrawArrays(mode, 0, static_cast<GLsizei>(vertices.size()));
    if (textured) {
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    }
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    // The colour array leaves the current colour undefined.
    rendering::Renderer::Get().ForgetState();
}

// One of the shape programs' attributes on a texture unit's coordinates.
void TexCoordArray(GLenum unit, GLint size, GLsizei stride, const float* data) {
    glClientActiveTexture(unit);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glTexCoordPointer(size, GL_FLOAT, stride, data);
}

void NoTexCoordArray(GLenum unit) {
    glClientActiveTexture(unit);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
}

}  // namespace

// The shape programs' vertices: the shape's own frame on texture unit 0, its numbers on 1,
// its border colour on 2, the fill as the colour.
static void DrawShapeArrays(const std::vector<GLPainter::ShapeVertex>& v) {
    const GLsizei stride = sizeof(GLPainter::ShapeVertex);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, stride, v[0].position);
    glEnableClientState(GL_COLOR_ARRAY);
    glColorPointer(4, GL_FLOAT, stride, v[0].fill);
    TexCoordArray(GL_TEXTURE0, 2, stride, v[0].local);
    TexCoordArray(GL_TEXTURE1, 4, stride, v[0].params);
    TexCoordArray(GL_TEXTURE2, 4, stride, v[0].border);
    glDrawArrays(GL_QUADS, 0, static_cast<GLsizei>(v.size()));
    NoTexCoordArray(GL_TEXTURE2);
    NoTexCoordArray(GL_TEXTURE1);
    NoTexCoordArray(GL_TEXTURE0);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    rendering::Renderer::Get().ForgetState();
}

void GLPainter::DrawShapes(Batch& batch, ProgramId id) {
    if (batch.shapes.empty() || !UseProgram(id)) {
        return;
    }
    SetUniform(*m_programs[id], kBatchPixelSize, m_pixelSize);
    DrawShapeArrays(batch.shapes);
}

void GLPainter::DrawPolygons(Batch& batch) {
    if (!batch.texture) {
        return;
    }
    if (!batch.shapes.empty() && UseProgram(kPolygonProgram)) {
        batch.texture->Bind();
        DrawShapeArrays(batch.shapes);
        rendering::Texture::Unbind();
    }
    if (!batch.plain.empty()) {
        UseFixed();
        const Texturing textured;
        batch.texture->Bind();
        const BelowHalfOpaque test;
        const CutoffFromColour cutoff;
        DrawArrays(batch.plain, GL_QUADS, true);
    }
}

void GLPainter::AddShapeQuad(Batch& batch, const Vec2* corners, const Vec2* locals,
                             const Vec4& params, const ShapeStyle& style) {
    for (int i = 0; i < 4; ++i) {
        const Vec2 p = Place(corners[i]);
        batch.shapes.push_back({{p.x, p.y, m_depth},
                                {locals[i].x, locals[i].y},
                                {params.x, params.y, params.z, params.w},
                                {style.fill.x, style.fill.y, style.fill.z, style.fill.w},
                                {style.border.x, style.border.y, style.border.z, style.border.w}});
    }
}

void GLPainter::Flush(int slot) {
    Batch& batch = m_batches[static_cast<size_t>(slot)];
    if (batch.IsEmpty()) {
        return;
    }
    if (m_batching && m_loaded != Loaded::kBase) {
        // The pieces were placed in the pass's frame.
        glLoadMatrixf(m_base);
        m_loaded = Loaded::kBase;
    }
    switch (slot) {
        case kBoxSlot:
            DrawShapes(batch, kBoxProgram);
            break;
        case kCircleSlot:
            DrawShapes(batch, kCircleProgram);
            break;
        case kPlainSlot: {
            UseFixed();
            const NoTexturing plain;
            DrawArrays(batch.plain, GL_TRIANGLES, false);
            break;
        }
        case kLineSlot: {
            UseFixed();
            const DepthTestOff depthOff;
            const NoTexturing plain;
            DrawArrays(batch.plain, GL_LINES, false);
            break;
        }
        case kDiscSlot: {
            UseFixed();
            const DepthTestOff depthOff;
            const Texturing textured;
            m_disc->Bind();
            DrawArrays(batch.plain, GL_QUADS, true);
            m_slicedDisc->Bind();
            DrawArrays(batch.second, GL_QUADS, true);
            break;
        }
        case kFirstPolygonSlot:
        case kFirstPolygonSlot + 1:
        case kFirstPolygonSlot + 2:
        case kFirstPolygonSlot + 3:
            batch.texture = m_atlas->GetPage(slot - kFirstPolygonSlot);
            DrawPolygons(batch);
            break;
        default: {
            // Pictures lie over whatever is below them.
            UseFixed();
            const DepthTestOff depthOff;
            const Texturing textured;
            batch.texture->Bind();
            DrawArrays(batch.plain, GL_QUADS, true);
            break;
        }
    }
    batch.Clear();
}

bool GLPainter::CanUseProgram(ProgramId id) const {
    if (!rendering::GraphicsContext::GetShadersEnabled()) {
        return false;
    }
    const rendering::ShaderPtr& shader = m_programs[id]->handle->Get();
    return shader && shader->GetHandle() != 0;
}

bool GLPainter::UseProgram(ProgramId id) {
    if (!CanUseProgram(id)) {
        return false;
    }
    Program& program = *m_programs[id];
    const rendering::ShaderPtr& shader = program.handle->Get();
    if (m_current == id && m_bound == shader) {
        return true;
    }
    UnbindProgram();
    shader->Bind();
    m_bound = shader;
    m_current = id;
    if (!program.located) {
        for (int i = 0; i < program.count; ++i) {
            program.locations[i] = shader->GetUniformLocation(program.names[i]);
        }
        program.located = true;
        program.Forget();
    }
    // Uniforms that never change; set here, they stay with the program.
    if (id == kCircleProgram) {
        SetUniform(program, kBatchCakeSize, kCakeSize);
    } else if (id == kPolygonProgram && !program.known[kDistSampler]) {
        rendering::Uniform::SetUniform(program.locations[kDistSampler], 0);
        program.known[kDistSampler] = true;
    }
    return true;
}

void GLPainter::UseFixed() {
    UnbindProgram();
}

void GLPainter::ReleaseProgram() {
    if (m_batching) {
        m_order.FlushAll([this](int slot) { Flush(slot); });
    }
    UnbindProgram();
}

void GLPainter::UnbindProgram() {
    if (m_bound) {
        m_bound->Unbind();
        m_bound.Reset();
    }
    m_current = kNoProgram;
}

void GLPainter::SetUniform(Program& program, int index, float value) {
    if (program.known[index] && program.values[index].x == value) {
        return;
    }
    program.values[index] = Vec4(value, 0, 0, 0);
    program.known[index] = true;
    glUniform1fARB(program.locations[index], value);
}

void GLPainter::SetUniform(Program& program, int index, const Vec2& value) {
    const Vec4 wide(value.x, value.y, 0, 0);
    if (program.known[index] && program.values[index] == wide) {
        return;
    }
    program.values[index] = wide;
    program.known[index] = true;
    rendering::Uniform::SetUniform(program.locations[index], value);
}

void GLPainter::SetUniform(Program& program, int index, const Vec4& value) {
    if (program.known[index] && program.values[index] == value) {
        return;
    }
    program.values[index] = value;
    program.known[index] = true;
    rendering::Uniform::SetUniform(program.locations[index], value);
}

void GLPainter::SetShapeUniforms(Program& program, const ShapeStyle& style, float borderWidth,
                                 float pixelSize) {
    SetUniform(program, kInsideColor, style.fill);
    SetUniform(program, kBorderColor, style.border);
    SetUniform(program, kBorderWidth, borderWidth);
    SetUniform(program, kPixelSize, pixelSize);
}

void GLPainter::SetColor(const Vec4& color) {
    rendering::Renderer::Get().SetColor(color);
}

// Shapes

void GLPainter::Box(Vec2 halfSize, const ShapeStyle& style) {
    const float border = std::max(style.borderWidth, 0.0f);
    if (!style.silhouette && CanUseProgram(kBoxProgram)) {
        // The quad reaches a pixel beyond the box for the soft edge.
        const Vec2 half = halfSize + Vec2(m_pixelSize, m_pixelSize);
        AddShapeQuad(kBoxSlot, half, Vec4(halfSize.x, halfSize.y, border, 0), style);
        return;
    }
    const Vec2 outer[4] = {-halfSize, Vec2(halfSize.x, -halfSize.y), halfSize,
                           Vec2(-halfSize.x, halfSize.y)};
    Batch& batch = Open(kPlainSlot, PlacedBox(outer, 4));
    const Vec2 inner = halfSize - Vec2(border, border);
    if (style.silhouette || !(border > 0) || !(inner.x > 0 && inner.y > 0)) {
        AddPlainQuad(batch.plain, outer,
                     style.silhouette || !(border > 0) ? style.fill : style.border);
        Close(kPlainSlot);
        return;
    }
    const Vec2 innerCorners[4] = {-inner, Vec2(inner.x, -inner.y), inner, Vec2(-inner.x, inner.y)};
    AddPlainQuad(batch.plain, innerCorners, style.fill);
    // The border as a frame around the inside, sharing its corners: each pixel is drawn
    // once, so a see-through box blends once and the caller's depth test plays no part.
    for (int i = 0; i < 4; ++i) {
        const int j = (i + 1) % 4;
        const Vec2 side[4] = {outer[i], outer[j], innerCorners[j], innerCorners[i]};
        AddPlainQuad(batch.plain, side, style.border);
    }
    Close(kPlainSlot);
}

void GLPainter::Circle(float radius, const ShapeStyle& style) {
    if (!(radius > 0)) {
        return;
    }
    const float border = std::max(style.borderWidth, 0.0f);
    const float inner = radius - border;
    if (style.silhouette) {
        CircleFans(radius, 0, style);
        return;
    }
    const bool large = m_pixelSize * kDiscTextureSide < 2 * radius;
    const bool opaque = style.fill.w >= 1;
    if ((large || !opaque) && CanUseProgram(kCircleProgram)) {
        AddShapeQuad(kCircleSlot, Vec2(radius, radius) * kSquareScale, Vec4(radius, border, 0, 0),
                     style);
        return;
    }
    if (opaque && !large && EnsureDiscTextures()) {
        CircleTextures(radius, inner, style);
    } else {
        CircleFans(radius, inner, style);
    }
}

void GLPainter::CircleTextures(float radius, float inner, const ShapeStyle& style) {
    // The texture's disc reaches one texel short of its edge.
    constexpr float kToEdge = (kDiscTextureSide / 2.0f) / (kDiscTextureSide / 2.0f - 1);
    const float h = radius * kToEdge;
    const Vec2 corners[4] = {Vec2(-h, -h), Vec2(h, -h), Vec2(h, h), Vec2(-h, h)};
    const Vec2 texCoords[4] = {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1)};
    Batch& batch = Open(kDiscSlot, PlacedBox(corners, 4));
    AddTexturedQuad(batch.plain, corners, texCoords, style.border);
    if (inner > 0) {
        // The fill leaves the slice out, and the border colour below shows through it.
        const float f = inner * kToEdge;
        const Vec2 fill[4] = {Vec2(-f, -f), Vec2(f, -f), Vec2(f, f), Vec2(-f, f)};
        AddTexturedQuad(batch.second, fill, texCoords, style.fill);
    }
    Close(kDiscSlot);
}

void GLPainter::CircleFans(float radius, float inner, const ShapeStyle& style) {
    const Vec2 centre(0, 0);
    const int stride = FanStride(radius);
    const Vec2 bounds[2] = {Vec2(-radius, -radius), Vec2(radius, radius)};
    Batch& batch = Open(kPlainSlot, PlacedBox(bounds, 2));
    Vec2 rim[kCircleSteps + 1 + 2 * kSliceSteps];
    const auto fan = [&](float r, int first, int last, const Vec4& color) {
        int n = 0;
        for (int i = first; i <= last; i += stride) {
            rim[n++] = kUnitCircle.points[i % kCircleSteps] * r;
        }
        AddFan(batch.plain, centre, rim, n, color);
    };
    if (!(inner > 0)) {
        // A silhouette, or all border.
        fan(radius, 0, kCircleSteps, style.silhouette ? style.fill : style.border);
        Close(kPlainSlot);
        return;
    }
    fan(inner, kSliceSteps, kCircleSteps - kSliceSteps, style.fill);
    // The slice in the border colour, with or without a border, as the program and the
    // disc textures show it.
    fan(inner, kCircleSteps - kSliceSteps, kCircleSteps + kSliceSteps, style.border);
    if (inner < radius) {
        // The ring shares the inside's outer points: nothing is drawn twice.
        for (int i = 0; i < kCircleSteps; i += stride) {
            const int j = std::min(i + stride, kCircleSteps);
            const Vec2 quad[4] = {kUnitCircle.points[i] * radius, kUnitCircle.points[j] * radius,
                                  kUnitCircle.points[j] * inner, kUnitCircle.points[i] * inner};
            AddPlainQuad(batch.plain, quad, style.border);
        }
    }
    Close(kPlainSlot);
}

int GLPainter::FanStride(float radius) const {
    // Steps of the table that keep the chords within a third of a pixel of the circle; the
    // slice's edges, four steps from +x, stay on the table.
    const float pixels = radius / m_pixelSize;
    return pixels < 64 ? kSliceSteps : (pixels < 256 ? 2 : 1);
}

bool GLPainter::EnsureDiscTextures() {
    const uint32_t generation = rendering::GraphicsContext::GetGeneration();
    if (m_disc && m_slicedDisc && m_discGeneration == generation) {
        return m_disc->GetName() != 0 && m_slicedDisc->GetName() != 0;
    }
    if (!rendering::GraphicsContext::IsLoaded()) {
        return false;
    }
    m_disc = MakeDiscTexture(false);
    m_slicedDisc = MakeDiscTexture(true);
    m_discGeneration = generation;
    return m_disc->GetName() != 0 && m_slicedDisc->GetName() != 0;
}

void GLPainter::Polygon(const physics::Polygon& polygon, float textureScale,
                        util::SharedPtr<util::Pointee>& cache, const ShapeStyle& style) {
    PolygonTexture* built = cache && typeid(*cache) == typeid(PolygonTexture)
                                ? static_cast<PolygonTexture*>(cache.Get())
                                : nullptr;
    const uint32_t generation = rendering::GraphicsContext::GetGeneration();
    if (!built || built->polygon != &polygon || built->scale != textureScale ||
        built->generation != generation || (built->atlas && !built->InAtlas())) {
        util::SharedPtr<PolygonTexture> made(new PolygonTexture);
        made->polygon = &polygon;
        made->scale = textureScale;
        made->generation = generation;
        const util::Array2D<float>& map = polygon.GetDistMap();
        made->empty = map.empty() || !(textureScale > 0) || !std::isfinite(textureScale);
        if (!made->empty) {
            const rendering::ImageFloatPtr image = MakeDistanceImage(map, textureScale);
            made->place = m_atlas->Add(*image);
            math::Mat3 mapToTexture;
            if (made->place.page >= 0) {
                made->atlas = m_atlas;
                mapToTexture = m_atlas->MapToPage(made->place);
            } else {
                const rendering::Texture::ImageType type{GL_ALPHA, false, 1, 1, 1, 1, 0};
                made->texture =
                    rendering::TexturePtr(rendering::TextureFromImageFloat(image, type));
                // Cell (x, y) has its centre at map coordinates (x, y) and texel (x, y) at
                // texture coordinates ((x + 0.5) / width, (y + 0.5) / height).
                mapToTexture = math::Mat3::Scale(1 / static_cast<float>(map.GetWidth()),
                                                 1 / static_cast<float>(map.GetHeight())) *
                               math::Mat3::Translation(Vec2(0.5f, 0.5f));
            }
            made->localToTexture = mapToTexture * polygon.GetLocalToMap();
            made->box = polygon.GetMapBox();
            made->mapHalfExtents = made->box.halfExtents;
            made->box.halfExtents = polygon.GetLocalOBB().halfExtents;
        }
        cache = made;
        built = made.Get();
    }
    const rendering::Texture* texture = built->empty ? nullptr : built->GetTexture();
    if (!texture || texture->GetName() == 0) {
        // Nothing to test against: the outline shows where the polygon is.
        const math::Vec2List& vertices = polygon.GetVertices();
        Immediate(PlacedBox(vertices.data(), vertices.size()));
        UseFixed();
        const NoTexturing plain;
        SetColor(style.silhouette ? style.fill : style.border);
        glBegin(GL_LINE_LOOP);
        for (size_t i = 0; i < vertices.size(); ++i) {
            Vertex(vertices[i]);
        }
        glEnd();
        return;
    }
    // The polygon's tight box and two pixels around it, for the soft edge: the map's margin
    // would only add fragments that show nothing.
    const Vec2 margin(2 * m_pixelSize, 2 * m_pixelSize);
    math::OBB2D box = built->box;
    box.halfExtents.x = std::min(box.halfExtents.x + margin.x, built->mapHalfExtents.x);
    box.halfExtents.y = std::min(box.halfExtents.y + margin.y, built->mapHalfExtents.y);
    Vec2 corners[4];
    box.GetCorners(corners);
    Vec2 texCoords[4];
    for (int i = 0; i < 4; ++i) {
        texCoords[i] = built->localToTexture.TransformPoint(corners[i]);
    }
    const float border =
        std::min(std::max(style.borderWidth, 0.0f), kMaxBorderOfScale * textureScale);
    const bool inAtlas = built->InAtlas();
    const Slot slot =
        inAtlas ? static_cast<Slot>(kFirstPolygonSlot + built->place.page) : kSlotCount;
    if (!style.silhouette && m_multiTexturing && CanUseProgram(kPolygonProgram)) {
        const float pixel = border > 0 ? std::min(m_pixelSize, border) : m_pixelSize;
        const Vec4 params(textureScale, border, pixel, 0);
        if (inAtlas) {
            AddShapeQuad(Open(slot, PlacedBox(corners, 4)), corners, texCoords, params, style);
            Close(slot);
            return;
        }
        Immediate(PlacedBox(corners, 4));
        m_single->texture = texture;
        AddShapeQuad(*m_single, corners, texCoords, params, style);
        DrawPolygons(*m_single);
        m_single->Clear();
        return;
    }
    if (!style.silhouette && inAtlas && style.fill.w >= 1 && style.border.w >= 1) {
        // Opaque: the cut-offs ride on the vertices' alpha (CutoffFromColour).
        Batch& batch = Open(slot, PlacedBox(corners, 4));
        if (border > 0) {
            // The inside first; the depth test (one depth for the polygon) keeps it where
            // the border's quad covers it again.
            const float cutoff = 0.5f - border / textureScale / 2;
            AddTexturedQuad(batch.plain, corners, texCoords, WithAlpha(style.fill, 1 - cutoff));
            AddTexturedQuad(batch.plain, corners, texCoords, WithAlpha(style.border, 0.5f));
        } else {
            AddTexturedQuad(batch.plain, corners, texCoords, WithAlpha(style.fill, 0.5f));
        }
        Close(slot);
        return;
    }
    Immediate(PlacedBox(corners, 4));
    if (style.silhouette) {
        // Flat: the fixed pipeline's alpha test reads the texture's alpha, which is what it
        // writes too, below one half everywhere inside.
        UseFixed();
        const Texturing textured;
        texture->Bind();
        const BelowHalfOpaque test;
        SetColor(Opaque(style.fill));
        TexturedQuad(corners, texCoords);
        return;
    }
    PolygonFixed(*texture, corners, texCoords, textureScale, style);
}

void GLPainter::PolygonFixed(const rendering::Texture& texture, const Vec2* corners,
                             const Vec2* texCoords, float textureScale, const ShapeStyle& style) {
    UseFixed();
    const Texturing textured;
    texture.Bind();
    const SavedBlending savedBlending;
    const SavedAlphaTest savedAlphaTest;
    GLfloat blendColor[4] = {};
    bool blendColorSet = false;
    glEnable(GL_ALPHA_TEST);
    // The fragment's alpha is the texture's distance, so the colour's own alpha can only
    // come in through the constant of the blend.
    const auto pass = [&](const Vec4& color, float cutoff) {
        if (color.w < 1 && m_imaging) {
            if (!blendColorSet) {
                glGetFloatv(GL_BLEND_COLOR, blendColor);
                blendColorSet = true;
            }
            glEnable(GL_BLEND);
            glBlendColor(1, 1, 1, color.w);
            glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE_MINUS_CONSTANT_ALPHA);
        } else {
            if (color.w < 1 && !m_warnedTransparency) {
                // Once a frame: the polygon is drawn opaque meanwhile.
                Log(logging::Warning, kTransparencyMessage);
                m_warnedTransparency = true;
            }
            glDisable(GL_BLEND);
        }
        SetColor(Opaque(color));
        glAlphaFunc(GL_LESS, cutoff);
        TexturedQuad(corners, texCoords);
    };
    const float border =
        std::min(std::max(style.borderWidth, 0.0f), kMaxBorderOfScale * textureScale);
    if (border > 0) {
        // The inside first; the caller's depth test (GL_LESS, one depth for the entity)
        // keeps it where the border's pass covers it again.
        pass(style.fill, 0.5f - border / textureScale / 2);
        pass(style.border, 0.5f);
    } else {
        pass(style.fill, 0.5f);
    }
    if (blendColorSet) {
        glBlendColor(blendColor[0], blendColor[1], blendColor[2], blendColor[3]);
    }
}

bool GLPainter::VisibleQuad(Vec2 corners[4]) const {
    GLfloat modelView[16];
    GLfloat projection[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, modelView);
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    // Row r, column c of projection times model-view; both are stored column after column.
    const auto at = [&](int r, int c) {
        float sum = 0;
        for (int k = 0; k < 4; ++k) {
            sum += projection[k * 4 + r] * modelView[c * 4 + k];
        }
        return sum;
    };
    // A point (x, y, 0, 1) of this frame lands on the screen at
    // ((a00 x + a01 y + b0) / w, (a10 x + a11 y + b1) / w), w = w0 x + w1 y + w2.
    const float a00 = at(0, 0), a01 = at(0, 1), b0 = at(0, 3);
    const float a10 = at(1, 0), a11 = at(1, 1), b1 = at(1, 3);
    const float w0 = at(3, 0), w1 = at(3, 1), w2 = at(3, 3);
    // A little beyond the viewport, so that no edge of the screen is left uncovered.
    constexpr float kGrow = 1.02f;
    const Vec2 screen[4] = {Vec2(-kGrow, -kGrow), Vec2(kGrow, -kGrow), Vec2(kGrow, kGrow),
                            Vec2(-kGrow, kGrow)};
    for (int i = 0; i < 4; ++i) {
        const float X = screen[i].x;
        const float Y = screen[i].y;
        const float m00 = a00 - X * w0, m01 = a01 - X * w1, r0 = X * w2 - b0;
        const float m10 = a10 - Y * w0, m11 = a11 - Y * w1, r1 = Y * w2 - b1;
        const float det = m00 * m11 - m01 * m10;
        if (!(std::fabs(det) > 0) || !std::isfinite(det)) {
            return false;
        }
        corners[i] = Vec2((r0 * m11 - m01 * r1) / det, (m00 * r1 - r0 * m10) / det);
        if (!std::isfinite(corners[i].x) || !std::isfinite(corners[i].y)) {
            return false;
        }
    }
    return true;
}

void GLPainter::HalfPlane(Vec2 normal, float offset, const ShapeStyle& style) {
    const float length = normal.Length();
    if (!(length > 0) || !std::isfinite(length)) {
        return;
    }
    normal /= length;
    offset /= length;
    ImmediateEverywhere();
    Vec2 view[4];
    if (!VisibleQuad(view)) {
        return;
    }
    Vec2 inside[5];
    const float border = std::max(style.borderWidth, 0.0f);
    if (!style.silhouette && UseProgram(kPlaneProgram)) {
        // The program smooths the edge inside the half plane: a pixel more covers it all.
        const int n = ClipBelow(view, 4, normal, offset + m_pixelSize, inside);
        Program& program = *m_programs[kPlaneProgram];
        SetShapeUniforms(program, style, border, m_pixelSize);
        SetUniform(program, kNormal, normal);
        SetUniform(program, kOffset, offset);
        ConvexFan(inside, n);
        return;
    }
    UseFixed();
    const NoTexturing plain;
    if (style.silhouette || !(border > 0)) {
        SetColor(style.fill);
        ConvexFan(inside, ClipBelow(view, 4, normal, offset, inside));
        return;
    }
    // The fill below the strip and the strip along the edge, apart.
    SetColor(style.fill);
    ConvexFan(inside, ClipBelow(view, 4, normal, offset - border, inside));
    Vec2 strip[6];
    const int n = ClipBelow(view, 4, normal, offset, inside);
    SetColor(style.border);
    ConvexFan(strip, ClipBelow(inside, n, -normal, border - offset, strip));
}

// Pictures and overlays

const rendering::Texture* GLPainter::FindTexture(const char* name) {
    if (!name) {
        return nullptr;
    }
    const rendering::TextureHandle* handle = nullptr;
    for (const SpriteTexture& sprite : m_sprites) {
        if (sprite.name == name) {
            handle = &sprite.handle;
            break;
        }
    }
    if (!handle) {
        m_sprites.push_back({name, rendering::TextureManager::Get().Load(name, GL_RGBA)});
        handle = &m_sprites.back().handle;
    }
    if (!(*handle)->IsLoaded()) {
        (*handle)->Load();
    }
    const rendering::TexturePtr& texture = (*handle)->Get();
    return texture ? texture.Get() : nullptr;
}

void GLPainter::Sprite(const char* name, Vec2 center, float side, float angle, const Vec4& color) {
    const rendering::Texture* texture = FindTexture(name);
    if (!texture) {
        return;
    }
    const Vec2 u = Vec2(std::cos(angle), std::sin(angle)) * (side / 2);
    const Vec2 v = math::Perpendicular(u);
    const Vec2 corners[4] = {center - u - v, center + u - v, center + u + v, center - u + v};
    const Vec2 texCoords[4] = {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1)};
    const Slot slot = SpriteSlot(texture);
    Batch& batch = Open(slot, PlacedBox(corners, 4));
    batch.texture = texture;
    AddTexturedQuad(batch.plain, corners, texCoords, color);
    Close(slot);
}

void GLPainter::Strip(const char* name, const char* endName, Vec2 a, Vec2 b, float width,
                      const Vec4& color) {
    if (!(width > 0)) {
        return;
    }
    const rendering::Texture* texture = FindTexture(name);
    const rendering::Texture* end = FindTexture(endName);
    ImmediateEverywhere();
    UseFixed();
    const DepthTestOff depthOff;
    const Texturing textured;
    SetColor(color);
    const Vec2 d = b - a;
    const float length = d.Length();
    const Vec2 along = length > 0 ? d / length : Vec2(1, 0);
    const Vec2 across = math::Perpendicular(along) * (width / 2);
    if (texture && length > 0) {
        // The texture repeats every width along the strip.
        const float repeats = length / width;
        texture->Bind();
        const Vec2 corners[4] = {a - across, b - across, b + across, a + across};
        const Vec2 texCoords[4] = {Vec2(0, 0), Vec2(repeats, 0), Vec2(repeats, 1), Vec2(0, 1)};
        TexturedQuad(corners, texCoords);
    }
    if (end) {
        end->Bind();
        const Vec2 half = along * (width / 2);
        const Vec2 texCoords[4] = {Vec2(0, 0), Vec2(1, 0), Vec2(1, 1), Vec2(0, 1)};
        for (const Vec2& c : {a, b}) {
            const Vec2 corners[4] = {c - half - across, c + half - across, c + half + across,
                                     c - half + across};
            TexturedQuad(corners, texCoords);
        }
    }
}

void GLPainter::Line(Vec2 a, Vec2 b, const Vec4& color) {
    const Vec2 ends[2] = {a, b};
    Batch& batch = Open(kLineSlot, PlacedBox(ends, 2).Expanded(m_lineMargin));
    AddPlain(batch.plain, a, color);
    AddPlain(batch.plain, b, color);
    Close(kLineSlot);
}

void GLPainter::RoundedRect(Vec2 center, Vec2 halfSize, float angle, float radius,
                            const Vec4& color) {
    ImmediateEverywhere();
    UseFixed();
    const DepthTestOff depthOff;
    const NoTexturing plain;
    SetColor(color);
    const float r = std::clamp(radius, 0.0f, std::min(halfSize.x, halfSize.y));
    const Vec2 u(std::cos(angle), std::sin(angle));
    const Vec2 v = math::Perpendicular(u);
    // Corners counter-clockwise from the upper right, each a quarter turn of eight steps.
    constexpr int kQuarter = kCircleSteps / 4;
    constexpr int kStride = kQuarter / 8;
    const Vec2 corners[4] = {
        Vec2(halfSize.x - r, halfSize.y - r), Vec2(-halfSize.x + r, halfSize.y - r),
        Vec2(-halfSize.x + r, -halfSize.y + r), Vec2(halfSize.x - r, -halfSize.y + r)};
    glBegin(GL_LINE_LOOP);
    for (int k = 0; k < 4; ++k) {
        for (int i = 0; i <= kQuarter; i += kStride) {
            const Vec2 p = corners[k] + kUnitCircle.points[k * kQuarter + i] * r;
            Vertex(center + u * p.x + v * p.y);
        }
    }
    glEnd();
}

void GLPainter::Trail(const TrailVertex* vertices, size_t count, float width, const Vec4& color) {
    if (!vertices || count < 2) {
        return;
    }
    ImmediateEverywhere();
    const DepthTestOff depthOff;
    if (UseProgram(kLineProgram)) {
        // A pixel wider for the soft sides; s runs across, t is the life left.
        Program& program = *m_programs[kLineProgram];
        const float w = width + m_pixelSize;
        SetUniform(program, kLineColor, color);
        SetUniform(program, kLineWidth, w);
        SetUniform(program, kLinePixelSize, m_pixelSize);
        glBegin(GL_TRIANGLE_STRIP);
        for (size_t i = 0; i < count; ++i) {
            const TrailVertex& vertex = vertices[i];
            const Vec2 side = vertex.normal * (w / 2);
            glTexCoord2f(0, vertex.freshness);
            Vertex(vertex.position + side);
            glTexCoord2f(1, vertex.freshness);
            Vertex(vertex.position - side);
        }
        glEnd();
        return;
    }
    UseFixed();
    const NoTexturing plain;
    glBegin(GL_TRIANGLE_STRIP);
    for (size_t i = 0; i < count; ++i) {
        const TrailVertex& vertex = vertices[i];
        const Vec2 side = vertex.normal * (width / 2);
        glColor4f(color.x, color.y, color.z, color.w * std::clamp(vertex.freshness, 0.0f, 1.0f));
        Vertex(vertex.position + side);
        Vertex(vertex.position - side);
    }
    glEnd();
    rendering::Renderer::Get().ForgetState();
}

void GLPainter::Points(const Vec2* points, size_t count, float size, const Vec4& color) {
    if (!points || count == 0) {
        return;
    }
    ImmediateEverywhere();
    UseFixed();
    const DepthTestOff depthOff;
    const NoTexturing plain;
    SetColor(color);
    GLfloat previous = 1;
    glGetFloatv(GL_POINT_SIZE, &previous);
    glPointSize(std::max(size / m_pixelSize, 1.0f));
    glBegin(GL_POINTS);
    for (size_t i = 0; i < count; ++i) {
        Vertex(points[i]);
    }
    glEnd();
    glPointSize(previous);
}

void GLPainter::Outline(const Vec2* points, size_t count, const Vec4& color) {
    if (!points || count == 0) {
        return;
    }
    ImmediateEverywhere();
    UseFixed();
    const DepthTestOff depthOff;
    const AdditiveBlending additive;
    const NoTexturing plain;
    SetColor(color);
    glBegin(GL_LINE_LOOP);
    for (size_t i = 0; i < count; ++i) {
        Vertex(points[i]);
    }
    glEnd();
}

void GLPainter::Disc(Vec2 center, float radius, const Vec4& color) {
    if (!(radius > 0)) {
        return;
    }
    ImmediateEverywhere();
    UseFixed();
    const DepthTestOff depthOff;
    const AdditiveBlending additive;
    const NoTexturing plain;
    SetColor(color);
    CircleFan(center, radius, 0, kCircleSteps, 2);
}

}  // namespace app
