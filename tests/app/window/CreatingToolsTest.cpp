// The tools that make one entity with a click or a drag: what each makes, where, as one undo
// step; what they refuse; and that no gesture, cancelled or wild, leaves anything half-made.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "ToolFixture.h"
#include "app/Chain.h"
#include "app/Painter.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/tools/BoxTool.h"
#include "app/tools/ChainTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/FixJointTool.h"
#include "app/tools/HingeTool.h"
#include "app/tools/PenTool.h"
#include "app/tools/PlaneTool.h"
#include "app/tools/SpringTool.h"
#include "math/MathUtil.h"
#include "physics/Body.h"

namespace {

using math::Vec2;

// Counts what a tool's overlay draws.
class CountingPainter : public app::Painter {
public:
    float GetPixelSize() const override { return 0.01f; }
    float GetInchInWorld() const override { return 0.86f; }
    float GetBorderWidth() const override { return 0.01f; }
    const app::DrawOptions& GetOptions() const override { return m_options; }
    void PushTransform(const math::Mat3&) override {}
    void PopTransform() override {}
    void Box(Vec2, const app::ShapeStyle&) override { calls.push_back("Box"); }
    void Circle(float radius, const app::ShapeStyle&) override {
        calls.push_back("Circle");
        lastRadius = radius;
    }
    void Polygon(const physics::Polygon&, float, util::SharedPtr<util::Pointee>&,
                 const app::ShapeStyle&) override {
        calls.push_back("Polygon");
    }
    void HalfPlane(Vec2, float, const app::ShapeStyle&) override { calls.push_back("HalfPlane"); }
    void Sprite(const char*, Vec2, float, float, const math::Vec4&) override {
        calls.push_back("Sprite");
    }
    void Strip(const char*, const char*, Vec2, Vec2, float, const math::Vec4&) override {
        calls.push_back("Strip");
    }
    void Line(Vec2 a, Vec2 b, const math::Vec4&) override {
        calls.push_back("Line");
        lines.push_back({a, b});
    }
    void RoundedRect(Vec2, Vec2, float, float, const math::Vec4&) override {
        calls.push_back("RoundedRect");
    }
    void Trail(const app::TrailVertex*, size_t, float, const math::Vec4&) override {
        calls.push_back("Trail");
    }
    void Points(const Vec2*, size_t, float, const math::Vec4&) override {
        calls.push_back("Points");
    }
    void Outline(const Vec2*, size_t, const math::Vec4&) override { calls.push_back("Outline"); }
    void Disc(Vec2, float, const math::Vec4&) override { calls.push_back("Disc"); }

    std::vector<std::string> calls;
    std::vector<std::pair<Vec2, Vec2>> lines;
    float lastRadius = 0;

private:
    app::DrawOptions m_options;
};

class CreatingToolsTest : public test_app::ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        app::Undoer::Get().Clear();
        app::App::Get().GetModel().chainDensityFactor->SetNative(20.0f);
    }

    template <class Kind>
    static Kind& Get() {
        return *app::Tools::Get().Find<Kind>();
    }
    template <class Kind>
    static std::vector<util::SharedPtr<Kind>> All() {
        std::vector<util::SharedPtr<Kind>> found;
        for (const app::EntityPtr& entity : GetScene().GetEntities()) {
            if (Kind* kind = dynamic_cast<Kind*>(entity.Get())) {
                found.emplace_back(kind);
            }
        }
        return found;
    }
    static size_t Count() { return GetScene().GetEntities().size(); }
    static std::string UndoLabel() {
        const char* label = app::Undoer::Get().GetUndoLabel();
        return label ? label : "";
    }
    static size_t Steps() { return app::Undoer::Get().GetUndoStack().size(); }
    static const physics::BodyPtr& Ground() { return physics::Simulation::Get().GetWorldBody(); }
    static size_t SimJoints() { return physics::Simulation::Get().GetJoints().size(); }
    static size_t SimHinges() { return physics::Simulation::Get().GetHinges().size(); }
    static size_t SimBodies() { return physics::Simulation::Get().GetBodies().size(); }

    // The stages of a drag, one at a time.
    static bool Begin(app::Tool& tool, const Vec2& world) {
        input::DragEvent event;
        event.key = Left();
        event.start = Gui(world);
        event.position = event.start;
        tool.OnDragBegin(event);
        s_dragStart = event.start;
        return event.consumed;
    }
    static void Move(app::Tool& tool, const Vec2& world) {
        input::DragEvent event;
        event.key = Left();
        event.start = s_dragStart;
        event.position = Gui(world);
        tool.OnDrag(event);
    }
    static void End(app::Tool& tool, const Vec2& world) {
        input::DragEvent event;
        event.key = Left();
        event.start = s_dragStart;
        event.position = Gui(world);
        tool.OnDragEnd(event);
    }
    static bool Escape(app::Tool& tool) { return Key(tool, input::key::Escape, true); }

    // Every entity of the scene in the simulation, every body at a finite place, and the
    // world steps on without a NaN.
    static void ExpectSoundWorld() {
        GetScene().Update(0.01f);
        for (const app::EntityPtr& entity : GetScene().GetEntities()) {
            EXPECT_TRUE(entity->IsInSimulation());
        }
        GetScene().RunSteps(5);
        for (const physics::BodyPtr& body : physics::Simulation::Get().GetBodies()) {
            EXPECT_TRUE(math::IsFinite(body->GetTransform().translation));
        }
    }

    static inline Vec2 s_dragStart{0, 0};
};

