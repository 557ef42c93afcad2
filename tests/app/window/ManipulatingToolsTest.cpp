// The tools that act on what exists: move, clone, rotate, scale, drag with the mouse, pan;
// and the two draggable pictures that pan and zoom the view.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ToolFixture.h"
#include "app/Undoer.h"
#include "app/tools/DragTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/ScaleTool.h"
#include "app/widgets/Panner.h"
#include "app/widgets/Zoomer.h"
#include "physics/Body.h"
#include "physics/Hinge.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"

namespace {

constexpr float kPi = 3.14159265f;

class ManipulatingToolsTest : public test_app::ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        app::Undoer::Get().Clear();
        Sim().running->SetNative(false);
    }
    void TearDown() override {
        for (const app::ToolPtr& tool : app::Tools::Get().GetAll()) {
            tool->Cancel();
        }
        ToolTest::TearDown();
    }
    static physics::Simulation& Sim() { return physics::Simulation::Get(); }
    static app::Group& Selection() { return *GetScene().GetSelection(); }
    template <class Kind>
    static Kind& Tool() {
        return *app::Tools::Get().Find<Kind>();
    }
    static math::Vec2 PositionOf(const util::SharedPtr<app::BoxEntity>& box) {
        return box->GetGeom()->GetPosition();
    }
    static float AngleOf(const util::SharedPtr<app::BoxEntity>& box) {
        return box->GetGeom()->GetTransform().Angle();
    }
    static const char* UndoLabel() { return app::Undoer::Get().GetUndoLabel(); }
    // Points along the arc about the centre, from one angle to the other, in degrees.
    static std::vector<math::Vec2> Arc(const math::Vec2& centre, float radius, float from, float to,
                                       int count = 12) {
        std::vector<math::Vec2> points;
        for (int i = 0; i <= count; ++i) {
            const float degrees = from + (to - from) * static_cast<float>(i) / count;
            const float angle = degrees * kPi / 180;
            points.push_back(centre + math::Vec2(std::cos(angle), std::sin(angle)) * radius);
        }
        return points;
    }
    static input::DragEvent Event(const math::Vec2& world, const math::Vec2& last,
                                  input::SDLKey key = Left()) {
        input::DragEvent event;
        event.key = key;
        event.position = Gui(world);
        event.start = event.position;
        event.offset = Gui(world) - Gui(last);
        return event;
    }
    static bool IsHelper(const physics::BodyPtr& body) {
        return body->GetGeoms().size() == 1 &&
               dynamic_cast<physics::WorldGeom*>(body->GetGeoms().begin()->Get()) &&
               body != Sim().GetWorldBody();
    }
    static size_t HelperCount() {
        size_t count = 0;
        for (const physics::BodyPtr& body : Sim().GetBodies()) {
            count += IsHelper(body) ? 1 : 0;
        }
        return count;
    }
};

#define EXPECT_VEC_NEAR(a, b, tolerance)           \
    do {                                           \
        const math::Vec2 va = (a);                 \
        const math::Vec2 vb = (b);                 \
        EXPECT_NEAR(va.x, vb.x, tolerance) << "x"; \
        EXPECT_NEAR(va.y, vb.y, tolerance) << "y"; \
    } while (false)

