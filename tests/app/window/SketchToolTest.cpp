// The freehand tools: what one stroke becomes, by its shape and by what lies under it, and
// that no stroke, however wild, leaves half an entity behind.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "../../util/LogCapture.h"
#include "ToolFixture.h"
#include "app/Painter.h"
#include "app/Undoer.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/tools/BrushTool.h"
#include "app/tools/SketchTool.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"

namespace {

using math::Vec2;
using math::Vec4;
using Points = std::vector<Vec2>;

// Pieces of about a quarter unit: above the sampling distance at this zoom (0.2 inch of
// 86 pixels at 100 pixels a unit, 0.172), so that every point drawn is kept.
constexpr float kStep = 0.25f;
constexpr float kTurn = 6.2831853f;

// A polyline through the corners, each side cut into pieces of about kStep.
Points Path(std::initializer_list<Vec2> corners) {
    Points points{*corners.begin()};
    for (auto it = corners.begin() + 1; it != corners.end(); ++it) {
        const Vec2 from = points.back();
        const int count = std::max(1, static_cast<int>(std::floor((*it - from).Length() / kStep)));
        for (int i = 1; i <= count; ++i) {
            points.push_back(from + (*it - from) * (static_cast<float>(i) / count));
        }
    }
    return points;
}

// A circle stroke that stops short of its start by what the turns leave of a whole turn.
Points Ring(const Vec2& centre, float radius, float turns = 0.95f) {
    const int count = std::max(3, static_cast<int>(kTurn * radius * turns / kStep));
    Points points;
    for (int i = 0; i <= count; ++i) {
        const float angle = kTurn * turns * static_cast<float>(i) / static_cast<float>(count);
        points.push_back(centre + Vec2(std::cos(angle), std::sin(angle)) * radius);
    }
    return points;
}

// Sixteen strokes zigzag from a to b, turning a width of the fraction of the length away
// from the line between them on alternate sides.
Points Zigzag(const Vec2& a, const Vec2& b, float widthFraction) {
    const Vec2 along = b - a;
    const Vec2 side = Vec2(-along.y, along.x) * (widthFraction / 2);
    constexpr int kCount = 16;
    Points points{a};
    for (int i = 1; i < kCount; ++i) {
        const float sign = i % 2 ? 1.0f : -1.0f;
        points.push_back(a + along * (static_cast<float>(i) / kCount) + side * sign);
    }
    points.push_back(b);
    return points;
}

// Keeps the lines a tool draws.
class LinePainter : public app::Painter {
public:
    struct Drawn {
        Vec2 a;
        Vec2 b;
        Vec4 color;
    };
    float GetPixelSize() const override { return 0.01f; }
    float GetInchInWorld() const override { return 0.86f; }
    float GetBorderWidth() const override { return 0; }
    const app::DrawOptions& GetOptions() const override { return m_options; }
    void PushTransform(const math::Mat3&) override {}
    void PopTransform() override {}
    void Box(Vec2, const app::ShapeStyle&) override {}
    void Circle(float, const app::ShapeStyle&) override {}
    void Polygon(const physics::Polygon&, float, util::SharedPtr<util::Pointee>&,
                 const app::ShapeStyle&) override {}
    void HalfPlane(Vec2, float, const app::ShapeStyle&) override {}
    void Sprite(const char*, Vec2, float, float, const Vec4&) override {}
    void Strip(const char*, const char*, Vec2, Vec2, float, const Vec4&) override {}
    void Line(Vec2 a, Vec2 b, const Vec4& color) override { lines.push_back({a, b, color}); }
    void RoundedRect(Vec2, Vec2, float, float, const Vec4&) override {}
    void Trail(const app::TrailVertex*, size_t, float, const Vec4&) override {}
    void Points(const Vec2*, size_t, float, const Vec4&) override {}
    void Outline(const Vec2*, size_t, const Vec4&) override {}
    void Disc(Vec2, float, const Vec4&) override {}