TEST_F(CreatingToolsTest, ClickToolsAttachToTheShapeUnderTheClick) {
    const auto box = AddBox({0, 0});
    const float jointSize = GetScene().GetCamera().GetDefaultJointSize();

    EXPECT_TRUE(Click(Get<app::HingeTool>(), {0.2f, 0.1f}));
    ASSERT_EQ(All<app::HingeEntity>().size(), 1u);
    const auto hinge = All<app::HingeEntity>()[0];
    EXPECT_EQ(hinge->GetGeom(0), box->GetGeom());
    EXPECT_EQ(hinge->GetGeom(1), physics::Simulation::Get().GetWorldGeom());
    EXPECT_NEAR(hinge->GetWorld(0).x, 0.2f, 1e-4f);
    EXPECT_NEAR(hinge->GetWorld(1).y, 0.1f, 1e-4f);
    EXPECT_FLOAT_EQ(hinge->size->Get(), jointSize);
    EXPECT_TRUE(hinge->IsInSimulation());
    EXPECT_EQ(UndoLabel(), "UndoHinge");
    app::Undoer::Get().Undo();
    EXPECT_TRUE(All<app::HingeEntity>().empty());
    EXPECT_EQ(SimHinges(), 0u);
    EXPECT_EQ(Count(), 1u);

    // A fix joint on a lone shape fixes it to the ground.
    EXPECT_TRUE(Click(Get<app::FixJointTool>(), {-0.3f, 0.2f}));
    ASSERT_EQ(All<app::FixJointEntity>().size(), 1u);
    EXPECT_EQ(box->GetBody(), Ground());
    EXPECT_EQ(UndoLabel(), "UndoFixate");
    app::Undoer::Get().Undo();
    EXPECT_TRUE(All<app::FixJointEntity>().empty());
    EXPECT_NE(box->GetBody(), Ground());

    // A pen rides on the shape at the clicked point of its frame.
    box->GetGeom()->SetTransform(physics::Transform::FromAngle(0, {0, 0}));
    EXPECT_TRUE(Click(Get<app::PenTool>(), {0.25f, -0.1f}));
    ASSERT_EQ(All<app::PenEntity>().size(), 1u);
    const auto pen = All<app::PenEntity>()[0];
    EXPECT_EQ(pen->GetGeom(), box->GetGeom());
    const Vec2 local = box->GetGeom()->GetInverseTransform().Apply({0.25f, -0.1f});
    EXPECT_NEAR(pen->GetLocalPoint().x, local.x, 1e-4f);
    EXPECT_NEAR(pen->GetLocalPoint().y, local.y, 1e-4f);
    EXPECT_FLOAT_EQ(pen->size->Get(), jointSize);
    EXPECT_TRUE(pen->IsInSimulation());
    EXPECT_EQ(UndoLabel(), "UndoPen");
    app::Undoer::Get().Undo();
    EXPECT_TRUE(All<app::PenEntity>().empty());
    EXPECT_EQ(Get<app::PenTool>().GetCursorName(), "pencil");
}