TEST_F(ManipulatingToolsTest, MoveCarriesTheSelectionByTheWorldDeltaAndUndoes) {
    const auto box = AddBox({0, 0});
    const auto other = AddBox({3, 0});
    app::MoveTool& move = Tool<app::MoveTool>();
    EXPECT_EQ(move.GetCursorName(), "move");

    // Empty space is left to others; the right button is not the move tool's.
    EXPECT_FALSE(Drag(move, Line({-2, 2}, {-1, 2})));
    EXPECT_FALSE(Drag(move, Line({0, 0}, {1, 0}), Right()));
    EXPECT_EQ(UndoLabel(), nullptr);

    // The unselected box under the mouse becomes the selection and moves.
    EXPECT_TRUE(Drag(move, Line({0.2f, 0.1f}, {1.2f, 2.1f})));
    EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(1, 2), 1e-4);
    EXPECT_VEC_NEAR(PositionOf(other), math::Vec2(3, 0), 1e-6);
    EXPECT_TRUE(Selection().Contains(box));
    EXPECT_FALSE(Selection().Contains(other));
    EXPECT_STREQ(UndoLabel(), "UndoMove");
    EXPECT_FALSE(move.IsDrawing());

    // A selection of two moves together, the end of the drag included.
    Selection().Add(other);
    EXPECT_TRUE(Drag(move, {{1, 2}, {1.5f, 2}, {2, 1}}));
    EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(2, 1), 1e-4);
    EXPECT_VEC_NEAR(PositionOf(other), math::Vec2(4, -1), 1e-4);

    app::Undoer::Get().Undo();
    app::Undoer::Get().Undo();
    EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(0, 0), 1e-6);
    EXPECT_VEC_NEAR(PositionOf(other), math::Vec2(3, 0), 1e-6);
}

TEST_F(ManipulatingToolsTest, CtrlDragMovesClonesAndLeavesTheOriginals) {
    const auto box = AddBox({0, 0});
    const auto other = AddBox({0.8f, 0});
    const auto hinge = AddHinge({0.4f, 0}, {0.4f, 0});
    Selection().Add(box);
    Selection().Add(other);
    Selection().Add(hinge);
    Sim().running->SetNative(true);
    s_modifiers.ctrl = true;

    EXPECT_TRUE(Drag(Tool<app::MoveTool>(), Line({0, 0}, {0, 3})));
    s_modifiers.ctrl = false;

    ASSERT_EQ(GetScene().GetEntities().size(), 6u);
    EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(0, 0), 1e-6);
    EXPECT_VEC_NEAR(PositionOf(other), math::Vec2(0.8f, 0), 1e-6);
    EXPECT_EQ(Selection().size(), 3u);
    for (const app::EntityPtr& entity : Selection().GetEntities()) {
        EXPECT_NE(entity, box);
        EXPECT_NE(entity, other);
        EXPECT_NE(entity, hinge);
        EXPECT_NEAR(entity->GetBoundingBox().Centre().y, 3, 1e-3);
    }
    EXPECT_STREQ(UndoLabel(), "UndoClone");
    // The pause lasted only as long as the gesture.
    EXPECT_TRUE(Sim().running->Get());

    app::Undoer::Get().Undo();
    EXPECT_EQ(GetScene().GetEntities().size(), 3u);
}

TEST_F(ManipulatingToolsTest, RotateTurnsAGroupAboutItsCentreAndAShapeAboutItsOwn) {
    const auto left = AddBox({-1, 0});
    const auto right = AddBox({1, 0});
    Selection().Add(left);
    Selection().Add(right);
    app::RotateTool& rotate = Tool<app::RotateTool>();

    // The left button is not the rotate tool's.
    EXPECT_FALSE(Drag(rotate, Arc({0, 0}, 1, 0, 90)));
    EXPECT_VEC_NEAR(PositionOf(right), math::Vec2(1, 0), 1e-6);

    EXPECT_TRUE(Drag(rotate, Arc({0, 0}, 1, 0, 90), Right()));
    EXPECT_VEC_NEAR(rotate.GetPivot(), math::Vec2(0, 0), 1e-6);
    EXPECT_VEC_NEAR(PositionOf(right), math::Vec2(0, 1), 1e-4);
    EXPECT_VEC_NEAR(PositionOf(left), math::Vec2(0, -1), 1e-4);
    EXPECT_NEAR(AngleOf(right), kPi / 2, 1e-4);
    EXPECT_STREQ(UndoLabel(), "UndoRotate");

    // A lone shape turns about its own centre, off the mouse's circle.
    const auto lone = AddBox({4, 4}, {1, 0.25f});
    Selection().Clear();
    EXPECT_TRUE(Drag(rotate, Arc({4, 4}, 0.8f, 0, -45), Right()));
    EXPECT_VEC_NEAR(rotate.GetPivot(), math::Vec2(4, 4), 1e-6);
    EXPECT_VEC_NEAR(PositionOf(lone), math::Vec2(4, 4), 1e-4);
    EXPECT_NEAR(AngleOf(lone), -kPi / 4, 1e-4);
    EXPECT_TRUE(Selection().Contains(lone));

    app::Undoer::Get().Undo();
    app::Undoer::Get().Undo();
    EXPECT_VEC_NEAR(PositionOf(right), math::Vec2(1, 0), 1e-6);
    EXPECT_NEAR(AngleOf(right), 0, 1e-6);
}