    std::vector<Drawn> lines;

private:
    app::DrawOptions m_options;
};

class SketchToolTest : public test_app::ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        app::Undoer::Get().Clear();
        physics::Simulation::Get().running->SetNative(false);
        sketch = util::SharedPtr<app::SketchTool>(new app::SketchTool());
        brush = util::SharedPtr<app::BrushTool>(new app::BrushTool());
    }
    void TearDown() override {
        physics::Simulation::Get().running->SetNative(false);
        app::Undoer::Get().Clear();
        ToolTest::TearDown();
    }

    template <class Kind>
    static size_t Count() {
        const auto& all = GetScene().GetEntities();
        return static_cast<size_t>(std::count_if(all.begin(), all.end(), [](const auto& e) {
            return dynamic_cast<const Kind*>(e.Get()) != nullptr;
        }));
    }
    template <class Kind>
    static util::SharedPtr<Kind> Last() {
        const auto& all = GetScene().GetEntities();
        for (auto it = all.rbegin(); it != all.rend(); ++it) {
            if (auto found = util::DynamicPointerCast<Kind>(*it)) {
                return found;
            }
        }
        return nullptr;
    }
    static size_t Steps() { return app::Undoer::Get().GetUndoStack().size(); }
    static std::string TopLabel() {
        const char* label = app::Undoer::Get().GetUndoLabel();
        return label ? label : "";
    }
    // Nothing the tools made is left without its physics.
    static void ExpectAllInSimulation() {
        for (const app::EntityPtr& entity : GetScene().GetEntities()) {
            EXPECT_TRUE(entity->IsInSimulation()) << entity->GetReflectedName();
        }
    }

    // The stages of a drag one by one, and a key with the mouse at a world point.
    static void Begin(app::Tool& tool, const Vec2& world) {
        input::DragEvent event;
        event.key = Left();
        event.start = event.position = Gui(world);
        tool.OnDragBegin(event);
    }
    static void Move(app::Tool& tool, const Vec2& world) {
        input::DragEvent event;
        event.key = Left();
        event.position = Gui(world);
        tool.OnDrag(event);
    }
    static void End(app::Tool& tool, const Vec2& world) {
        input::DragEvent event;
        event.key = Left();
        event.position = Gui(world);
        tool.OnDragEnd(event);
    }
    static bool KeyAt(app::Tool& tool, input::SDLKey key, bool down, const Vec2& world) {
        input::KeyEvent event;
        event.key = key;
        event.down = down;
        event.shift = s_modifiers.shift;
        event.position = Gui(world);
        tool.OnKey(event);
        return event.consumed;
    }

    util::SharedPtr<app::SketchTool> sketch;
    util::SharedPtr<app::BrushTool> brush;
};

TEST_F(SketchToolTest, DotsOpenStrokesAndShortLoopsLeaveNoTraceWhileClosedOnesMakePolygons) {
    // A dot has one point: ignored, though the tool took the press.
    EXPECT_TRUE(Drag(*sketch, {Vec2(1, 1)}));
    EXPECT_FALSE(sketch->IsDrawing());
    EXPECT_TRUE(GetScene().GetEntities().empty());
    EXPECT_TRUE(sketch->GetLastLine().empty());

    // Three sides of a square of side 2 and part of the fourth: the gap is 0.119 of the
    // stroke, under an eighth, and the closing edge is implied.
    Drag(*sketch, Path({{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0.85f}}));
    ASSERT_EQ(Count<app::PolyEntity>(), 1u);
    EXPECT_NEAR(Last<app::PolyEntity>()->GetPolygon().Area(), 4.0f, 1e-3f);
    EXPECT_EQ(TopLabel(), "UndoPolygon");
    EXPECT_EQ(Steps(), 1u);

    // The same with a gap of 0.132 of it, just over an eighth: an open stroke, nothing.
    Drag(*sketch, Path({{5, 0}, {7, 0}, {7, 2}, {5, 2}, {5, 0.93f}}));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);

    // A curl in a long stroke: its loop (2.2) is shorter than half the stroke (8.4).
    Drag(*sketch,
         Path({{-3, 5}, {0.5f, 5}, {0.5f, 5.5f}, {-0.1f, 5.5f}, {-0.1f, 4.8f}, {3, 4.8f}}));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);
    EXPECT_EQ(Steps(), 1u);

    // Tails at both ends that cross: they are cut off at the crossing, and the kite
    // between (diagonals 2.5 and 2) stays. Here both sides pass through one point drawn.
    Drag(*sketch, Path({{8, -1}, {11, 1}, {12, 0}, {11, -1}, {8, 1}}));
    ASSERT_EQ(Count<app::PolyEntity>(), 2u);
    const physics::Polygon& kite = Last<app::PolyEntity>()->GetPolygon();
    EXPECT_NEAR(kite.Area(), 2.5f, 1e-3f);
    float left = 100;
    for (const Vec2& vertex : kite.GetWorldVertices()) {
        left = std::min(left, vertex.x);
    }
    EXPECT_NEAR(left, 9.5f, 1e-4f);
    // And here they cross between the points drawn, at (9.5366, 0.0244).
    Drag(*sketch, Path({{8, -11}, {11, -9}, {12, -10}, {11, -11}, {8, -8.9f}}));
    ASSERT_EQ(Count<app::PolyEntity>(), 3u);
    left = 100;
    for (const Vec2& vertex : Last<app::PolyEntity>()->GetPolygon().GetWorldVertices()) {
        left = std::min(left, vertex.x);
    }
    EXPECT_NEAR(left, 9.5366f, 1e-3f);
    EXPECT_EQ(Steps(), 3u);
    ExpectAllInSimulation();
}