TEST_F(CreatingToolsTest, ClickToolsIgnoreBackgroundDoubleRightAndHandledClicks) {
    AddBox({0, 0});
    std::vector<app::Tool*> tools = {&Get<app::HingeTool>(), &Get<app::FixJointTool>(),
                                     &Get<app::PenTool>()};
    for (app::Tool* tool : tools) {
        EXPECT_FALSE(Click(*tool, {3, 3})) << tool->GetReflectedName();
        EXPECT_FALSE(Click(*tool, {0, 0}, 2)) << tool->GetReflectedName();
        EXPECT_FALSE(Click(*tool, {0, 0}, 1, Right())) << tool->GetReflectedName();
        input::ClickEvent handled;
        handled.key = Left();
        handled.position = Gui({0, 0});
        handled.consumed = true;
        tool->OnClick(handled);
    }
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Steps(), 0u);

    // On a hinge over the background there is no shape to hold on to.
    AddHinge({2, 2}, {2, 2});
    const size_t count = Count();
    for (app::Tool* tool : tools) {
        EXPECT_FALSE(Click(*tool, {2, 2})) << tool->GetReflectedName();
    }
    EXPECT_EQ(Count(), count);
    EXPECT_EQ(Steps(), 0u);
}

TEST_F(CreatingToolsTest, BoxToolDrawsFromCornerToCornerAndSquaresWithShift) {
    app::BoxTool& tool = Get<app::BoxTool>();
    EXPECT_TRUE(Drag(tool, {{-1, -0.5f}, {0, 0}, {2, 1}}));
    ASSERT_EQ(All<app::BoxEntity>().size(), 1u);
    const auto box = All<app::BoxEntity>()[0];
    EXPECT_NEAR(box->GetGeom()->GetPosition().x, 0.5f, 1e-5f);
    EXPECT_NEAR(box->GetGeom()->GetPosition().y, 0.25f, 1e-5f);
    EXPECT_NEAR(box->GetBox().GetLocalBox().halfExtents.x, 1.5f, 1e-5f);
    EXPECT_NEAR(box->GetBox().GetLocalBox().halfExtents.y, 0.75f, 1e-5f);
    EXPECT_TRUE(box->IsInSimulation());
    EXPECT_NE(box->GetBody(), Ground());
    EXPECT_FALSE(tool.IsDrawing());
    EXPECT_EQ(UndoLabel(), "UndoBox");
    app::Undoer::Get().Undo();
    EXPECT_EQ(Count(), 0u);
    app::Undoer::Get().Redo();
    EXPECT_EQ(Count(), 1u);

    // Shift: each axis takes the larger extent with its own sign.
    s_modifiers.shift = true;
    EXPECT_TRUE(Drag(tool, {{3, 0}, {4, -0.5f}}));
    s_modifiers.shift = false;
    ASSERT_EQ(All<app::BoxEntity>().size(), 2u);
    const auto square = All<app::BoxEntity>()[1];
    EXPECT_NEAR(square->GetGeom()->GetPosition().x, 3.5f, 1e-5f);
    EXPECT_NEAR(square->GetGeom()->GetPosition().y, -0.5f, 1e-5f);
    EXPECT_NEAR(square->GetBox().GetLocalBox().halfExtents.x, 0.5f, 1e-5f);
    EXPECT_NEAR(square->GetBox().GetLocalBox().halfExtents.y, 0.5f, 1e-5f);

    // Glued when the user wants new shapes glued.
    app::App::Get().GetAppGUI()->autoGlue->SetNative(true);
    EXPECT_TRUE(Drag(tool, {{-3, 3}, {-2, 4}}));
    ASSERT_EQ(All<app::BoxEntity>().size(), 3u);
    EXPECT_EQ(All<app::BoxEntity>()[2]->GetBody(), Ground());

    // The preview outline follows the mouse, as a square with Shift.
    CountingPainter painter;
    Begin(tool, {5, 5});
    Move(tool, {6, 5.5f});
    s_modifiers.shift = true;
    tool.Draw(painter);
    ASSERT_EQ(painter.lines.size(), 4u);
    for (const auto& [a, b] : painter.lines) {
        EXPECT_NEAR((b - a).Length(), 1.0f, 1e-4f);
    }
    EXPECT_TRUE(Escape(tool));
    painter.lines.clear();
    tool.Draw(painter);
    EXPECT_TRUE(painter.lines.empty());
    EXPECT_EQ(Get<app::BoxTool>().GetCursorName(), "crosshair");
}

