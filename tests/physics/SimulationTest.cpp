#include "physics/Simulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "../util/LogCapture.h"
#include "WorldTest.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/MaterialDefaults.h"
#include "physics/Polygon.h"
#include "physics/Shapes.h"
#include "script/Parser.h"

namespace {

using math::Vec2;
using physics::Body;
using physics::BodyPtr;
using physics::Simulation;

using test_physics::kPi;
const char* const kEmptyCounts =
    "0 bodies\n0 geometries\n0 particles\n0 contacts\n0 springs\n0 hinges\nRunning at 100 "
    "Hz\n";

using SimulationTest = test_physics::WorldTest;

// --- The driver ---

TEST_F(SimulationTest, DefaultsAndTheWorldBody) {
    uint32_t bits;
    const float gy = sim.gravity->Get().y;
    std::memcpy(&bits, &gy, sizeof bits);
    EXPECT_EQ(bits, 0xC11CCCCDu);
    EXPECT_EQ(sim.maxPositionCorrection->Get(), math::Infinity());
    EXPECT_EQ(sim.solveIter->Get(), 30);
    EXPECT_FLOAT_EQ(sim.solveConstant->Get(), 1e8f);

    // The world body is the only body; it cannot be removed, and Clear keeps it alone.
    ASSERT_EQ(sim.GetBodies().size(), 1u);
    EXPECT_EQ(sim.GetBodies()[0], sim.GetWorldBody());
    EXPECT_FALSE(sim.RemoveBody(sim.GetWorldBody()));
    const BodyPtr a = Add(new physics::Circle(1), {0, 5});
    const BodyPtr b = Add(new physics::Circle(1), {5, 5});
    const BodyPtr c = Add(new physics::Circle(1), {9, 5});
    sim.AddBody(b);  // already present: stays where it is
    ASSERT_EQ(sim.GetBodies().size(), 4u);
    EXPECT_TRUE(sim.RemoveBody(b));
    EXPECT_FALSE(sim.RemoveBody(b));
    ASSERT_EQ(sim.GetBodies().size(), 3u);
    EXPECT_EQ(sim.GetBodies()[1], a);
    EXPECT_EQ(sim.GetBodies()[2], c);
    // A removed body gives up its geoms, which is what lets both be freed.
    EXPECT_TRUE(b->GetGeoms().empty());

    sim.Update(0.01);
    sim.Clear();
    EXPECT_EQ(sim.GetBodies().size(), 1u);
    EXPECT_EQ(sim.GetSimulatedTime(), 0);
    EXPECT_TRUE(a->GetGeoms().empty());
    sim.running->SetNative(false);
    sim.Update(0.01);
    EXPECT_EQ(sim.GetStatus(), util::String("Frozen\n") + kEmptyCounts);
}

TEST_F(SimulationTest, UpdateRunsStepsWithinItsBudget) {
    // A negative time factor is written back as 0, which freezes the world.
    sim.timeFactor->SetNative(-1);
    sim.Update(0.02);
    EXPECT_EQ(sim.timeFactor->Get(), 0);
    EXPECT_EQ(sim.GetStatus(), util::String("Frozen\n") + kEmptyCounts);
    EXPECT_EQ(sim.GetSimulatedTime(), 0);

    // A frame of a whole second is over the budget by itself: one step, the rest dropped.
    sim.timeFactor->SetNative(1);
    int steps = 0;
    const util::WeakPtr<util::Pointee> owner(&sim);
    sim.GetStepCallbacks().Add(owner, [&steps](float) { ++steps; });
    sim.Update(1.0);
    EXPECT_EQ(steps, 1);
    EXPECT_EQ(sim.GetStatus(), util::String("  1% realtime\n") + kEmptyCounts);
    EXPECT_NEAR(sim.GetRealtimeFraction(), 0.01f, 1e-6f);

    // Half a step's time runs one step and owes the other half to the next frame, which
    // then runs none.
    steps = 0;
    sim.Update(0.005f);
    EXPECT_EQ(steps, 1);
    EXPECT_EQ(sim.GetStatus(), util::String("100% realtime.\n") + kEmptyCounts);
    sim.Update(0.005f);
    EXPECT_EQ(steps, 1);
    EXPECT_EQ(sim.GetStatus(), util::String("100% realtime.\n") + kEmptyCounts);
    EXPECT_FLOAT_EQ(static_cast<float>(sim.GetSimulatedTime()), 0.02f);

    // Counts: the world geom is not counted, nor the world body while it holds only that.
    AddGround();
    Add(new physics::Circle(1), {0, 0.9f});
    sim.timeDelta->SetNative(0.02f);
    sim.running->SetNative(false);
    sim.Update(0.01);
    EXPECT_EQ(sim.GetStatus(),
              "Frozen\n2 bodies\n2 geometries\n0 particles\n1 contacts\n0 springs\n0 hinges\n"
              "Running at 50 Hz\n");
}

TEST_F(SimulationTest, FrozenStepsKeepForcesAndFindContacts) {
    AddGround();
    const BodyPtr ball = Add(new physics::Circle(0.5f), {0, 0.499f});
    std::vector<float> steps;
    sim.GetStepCallbacks().Add(util::WeakPtr<util::Pointee>(&sim),
                               [&steps](float h) { steps.push_back(h); });

    sim.running->SetNative(false);
    ball->force = Vec2(3, 0);
    sim.Update(0.05);
    EXPECT_EQ(ball->force, Vec2(3, 0));
    EXPECT_EQ(ball->position, Vec2(0, 0.499f));
    EXPECT_EQ(sim.GetContacts().size(), 1u);
    EXPECT_EQ(sim.GetContactCache().GetEntryCount(), 1u);

    sim.running->SetNative(true);
    sim.gravitySwitch->SetNative(false);
    sim.airSwitch->SetNative(false);
    sim.Update(0.01f);
    EXPECT_EQ(ball->force, Vec2(0, 0));  // cleared after the running step
    EXPECT_GT(ball->velocity.x, 0);      // after the push had its effect
    EXPECT_EQ(steps, (std::vector<float>{0.0f, 0.01f}));
}

TEST_F(SimulationTest, BadAndFallenBodiesAreRemoved) {
    const BodyPtr fallen = Add(new physics::Circle(1), {0, -1001});
    const BodyPtr fine = Add(new physics::Circle(1), {0, -999});
    const BodyPtr broken = Add(new physics::Circle(1), {10, 0});
    broken->velocity = Vec2(std::nanf(""), 0);
    {
        test::LogCapture log;
        sim.running->SetNative(false);
        sim.Update(0.01);
        EXPECT_TRUE(log.Contains("Removing bad object")) << log.Text();
    }
    ASSERT_EQ(sim.GetBodies().size(), 2u);
    EXPECT_EQ(sim.GetBodies()[1], fine);
    EXPECT_TRUE(fallen->GetGeoms().empty());

    // Without gravity nothing is "down", so nothing falls out, whatever the limit.
    sim.gravitySwitch->SetNative(false);
    sim.fallLimit->SetNative(0);
    sim.Update(0.01);
    EXPECT_EQ(sim.GetBodies().size(), 2u);
    sim.gravitySwitch->SetNative(true);
    sim.Update(0.01);
    EXPECT_EQ(sim.GetBodies().size(), 1u);

    // A blow-up in the middle of a run costs only that body; the world runs on.
    sim.fallLimit->SetNative(1000);
    sim.running->SetNative(true);
    AddGround();
    const BodyPtr a = Add(new physics::Circle(0.5f), {0, 0.45f});
    const BodyPtr b = Add(new physics::Circle(0.5f), {3, 0.45f});
    Steps(5);
    a->angularVelocity = math::Infinity();
    Steps(5);
    EXPECT_TRUE(a->GetGeoms().empty());
    EXPECT_FALSE(b->GetGeoms().empty());
    EXPECT_TRUE(math::IsFinite(b->position));
}

TEST_F(SimulationTest, MaterialDefaultsFollowTheAttributes) {
    sim.defaultBodyDensity->SetNative(7);
    sim.defaultBodyFriction->SetNative(0.25f);
    sim.defaultBodyRestitution->SetNative(0.125f);
    EXPECT_EQ(physics::MaterialDefaults::Current().density, 7);
    physics::Circle circle(1);
    EXPECT_EQ(circle.density, 7);
    EXPECT_EQ(circle.friction, 0.25f);
    EXPECT_EQ(circle.restitution, 0.125f);
}

// --- Integration and forces ---

TEST_F(SimulationTest, FreeFallFollowsTheStepRule) {
    sim.airSwitch->SetNative(false);
    sim.airDensity->SetNative(0);
    const BodyPtr ball = Add(new physics::Circle(0.5f), {0, 0});
    ball->angularVelocity = 50;
    const int n = 100;
    Steps(n);
    // The velocity changes before the position moves: x_n = g h^2 n (n + 1) / 2.
    const float h = 0.01f;
    EXPECT_NEAR(ball->velocity.y, -9.8f * h * n, 1e-4f);
    EXPECT_NEAR(ball->position.y, -9.8f * h * h * n * (n + 1) / 2, 1e-3f);
    EXPECT_EQ(ball->position.x, 0);
    // The angle is kept within one turn and the geom follows the body.
    EXPECT_GT(ball->angle, -kPi);
    EXPECT_LE(ball->angle, kPi);
    EXPECT_NEAR(std::remainder(50 * h * n - ball->angle, 2 * kPi), 0, 1e-3f);
    const physics::Geom& geom = *ball->GetPlacedGeoms()[0].geom;
    EXPECT_EQ(geom.GetPosition(), ball->position);
}

TEST_F(SimulationTest, LinearDragGivesTheTerminalSpeed) {
    // Falling straight down, a circle shows its diameter to the air: c = 2 r lin.
    sim.airFrictionLinear->SetNative(10);
    sim.rotFrictionLinear->SetNative(0);
    sim.airDensity->SetNative(0);
    const BodyPtr ball = Add(new physics::Circle(0.5f), {0, 0});
    Steps(1000);
    const float terminal = ball->GetMass() * 9.8f / (2 * 0.5f * 10);
    EXPECT_NEAR(ball->velocity.y, -terminal, terminal * 1e-3f);
    EXPECT_NEAR(ball->velocity.x, 0, 1e-6f);

    // Drag is capped so that it stops a motion within a step but never turns it round.
    sim.gravitySwitch->SetNative(false);
    sim.airFrictionLinear->SetNative(1e9f);
    sim.rotFrictionLinear->SetNative(1e9f);
    ball->velocity = Vec2(4, 0);
    ball->angularVelocity = 3;
    Steps(1);
    EXPECT_GE(ball->velocity.x, 0);
    EXPECT_LT(ball->velocity.x, 1e-5f);
    EXPECT_GE(ball->angularVelocity, 0);
    EXPECT_LT(ball->angularVelocity, 1e-5f);
}

TEST_F(SimulationTest, BuoyancyBalancesABodyAsLightAsAir) {
    sim.airFrictionLinear->SetNative(0);
    sim.rotFrictionLinear->SetNative(0);
    sim.defaultBodyDensity->SetNative(sim.airDensity->Get());
    const BodyPtr floating = Add(new physics::Circle(0.5f), {0, 0});
    sim.defaultBodyDensity->SetNative(2 * sim.airDensity->Get());
    const BodyPtr sinking = Add(new physics::Circle(0.5f), {3, 0});
    Steps(100);
    EXPECT_NEAR(floating->position.y, 0, 1e-5f);
    // Twice as dense as air: half of gravity is left.
    EXPECT_NEAR(sinking->velocity.y, -4.9f, 1e-3f);

    // Buoyancy acts at the centroid of the area, not at the centre of mass: of two boxes
    // side by side, the lighter one is lifted.
    physics::GeomPtr left(new physics::Box(Vec2(0.5f, 0.5f)));
    physics::GeomPtr right(new physics::Box(Vec2(0.5f, 0.5f)));
    left->SetTransform(physics::Transform::FromAngle(0, {10, 0}));
    right->SetTransform(physics::Transform::FromAngle(0, {11, 0}));
    right->density = 5 * left->density;
    BodyPtr pair(new Body());
    physics::GeomSet both;
    both.insert(left);
    both.insert(right);
    pair->SetGeoms(both);
    sim.AddBody(pair);
    Steps(1);
    // The lighter left half is lifted: the body turns clockwise.
    EXPECT_LT(pair->angularVelocity, 0);
}

// --- Contacts at rest and in motion ---

TEST_F(SimulationTest, BoxComesToRestAtTheTargetDepth) {
    for (bool prioritized : {false, true}) {
        ResetWorld();
        sim.prioritizedSolver->SetNative(prioritized);
        AddGround();
        const BodyPtr box = Add(new physics::Box(Vec2(0.5f, 0.5f)), {0, 1.5f}, 0.2f);
        Steps(400);
        const float depth = 0.5f - box->position.y;
        EXPECT_NEAR(depth, sim.targetPenetration->Get(), 5e-4f) << "prioritized " << prioritized;
        EXPECT_LT(OffSquare(GeomAngle(*box)), 1e-3f);
        EXPECT_LT(box->GetKineticEnergy(), 1e-6f);
        EXPECT_EQ(sim.GetContacts().size(), 2u);
        // The cache finds the same two contacts in every step of a resting body.
        EXPECT_EQ(sim.GetContactCache().GetMatchCount(), 2u);
    }
}

TEST_F(SimulationTest, BallReboundsToRestitutionSquaredOfItsDrop) {
    sim.airSwitch->SetNative(false);
    sim.airDensity->SetNative(0);
    for (float e : {0.5f, 0.8f}) {
        ResetWorld();
        sim.airSwitch->SetNative(false);
        sim.airDensity->SetNative(0);
        sim.defaultBodyRestitution->SetNative(e);
        AddGround();
        const float drop = 2;
        const BodyPtr ball = Add(new physics::Circle(0.25f), {0, 0.25f + drop});
        // Fall, bounce, and record the highest point on the way up.
        bool bounced = false;
        float peak = 0;
        for (int i = 0; i < 400; ++i) {
            Steps(1);
            if (ball->velocity.y > 0) {
                bounced = true;
            }
            if (bounced) {
                peak = std::max(peak, ball->position.y - 0.25f);
                if (ball->velocity.y < 0) {
                    break;
                }
            }
        }
        EXPECT_TRUE(bounced);
        EXPECT_NEAR(peak / drop, e * e, 0.1f * e * e) << "e = " << e;
    }
}

TEST_F(SimulationTest, FrictionHoldsOrLetsGoOnASlope) {
    // Friction 0.5 on both sides: the box holds below atan(0.5), 26.6 degrees.
    for (float degrees : {20.0f, 35.0f}) {
        ResetWorld();
        const float tilt = degrees * kPi / 180;
        AddGround(tilt);
        const Vec2 normal(-std::sin(tilt), std::cos(tilt));
        const Vec2 downhill(-std::cos(tilt), -std::sin(tilt));
        const Vec2 start = normal * 0.5f;
        const BodyPtr box = Add(new physics::Box(Vec2(0.5f, 0.5f)), start, tilt);
        Steps(200);
        const float slid = Dot(box->position - start, downhill);
        if (degrees < 26) {
            EXPECT_LT(std::fabs(slid), 0.02f) << degrees;
        } else {
            // About g (sin - mu cos) t^2 / 2, less the little drag.
            const float expected = 0.5f * 9.8f * (std::sin(tilt) - 0.5f * std::cos(tilt)) * 4;
            EXPECT_NEAR(slid, expected, 0.1f * expected) << degrees;
        }
        // Sliding or not, it stays on its face.
        EXPECT_NEAR(GeomAngle(*box), tilt, 0.01f);
    }
}

TEST_F(SimulationTest, StackOfTenBoxesStandsForTenSeconds) {
    AddGround();
    std::vector<BodyPtr> boxes;
    for (int i = 0; i < 10; ++i) {
        boxes.push_back(Add(new physics::Box(Vec2(0.5f, 0.5f)), {0, 0.5f + i}));
    }
    Steps(1000);
    // Standing: each box squarely on the one below, at its height. The stack creeps
    // sideways by a few centimetres a second: the friction rows at the two corners of a
    // face share the load in ways the sweep does not fix, and their pull drifts.
    for (int i = 0; i < 10; ++i) {
        const float below = i == 0 ? 0 : boxes[i - 1]->position.x;
        EXPECT_NEAR(boxes[i]->position.x, below, 0.1f) << i;
        EXPECT_NEAR(boxes[i]->position.x, 0, 0.3f) << i;
        EXPECT_NEAR(boxes[i]->position.y, 0.5f + i, 0.05f) << i;
        EXPECT_LT(OffSquare(GeomAngle(*boxes[i])), 0.01f) << i;
        EXPECT_LT(boxes[i]->GetKineticEnergy(), 1e-3f) << i;
    }
}

TEST_F(SimulationTest, ConcavePolygonRestsOnItsOutline) {
    AddGround();
    // A U, open at the top, drawn a little above the ground.
    const math::Vec2List outline = {{0, 1}, {3, 1}, {3, 4}, {2, 4}, {2, 2}, {1, 2}, {1, 4}, {0, 4}};
    physics::GeomPtr shape(new physics::Polygon(outline));
    const BodyPtr body = sim.AddBodyOf(shape);
    Steps(500);
    const physics::Polygon& polygon = static_cast<physics::Polygon&>(*shape);
    float lowest = math::Infinity();
    for (const Vec2& v : polygon.GetWorldVertices()) {
        lowest = std::min(lowest, v.y);
    }
    // Resting on its flat bottom, sunk by about the target depth, upright and still.
    EXPECT_NEAR(lowest, -sim.targetPenetration->Get(), 0.01f);
    EXPECT_NEAR(GeomAngle(*body), 0, 0.01f);
    EXPECT_LT(body->GetKineticEnergy(), 1e-4f);
    EXPECT_GE(sim.GetContacts().size(), 2u);
}

// --- Determinism ---

// A mixed scene, stepped; the state of every body in order.
std::vector<float> RunMixedScene(bool prioritized) {
    Simulation& sim = Simulation::Get();
    sim.Clear();
    sim.prioritizedSolver->SetNative(prioritized);
    physics::GeomPtr ground(new physics::Plane());
    ground->SetTransform(physics::Transform::FromAngle(kPi / 2, {0, 0}));
    sim.AddBodyOf(ground);
    for (int i = 0; i < 24; ++i) {
        const float x = (i % 6) * 1.1f - 3;
        const float y = 1 + (i / 6) * 1.3f;
        physics::GeomPtr geom;
        switch (i % 3) {
            case 0:
                geom = physics::GeomPtr(new physics::Box(Vec2(0.5f, 0.4f)));
                break;
            case 1:
                geom = physics::GeomPtr(new physics::Circle(0.45f));
                break;
            default:
                geom = physics::GeomPtr(new physics::Polygon(
                    math::Vec2List{{-0.5f, -0.4f}, {0.5f, -0.5f}, {0.3f, 0.5f}, {-0.4f, 0.3f}}));
        }
        geom->SetTransform(physics::Transform::FromAngle(0.1f * i, {x, y}));
        const BodyPtr body = sim.AddBodyOf(geom);
        // Every fourth body gets a second geom, so that a body's own geom order counts.
        if (i % 4 == 0) {
            physics::GeomPtr extra(new physics::Circle(0.2f));
            extra->SetTransform(physics::Transform::FromAngle(0, {x + 0.4f, y + 0.4f}));
            body->AddGeom(extra);
        }
    }
    for (int i = 0; i < 300; ++i) {
        sim.Step(true);
    }
    std::vector<float> state;
    for (const BodyPtr& body : sim.GetBodies()) {
        state.insert(state.end(), {body->position.x, body->position.y, body->velocity.x,
                                   body->velocity.y, body->angle, body->angularVelocity});
    }
    return state;
}

TEST_F(SimulationTest, SameWorldSameSteppingSameBits) {
    for (bool prioritized : {false, true}) {
        const std::vector<float> first = RunMixedScene(prioritized);
        // Some garbage in between, so that the second world lives at other addresses.
        std::vector<BodyPtr> spacers;
        for (int i = 0; i < 50; ++i) {
            spacers.push_back(BodyPtr(new Body()));
        }
        const std::vector<float> second = RunMixedScene(prioritized);
        ASSERT_EQ(first.size(), second.size());
        EXPECT_EQ(std::memcmp(first.data(), second.data(), first.size() * sizeof(float)), 0)
            << "prioritized " << prioritized;
        // The scene did something: bodies moved and piled up.
        EXPECT_NE(first[6 + 1], 1.0f);
    }
}

// --- The script face ---

TEST_F(SimulationTest, ScriptsReachTheAttributesAndTime) {
    script::AddToRoot(script::ReflectedPtr(&sim));
    script::Parser& parser = script::Parser::Get();
    EXPECT_EQ(parser.ExecuteToString("Sim.gravity"), "[0, -9.8]");
    EXPECT_EQ(parser.ExecuteToString("Sim.maxPositionCorrection"), "+inf");
    parser.ExecuteToString("Sim.timeDelta = 0.02; Sim.running = false");
    EXPECT_EQ(sim.timeDelta->Get(), 0.02f);
    EXPECT_FALSE(sim.running->Get());
    sim.running->SetNative(true);
    sim.Update(0.02f);
    EXPECT_EQ(parser.ExecuteToString("Sim.time"), "0.02");
    script::Parser::Release();
}

}  // namespace