TEST_F(SketchToolTest, ZigzagIsASpringOnlyWithinTheWidthLimitsAndBetweenTwoGeoms) {
    const auto left = AddBox({-3, 0});
    const auto right = AddBox({3, 0});

    // 14% of its length wide: under the lower limit of 15%.
    Drag(*sketch, Zigzag({-3, 0}, {3, 0}, 0.14f));
    EXPECT_EQ(Count<app::SpringEntity>(), 0u);
    EXPECT_EQ(Steps(), 0u);

    // A third: a spring of that width, as long as the stroke, between the two boxes.
    Drag(*sketch, Zigzag({-3, 0}, {3, 0}, 0.33f));
    ASSERT_EQ(Count<app::SpringEntity>(), 1u);
    const auto spring = Last<app::SpringEntity>();
    EXPECT_NEAR(spring->size->Get(), 0.33f * 6, 1e-3f);
    EXPECT_NEAR(spring->length->Get(), 6.0f, 1e-3f);
    EXPECT_NEAR(spring->GetSpring()->GetRestLength(), 6.0f, 1e-3f);
    EXPECT_EQ(spring->GetGeom(0), left->GetGeom());
    EXPECT_EQ(spring->GetGeom(1), right->GetGeom());
    EXPECT_EQ(TopLabel(), "UndoSpring");
    EXPECT_EQ(Steps(), 1u);

    // 51%: over the upper limit of half its length.
    Drag(*sketch, Zigzag({-3, 0}, {3, 0}, 0.51f));
    EXPECT_EQ(Count<app::SpringEntity>(), 1u);

    // Both ends on the background hold on to the same ground: no spring, no step.
    Drag(*sketch, Zigzag({-3, 5}, {3, 5}, 0.33f));
    EXPECT_EQ(GetScene().GetEntities().size(), 3u);
    EXPECT_EQ(Steps(), 1u);
    ExpectAllInSimulation();
}

