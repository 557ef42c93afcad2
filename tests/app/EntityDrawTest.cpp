#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "SceneFixture.h"
#include "app/Painter.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "physics/Simulation.h"

namespace {

using math::Vec2;
using math::Vec4;

constexpr float kTolerance = 1e-5f;

// Keeps every call an entity makes, with the frame the pushed transforms set at the time.
class RecordingPainter : public app::Painter {
public:
    struct Call {
        std::string kind;
        std::string texture;
        math::Mat3 frame;
        // Centre, ends, normal or half size, as the call has them.
        Vec2 a{0, 0};
        Vec2 b{0, 0};
        // Side, width, radius or offset.
        float size = 0;
        float angle = 0;
        // Texture scale or corner radius.
        float extra = 0;
        Vec4 color{0, 0, 0, 0};
        app::ShapeStyle style;
        std::vector<app::TrailVertex> trail;
        const app::TrailVertex* trailData = nullptr;
        std::vector<Vec2> points;
        const util::Pointee* cache = nullptr;
    };

    float GetPixelSize() const override { return pixelSize; }
    float GetInchInWorld() const override { return inch; }
    float GetBorderWidth() const override { return borderWidth; }
    const app::DrawOptions& GetOptions() const override { return options; }

    void PushTransform(const math::Mat3& transform) override {
        m_stack.push_back(m_stack.back() * transform);
    }
    void PopTransform() override {
        ASSERT_GT(m_stack.size(), 1u) << "a pop without its push";
        m_stack.pop_back();
    }

    void Box(Vec2 halfSize, const app::ShapeStyle& style) override {
        Call& call = Add("Box");
        call.a = halfSize;
        call.style = style;
    }
    void Circle(float radius, const app::ShapeStyle& style) override {
        Call& call = Add("Circle");
        call.size = radius;
        call.style = style;
    }
    void Polygon(const physics::Polygon&, float textureScale, util::SharedPtr<util::Pointee>& cache,
                 const app::ShapeStyle& style) override {
        if (!cache) {
            cache = util::SharedPtr<util::Pointee>(new util::Pointee());
            ++builds;
        }
        Call& call = Add("Polygon");
        call.extra = textureScale;
        call.cache = cache.Get();
        call.style = style;
    }
    void HalfPlane(Vec2 normal, float offset, const app::ShapeStyle& style) override {
        Call& call = Add("HalfPlane");
        call.a = normal;
        call.size = offset;
        call.style = style;
    }
    void Sprite(const char* texture, Vec2 center, float side, float angle,
                const Vec4& color) override {
        Call& call = Add("Sprite");
        call.texture = texture;
        call.a = center;
        call.size = side;
        call.angle = angle;
        call.color = color;
    }
    void Strip(const char* texture, const char* endTexture, Vec2 a, Vec2 b, float width,
               const Vec4& color) override {
        Call& call = Add("Strip");
        call.texture = std::string(texture) + "|" + endTexture;
        call.a = a;
        call.b = b;
        call.size = width;
        call.color = color;
    }
    void Line(Vec2 a, Vec2 b, const Vec4& color) override {
        Call& call = Add("Line");
        call.a = a;
        call.b = b;
        call.color = color;
    }
    void RoundedRect(Vec2 center, Vec2 halfSize, float angle, float radius,
                     const Vec4& color) override {
        Call& call = Add("RoundedRect");
        call.a = center;
        call.b = halfSize;
        call.angle = angle;
        call.extra = radius;
        call.color = color;
    }
    void Trail(const app::TrailVertex* vertices, size_t count, float width,
               const Vec4& color) override {
        Call& call = Add("Trail");
        call.trail.assign(vertices, vertices + count);
        call.trailData = vertices;
        call.size = width;
        call.color = color;
    }
    void Points(const Vec2* points, size_t count, float size, const Vec4& color) override {
        Call& call = Add("Points");
        call.points.assign(points, points + count);
        call.size = size;
        call.color = color;
    }
    void Outline(const Vec2* points, size_t count, const Vec4& color) override {
        Call& call = Add("Outline");
        call.points.assign(points, points + count);
        call.color = color;
    }
    void Disc(Vec2 center, float radius, const Vec4& color) override {
        Call& call = Add("Disc");
        call.a = center;
        call.size = radius;
        call.color = color;
    }