TEST_F(ManipulatingToolsTest, ScaleHandleStretchesTheSelectionAsNewShapes) {
    const auto box = AddBox({0, 0});
    app::ScaleTool& scale = Tool<app::ScaleTool>();
    // No selection, no handles.
    EXPECT_EQ(app::ScaleTool::HandleAt({0.5f, 0}), app::ScaleTool::kNone);
    EXPECT_FALSE(Drag(scale, Line({0.5f, 0}, {1.5f, 0})));

    Selection().Add(box);
    EXPECT_EQ(app::ScaleTool::HandleAt({0.5f, 0}), app::ScaleTool::kEast);
    EXPECT_EQ(app::ScaleTool::HandleAt({-0.5f, 0.5f}), app::ScaleTool::kNorthWest);
    EXPECT_EQ(app::ScaleTool::HandleAt({0, -0.5f}), app::ScaleTool::kSouth);
    EXPECT_EQ(app::ScaleTool::HandleAt({0.2f, 0.1f}), app::ScaleTool::kNone);
    input::MouseMoveEvent hover;
    hover.position = Gui({0.5f, 0.01f});
    scale.OnMouseMove(hover);
    EXPECT_EQ(scale.GetCursorName(), "arrow_west-east");
    hover.position = Gui({0.5f, -0.5f});
    scale.OnMouseMove(hover);
    EXPECT_EQ(scale.GetCursorName(), "arrow_north-west");

    // The east handle doubles the width about the west side.
    EXPECT_TRUE(Drag(scale, Line({0.5f, 0}, {1.5f, 0})));
    ASSERT_EQ(GetScene().GetEntities().size(), 1u);
    const app::EntityPtr scaled = GetScene().GetEntities().front();
    EXPECT_NE(scaled, app::EntityPtr(box));
    const math::BoundingBox2f bounds = scaled->GetBoundingBox();
    EXPECT_NEAR(bounds.Width(), 2, 1e-4);
    EXPECT_NEAR(bounds.Height(), 1, 1e-4);
    EXPECT_NEAR(bounds.min.x, -0.5f, 1e-4);
    EXPECT_TRUE(Selection().Contains(scaled));
    EXPECT_EQ(scaled->previewTransform, math::Mat3::Identity());
    EXPECT_STREQ(UndoLabel(), "UndoScale");

    app::Undoer::Get().Undo();
    ASSERT_EQ(GetScene().GetEntities().size(), 1u);
    EXPECT_EQ(GetScene().GetEntities().front(), app::EntityPtr(box));
    EXPECT_NEAR(box->GetBoundingBox().Width(), 1, 1e-4);
}