TEST_F(SketchToolTest, LineErasesWhatItCrossesWithTheSelectionAndAPlaneOnlyAlone) {
    const auto a = AddBox({0, 0});
    const auto b = AddBox({3, 0});
    AddBox({6, 0});
    GetScene().GetSelection()->Add(a);
    GetScene().GetSelection()->Add(b);

    // Through the selected box only: the whole selection goes.
    Drag(*sketch, Line({0, -2}, {0, 2}));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);
    EXPECT_EQ(TopLabel(), "UndoErase");
    EXPECT_TRUE(sketch->GetLastLine().empty());
    app::Undoer::Get().Undo();
    EXPECT_EQ(GetScene().GetEntities().size(), 3u);

    // A line through a box and the floor takes the box; then one through the floor alone
    // takes the floor.
    GetScene().GetSelection()->Clear();
    AddGround();
    AddBox({10, 2});
    Drag(*sketch, Line({10, 3}, {10, -1}));
    EXPECT_EQ(Count<app::PlaneEntity>(), 1u);
    EXPECT_EQ(Count<app::BoxEntity>(), 3u);
    Drag(*sketch, Line({12, 1}, {12, -1}));
    EXPECT_EQ(Count<app::PlaneEntity>(), 0u);
    EXPECT_EQ(TopLabel(), "UndoErase");

    // A line through nothing is kept for the cross gesture.
    Drag(*sketch, Line({20, 5}, {22, 5}));
    EXPECT_FALSE(sketch->GetLastLine().empty());
}

TEST_F(SketchToolTest, TwoLinesCrossingOnceWithinTwoSecondsMakeAFixJoint) {
    // No vertex of one line lies on the other: they cross once, between points.
    Drag(*sketch, Line({-2, 0}, {2, 0}));
    ASSERT_EQ(sketch->GetLastLine().size(), 21u);

    // The line in red, fading over two seconds; the stroke in progress in pale green up
    // to the mouse.
    s_now += 0.5;
    LinePainter painter;
    sketch->Draw(painter);
    ASSERT_EQ(painter.lines.size(), 20u);
    EXPECT_EQ(painter.lines[0].color, Vec4(1, 0, 0, 0.75f));
    painter.lines.clear();
    Begin(*sketch, {0, 5});
    Move(*sketch, {1, 5});
    sketch->Draw(painter);
    ASSERT_GE(painter.lines.size(), 21u);
    EXPECT_EQ(painter.lines[20].color, app::StrokeTool::kStrokeColor);
    EXPECT_TRUE(sketch->Cancel());
    EXPECT_TRUE(sketch->GetLastLine().empty());

    Drag(*sketch, Line({-2, 0}, {2, 0}));
    s_now += 1.5;
    Drag(*sketch, Line({0.1f, -1.9f}, {0.1f, 2.1f}));
    ASSERT_EQ(Count<app::FixJointEntity>(), 1u);
    const auto joint = Last<app::FixJointEntity>();
    EXPECT_NEAR(joint->size->Get(), 0.7f * 4, 1e-3f);
    EXPECT_EQ(TopLabel(), "UndoFixate");
    EXPECT_TRUE(sketch->GetLastLine().empty());

    // After two seconds the first line is gone: the frame's update forgets it, and the
    // stroke after it does not see it either.
    Drag(*sketch, Line({-2, 10}, {2, 10}));
    s_now += 2.5;
    sketch->Update(0.016f);
    EXPECT_TRUE(sketch->GetLastLine().empty());
    Drag(*sketch, Line({-2, 20}, {2, 20}));
    s_now += 2.5;
    Drag(*sketch, Line({0.1f, 18.1f}, {0.1f, 22.1f}));
    EXPECT_EQ(Count<app::FixJointEntity>(), 1u);

    // A wavy line crossing twice is no cross gesture; it becomes the next line.
    Drag(*sketch, Line({-2, 30}, {2, 30}));
    Points wave;
    for (int i = 0; i <= 20; ++i) {
        const float t = static_cast<float>(i) / 20;
        wave.push_back({-1.95f + 4 * t, 30.2f - 0.5f * std::sin(3.1415927f * t)});
    }
    ASSERT_TRUE(app::stroke::IsLine(wave));
    Drag(*sketch, wave);
    EXPECT_EQ(Count<app::FixJointEntity>(), 1u);
    EXPECT_EQ(sketch->GetLastLine().size(), wave.size());
    EXPECT_EQ(Steps(), 1u);

    // Through a point of the first line: two of its segments meet the second there, and
    // that is still one crossing.
    Drag(*sketch, Line({-2, 40}, {2, 40}));
    ASSERT_EQ(sketch->GetLastLine()[10], Vec2(0, 40));
    Drag(*sketch, Line({0, 38.1f}, {0, 42.1f}));
    EXPECT_EQ(Count<app::FixJointEntity>(), 2u);
}