    std::vector<Call> Take() {
        EXPECT_EQ(m_stack.size(), 1u) << "a push without its pop";
        std::vector<Call> taken;
        taken.swap(m_calls);
        return taken;
    }
    // The calls of one entity's Draw, which must have made exactly one shape.
    Call DrawShape(const app::Entity& entity) {
        entity.Draw(*this);
        return OnlyShape();
    }
    Call SilhouetteOf(const app::GeomEntity& entity, const Vec4& color) {
        entity.DrawSilhouette(*this, color);
        return OnlyShape();
    }

    float pixelSize = 0.01f;
    float inch = 1.0f;
    float borderWidth = 0.05f;
    app::DrawOptions options;
    int builds = 0;

private:
    Call& Add(const char* kind) {
        m_calls.emplace_back();
        m_calls.back().kind = kind;
        m_calls.back().frame = m_stack.back();
        return m_calls.back();
    }
    Call OnlyShape() {
        const std::vector<Call> calls = Take();
        EXPECT_EQ(calls.size(), 1u);
        return calls.empty() ? Call() : calls.front();
    }

    std::vector<math::Mat3> m_stack{math::Mat3::Identity()};
    std::vector<Call> m_calls;
};

void ExpectVec2(const Vec2& actual, const Vec2& expected) {
    EXPECT_NEAR(actual.x, expected.x, kTolerance);
    EXPECT_NEAR(actual.y, expected.y, kTolerance);
}

void ExpectVec4(const Vec4& actual, const Vec4& expected) {
    EXPECT_NEAR(actual.x, expected.x, kTolerance);
    EXPECT_NEAR(actual.y, expected.y, kTolerance);
    EXPECT_NEAR(actual.z, expected.z, kTolerance);
    EXPECT_NEAR(actual.w, expected.w, kTolerance);
}

// The frame of a turn by the angle, then a move to the point.
void ExpectFrame(const math::Mat3& frame, float angle, const Vec2& at) {
    const math::Mat3 expected(std::cos(angle), -std::sin(angle), at.x, std::sin(angle),
                              std::cos(angle), at.y, 0, 0, 1);
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(frame.m[i], expected.m[i], kTolerance) << "entry " << i;
    }
}

class EntityDrawTest : public test_app::SceneTest {
protected:
    static util::SharedPtr<app::PolyEntity> AddPolygon() {
        const physics::PolygonPtr polygon(
            new physics::Polygon(math::Vec2List{{2, 1}, {4, 1}, {3, 3}, {2, 2.5f}}));
        util::SharedPtr<app::PolyEntity> entity(new app::PolyEntity(polygon));
        GetScene().AddEntity(entity);
        return entity;
    }
    static util::SharedPtr<app::PlaneEntity> AddPlane(const Vec2& normal, float dist) {
        util::SharedPtr<physics::Plane> plane(new physics::Plane());
        plane->SetTransform(app::PlaneEntity::PlaceAt(normal, dist));
        util::SharedPtr<app::PlaneEntity> entity(new app::PlaneEntity(plane));
        GetScene().AddEntity(entity);
        return entity;
    }
    template <class Joint>
    static util::SharedPtr<Joint> AddJoint(float size, const Vec2& a, const Vec2& b) {
        util::SharedPtr<Joint> joint(new Joint(size));
        const Vec2 points[2] = {a, b};
        joint->Attach(points);
        GetScene().AddEntity(joint);
        return joint;
    }

    RecordingPainter painter;
};