TEST_F(CreatingToolsTest, ShapeDragOnAnEntityIsLeftToOthersUnlessDrawingFreely) {
    AddBox({0, 0});
    std::vector<app::Tool*> tools = {&Get<app::BoxTool>(), &Get<app::CircleTool>(),
                                     &Get<app::PlaneTool>()};
    for (app::Tool* tool : tools) {
        EXPECT_FALSE(Drag(*tool, {{0.1f, 0.1f}, {1, 1}, {2, 2}})) << tool->GetReflectedName();
        EXPECT_FALSE(tool->IsDrawing());
    }
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Steps(), 0u);

    app::App::Get().GetAppGUI()->freeDrawing->SetNative(true);
    for (app::Tool* tool : tools) {
        EXPECT_TRUE(Drag(*tool, {{0.1f, 0.1f}, {1, 1}, {2, 2}})) << tool->GetReflectedName();
    }
    EXPECT_EQ(All<app::BoxEntity>().size(), 2u);
    EXPECT_EQ(All<app::CircleEntity>().size(), 1u);
    EXPECT_EQ(All<app::PlaneEntity>().size(), 1u);
    EXPECT_EQ(Steps(), 3u);
}

TEST_F(CreatingToolsTest, BoxAroundEntitiesSelectsThemUnlessDrawingFreely) {
    const auto inside = AddBox({0, 0});
    const auto outside = AddBox({5, 0});
    EXPECT_TRUE(Drag(Get<app::BoxTool>(), {{-2, -2}, {2, 2}}));
    EXPECT_EQ(Count(), 2u);
    EXPECT_TRUE(GetScene().GetSelection()->Contains(inside));
    EXPECT_FALSE(GetScene().GetSelection()->Contains(outside));
    EXPECT_EQ(Steps(), 0u);

    app::App::Get().GetAppGUI()->freeDrawing->SetNative(true);
    EXPECT_TRUE(Drag(Get<app::BoxTool>(), {{-2, -2}, {2, 2}}));
    EXPECT_EQ(All<app::BoxEntity>().size(), 3u);
    EXPECT_EQ(UndoLabel(), "UndoBox");
}

TEST_F(CreatingToolsTest, CircleToolPreviewsAndPointsItsSliceAtTheMouse) {
    app::CircleTool& tool = Get<app::CircleTool>();
    ASSERT_TRUE(Begin(tool, {1, 1}));
    EXPECT_FALSE(tool.GetPreview());
    Move(tool, {2, 1});
    ASSERT_TRUE(tool.GetPreview());
    // The preview is drawn, but is neither in the scene nor in the simulation.
    EXPECT_EQ(Count(), 0u);
    EXPECT_FALSE(tool.GetPreview()->GetBody());
    CountingPainter painter;
    tool.Draw(painter);
    ASSERT_EQ(painter.calls.size(), 1u);
    EXPECT_EQ(painter.calls[0], "Circle");
    EXPECT_NEAR(painter.lastRadius, 1.0f, 1e-5f);

    End(tool, {1, 3});
    ASSERT_EQ(All<app::CircleEntity>().size(), 1u);
    const auto circle = All<app::CircleEntity>()[0];
    EXPECT_NEAR(circle->GetCircle().GetRadius(), 2.0f, 1e-5f);
    EXPECT_NEAR(circle->GetGeom()->GetPosition().x, 1.0f, 1e-5f);
    EXPECT_NEAR(circle->GetGeom()->GetPosition().y, 1.0f, 1e-5f);
    // The slice, toward local +x, points up at the mouse.
    const Vec2 slice = circle->GetGeom()->GetTransform().ApplyToVector({1, 0});
    EXPECT_NEAR(slice.x, 0.0f, 1e-5f);
    EXPECT_NEAR(slice.y, 1.0f, 1e-5f);
    EXPECT_TRUE(circle->IsInSimulation());
    EXPECT_FALSE(tool.IsDrawing());
    EXPECT_FALSE(tool.GetPreview());
    EXPECT_EQ(UndoLabel(), "UndoCircle");
    app::Undoer::Get().Undo();
    EXPECT_EQ(Count(), 0u);

    app::App::Get().GetAppGUI()->autoGlue->SetNative(true);
    EXPECT_TRUE(Drag(tool, {{-3, -3}, {-2, -3}}));
    ASSERT_EQ(All<app::CircleEntity>().size(), 1u);
    EXPECT_EQ(All<app::CircleEntity>()[0]->GetBody(), Ground());
}

