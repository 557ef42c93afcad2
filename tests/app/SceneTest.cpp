#include "SceneFixture.h"

#include <cmath>

#include "../util/LogCapture.h"
#include "app/Chain.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "physics/Body.h"
#include "physics/Polygon.h"
#include "script/Parser.h"
#include "util/Exception.h"

namespace {

using app::EntityPtr;
using app::GroupPtr;
using math::Vec2;
using physics::Simulation;
using test_app::SceneTest;

util::SharedPtr<app::FixJointEntity> AddFix(const Vec2& a, const Vec2& b) {
    util::SharedPtr<app::FixJointEntity> fix(new app::FixJointEntity(0.3f));
    const Vec2 points[2] = {a, b};
    fix->Attach(points);
    app::Scene::Get().AddEntity(fix);
    return fix;
}

TEST_F(SceneTest, PickingFindsTheTopmostAndTheGroundLast) {
    const auto lower = AddBox({0, 0}, {1, 1});
    const auto upper = AddCircle({0.5f, 0}, 0.5f);
    app::Scene& scene = GetScene();
    EXPECT_EQ(scene.GetEntityAt({0.5f, 0}), EntityPtr(upper));
    EXPECT_EQ(scene.GetEntitiesAt({0.5f, 0}).size(), 2u);
    EXPECT_EQ(scene.GetEntityAt({-0.8f, 0}), EntityPtr(lower));
    EXPECT_FALSE(scene.GetEntityAt({5, 5}));

    const auto geoms = scene.GetGeomsAt({0.5f, 0});
    ASSERT_EQ(geoms.size(), 3u);
    EXPECT_EQ(geoms[0], upper->GetGeom());
    EXPECT_EQ(geoms[2], Simulation::Get().GetWorldGeom());
    EXPECT_EQ(scene.GetGeomAt({5, 5}), Simulation::Get().GetWorldGeom());
    EXPECT_EQ(scene.GetGeomsAt({5, 5}).size(), 1u);
}

TEST_F(SceneTest, SelectionFollowsTheModifierKeys) {
    const auto a = AddBox({0, 0});
    const auto b = AddBox({3, 0});
    const auto c = AddBox({6, 0});
    app::Scene& scene = GetScene();
    app::Modifiers keys;
    scene.SetModifierSource([&keys]() { return keys; });
    const GroupPtr& selection = scene.GetSelection();
    int changes = 0;
    // Owned by the test: the selection outlives it.
    const util::SharedPtr<util::Pointee> listener(new util::Pointee());
    selection->GetOnChange().Add(util::WeakPtr<util::Pointee>(listener), [&]() { ++changes; });

    EXPECT_TRUE(scene.SelectAt({0, 0}));
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(scene.SelectAt({3, 0}));  // no key: replaces
    EXPECT_FALSE(selection->Contains(a));
    EXPECT_TRUE(selection->Contains(b));
    keys.ctrl = true;
    scene.SelectAt({6, 0});  // ctrl: adds
    EXPECT_EQ(selection->size(), 2u);
    keys = {true, true, false};
    scene.SelectAt({3, 0});  // shift, with or without ctrl: takes out
    EXPECT_FALSE(selection->Contains(b));
    EXPECT_TRUE(selection->Contains(c));

    // A click takes the group an entity is in, and alt the entity alone.
    keys = {};
    scene.GetOrCreateGroup("pair")->Add(a);
    scene.GetGroup("pair")->Add(b);
    EXPECT_EQ(scene.GetEntityGroupAt({0, 0})->size(), 2u);
    keys.alt = true;
    EXPECT_EQ(scene.GetEntityGroupAt({0, 0})->size(), 1u);

    // Encircling selects what lies wholly inside.
    keys = {};
    scene.GetSelection()->Clear();
    const physics::Polygon lasso(math::Vec2List{{-1, -1}, {4, -1}, {4, 1}, {-1, 1}});
    EXPECT_TRUE(scene.SelectInside(lasso));
    EXPECT_EQ(selection->size(), 2u);
    EXPECT_FALSE(selection->Contains(c));
}

TEST_F(SceneTest, UpdateDropsJointsThatLostTheirGeomAndEmptyGroups) {
    AddGround();
    const auto box = AddBox({0, 3});
    const auto other = AddBox({1, 3});
    const auto hinge = AddHinge({0, 3}, {0, 3});
    EXPECT_TRUE(hinge->IsInSimulation());
    EXPECT_EQ(hinge->GetGeom(0), box->GetGeom());
    EXPECT_EQ(hinge->GetGeom(1), Simulation::Get().GetWorldGeom());
    app::Scene& scene = GetScene();
    scene.GetOrCreateGroup("lonely")->Add(box);

    scene.RemoveEntity(box);
    EXPECT_FALSE(hinge->IsInSimulation());
    scene.Update(0.01f);
    EXPECT_EQ(scene.GetEntities().size(), 2u);  // the ground and the other box
    EXPECT_FALSE(scene.GetGroup("lonely"));
    EXPECT_TRUE(scene.GetGroup("selected"));
    EXPECT_TRUE(Simulation::Get().GetHinges().empty());
    // The world, the plane and the other box: the removed box's body is gone.
    EXPECT_EQ(Simulation::Get().GetBodies().size(), 3u);
    (void)other;
}

TEST_F(SceneTest, FixJointsMergeAndSplitBodies) {
    const auto ground = AddGround();
    const auto a = AddBox({0, 0.5f});
    const auto b = AddBox({1, 0.5f});
    const auto c = AddBox({2, 0.5f});
    const auto ab = AddFix({0.5f, 0.5f}, {0.5f, 0.5f});
    ASSERT_TRUE(ab->IsInSimulation());
    EXPECT_EQ(a->GetBody(), b->GetBody());
    // A second joint between the same pair changes nothing, and holds them when the first
    // goes.
    const auto ab2 = AddFix({0.4f, 0.6f}, {0.6f, 0.6f});
    EXPECT_EQ(a->GetBody(), b->GetBody());
    GetScene().RemoveEntity(ab);
    EXPECT_EQ(a->GetBody(), b->GetBody());
    GetScene().RemoveEntity(ab2);
    EXPECT_NE(a->GetBody(), b->GetBody());

    // Fixed to the ground, a shape is static; let go, it is a body of its own, anew.
    const size_t next = physics::AbstractBody::PeekNextID();
    const auto cg = AddFix({2, 0.1f}, {2, 5});
    EXPECT_EQ(c->GetBody(), Simulation::Get().GetWorldBody());
    EXPECT_TRUE(cg->IsBackground());
    GetScene().RemoveEntity(cg);
    ASSERT_TRUE(c->GetBody());
    EXPECT_NE(c->GetBody(), Simulation::Get().GetWorldBody());
    EXPECT_GE(c->GetBody()->GetID(), next);
    EXPECT_TRUE(c->GetBody()->IsInWorld());
    (void)ground;
}

TEST_F(SceneTest, HingeMotorFollowsItsSettingsAndButtons) {
    AddGround();
    const auto wheel = AddCircle({0, 2}, 0.5f);
    const auto hinge = AddHinge({0, 2}, {0, 2});
    ASSERT_TRUE(hinge->GetHinge());
    hinge->motorSpeed->SetNative(-1);
    GetScene().Update(0.01f);
    EXPECT_EQ(hinge->motorSpeed->Get(), 1);
    EXPECT_TRUE(hinge->ccw->Get());
    EXPECT_FALSE(hinge->GetHinge()->GetMotor());
    EXPECT_EQ(hinge->GetHinge()->GetMotorSpeed(), -1);

    util::StringSet held;
    app::ControlInputs::Get().isPressed = [&held](const util::String& b) {
        return held.count(b) > 0;
    };
    hinge->buttonForward = "right";
    hinge->buttonBrake = "down";
    held = {"right", "down"};
    GetScene().Update(0.01f);
    EXPECT_TRUE(hinge->GetHinge()->GetMotor());
    EXPECT_EQ(hinge->GetHinge()->GetMotorSpeed(), 0);  // brake beats forward
    held = {"right"};
    GetScene().Update(0.01f);
    EXPECT_EQ(hinge->GetHinge()->GetMotorSpeed(), -1);

    // Driven, the wheel turns at the motor's speed.
    hinge->ccw->SetNative(false);
    GetScene().RunSteps(100);
    EXPECT_NEAR(wheel->GetBody()->angularVelocity, -1.0f, 0.05f);
}

TEST_F(SceneTest, PensDrawWhileMovingAndRestWithoutGrowing) {
    const auto ball = AddCircle({0, 5}, 0.5f);
    util::SharedPtr<app::PenEntity> pen(new app::PenEntity(0.3f));
    pen->SetGeom(ball->GetGeom(), {0.2f, 0});
    GetScene().AddEntity(pen);
    GetScene().RunSteps(50);
    const size_t falling = pen->GetTrail().size();
    EXPECT_GT(falling, 10u);
    // Normals are unit and across the motion.
    const auto& last = pen->GetTrail().back();
    EXPECT_NEAR(last.normal.Length(), 1.0f, 1e-4f);

    // On a body at rest nothing is added.
    Simulation::Get().gravitySwitch->SetNative(false);
    ball->GetBody()->velocity = {0, 0};
    ball->GetBody()->angularVelocity = 0;
    GetScene().RunSteps(5);
    const size_t settled = pen->GetTrail().size();
    GetScene().RunSteps(50);
    EXPECT_EQ(pen->GetTrail().size(), settled);

    // A pen whose shape is erased leaves with the next update.
    GetScene().RemoveEntity(ball);
    GetScene().Update(0.01f);
    EXPECT_TRUE(GetScene().GetEntities().empty());
}

TEST_F(SceneTest, CameraClampsZoomMapsBothWaysAndFollows) {
    app::Camera& camera = GetScene().GetCamera();
    camera.SetViewport({0, 0}, {800, 600});
    camera.SetZoom(0);
    EXPECT_EQ(camera.GetZoom(), 1.5f);
    camera.SetZoom(1e6f);
    EXPECT_EQ(camera.GetZoom(), 3000.0f);
    camera.ZoomBy(3);
    EXPECT_EQ(camera.GetZoom(), 3000.0f);
    camera.Reset();
    EXPECT_EQ(camera.GetZoom(), 150.0f);

    camera.SetPan({2, 1});
    EXPECT_EQ(camera.WorldToGUI({2, 1}), Vec2(400, 300));
    const Vec2 up = camera.WorldToGUI({2, 2});
    EXPECT_FLOAT_EQ(up.y, 150);  // y goes up in the world, down in the window
    const Vec2 back = camera.GUIToWorld(camera.WorldToGUI({-3.5f, 7}));
    EXPECT_NEAR(back.x, -3.5f, 1e-4f);
    EXPECT_NEAR(back.y, 7, 1e-4f);
    app::Camera other;
    other.SetViewport({0, 0}, {800, 600});
    other.SetTransform(camera.GetTransform());
    EXPECT_NEAR(other.GetZoom(), 150, 1e-3f);
    EXPECT_NEAR(other.GetPan().x, 2, 1e-4f);
    EXPECT_NEAR(other.GetPan().y, 1, 1e-4f);

    // A script's zoom beyond the limits is clamped too.
    script::Parser::Get().Execute("Scene.Camera.zoom = 0");
    camera.Update(0);
    EXPECT_EQ(camera.GetZoom(), 1.5f);
    camera.Reset();

    // Following moves the view by what the shape moved, until it is gone.
    const auto ball = AddCircle({0, 5}, 0.5f);
    camera.SetTrackedGroup(GroupPtr(new app::Group(EntityPtr(ball))));
    GetScene().RunSteps(50);
    camera.Update(0);
    EXPECT_NEAR(camera.GetPan().y, ball->GetGeom()->GetPosition().y - 5, 1e-4f);
    GetScene().RemoveEntity(ball);
    camera.Update(0);
    EXPECT_FALSE(camera.GetTrackedGroup());
}

TEST_F(SceneTest, ClonesKeepBodiesJointsAndChains) {
    AddGround();
    const auto a = AddBox({0, 2});
    const auto b = AddBox({1, 2});
    AddFix({0.5f, 2}, {0.5f, 2});
    const auto hinge = AddHinge({1.2f, 2}, {1.2f, 2});
    app::ChainPtr chain(new app::Chain());
    chain->AddEntity(0, a);
    chain->AddEntity(2, b);
    EXPECT_EQ(chain->GetSize(), 3u);
    EXPECT_EQ(chain->GetEntities().size(), 2u);
    EXPECT_THROW(chain->AddEntity(100000, a), BadCoderException);

    app::Group original;
    for (const EntityPtr& e : GetScene().GetEntities()) {
        if (!dynamic_cast<app::PlaneEntity*>(e.Get())) {
            original.Add(e);
        }
    }
    const GroupPtr copies = GetScene().CloneGroup(original);
    ASSERT_EQ(copies->size(), 4u);
    const std::vector<EntityPtr> ordered = copies->InOrder(GetScene().GetEntities());
    const auto* copyA = dynamic_cast<app::BoxEntity*>(ordered[0].Get());
    const auto* copyB = dynamic_cast<app::BoxEntity*>(ordered[1].Get());
    ASSERT_TRUE(copyA && copyB);
    EXPECT_EQ(copyA->GetBody(), copyB->GetBody());
    EXPECT_NE(copyA->GetBody(), a->GetBody());
    const auto* copyHinge = dynamic_cast<app::HingeEntity*>(ordered[3].Get());
    ASSERT_TRUE(copyHinge);
    EXPECT_EQ(copyHinge->GetGeom(0), copyB->GetGeom());
    EXPECT_TRUE(copyHinge->IsInSimulation());
    ASSERT_TRUE(copyA->GetChain());
    EXPECT_NE(copyA->GetChain(), chain);
    EXPECT_EQ(copyB->GetChain()->GetIndex(copyB), 2);
    (void)hinge;

    // Mirrored, a box stays a box; sheared by a rotated scale it becomes a polygon.
    const auto tilted = AddBox({5, 5}, {1, 0.5f}, 0.5f);
    const EntityPtr mirrored = tilted->CloneScaled(1, -1);
    EXPECT_TRUE(dynamic_cast<app::BoxEntity*>(mirrored.Get()));
    const EntityPtr sheared = tilted->CloneScaled(2, 1);
    EXPECT_TRUE(dynamic_cast<app::PolyEntity*>(sheared.Get()));
    EXPECT_NEAR(static_cast<app::GeomEntity&>(*sheared).GetGeom()->Area(), 4, 1e-3f);
}

TEST_F(SceneTest, LiquidPointsFillTheShapeWithinTheLimit) {
    const auto box = AddBox({0, 0}, {1, 1});
    const math::Vec2List points = box->GetLiquidPoints();
    // The grid is laid for a round shape: over a square, a quarter of pi of the area of
    // 4 over a particle's disc of radius 0.05.
    const float wanted = std::round(4 / (0.05f * 0.05f * static_cast<float>(M_PI)) + 0.5f);
    EXPECT_LE(static_cast<float>(points.size()), wanted);
    EXPECT_GT(static_cast<float>(points.size()), 0.7f * wanted);
    for (const Vec2& p : points) {
        EXPECT_LT(box->GetGeom()->Dist(p), 0);
    }
    EXPECT_LE(box->GetLiquidPoints(10).size(), 10u);
    EXPECT_GT(box->GetLiquidPoints(10).size(), 5u);
    const auto tiny = AddCircle({3, 0}, 0.001f);
    ASSERT_EQ(tiny->GetLiquidPoints().size(), 1u);
}

TEST_F(SceneTest, ClearAndNewEmptyTheSceneAndRestoreSettings) {
    AddBox({0, 0});
    Simulation::Get().gravity->SetNative({0, -1});
    GetScene().title->SetNative("mine");
    int cleared = 0;
    const GroupPtr owner(new app::Group());
    GetScene().GetOnClear().Add(util::WeakPtr<util::Pointee>(owner), [&]() { ++cleared; });
    GetScene().Clear();
    EXPECT_EQ(cleared, 1);
    EXPECT_TRUE(GetScene().GetEntities().empty());
    EXPECT_EQ(Simulation::Get().GetBodies().size(), 1u);
    EXPECT_EQ(GetScene().title->Get(), "");
    EXPECT_EQ(Simulation::Get().gravity->Get(), Vec2(0, -1));
    GetScene().New();
    EXPECT_EQ(Simulation::Get().gravity->Get(), Simulation::Get().gravity->GetDefault());
}

}  // namespace