// One rule for every kind of shape: the border colour tells the flags apart, and without
// borders everywhere only a selected shape or one under the mouse has one.
TEST_F(EntityDrawTest, BorderFollowsSelectionMouseAndTheBordersOption) {
    const std::vector<util::SharedPtr<app::GeomEntity>> shapes = {
        AddBox({0, 0}), AddCircle({3, 0}, 0.5f), AddPolygon(), AddPlane({0, 1}, 5)};
    const Vec4 fill(0.6f, 0.4f, 0.2f, 0.8f);
    struct Case {
        bool selected;
        bool mouseOver;
        Vec4 border;
    };
    const Case cases[] = {{false, false, {0.3f, 0.2f, 0.1f, 0.8f}},
                          {true, false, {1, 1, 1, 1}},
                          {false, true, {0.2f, 0.2f, 0.2f, 1}},
                          {true, true, {0.8f, 0.8f, 0.8f, 1}}};
    for (const auto& shape : shapes) {
        SCOPED_TRACE(shape->GetReflectedName());
        shape->color->SetNative(fill);
        for (const bool borders : {true, false}) {
            painter.options.borders = borders;
            for (const Case& c : cases) {
                shape->selected = c.selected;
                shape->mouseOver = c.mouseOver;
                const RecordingPainter::Call call = painter.DrawShape(*shape);
                ExpectVec4(call.style.fill, fill);
                ExpectVec4(call.style.border, c.border);
                EXPECT_FALSE(call.style.silhouette);
                const bool bordered = borders || c.selected || c.mouseOver;
                EXPECT_EQ(call.style.borderWidth, bordered ? 0.05f : 0.0f)
                    << "borders " << borders << " selected " << c.selected << " mouse "
                    << c.mouseOver;
            }
        }
    }
}

// Shapes are drawn about the origin in their geom's frame; the plane is already in world
// terms and pushes none.
TEST_F(EntityDrawTest, ShapesDrawInTheirGeomsFrameAtTheirSize) {
    const auto box = AddBox({1, 2}, {0.7f, 0.3f}, 0.5f);
    const RecordingPainter::Call boxCall = painter.DrawShape(*box);
    EXPECT_EQ(boxCall.kind, "Box");
    ExpectVec2(boxCall.a, {0.7f, 0.3f});
    ExpectFrame(boxCall.frame, 0.5f, {1, 2});

    const auto circle = AddCircle({-1, 3}, 0.4f);
    circle->GetGeom()->SetTransform(physics::Transform::FromAngle(-1.2f, {-1, 3}));
    const RecordingPainter::Call circleCall = painter.DrawShape(*circle);
    EXPECT_EQ(circleCall.kind, "Circle");
    EXPECT_NEAR(circleCall.size, 0.4f, kTolerance);
    ExpectFrame(circleCall.frame, -1.2f, {-1, 3});

    // y = 2, solid below: the points behind the line have y < 2.
    const auto plane = AddPlane({0, 1}, -2);
    ASSERT_LT(plane->GetGeom()->Dist({0, 1}), 0);
    const RecordingPainter::Call planeCall = painter.DrawShape(*plane);
    EXPECT_EQ(planeCall.kind, "HalfPlane");
    ExpectVec2(planeCall.a, {0, 1});
    EXPECT_NEAR(planeCall.size, 2, kTolerance);
    ExpectFrame(planeCall.frame, 0, {0, 0});
    // Turned, the normal and offset follow the geom.
    plane->GetGeom()->SetTransform(app::PlaneEntity::PlaceAt({0.6f, 0.8f}, 1.5f));
    const RecordingPainter::Call turned = painter.DrawShape(*plane);
    ExpectVec2(turned.a, {0.6f, 0.8f});
    EXPECT_NEAR(turned.size, -1.5f, kTolerance);
}

TEST_F(EntityDrawTest, SilhouettesAreFlatInTheGivenColourWithoutBorder) {
    const std::vector<util::SharedPtr<app::GeomEntity>> shapes = {
        AddBox({0, 0}), AddCircle({3, 0}, 0.5f), AddPolygon(), AddPlane({0, 1}, 5)};
    const char* kinds[] = {"Box", "Circle", "Polygon", "HalfPlane"};
    const Vec4 mask(0, 0, 0, 1);
    for (size_t i = 0; i < shapes.size(); ++i) {
        shapes[i]->color->SetNative({0.9f, 0.1f, 0.1f, 0.5f});
        shapes[i]->selected = true;
        const RecordingPainter::Call call = painter.SilhouetteOf(*shapes[i], mask);
        EXPECT_EQ(call.kind, kinds[i]);
        EXPECT_TRUE(call.style.silhouette);
        ExpectVec4(call.style.fill, mask);
        EXPECT_EQ(call.style.borderWidth, 0);
    }
}