TEST_F(ManipulatingToolsTest, DragToolPullsAMovingShapeAndLeavesNothingBehind) {
    Sim().gravitySwitch->SetNative(false);
    const auto box = AddBox({0, 0});
    app::DragTool& drag = Tool<app::DragTool>();
    const size_t bodies = Sim().GetBodies().size();

    input::DragEvent begin = Event({0.2f, 0}, {0.2f, 0});
    drag.OnDragBegin(begin);
    ASSERT_TRUE(begin.consumed);
    EXPECT_EQ(drag.GetCursorName(), "hand_closed");
    EXPECT_EQ(HelperCount(), 1u);
    ASSERT_EQ(Sim().GetHinges().size(), 1u);
    const physics::HingePtr hinge = *Sim().GetHinges().begin();
    EXPECT_EQ(hinge->GetImpulseLimit(), 0.25f);
    EXPECT_EQ(hinge->GetDistanceLimit(), 0.25f);

    // The mouse walks to the right, and the shape follows it.
    math::Vec2 mouse(0.2f, 0);
    for (int i = 0; i < 200; ++i) {
        const math::Vec2 next = mouse + math::Vec2(0.005f, 0);
        input::DragEvent step = Event(next, mouse);
        drag.OnDrag(step);
        mouse = next;
        drag.Update(0.01f);
        GetScene().RunSteps(1);
    }
    EXPECT_FALSE(hinge->IsBroken());
    EXPECT_NEAR(PositionOf(box).x, 1.0f, 0.05f);
    EXPECT_NEAR(PositionOf(box).y, 0, 0.05f);

    // A jump farther than the strength lets the shape go; the gesture lasts to the release.
    const math::Vec2 far = mouse + math::Vec2(1, 0);
    input::DragEvent jump = Event(far, mouse);
    drag.OnDrag(jump);
    mouse = far;
    drag.Update(0.01f);
    GetScene().RunSteps(1);
    EXPECT_TRUE(hinge->IsBroken());
    drag.Update(0.01f);
    EXPECT_EQ(HelperCount(), 0u);
    EXPECT_TRUE(drag.IsDrawing());
    EXPECT_LT(PositionOf(box).x, 1.2f);

    input::DragEvent end = Event(mouse, mouse);
    drag.OnDragEnd(end);
    EXPECT_EQ(HelperCount(), 0u);
    EXPECT_TRUE(Sim().GetHinges().empty());
    EXPECT_EQ(Sim().GetBodies().size(), bodies);
    EXPECT_STREQ(UndoLabel(), "UndoDrag");
    app::Undoer::Get().Undo();
    EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(0, 0), 1e-6);

    // While running, the drag is part of the run and makes no step.
    Sim().running->SetNative(true);
    app::Undoer::Get().Clear();
    EXPECT_TRUE(Drag(drag, Line({0, 0}, {0.1f, 0})));
    EXPECT_EQ(UndoLabel(), nullptr);
    EXPECT_EQ(HelperCount(), 0u);
}

TEST_F(ManipulatingToolsTest, DragToolTakesNoStaticOrImmovableShape) {
    const auto box = AddBox({0, 0});
    box->GetBody()->SetStatic(true);
    const auto glued = AddBox({3, 0});
    const app::Group toGlue{app::EntityPtr(glued)};
    toGlue.Glue();
    AddGround();
    app::DragTool& drag = Tool<app::DragTool>();

    for (const math::Vec2& at :
         {math::Vec2(0, 0), math::Vec2(3, 0), math::Vec2(-3, -1), math::Vec2(-3, 3)}) {
        EXPECT_FALSE(Drag(drag, Line(at, at + math::Vec2(0.1f, 0)))) << at.x << ", " << at.y;
    }
    EXPECT_EQ(HelperCount(), 0u);
    EXPECT_TRUE(Sim().GetHinges().empty());
    EXPECT_EQ(UndoLabel(), nullptr);
}

TEST_F(ManipulatingToolsTest, DragToolWithTheRightButtonTurnsTheShape) {
    Sim().gravitySwitch->SetNative(false);
    const auto box = AddBox({0, 0});
    app::DragTool& drag = Tool<app::DragTool>();
    input::DragEvent begin = Event({0, 0}, {0, 0});
    drag.OnDragBegin(begin);
    ASSERT_TRUE(begin.consumed);
    Key(drag, Right(), true);

    // The mouse circles the grip a quarter turn counterclockwise.
    const std::vector<math::Vec2> arc = Arc({0, 0}, 1, 0, 90, 50);
    math::Vec2 last = arc.front();
    for (int i = 0; i < 150; ++i) {
        const math::Vec2 next = arc[std::min<size_t>(static_cast<size_t>(i), arc.size() - 1)];
        input::DragEvent step = Event(next, last);
        drag.OnDrag(step);
        last = next;
        drag.Update(0.01f);
        EXPECT_TRUE(drag.GetHinge()->GetMotor());
        GetScene().RunSteps(1);
    }
    EXPECT_NEAR(AngleOf(box), kPi / 2, 0.1f);
    EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(0, 0), 0.05f);

    // Let go of the right button: the motor stops and the helper stays where it was.
    Key(drag, Right(), false);
    drag.Update(0.01f);
    EXPECT_FALSE(drag.GetHinge()->GetMotor());
    EXPECT_VEC_NEAR(drag.GetHelper()->position, math::Vec2(0, 0), 1e-5);
    EXPECT_TRUE(Key(drag, input::key::Escape, true));
    EXPECT_EQ(HelperCount(), 0u);
}