TEST_F(CreatingToolsTest, PlaneToolFacesTheMouseSnapsWithShiftAndIsGround) {
    app::PlaneTool& tool = Get<app::PlaneTool>();
    EXPECT_EQ(tool.GetCursorName(), "arrow");
    EXPECT_TRUE(Drag(tool, {{1, 2}, {1.5f, 2.2f}, {1, 3}}));
    ASSERT_EQ(All<app::PlaneEntity>().size(), 1u);
    const auto floor = All<app::PlaneEntity>()[0];
    EXPECT_NEAR(floor->GetPlane().GetNormal().x, 0.0f, 1e-5f);
    EXPECT_NEAR(floor->GetPlane().GetNormal().y, 1.0f, 1e-5f);
    // Through the start, solid away from the mouse.
    EXPECT_NEAR(floor->GetGeom()->Dist({7, 2}), 0.0f, 1e-5f);
    EXPECT_LT(floor->GetGeom()->Dist({1, 1}), 0.0f);
    EXPECT_EQ(floor->GetBody(), Ground());
    EXPECT_EQ(UndoLabel(), "UndoPlane");
    app::Undoer::Get().Undo();
    EXPECT_EQ(Count(), 0u);

    // 50 degrees snaps to 45, 55 to 60.
    s_modifiers.shift = true;
    const float toRad = math::Pi / 180;
    // Each starts on the free side of the one before.
    Vec2 start(-1, -1);
    for (const auto& [drawn, snapped] : {std::pair{50.0f, 45.0f}, std::pair{55.0f, 60.0f}}) {
        start += Vec2(3, 3);
        const Vec2 end = start + Vec2(std::cos(drawn * toRad), std::sin(drawn * toRad));
        EXPECT_TRUE(Drag(tool, {start, end}));
        const auto plane = All<app::PlaneEntity>().back();
        EXPECT_NEAR(plane->GetPlane().GetNormal().x, std::cos(snapped * toRad), 1e-5f);
        EXPECT_NEAR(plane->GetPlane().GetNormal().y, std::sin(snapped * toRad), 1e-5f);
        EXPECT_NEAR(plane->GetGeom()->Dist(start), 0.0f, 1e-5f);
    }
    s_modifiers.shift = false;
    EXPECT_EQ(All<app::PlaneEntity>().size(), 2u);
}