// The texture the painter builds from the distance map is made once and kept by the
// polygon; the debug overlays come only when asked for, in world units.
TEST_F(EntityDrawTest, PolygonKeepsItsTextureAndDrawsTheOverlaysAskedFor) {
    const auto entity = AddPolygon();
    const physics::Polygon& polygon = entity->GetPolygon();
    const math::Vec2 mapHalf = polygon.GetMapBox().halfExtents;
    ASSERT_NEAR(entity->GetTextureScale(), 0.04f * 2 * std::max(mapHalf.x, mapHalf.y), kTolerance);

    const RecordingPainter::Call first = painter.DrawShape(*entity);
    EXPECT_EQ(first.kind, "Polygon");
    EXPECT_EQ(first.extra, entity->GetTextureScale());
    ExpectFrame(first.frame, 0, entity->GetGeom()->GetPosition());
    const RecordingPainter::Call second = painter.DrawShape(*entity);
    EXPECT_EQ(painter.builds, 1);
    ASSERT_NE(first.cache, nullptr);
    EXPECT_EQ(second.cache, first.cache);

    painter.options.drawOBBs = true;
    painter.options.drawMapOBBs = true;
    painter.options.drawBCs = true;
    painter.options.drawVertices = true;
    entity->Draw(painter);
    const std::vector<RecordingPainter::Call> calls = painter.Take();
    ASSERT_EQ(calls.size(), 6u);
    EXPECT_EQ(calls[0].kind, "Polygon");

    // The tight box and the map's box, both as world corners.
    math::Vec2 corners[4];
    polygon.GetOBB().GetCorners(corners);
    EXPECT_EQ(calls[1].kind, "Outline");
    ASSERT_EQ(calls[1].points.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        ExpectVec2(calls[1].points[i], corners[i]);
    }
    polygon.GetMapBox().GetCorners(corners);
    EXPECT_EQ(calls[2].kind, "Outline");
    ASSERT_EQ(calls[2].points.size(), 4u);
    ExpectVec2(calls[2].points[2], entity->GetGeom()->GetTransform().Apply(corners[2]));
    ExpectFrame(calls[2].frame, 0, {0, 0});

    EXPECT_EQ(calls[3].kind, "Disc");
    ExpectVec2(calls[3].a, polygon.GetBoundingCircle().centre);
    EXPECT_NEAR(calls[3].size, polygon.GetBoundingCircle().radius, kTolerance);
    ExpectVec4(calls[3].color, {0.2f, 0.5f, 0.2f, 0.5f});

    EXPECT_EQ(calls[4].kind, "Points");
    ASSERT_EQ(calls[4].points.size(), polygon.GetWorldVertices().size());
    ExpectVec2(calls[4].points[1], polygon.GetWorldVertices()[1]);
    ExpectVec4(calls[4].color, {0, 1, 0, 1});
    EXPECT_NEAR(calls[4].size, 4 * painter.pixelSize, kTolerance);
    EXPECT_EQ(calls[5].kind, "Points");
    ASSERT_EQ(calls[5].points.size(), 1u);
    ExpectVec2(calls[5].points[0], entity->GetGeom()->GetPosition());
    ExpectVec4(calls[5].color, {0.5f, 0.5f, 1, 1});
    EXPECT_EQ(painter.builds, 1);
}