TEST_F(SketchToolTest, SmallCircleOnAShapeIsAHingeAndOnTheBackgroundAPolygon) {
    const auto box = AddBox({0, 0}, {1, 1});
    Drag(*sketch, Ring({0.2f, 0.1f}, 0.4f));
    ASSERT_EQ(Count<app::HingeEntity>(), 1u);
    EXPECT_EQ(Count<app::PolyEntity>(), 0u);
    const auto hinge = Last<app::HingeEntity>();
    EXPECT_GT(hinge->size->Get(), 0.6f);
    EXPECT_LT(hinge->size->Get(), 0.8f);
    EXPECT_NEAR(hinge->GetWorld(0).x, 0.2f, 0.02f);
    EXPECT_NEAR(hinge->GetWorld(0).y, 0.1f, 0.02f);
    EXPECT_EQ(hinge->GetGeom(0), box->GetGeom());
    EXPECT_EQ(hinge->GetGeom(1), physics::Simulation::Get().GetWorldGeom());
    EXPECT_EQ(TopLabel(), "UndoHinge");

    Drag(*sketch, Ring({5.2f, 0.1f}, 0.4f));
    EXPECT_EQ(Count<app::HingeEntity>(), 1u);
    EXPECT_EQ(Count<app::PolyEntity>(), 1u);
    EXPECT_EQ(TopLabel(), "UndoPolygon");
    EXPECT_EQ(Steps(), 2u);
    ExpectAllInSimulation();
}

TEST_F(SketchToolTest, EncirclingSelectsWhateverTheKeysUnlessDrawingFreely) {
    const auto inside = AddBox({0, 0});
    const auto other = AddBox({5, 0});
    GetScene().GetSelection()->Add(other);
    // Ctrl would add to the selection; encircling replaces it.
    s_modifiers.ctrl = true;
    Drag(*sketch, Ring({0, 0}, 1.5f));
    s_modifiers.ctrl = false;
    EXPECT_EQ(GetScene().GetSelection()->size(), 1u);
    EXPECT_TRUE(GetScene().GetSelection()->Contains(inside));
    EXPECT_EQ(GetScene().GetEntities().size(), 2u);
    EXPECT_EQ(Steps(), 0u);

    app::App::Get().GetAppGUI()->freeDrawing->SetNative(true);
    Drag(*sketch, Ring({0, 0}, 1.5f));
    EXPECT_EQ(Count<app::PolyEntity>(), 1u);
    EXPECT_EQ(TopLabel(), "UndoPolygon");
}

TEST_F(SketchToolTest, HingeOnTheBackgroundMovesOntoAPolygonDrawnAroundIt) {
    const auto box = AddBox({0, 0});
    const auto hinge = AddHinge({0.4f, 0}, {0.4f, 0});
    const physics::GeomPtr ground = physics::Simulation::Get().GetWorldGeom();
    ASSERT_EQ(hinge->GetGeom(0), box->GetGeom());
    ASSERT_EQ(hinge->GetGeom(1), ground);

    // The hinge lies inside, yet the stroke does not select it: it takes it over.
    Drag(*sketch, Ring({1, 0}, 0.8f));
    ASSERT_EQ(Count<app::PolyEntity>(), 1u);
    const auto polygon = Last<app::PolyEntity>();
    EXPECT_EQ(hinge->GetGeom(0), box->GetGeom());
    EXPECT_EQ(hinge->GetGeom(1), polygon->GetGeom());
    EXPECT_NEAR(hinge->GetWorld(1).x, 0.4f, 1e-4f);
    EXPECT_NEAR(hinge->GetWorld(1).y, 0.0f, 1e-4f);
    const auto& all = GetScene().GetEntities();
    EXPECT_GT(std::find(all.begin(), all.end(), app::EntityPtr(hinge)),
              std::find(all.begin(), all.end(), app::EntityPtr(polygon)));
    EXPECT_TRUE(GetScene().GetSelection()->empty());
    EXPECT_EQ(TopLabel(), "UndoPolygon");
    ExpectAllInSimulation();
    // Still there after a frame and steps.
    GetScene().RunSteps(3);
    EXPECT_EQ(Count<app::HingeEntity>(), 1u);

    app::Undoer::Get().Undo();
    EXPECT_EQ(Count<app::PolyEntity>(), 0u);
    EXPECT_EQ(hinge->GetGeom(1), ground);
}