TEST_F(CreatingToolsTest, SpringToolSpansFromStartGeomToEndGeom) {
    const auto a = AddBox({0, 0});
    const auto b = AddBox({3, 0});
    app::SpringTool& tool = Get<app::SpringTool>();

    ASSERT_TRUE(Begin(tool, {0.2f, 0}));
    ASSERT_TRUE(tool.GetPreview());
    EXPECT_EQ(SimJoints(), 1u);
    EXPECT_EQ(Count(), 2u);
    // The free end follows the mouse at the next frame.
    Move(tool, {1.5f, 0.5f});
    tool.Update(0.016f);
    EXPECT_NEAR(tool.GetPreview()->GetWorld(1).x, 1.5f, 1e-5f);
    EXPECT_NEAR(tool.GetPreview()->GetWorld(1).y, 0.5f, 1e-5f);
    CountingPainter painter;
    tool.Draw(painter);
    EXPECT_FALSE(painter.calls.empty());
    End(tool, {3.1f, 0.1f});

    ASSERT_EQ(All<app::SpringEntity>().size(), 1u);
    const auto spring = All<app::SpringEntity>()[0];
    EXPECT_EQ(spring->GetGeom(0), a->GetGeom());
    EXPECT_EQ(spring->GetGeom(1), b->GetGeom());
    EXPECT_NEAR(spring->length->Get(), (Vec2(3.1f, 0.1f) - Vec2(0.2f, 0)).Length(), 1e-4f);
    EXPECT_TRUE(spring->IsInSimulation());
    EXPECT_EQ(SimJoints(), 1u);
    EXPECT_FALSE(tool.GetPreview());
    EXPECT_EQ(UndoLabel(), "UndoSpring");
    app::Undoer::Get().Undo();
    EXPECT_TRUE(All<app::SpringEntity>().empty());
    EXPECT_EQ(SimJoints(), 0u);
    // The step before held no preview either.
    app::Undoer::Get().Redo();
    EXPECT_EQ(SimJoints(), 1u);
    app::Undoer::Get().Undo();

    // From the ground to a shape.
    EXPECT_TRUE(Drag(tool, {{-2, 2}, {0, 0.3f}}));
    ASSERT_EQ(All<app::SpringEntity>().size(), 1u);
    EXPECT_EQ(All<app::SpringEntity>()[0]->GetGeom(0), physics::Simulation::Get().GetWorldGeom());
    EXPECT_EQ(All<app::SpringEntity>()[0]->GetGeom(1), a->GetGeom());
    const size_t steps = Steps();

    // Ending on the geom it started on makes none: on a shape, or on the background.
    EXPECT_TRUE(Drag(tool, {{0.1f, 0}, {0.3f, 0.2f}}));
    EXPECT_TRUE(Drag(tool, {{-2, 3}, {-3, 4}}));
    EXPECT_EQ(All<app::SpringEntity>().size(), 1u);
    EXPECT_EQ(SimJoints(), 1u);
    EXPECT_EQ(Steps(), steps);
    EXPECT_FALSE(tool.IsDrawing());
}

TEST_F(CreatingToolsTest, ChainGrowsWithTheDragTheZoomAndItsDensityFactor) {
    app::ChainTool& tool = Get<app::ChainTool>();
    const float density = physics::Simulation::Get().defaultBodyDensity->Get();
    const float radius =
        app::ChainTool::kLinkRadiusInches * GetScene().GetCamera().GetInchInWorld();
    const size_t expected = static_cast<size_t>(4.0f / (2 * radius));

    EXPECT_TRUE(Drag(tool, Line({-2, 2}, {2, 2})));
    const auto links = All<app::CircleEntity>();
    ASSERT_EQ(links.size(), expected);
    // A hinge before each link, the first to the ground; from the background to the
    // background the end hangs free.
    const auto hinges = All<app::HingeEntity>();
    ASSERT_EQ(hinges.size(), expected);
    EXPECT_EQ(hinges[0]->GetGeom(0), physics::Simulation::Get().GetWorldGeom());
    const app::ChainPtr chain = links[0]->GetChain();
    ASSERT_TRUE(chain);
    // The end hinge's place stays, empty: the last link is no end of the chain.
    EXPECT_EQ(chain->GetSize(), 2 * expected + 1);
    EXPECT_EQ(chain->GetNeighbors(links.back(), false).size(), 2 * expected - 1);
    for (size_t i = 0; i < links.size(); ++i) {
        EXPECT_EQ(links[i]->GetChain(), chain);
        EXPECT_EQ(chain->GetIndex(links[i].Get()), static_cast<int>(2 * i + 1));
        EXPECT_EQ(chain->GetIndex(hinges[i].Get()), static_cast<int>(2 * i));
        EXPECT_NEAR(links[i]->GetCircle().GetRadius(), radius, 1e-6f);
        EXPECT_NEAR(links[i]->GetGeom()->GetPosition().x, -2 + radius * (2 * i + 1), 1e-4f);
        EXPECT_NEAR(links[i]->GetGeom()->GetPosition().y, 2, 1e-5f);
        // Turned along the stroke, heavier than a plain shape.
        EXPECT_NEAR(links[i]->GetGeom()->GetTransform().Angle(), 0.0f, 1e-5f);
        EXPECT_FLOAT_EQ(links[i]->density->Get(), density * 20);
        EXPECT_TRUE(links[i]->IsInSimulation());
        EXPECT_TRUE(hinges[i]->IsInSimulation());
    }
    EXPECT_EQ(UndoLabel(), "UndoChain");
    EXPECT_EQ(Steps(), 1u);
    app::Undoer::Get().Undo();
    EXPECT_EQ(Count(), 0u);
    EXPECT_EQ(SimHinges(), 0u);

    // Zoomed in twice as far, links are half as long: twice as many on the same stroke.
    GetScene().GetCamera().SetZoom(200);
    app::App::Get().GetModel().chainDensityFactor->SetNative(5.0f);
    EXPECT_TRUE(Drag(tool, Line({-2, 2}, {2, 2}, 40)));
    const auto small = All<app::CircleEntity>();
    EXPECT_NEAR(static_cast<float>(small.size()), 2.0f * expected, 1.0f);
    EXPECT_NEAR(small[0]->GetCircle().GetRadius(), radius / 2, 1e-6f);
    EXPECT_FLOAT_EQ(small[0]->density->Get(), density * 5);
}