TEST_F(EntityDrawTest, HingesShowTheirBodyAboveFivePixelsAndTheRingWhenPicked) {
    AddBox({0, 0}, {1, 1});
    AddBox({0.2f, 0}, {1, 1});
    const auto hinge = AddJoint<app::HingeEntity>(0.3f, {0, 0}, {0.2f, 0});
    ASSERT_TRUE(hinge->GetGeom(0) && hinge->GetGeom(1));
    const Vec4 grey(0.5f, 0.5f, 0.5f, 1);

    // 0.3 is 30 pixels: the hinge between its ends and the line joining them.
    hinge->Draw(painter);
    std::vector<RecordingPainter::Call> calls = painter.Take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].kind, "Sprite");
    EXPECT_EQ(calls[0].texture, "hinge");
    ExpectVec2(calls[0].a, {0.1f, 0});
    EXPECT_NEAR(calls[0].size, 0.3f, kTolerance);
    ExpectVec4(calls[0].color, grey);
    EXPECT_EQ(calls[1].kind, "Line");
    ExpectVec2(calls[1].a, {0, 0});
    ExpectVec2(calls[1].b, {0.2f, 0});

    // 0.3 is 3 pixels: nothing of the hinge, but the ring of a selected one.
    painter.pixelSize = 0.1f;
    hinge->Draw(painter);
    EXPECT_TRUE(painter.Take().empty());
    hinge->selected = true;
    hinge->Draw(painter);
    calls = painter.Take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].texture, "ring");
    ExpectVec2(calls[0].a, {0.1f, 0});
    EXPECT_NEAR(calls[0].size, 1.4f * 0.3f, kTolerance);
    ExpectVec4(calls[0].color, {1, 1, 1, 1});

    // Hidden joints hide their rings too.
    painter.options.drawJoints = false;
    hinge->Draw(painter);
    EXPECT_TRUE(painter.Take().empty());

    // One end on the ground: the background picture.
    painter.options.drawJoints = true;
    painter.pixelSize = 0.01f;
    AddBox({5, 5});
    const auto grounded = AddJoint<app::HingeEntity>(0.3f, {5, 5}, {5, 5});
    ASSERT_TRUE(grounded->IsBackground());
    grounded->Draw(painter);
    calls = painter.Take();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls[0].texture, "hinge_bg");
}

TEST_F(EntityDrawTest, FixJointsTurnWithTheirBodyAndShowOnlyWhileInTheSimulation) {
    AddBox({0, 0}, {1, 1});
    AddCircle({0.5f, 0}, 0.5f);
    const auto fix = AddJoint<app::FixJointEntity>(0.3f, {0.3f, 0.1f}, {0.3f, 0.1f});
    ASSERT_TRUE(fix->IsInSimulation());
    fix->GetGeom(0)->GetBody()->angle = 0.7f;
    fix->mouseOver = true;

    fix->Draw(painter);
    std::vector<RecordingPainter::Call> calls = painter.Take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].texture, "fixjoint");
    ExpectVec2(calls[0].a, {0.3f, 0.1f});
    EXPECT_NEAR(calls[0].size, 0.3f, kTolerance);
    EXPECT_NEAR(calls[0].angle, 0.7f, kTolerance);
    ExpectVec4(calls[0].color, {0.5f, 0.5f, 0.5f, 1});
    EXPECT_EQ(calls[1].texture, "ring");
    EXPECT_NEAR(calls[1].size, 1.5f * 0.3f, kTolerance);
    ExpectVec4(calls[1].color, {0.2f, 0.2f, 0.2f, 1});

    painter.options.drawJoints = false;
    fix->Draw(painter);
    EXPECT_TRUE(painter.Take().empty());

    // Never attached, it is in no body.
    painter.options.drawJoints = true;
    const util::SharedPtr<app::FixJointEntity> loose(new app::FixJointEntity(0.3f));
    loose->selected = true;
    loose->Draw(painter);
    EXPECT_TRUE(painter.Take().empty());
}

TEST_F(EntityDrawTest, SpringsStretchBetweenTheirEndsAndAreOutlinedWhenPicked) {
    AddBox({0, 0});
    AddBox({2, 2});
    const auto spring = AddJoint<app::SpringEntity>(0.25f, {0, 0}, {2, 2});
    spring->color->SetNative({0.1f, 0.7f, 0.3f, 1});

    // Drawn whether joints show or not.
    painter.options.drawJoints = false;
    spring->Draw(painter);
    std::vector<RecordingPainter::Call> calls = painter.Take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].kind, "Strip");
    EXPECT_EQ(calls[0].texture, "spring|spring_attachment");
    ExpectVec2(calls[0].a, {0, 0});
    ExpectVec2(calls[0].b, {2, 2});
    EXPECT_NEAR(calls[0].size, 0.25f, kTolerance);
    ExpectVec4(calls[0].color, {0.1f, 0.7f, 0.3f, 1});

    spring->selected = true;
    spring->Draw(painter);
    calls = painter.Take();
    ASSERT_EQ(calls.size(), 2u);
    const RecordingPainter::Call& outline = calls[1];
    EXPECT_EQ(outline.kind, "RoundedRect");
    const float around = 1.15f * 0.25f;
    ExpectVec2(outline.a, {1, 1});
    ExpectVec2(outline.b, {(std::sqrt(8.0f) + around) / 2, around / 2});
    EXPECT_NEAR(outline.angle, 0.78539816f, kTolerance);
    EXPECT_NEAR(outline.extra, 0.15f * around, kTolerance);
    ExpectVec4(outline.color, {1, 1, 1, 0.5f});

    // On a screen of few pixels to the inch, the corners are bounded by the inch.
    painter.inch = 0.1f;
    spring->Draw(painter);
    EXPECT_NEAR(painter.Take()[1].extra, 0.03f, kTolerance);
}