TEST_F(ManipulatingToolsTest, PanMovesTheViewByThePixelsDragged) {
    app::PanTool& pan = Tool<app::PanTool>();
    EXPECT_EQ(pan.GetCursorName(), "hand");
    // In window pixels: the view moves as the window sees it, not as the world does.
    const auto event = [](const math::Vec2& position, const math::Vec2& offset) {
        input::DragEvent drag;
        drag.key = Right();
        drag.start = math::Vec2(400, 300);
        drag.position = position;
        drag.offset = offset;
        return drag;
    };
    input::DragEvent begin = event({400, 300}, {0, 0});
    pan.OnDragBegin(begin);
    EXPECT_TRUE(begin.consumed);
    EXPECT_EQ(pan.GetCursorName(), "hand_closed");
    input::DragEvent step = event({450, 300}, {50, 0});
    pan.OnDrag(step);
    // The end carries the last motion when it lies beyond the last drag.
    input::DragEvent end = event({500, 250}, {50, -50});
    pan.OnDragEnd(end);
    EXPECT_TRUE(end.consumed);
    EXPECT_FALSE(pan.IsDrawing());
    // The world's origin went where the mouse went: 100 pixels a unit.
    EXPECT_VEC_NEAR(GetScene().GetCamera().GetPan(), math::Vec2(-1, -0.5f), 1e-4);
    EXPECT_VEC_NEAR(Gui({0, 0}), math::Vec2(500, 250), 1e-2);

    // Escape ends the gesture where it is.
    begin = event({400, 300}, {0, 0});
    pan.OnDragBegin(begin);
    step = event({500, 300}, {100, 0});
    pan.OnDrag(step);
    EXPECT_TRUE(Key(pan, input::key::Escape, true));
    EXPECT_FALSE(pan.IsDrawing());
    EXPECT_VEC_NEAR(GetScene().GetCamera().GetPan(), math::Vec2(-2, -0.5f), 1e-4);
}

TEST_F(ManipulatingToolsTest, PannerAndZoomerReportDragsBegunOnThem) {
    app::Camera& camera = GetScene().GetCamera();
    util::SharedPtr<app::Panner> panner(new app::Panner());
    util::SharedPtr<app::Zoomer> zoomer(new app::Zoomer());
    const auto drag = [](app::InfDraggable& widget, const math::Vec2& delta) {
        input::DragEvent begin;
        begin.key = Left();
        widget.OnDragBegin(begin);
        input::DragEvent move;
        move.key = Left();
        move.offset = delta;
        move.position = delta;
        widget.OnDrag(move);
        input::DragEvent end;
        end.key = Left();
        end.position = delta;
        widget.OnDragEnd(end);
        return begin.consumed;
    };

    // Not over it: nothing.
    EXPECT_FALSE(drag(*panner, {10, 0}));
    EXPECT_VEC_NEAR(camera.GetPan(), math::Vec2(0, 0), 1e-6);

    panner->SetMouseOver(true);
    math::Vec2 told;
    panner->GetOnDragged().Add(util::WeakPtr<util::Pointee>(panner.Get()),
                               [&told](math::Vec2 delta) { told += delta; });
    EXPECT_TRUE(drag(*panner, {10, -5}));
    EXPECT_FALSE(panner->IsDragging());
    EXPECT_VEC_NEAR(told, math::Vec2(10, -5), 1e-6);
    // Twice the motion, the other way from the pan tool's: right and up.
    EXPECT_VEC_NEAR(camera.GetPan(), math::Vec2(0.2f, 0.1f), 1e-5);

    zoomer->SetMouseOver(true);
    EXPECT_TRUE(drag(*zoomer, {0, -20}));
    const float zoomedIn = camera.GetZoom();
    EXPECT_GT(zoomedIn, 100);
    EXPECT_TRUE(drag(*zoomer, {0, 20}));
    EXPECT_NEAR(camera.GetZoom(), 100, 1e-3);
}