TEST_F(CreatingToolsTest, ChainTiesItsEndsToShapesAndGluesAGroundStart) {
    const auto anchor = AddBox({2, 0});
    app::ChainTool& tool = Get<app::ChainTool>();
    EXPECT_TRUE(Drag(tool, Line({-2, 0}, {2, 0})));
    const auto links = All<app::CircleEntity>();
    const auto hinges = All<app::HingeEntity>();
    ASSERT_FALSE(links.empty());
    // One hinge before each link and one at the end, on the shape under the end.
    ASSERT_EQ(hinges.size(), links.size() + 1);
    const auto end = hinges.back();
    EXPECT_EQ(end->GetGeom(0), links.back()->GetGeom());
    EXPECT_EQ(end->GetGeom(1), anchor->GetGeom());
    EXPECT_EQ(links[0]->GetChain()->GetIndex(end.Get()), static_cast<int>(2 * links.size()));
    app::Undoer::Get().Undo();
    EXPECT_EQ(Count(), 1u);

    // A ground start is glued when new shapes are: no hinge there, the link is static.
    app::App::Get().GetAppGUI()->autoGlue->SetNative(true);
    EXPECT_TRUE(Drag(tool, Line({-2, 3}, {0, 3})));
    const auto glued = All<app::CircleEntity>();
    ASSERT_FALSE(glued.empty());
    EXPECT_EQ(glued[0]->GetBody(), Ground());
    EXPECT_NE(glued[1]->GetBody(), Ground());
    EXPECT_EQ(All<app::HingeEntity>().size(), glued.size() - 1);
    app::Undoer::Get().Undo();

    // Shift holds the chain where it is.
    s_modifiers.shift = true;
    EXPECT_TRUE(Drag(tool, Line({-2, 3}, {0, 3})));
    s_modifiers.shift = false;
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(Steps(), 0u);
    EXPECT_FALSE(tool.IsDrawing());
}