// The trail starts one point before the fade time, fades with age, and its vertices live in
// the pen between frames.
TEST_F(EntityDrawTest, PenTrailsFadeWithAgeFromJustBeforeTheFade) {
    const auto box = AddBox({3, 1});
    const double now = physics::Simulation::Get().GetSimulatedTime();
    const util::SharedPtr<app::PenEntity> pen(new app::PenEntity(0.2f));
    pen->SetGeom(box->GetGeom(), {0.1f, 0});
    pen->color->SetNative({0.9f, 0.2f, 0.4f, 1});
    const Vec2 up(0, 1);
    pen->SetTrail({{now - 12, {0, 0}, up},
                   {now - 11, {1, 0}, up},
                   {now - 8, {2, 0}, up},
                   {now - 4, {3, 0}, up},
                   {now, {4, 0}, up}});
    ASSERT_EQ(pen->FindBegin(), 1u);

    pen->Draw(painter);
    std::vector<RecordingPainter::Call> calls = painter.Take();
    ASSERT_EQ(calls.size(), 2u);
    const RecordingPainter::Call& trail = calls[0];
    EXPECT_EQ(trail.kind, "Trail");
    EXPECT_NEAR(trail.size, 0.7f * 0.2f, kTolerance);
    ExpectVec4(trail.color, {0.9f, 0.2f, 0.4f, 1});
    ASSERT_EQ(trail.trail.size(), 4u);
    const float freshness[] = {-0.1f, 0.2f, 0.6f, 1};
    for (size_t i = 0; i < 4; ++i) {
        ExpectVec2(trail.trail[i].position, {static_cast<float>(i + 1), 0});
        ExpectVec2(trail.trail[i].normal, up);
        EXPECT_NEAR(trail.trail[i].freshness, freshness[i], kTolerance) << i;
    }
    EXPECT_EQ(calls[1].texture, "dot");
    ExpectVec2(calls[1].a, {3.1f, 1});
    EXPECT_NEAR(calls[1].size, 0.2f, kTolerance);

    // The next frame fills the same vertices; under the mouse the ring goes on top.
    const app::TrailVertex* const firstFrameData = trail.trailData;
    pen->mouseOver = true;
    pen->Draw(painter);
    calls = painter.Take();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].trailData, firstFrameData);
    EXPECT_EQ(calls[2].texture, "ring");
    ExpectVec2(calls[2].a, {3.1f, 1});
    EXPECT_NEAR(calls[2].size, 1.3f * 0.2f, kTolerance);
    ExpectVec4(calls[2].color, {0.2f, 0.2f, 0.2f, 1});

    // A longer fade reaches back to the start, which is never stepped back from.
    pen->fadeTime->SetNative(20);
    pen->Draw(painter);
    calls = painter.Take();
    ASSERT_EQ(calls[0].trail.size(), 5u);
    EXPECT_NEAR(calls[0].trail[0].freshness, 0.4f, kTolerance);

    // No fade time, or a single point, draws no trail, only the dot.
    pen->mouseOver = false;
    pen->fadeTime->SetNative(0);
    pen->Draw(painter);
    calls = painter.Take();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].texture, "dot");
    pen->fadeTime->SetNative(10);
    pen->SetTrail({{now, {4, 0}, up}});
    pen->Draw(painter);
    EXPECT_EQ(painter.Take().size(), 1u);
}

}  // namespace