TEST_F(ManipulatingToolsTest, EscapeMidGestureLeavesTheSceneAsItWas) {
    const auto box = AddBox({0, 0});
    const auto other = AddBox({3, 0});
    // Move, and clone and move.
    for (bool clone : {false, true}) {
        s_modifiers.ctrl = clone;
        app::MoveTool& move = Tool<app::MoveTool>();
        input::DragEvent begin = Event({0, 0}, {0, 0});
        move.OnDragBegin(begin);
        ASSERT_TRUE(begin.consumed);
        input::DragEvent step = Event({1, 1}, {0, 0});
        move.OnDrag(step);
        EXPECT_TRUE(Key(move, input::key::Escape, true));
        EXPECT_FALSE(move.IsDrawing());
        EXPECT_EQ(GetScene().GetEntities().size(), 2u);
        EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(0, 0), 1e-6);
        // Nothing left to cancel.
        EXPECT_FALSE(Key(move, input::key::Escape, true));
    }
    s_modifiers.ctrl = false;

    // Rotate.
    app::RotateTool& rotate = Tool<app::RotateTool>();
    input::DragEvent begin = Event({3.4f, 0}, {3.4f, 0}, Right());
    rotate.OnDragBegin(begin);
    ASSERT_TRUE(begin.consumed);
    input::DragEvent step = Event({3, 0.4f}, {3.4f, 0}, Right());
    rotate.OnDrag(step);
    EXPECT_NEAR(AngleOf(other), kPi / 2, 1e-4);
    EXPECT_TRUE(Key(rotate, input::key::Escape, true));
    EXPECT_NEAR(AngleOf(other), 0, 1e-6);

    // Scale: only the preview had changed.
    app::ScaleTool& scale = Tool<app::ScaleTool>();
    begin = Event({3.5f, 0.5f}, {3.5f, 0.5f});
    scale.OnDragBegin(begin);
    ASSERT_TRUE(begin.consumed);
    step = Event({4.5f, 1.5f}, {3.5f, 0.5f});
    scale.OnDrag(step);
    EXPECT_NE(other->previewTransform, math::Mat3::Identity());
    EXPECT_TRUE(Key(scale, input::key::Escape, true));
    EXPECT_EQ(other->previewTransform, math::Mat3::Identity());
    EXPECT_EQ(GetScene().GetEntities().front(), app::EntityPtr(box));
    EXPECT_EQ(GetScene().GetEntities().size(), 2u);

    // Drag: the shape comes back, and the helper and its hinge are gone.
    app::DragTool& drag = Tool<app::DragTool>();
    begin = Event({0, 0}, {0, 0});
    drag.OnDragBegin(begin);
    ASSERT_TRUE(begin.consumed);
    math::Vec2 mouse(0, 0);
    for (int i = 0; i < 60; ++i) {
        const math::Vec2 next = mouse - math::Vec2(0, 0.005f);
        step = Event(next, mouse);
        drag.OnDrag(step);
        mouse = next;
        drag.Update(0.01f);
        GetScene().RunSteps(1);
    }
    EXPECT_LT(PositionOf(box).y, -0.1f);
    EXPECT_TRUE(Key(drag, input::key::Escape, true));
    EXPECT_VEC_NEAR(PositionOf(box), math::Vec2(0, 0), 1e-6);
    EXPECT_EQ(HelperCount(), 0u);
    EXPECT_TRUE(Sim().GetHinges().empty());
    EXPECT_EQ(UndoLabel(), nullptr);
}

}  // namespace