TEST_F(CreatingToolsTest, EscapeMidGestureLeavesNothingBehind) {
    AddBox({0, -3});
    const size_t bodies = SimBodies();
    // Every gesture starts on the box, where the spring and the chain hold on to it.
    app::App::Get().GetAppGUI()->freeDrawing->SetNative(true);
    std::vector<app::Tool*> tools = {&Get<app::BoxTool>(), &Get<app::CircleTool>(),
                                     &Get<app::PlaneTool>(), &Get<app::SpringTool>(),
                                     &Get<app::ChainTool>()};
    for (app::Tool* tool : tools) {
        ASSERT_TRUE(Begin(*tool, {0, -3.2f})) << tool->GetReflectedName();
        EXPECT_TRUE(tool->IsDrawing());
        Move(*tool, {1, 0});
        Move(*tool, {2, 1});
        tool->Update(0.016f);
        EXPECT_TRUE(Escape(*tool)) << tool->GetReflectedName();
        EXPECT_FALSE(tool->IsDrawing());
        EXPECT_FALSE(Escape(*tool)) << tool->GetReflectedName();
        End(*tool, {2, 2});
        EXPECT_EQ(Count(), 1u) << tool->GetReflectedName();
        EXPECT_EQ(SimBodies(), bodies) << tool->GetReflectedName();
        EXPECT_EQ(SimJoints(), 0u) << tool->GetReflectedName();
        EXPECT_EQ(SimHinges(), 0u) << tool->GetReflectedName();
        EXPECT_EQ(Steps(), 0u) << tool->GetReflectedName();
    }
}

TEST_F(CreatingToolsTest, WildAndDegenerateGesturesMakeNothingHalfMade) {
    AddBox({0, 0});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<app::Tool*> drags = {&Get<app::BoxTool>(), &Get<app::CircleTool>(),
                                     &Get<app::PlaneTool>(), &Get<app::SpringTool>(),
                                     &Get<app::ChainTool>()};
    std::vector<app::Tool*> clicks = {&Get<app::HingeTool>(), &Get<app::FixJointTool>(),
                                      &Get<app::PenTool>()};
    // A drag that goes nowhere, or into numbers no shape can have.
    for (app::Tool* tool : drags) {
        Drag(*tool, {{3, 3}, {3, 3}});
        Drag(*tool, {{nan, 3}, {4, 4}});
        Drag(*tool, {{3, 3}, {nan, nan}});
        Drag(*tool, {{3, 3}, {inf, 4}});
        Drag(*tool, {{3, 3}, {1e30f, 1e30f}, {4, 4}, {-1e30f, 2}});
        EXPECT_FALSE(tool->IsDrawing()) << tool->GetReflectedName();
    }
    for (app::Tool* tool : clicks) {
        Click(*tool, {nan, 0});
        Click(*tool, {1e30f, 1e30f});
    }
    // Only the chain could grow, toward the one point within reach.
    EXPECT_EQ(All<app::BoxEntity>().size(), 1u);
    EXPECT_TRUE(All<app::PlaneEntity>().empty());
    EXPECT_TRUE(All<app::SpringEntity>().empty());
    EXPECT_TRUE(All<app::PenEntity>().empty());
    EXPECT_TRUE(All<app::FixJointEntity>().empty());
    EXPECT_EQ(All<app::CircleEntity>().size(), All<app::HingeEntity>().size());
    EXPECT_LE(All<app::CircleEntity>().size(), 10u);
    ExpectSoundWorld();

    // Drawing while the world runs: the preview spring pulls, the chain falls as it grows.
    GetScene().New();
    app::Undoer::Get().Clear();
    AddBox({0, 0});
    app::App::Get().GetAppGUI()->freeDrawing->SetNative(true);
    physics::Simulation::Get().running->SetNative(true);
    for (app::Tool* tool : drags) {
        Begin(*tool, {0.2f, 0.1f});
        Move(*tool, {1, 1});
        tool->Update(0.016f);
        GetScene().RunSteps(3);
        Move(*tool, {2, 2});
        tool->Update(0.016f);
        End(*tool, {2.5f, 2});
        EXPECT_FALSE(tool->IsDrawing()) << tool->GetReflectedName();
        GetScene().RunSteps(3);
    }
    physics::Simulation::Get().running->SetNative(false);
    EXPECT_FALSE(All<app::HingeEntity>().empty());
    ExpectSoundWorld();
    // One undo step each for what was made, and undoing all gives back the lone box.
    while (!app::Undoer::Get().GetUndoStack().empty()) {
        app::Undoer::Get().Undo();
    }
    EXPECT_EQ(Count(), 1u);
    EXPECT_EQ(SimJoints(), 0u);
    EXPECT_EQ(SimHinges(), 0u);
}

}  // namespace