TEST_F(SketchToolTest, ShiftKeepsEdgesStraightAndEscapeDropsTheStroke) {
    Begin(*sketch, {0, 0});
    s_modifiers.shift = true;
    Move(*sketch, {1, 0.3f});
    Move(*sketch, {1.7f, -0.2f});
    EXPECT_EQ(sketch->GetPoints().size(), 1u);
    // The release takes the mouse's position.
    s_modifiers.shift = false;
    KeyAt(*sketch, input::key::LShift, false, {2, 0});
    ASSERT_EQ(sketch->GetPoints().size(), 2u);
    EXPECT_NEAR(sketch->GetPoints()[1].x, 2, 1e-4f);
    s_modifiers.shift = true;
    KeyAt(*sketch, input::key::LShift, true, {2, 0});
    Move(*sketch, {2.3f, 1});
    Move(*sketch, {1.8f, 1.5f});
    s_modifiers.shift = false;
    KeyAt(*sketch, input::key::RShift, false, {2, 2});
    s_modifiers.shift = true;
    Move(*sketch, {1, 2.4f});
    s_modifiers.shift = false;
    KeyAt(*sketch, input::key::LShift, false, {0, 2});
    End(*sketch, {0, 0.1f});
    EXPECT_FALSE(sketch->IsDrawing());

    // A square whose every vertex lies on its sides.
    ASSERT_EQ(Count<app::PolyEntity>(), 1u);
    const physics::Polygon& square = Last<app::PolyEntity>()->GetPolygon();
    EXPECT_NEAR(square.Area(), 4.0f, 1e-3f);
    for (const Vec2& v : square.GetWorldVertices()) {
        const float off = std::min(std::min(std::fabs(v.x), std::fabs(v.x - 2)),
                                   std::min(std::fabs(v.y), std::fabs(v.y - 2)));
        EXPECT_LT(off, 1e-4f) << v.x << ", " << v.y;
    }

    // Escape ends the stroke at once: its end makes nothing.
    Begin(*sketch, {5, 0});
    Move(*sketch, {6, 0});
    EXPECT_TRUE(KeyAt(*sketch, input::key::Escape, true, {6, 0}));
    EXPECT_FALSE(sketch->IsDrawing());
    EXPECT_TRUE(sketch->GetPoints().empty());
    End(*sketch, {5, 1});
    EXPECT_FALSE(KeyAt(*sketch, input::key::Escape, true, {6, 0}));
    EXPECT_EQ(Steps(), 1u);
    EXPECT_EQ(sketch->GetCursorName(), "pencil");
    EXPECT_EQ(brush->GetCursorName(), "brush");
}

TEST_F(SketchToolTest, BrushSelectsByEncirclingMakesPolygonsFreelyAndNoJoints) {
    const auto inside = AddBox({0, 0});
    Drag(*brush, Ring({0, 0}, 1.5f));
    EXPECT_TRUE(GetScene().GetSelection()->Contains(inside));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);
    EXPECT_EQ(Steps(), 0u);

    app::App::Get().GetAppGUI()->freeDrawing->SetNative(true);
    Drag(*brush, Ring({0, 0}, 1.5f));
    EXPECT_EQ(Count<app::PolyEntity>(), 1u);
    EXPECT_EQ(TopLabel(), "UndoPolygon");
    // A small circle on a shape is a polygon too.
    Drag(*brush, Ring({0.1f, 0}, 0.3f));
    EXPECT_EQ(Count<app::PolyEntity>(), 2u);
    EXPECT_EQ(Count<app::HingeEntity>(), 0u);

    // Crossing lines on the background make no fix joint; a zigzag no spring.
    Drag(*brush, Line({-2, 10}, {2, 10}));
    Drag(*brush, Line({0.1f, 8.1f}, {0.1f, 12.1f}));
    Drag(*brush, Zigzag({-3, 0}, {3, 0}, 0.33f));
    EXPECT_EQ(Count<app::FixJointEntity>(), 0u);
    EXPECT_EQ(Count<app::SpringEntity>(), 0u);
    EXPECT_EQ(Steps(), 2u);

    // A line through the box erases it.
    Drag(*brush, Line({-0.2f, -3}, {-0.2f, 3}));
    EXPECT_EQ(Count<app::BoxEntity>(), 0u);
    EXPECT_EQ(TopLabel(), "UndoErase");
}