// Typed at the console, a step of no time or a kernel of no size once made every step's
// numbers NaN, and the double pendulum lost both arms within 50 steps. Such values are
// refused, whether plain or as formulas, with a message naming the limit.
TEST_F(SceneTest, SettingsThatWouldBreakEveryStepAreRefused) {
    ASSERT_TRUE(LoadFile(VORRA_SCENES_DIR "/pendulum.vra"));
    const size_t entities = GetScene().GetEntities().size();
    ASSERT_EQ(entities, 5u);
    script::Parser& parser = script::Parser::Get();
    parser.Execute("SPH.radius = 0.1");
    {
        test::LogCapture log(test::LogCapture::kProblems);
        for (const char* line :
             {"Sim.timeDelta = 0", "Sim.timeDelta = 0.0", "Sim.timeDelta = { 0.0 }",
              "SPH.radius = 0.0", "SPH.influence = 0.0", "Sim.gravity = [0.0, +inf]"}) {
            parser.Execute(line);
        }
        EXPECT_TRUE(log.Contains("timeDelta must be above 0 and at most 1; it stays 0.01"))
            << log.Text();
        EXPECT_TRUE(log.Contains("radius must be above 0 and finite; it stays 0.1"));
        EXPECT_TRUE(log.Contains("influence must be above 0 and finite; it stays 2"));
        EXPECT_TRUE(log.Contains("gravity must have finite components"));
    }
    EXPECT_EQ(parser.ExecuteToString("Sim.timeDelta"), "0.01");
    EXPECT_EQ(parser.ExecuteToString("SPH.radius"), "0.1");
    EXPECT_EQ(parser.ExecuteToString("SPH.influence"), "2");

    // A formula is checked at each recalculation: while it gives a bad value the old one
    // stays, and it takes effect once its value is good.
    parser.Execute("stepLength = 0.02; Sim.timeDelta = { stepLength }");
    EXPECT_FLOAT_EQ(Simulation::Get().timeDelta->Get(), 0.02f);
    parser.Execute("stepLength = 0.0");
    parser.Update();
    EXPECT_FLOAT_EQ(Simulation::Get().timeDelta->Get(), 0.02f);

    GetScene().RunSteps(50);
    EXPECT_EQ(GetScene().GetEntities().size(), entities);
    for (const EntityPtr& entity : GetScene().GetEntities()) {
        EXPECT_TRUE(entity->IsInSimulation()) << entity->GetReflectedName();
    }
    parser.Execute("Sim.timeDelta = 0.01; SPH.radius = 0.05");
}