TEST_F(SketchToolTest, WildStrokesLeaveNothingHalfMade) {
    for (app::StrokeTool* tool : {static_cast<app::StrokeTool*>(sketch.Get()),
                                  static_cast<app::StrokeTool*>(brush.Get())}) {
        SCOPED_TRACE(tool->GetReflectedName());
        GetScene().Clear();
        app::Undoer::Get().Clear();
        AddBox({0, 0});

        // A star scribbled over and over itself: thousands of crossings.
        Points star;
        for (int i = 0; i < 1000; ++i) {
            const float angle = 2.7f * static_cast<float>(i);
            star.push_back(Vec2(std::cos(angle), std::sin(angle)) * (3 + 0.001f * i));
        }
        Drag(*tool, star);
        // Two points; a point that is not a number, first and in the middle.
        Drag(*tool, {Vec2(0, 3), Vec2(1, 3)});
        const float nan = std::numeric_limits<float>::quiet_NaN();
        Drag(*tool, {Vec2(nan, nan), Vec2(1, 1), Vec2(2, 2), Vec2(1, 3)});
        Points ring = Ring({8, 0}, 1);
        ring.insert(ring.begin() + 5, Vec2(nan, 0));
        Drag(*tool, ring);
        ASSERT_EQ(Count<app::PolyEntity>(), 1u);
        app::Undoer::Get().Undo();
        EXPECT_EQ(Count<app::PolyEntity>(), 0u);

        // Out along a line and back along it: a closed stroke around no area.
        {
            test::LogCapture log;
            Points back = Path({{12, 5}, {10.05f, 5}});
            Points out = Path({{10, 5}, {12, 5}});
            out.insert(out.end(), back.begin() + 1, back.end());
            Drag(*tool, out);
            EXPECT_EQ(Count<app::PolyEntity>(), 0u);
            EXPECT_TRUE(log.Contains(tool == sketch.Get() ? "Error while creating polygon: "
                                                          : "Bad polygon"))
                << log.Text();
        }

        // Zoomed out as far as it goes, a corner a hundred decades away.
        GetScene().GetCamera().SetZoom(app::Camera::kMinZoom);
        {
            test::LogCapture log;
            Drag(*tool, {Vec2(0, 0), Vec2(100, 0), Vec2(1e30f, 1e30f), Vec2(0, 100), Vec2(1, 1)});
            if (tool == sketch.Get()) {
                EXPECT_TRUE(log.Contains("Error while creating polygon: ")) << log.Text();
            }
        }
        GetScene().GetCamera().SetZoom(100);
        EXPECT_EQ(GetScene().GetEntities().size(), 1u);
        EXPECT_EQ(Steps(), 0u);

        // While the world runs, polygons go straight into it and stay.
        physics::Simulation::Get().running->SetNative(true);
        app::App::Get().GetAppGUI()->freeDrawing->SetNative(true);
        Drag(*tool, Ring({0, 0}, 1.5f));
        Drag(*tool, Ring({0.1f, 0.1f}, 0.3f));
        GetScene().RunSteps(5);
        physics::Simulation::Get().running->SetNative(false);
        app::App::Get().GetAppGUI()->freeDrawing->SetNative(false);
        EXPECT_EQ(GetScene().GetEntities().size(), 3u);
        ExpectAllInSimulation();
        EXPECT_FALSE(tool->IsDrawing());
    }
}

}  // namespace
