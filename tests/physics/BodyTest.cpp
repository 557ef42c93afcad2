#include "physics/Body.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "../util/LogCapture.h"
#include "math/MathUtil.h"
#include "physics/AbstractBody.h"
#include "physics/Geom.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"
#include "util/Exception.h"
#include "util/Pointee.h"

namespace {

using math::Vec2;
using physics::Body;
using physics::BodyPtr;
using physics::GeomPtr;
using physics::GeomSet;

constexpr float kPi = 3.1415927f;

void ExpectNear(const Vec2& actual, const Vec2& expected, float tolerance = 1e-5f) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

// Runs the action and expects the code assertion with exactly this expression.
void ExpectCodeAssertion(const std::function<void()>& action, const std::string& expression) {
    try {
        action();
        ADD_FAILURE() << "no assertion for " << expression;
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"" + expression + "\""), std::string::npos)
            << e.what();
    }
}

GeomPtr MakeCircle(float radius, const Vec2& at, float density = 2) {
    GeomPtr circle(new physics::Circle(radius));
    circle->density = density;
    circle->SetTransform(physics::Transform{{1, 0}, at});
    return circle;
}

GeomSet SetOf(std::initializer_list<GeomPtr> geoms) {
    GeomSet set;
    for (const GeomPtr& geom : geoms) {
        set.insert(geom);
    }
    return set;
}

// Bodies and their geoms hold each other; every body made here gives up its geoms at the end
// of the test, as the simulation's RemoveBody does.
class BodyTest : public testing::Test {
protected:
    BodyPtr MakeBody() {
        BodyPtr body(new Body);
        m_bodies.push_back(body);
        return body;
    }
    void TearDown() override {
        for (const BodyPtr& body : m_bodies) {
            body->SetGeoms(GeomSet());
        }
    }

    std::vector<BodyPtr> m_bodies;
};

// --- AbstractBody ---

TEST(AbstractBody, StartsAtRestWithInfiniteMass) {
    physics::AbstractBody body;
    EXPECT_EQ(body.position, Vec2(0, 0));
    EXPECT_EQ(body.velocity, Vec2(0, 0));
    EXPECT_EQ(body.force, Vec2(0, 0));
    EXPECT_EQ(body.velocityChange, Vec2(0, 0));
    EXPECT_EQ(body.angle, 0);
    EXPECT_EQ(body.angularVelocity, 0);
    EXPECT_EQ(body.angularChange, 0);
    EXPECT_EQ(body.torque, 0);
    EXPECT_TRUE(body.adjacency.empty());
    EXPECT_EQ(body.GetMass(), math::Infinity());
    EXPECT_EQ(body.GetInertia(), math::Infinity());
    EXPECT_EQ(body.GetMassInv(), 0);
    EXPECT_EQ(body.GetInertiaInv(), 0);
    EXPECT_EQ(body.GetArea(), 0);
    EXPECT_FALSE(body.IsStatic());
    EXPECT_TRUE(body.IsImmovable());
    EXPECT_FALSE(body.IsBad());
}

TEST(AbstractBody, IdsRunOverAllBodies) {
    const size_t next = physics::AbstractBody::PeekNextID();
    ASSERT_GT(next, 0u) << "the world body draws 0 first";
    physics::AbstractBody first;
    Body second;
    EXPECT_EQ(first.GetID(), next);
    EXPECT_EQ(second.GetID(), next + 1);
    EXPECT_EQ(physics::AbstractBody::PeekNextID(), next + 2);
}

TEST(AbstractBody, CopyTakesMotionOnlyAndANewId) {
    physics::AbstractBody original;
    original.position = {1, 2};
    original.velocity = {3, 4};
    original.force = {5, 6};
    original.angle = 0.5f;
    original.angularVelocity = 0.25f;
    original.torque = 7;
    original.velocityChange = {8, 9};
    original.angularChange = 10;
    original.adjacency.push_back(nullptr);
    original.SetStatic(true);

    const physics::AbstractBody copy(original);
    EXPECT_NE(copy.GetID(), original.GetID());
    EXPECT_EQ(copy.GetID() + 1, physics::AbstractBody::PeekNextID());
    EXPECT_EQ(copy.position, Vec2(1, 2));
    EXPECT_EQ(copy.velocity, Vec2(3, 4));
    EXPECT_EQ(copy.force, Vec2(5, 6));
    EXPECT_EQ(copy.angle, 0.5f);
    EXPECT_EQ(copy.angularVelocity, 0.25f);
    EXPECT_EQ(copy.torque, 7);
    EXPECT_EQ(copy.velocityChange, Vec2(0, 0));
    EXPECT_EQ(copy.angularChange, 0);
    EXPECT_TRUE(copy.adjacency.empty());
    EXPECT_FALSE(copy.IsStatic());
}

TEST(AbstractBody, BadWhenMotionIsNotFinite) {
    const float nan = std::nanf("");
    physics::AbstractBody body;
    body.position = {nan, 0};
    EXPECT_TRUE(body.IsBad());
    body.position = {0, 0};
    body.velocity = {0, math::Infinity()};
    EXPECT_TRUE(body.IsBad());
    body.velocity = {0, 0};
    body.angle = -math::Infinity();
    EXPECT_TRUE(body.IsBad());
    body.angle = 0;
    body.angularVelocity = nan;
    EXPECT_TRUE(body.IsBad());
    body.angularVelocity = 0;
    // Force and torque blow-ups show only once they reach the motion.
    body.force = {nan, nan};
    body.torque = nan;
    EXPECT_FALSE(body.IsBad());
}

// --- The world body ---

TEST(WorldBody, IsTheFirstBodyAndHoldsTheFirstGeom) {
    ASSERT_TRUE(physics::Simulation::Get().GetWorldBody());
    EXPECT_EQ(physics::Simulation::Get().GetWorldBody()->GetID(), 0u);
    EXPECT_EQ(physics::Simulation::Get().GetWorldGeom()->GetID(), 0u);
    EXPECT_EQ(physics::Simulation::Get().GetWorldGeom()->GetBody(),
              physics::Simulation::Get().GetWorldBody().Get());
    EXPECT_EQ(physics::Simulation::Get().GetWorldBody()->GetMassInv(), 0);
    EXPECT_EQ(physics::Simulation::Get().GetWorldBody()->GetInertiaInv(), 0);
    EXPECT_EQ(physics::Simulation::Get().GetWorldBody()->position, Vec2(0, 0));
    EXPECT_FALSE(physics::Simulation::Get().GetWorldBody()->IsBad());
}

TEST(WorldBody, KeepsExactlyItsWorldGeom) {
    const BodyPtr& world = physics::Simulation::Get().GetWorldBody();
    const GeomPtr circle = MakeCircle(1, {3, 3});
    ExpectCodeAssertion([&] { world->SetGeom(circle); }, "worldGeomCount == 1");
    ExpectCodeAssertion([&] { world->SetGeoms(GeomSet()); }, "worldGeomCount == 1");
    ExpectCodeAssertion([&] { world->SetGeom(GeomPtr(new physics::WorldGeom)); },
                        "(*g)->GetID() == 0");
    ExpectCodeAssertion([&] { world->AddGeom(GeomPtr(new physics::WorldGeom)); },
                        "(*g)->GetID() == 0");
    ExpectCodeAssertion([&] { world->RemoveGeom(physics::Simulation::Get().GetWorldGeom()); },
                        "geom->GetID() != 0");
    // Refused before anything was detached.
    EXPECT_EQ(world->GetGeoms().size(), 1u);
    EXPECT_EQ(physics::Simulation::Get().GetWorldGeom()->GetBody(), world.Get());
    EXPECT_EQ(circle->GetBody(), nullptr);

    // Other geoms may join it; the body stays infinite, at the origin.
    world->AddGeom(circle);
    EXPECT_EQ(world->GetGeoms().size(), 2u);
    EXPECT_EQ(circle->GetBody(), world.Get());
    EXPECT_EQ(world->GetMassInv(), 0);
    EXPECT_EQ(world->position, Vec2(0, 0));
    ExpectNear(circle->GetPosition(), {3, 3});
    world->RemoveGeom(circle);
    world->RecalcGeoms();
    EXPECT_EQ(world->GetGeoms().size(), 1u);
    EXPECT_EQ(circle->GetBody(), nullptr);
    EXPECT_FALSE(world->IsBad());
}

// --- Mass properties ---

TEST_F(BodyTest, CircleGivesMassInertiaAndCentre) {
    const BodyPtr body = MakeBody();
    const GeomPtr circle = MakeCircle(1, {3, 4}, 2);
    body->AddGeom(circle);

    EXPECT_FLOAT_EQ(body->GetMass(), 2 * kPi);
    EXPECT_FLOAT_EQ(body->GetMassInv(), 1 / (2 * kPi));
    EXPECT_FLOAT_EQ(body->GetInertia(), body->GetMass() / 2);
    EXPECT_FLOAT_EQ(body->GetInertiaInv(), 2 / body->GetMass());
    EXPECT_FLOAT_EQ(body->GetArea(), kPi);
    EXPECT_EQ(body->position, Vec2(3, 4));
    EXPECT_EQ(body->angle, 0);

    EXPECT_EQ(circle->GetBody(), body.Get());
    ASSERT_EQ(body->GetPlacedGeoms().size(), 1u);
    EXPECT_EQ(body->GetPlacedGeoms()[0].geom, circle);
    ExpectNear(body->GetPlacedGeoms()[0].placed.translation, {0, 0});
    EXPECT_TRUE(body->GetGeoms().Contains(circle));
    // The geom stays where it was.
    ExpectNear(circle->GetPosition(), {3, 4});
    EXPECT_FALSE(body->IsBad());
}

TEST_F(BodyTest, TwoEqualCirclesUseTheParallelAxisTheorem) {
    const BodyPtr body = MakeBody();
    body->SetGeoms(SetOf({MakeCircle(1, {-1, 0}), MakeCircle(1, {1, 0})}));

    const float m = 2 * kPi;
    ExpectNear(body->position, {0, 0});
    EXPECT_FLOAT_EQ(body->GetMass(), 2 * m);
    EXPECT_FLOAT_EQ(body->GetInertia(), 2 * (m * 1 * 1 / 2 + m));
    EXPECT_FLOAT_EQ(body->GetArea(), 2 * kPi);
    EXPECT_EQ(body->GetPlacedGeoms().size(), 2u);
}

TEST_F(BodyTest, CentreIsWeightedByMass) {
    const BodyPtr body = MakeBody();
    // Density 1 and 3 of equal size: the centre lies a quarter of the way from the heavy one.
    body->SetGeoms(SetOf({MakeCircle(1, {0, 0}, 3), MakeCircle(1, {4, 0}, 1)}));

    ExpectNear(body->position, {1, 0});
    const float m = kPi;
    const float expected = 3 * m / 2 + 3 * m * 1 + m / 2 + m * 9;
    EXPECT_NEAR(body->GetInertia(), expected, expected * 1e-6f);
    // Placed transforms are relative to the new centre.
    for (const Body::PlacedGeom& placed : body->GetPlacedGeoms()) {
        ExpectNear(placed.placed.translation, placed.geom->GetPosition() - Vec2(1, 0));
        ExpectNear(placed.placedInverse.Apply(placed.placed.translation), {0, 0});
    }
}

TEST_F(BodyTest, BoxAndCircleTogether) {
    const BodyPtr body = MakeBody();
    GeomPtr box(new physics::Box(Vec2(1, 0.5f)));
    box->density = 1;
    box->SetTransform(physics::Transform{{1, 0}, {0, 2}});
    body->SetGeoms(SetOf({box, MakeCircle(1, {0, 0}, 2 / kPi)}));

    // Both of mass 2: centre halfway, each contributes (own inertia + 2 * 1).
    ExpectNear(body->position, {0, 1});
    EXPECT_FLOAT_EQ(body->GetMass(), 4);
    EXPECT_FLOAT_EQ(body->GetInertia(), 2 * (4 + 1) / 12.0f + 2 * 1 + 2 * 0.5f + 2 * 1);
}

TEST_F(BodyTest, PlaneMakesAnImmovableBodyAtTheOrigin) {
    const BodyPtr body = MakeBody();
    GeomPtr plane(new physics::Plane);
    plane->SetTransform(physics::Transform{{0, 1}, {5, -3}});
    body->AddGeom(plane);

    EXPECT_EQ(body->GetMass(), math::Infinity());
    EXPECT_EQ(body->GetMassInv(), 0);
    EXPECT_EQ(body->GetInertia(), math::Infinity());
    EXPECT_EQ(body->GetInertiaInv(), 0);
    EXPECT_EQ(body->position, Vec2(0, 0));
    EXPECT_TRUE(body->IsImmovable());
    EXPECT_FALSE(body->IsBad());
    // The plane stays where it was put.
    const auto* placedPlane = static_cast<physics::Plane*>(plane.Get());
    ExpectNear(placedPlane->GetNormal(), {0, 1});
    EXPECT_NEAR(placedPlane->GetOffset(), 3, 1e-5f);

    // A finite geom beside it does not move the centre off the origin either.
    body->AddGeom(MakeCircle(1, {10, 10}));
    EXPECT_EQ(body->position, Vec2(0, 0));
    EXPECT_EQ(body->GetMassInv(), 0);
    EXPECT_EQ(body->GetInertiaInv(), 0);
}

TEST_F(BodyTest, DegenerateGeomsAreSkippedWithALogLine) {
    const BodyPtr body = MakeBody();
    body->position = {7, 8};
    body->velocity = {1, 2};
    const GeomPtr point = MakeCircle(0, {0, 0});
    {
        test::LogCapture log;
        body->AddGeom(point);
        EXPECT_TRUE(log.Contains("Bad geometry in Body::AddGeoms")) << log.Text();
    }
    EXPECT_EQ(body->GetMass(), 1);
    EXPECT_EQ(body->GetMassInv(), 1);
    EXPECT_EQ(body->GetInertia(), 1);
    EXPECT_EQ(body->GetInertiaInv(), 1);
    EXPECT_TRUE(body->GetGeoms().empty());
    EXPECT_TRUE(body->GetPlacedGeoms().empty());
    EXPECT_EQ(point->GetBody(), nullptr);
    EXPECT_EQ(body->velocity, Vec2(1, 2));
    EXPECT_TRUE(body->IsBad());

    // Beside a good geom, each bad one is dropped and the good one counts alone.
    const GeomPtr good = MakeCircle(1, {2, 0});
    const GeomPtr weightless = MakeCircle(1, {0, 0}, 0);
    const GeomPtr nanDensity = MakeCircle(1, {0, 0}, std::nanf(""));
    const GeomPtr lost = MakeCircle(1, {math::Infinity(), 0});
    {
        test::LogCapture log;
        body->SetGeoms(SetOf({good, weightless, nanDensity, lost}));
        size_t lines = 0;
        for (const util::String& line : log.Lines()) {
            lines += line.find("Bad geometry in Body::AddGeoms") != util::String::npos;
        }
        EXPECT_EQ(lines, 3u) << log.Text();
    }
    EXPECT_EQ(body->GetGeoms().size(), 1u);
    EXPECT_TRUE(body->GetGeoms().Contains(good));
    EXPECT_FLOAT_EQ(body->GetMass(), 2 * kPi);
    EXPECT_EQ(body->position, Vec2(2, 0));
    EXPECT_FALSE(body->IsBad());
}

TEST_F(BodyTest, EmptySetLeavesUnitMassAndKeepsMotion) {
    const BodyPtr body = MakeBody();
    body->AddGeom(MakeCircle(1, {3, 0}));
    body->velocity = {1, 1};
    body->angle = 0.5f;
    body->SetGeoms(GeomSet());
    EXPECT_EQ(body->position, Vec2(3, 0));
    EXPECT_EQ(body->velocity, Vec2(1, 1));
    EXPECT_EQ(body->angle, 0.5f);
    EXPECT_EQ(body->GetMass(), 1);
    EXPECT_EQ(body->GetInertiaInv(), 1);
    EXPECT_TRUE(body->IsBad());
}

TEST_F(BodyTest, RebuildRestartsAtAngleZeroAndKeepsVelocity) {
    const BodyPtr body = MakeBody();
    const GeomPtr circle = MakeCircle(1, {0, 0});
    body->AddGeom(circle);
    body->angle = 1;
    body->position = {5, 5};
    body->velocity = {2, 3};
    body->angularVelocity = 4;
    body->UpdateTransforms();
    ExpectNear(circle->GetPosition(), {5, 5});

    body->RecalcGeoms();
    EXPECT_EQ(body->angle, 0);
    ExpectNear(body->position, {5, 5});
    EXPECT_EQ(body->velocity, Vec2(2, 3));
    EXPECT_EQ(body->angularVelocity, 4);
    // The geom keeps its world transform, now all in its placement.
    ExpectNear(circle->GetTransform().rotation, {std::cos(1.0f), std::sin(1.0f)});
    ExpectNear(body->GetPlacedGeoms()[0].placed.rotation, {std::cos(1.0f), std::sin(1.0f)});
}

// --- Changing the set ---

TEST_F(BodyTest, AddSetAndRemoveGoThroughTheRebuild) {
    const BodyPtr body = MakeBody();
    const GeomPtr a = MakeCircle(1, {0, 0});
    const GeomPtr b = MakeCircle(1, {2, 0});
    const GeomPtr c = MakeCircle(1, {4, 0});

    body->AddGeom(a);
    body->AddGeoms(SetOf({b, c}));
    EXPECT_EQ(body->GetGeoms().size(), 3u);
    ExpectNear(body->position, {2, 0});
    // Adding a held geom again changes nothing.
    body->AddGeom(b);
    EXPECT_EQ(body->GetGeoms().size(), 3u);

    body->RemoveGeom(c);
    EXPECT_EQ(body->GetGeoms().size(), 2u);
    EXPECT_EQ(c->GetBody(), nullptr);
    ExpectNear(body->position, {1, 0});

    body->SetGeom(c);
    EXPECT_EQ(body->GetGeoms().size(), 1u);
    EXPECT_EQ(a->GetBody(), nullptr);
    EXPECT_EQ(b->GetBody(), nullptr);
    EXPECT_EQ(c->GetBody(), body.Get());
    ExpectNear(body->position, {4, 0});

    // A geom not held leaves the set as it is, yet the rebuild still runs.
    body->angle = 0.3f;
    body->RemoveGeom(a);
    EXPECT_EQ(body->GetGeoms().size(), 1u);
    EXPECT_EQ(body->angle, 0);
}

TEST_F(BodyTest, OwnSetAsArgument) {
    const BodyPtr body = MakeBody();
    body->SetGeoms(SetOf({MakeCircle(1, {0, 0}), MakeCircle(1, {2, 0})}));
    body->SetGeoms(body->GetGeoms());
    EXPECT_EQ(body->GetGeoms().size(), 2u);
    EXPECT_EQ(body->GetPlacedGeoms().size(), 2u);
    EXPECT_FALSE(body->IsBad());
}

TEST_F(BodyTest, DensityChangeTakesEffectThroughRecalc) {
    const BodyPtr body = MakeBody();
    const GeomPtr circle = MakeCircle(1, {0, 0}, 2);
    body->AddGeom(circle);
    circle->density = 4;
    EXPECT_FLOAT_EQ(body->GetMass(), 2 * kPi);
    circle->RecalcGeoms();
    EXPECT_FLOAT_EQ(body->GetMass(), 4 * kPi);
    body->RecalcGeoms();
    EXPECT_FLOAT_EQ(body->GetMass(), 4 * kPi);

    // A loose geom has nothing to tell.
    const GeomPtr loose = MakeCircle(1, {0, 0});
    loose->RecalcGeoms();
    EXPECT_EQ(loose->GetBody(), nullptr);
}

TEST_F(BodyTest, MovingAGeomRecomputesItsFormerBody) {
    const BodyPtr first = MakeBody();
    const BodyPtr second = MakeBody();
    const GeomPtr keep = MakeCircle(1, {0, 0});
    const GeomPtr move = MakeCircle(2, {6, 0});
    first->SetGeoms(SetOf({keep, move}));
    ASSERT_FLOAT_EQ(first->GetMass(), 2 * kPi + 8 * kPi);

    second->SetGeoms(SetOf({move}));
    EXPECT_EQ(move->GetBody(), second.Get());
    EXPECT_FALSE(first->GetGeoms().Contains(move));
    EXPECT_EQ(first->GetPlacedGeoms().size(), 1u);
    EXPECT_FLOAT_EQ(first->GetMass(), 2 * kPi);
    EXPECT_EQ(first->position, Vec2(0, 0));
    EXPECT_FLOAT_EQ(second->GetMass(), 8 * kPi);
    EXPECT_EQ(second->position, Vec2(6, 0));
    EXPECT_FALSE(first->IsBad());
    EXPECT_FALSE(second->IsBad());

    // Taking the last one leaves the former body without geoms.
    second->AddGeom(keep);
    EXPECT_TRUE(first->GetGeoms().empty());
    EXPECT_EQ(first->GetMass(), 1);
    EXPECT_TRUE(first->IsBad());
    EXPECT_EQ(second->GetGeoms().size(), 2u);
    EXPECT_FLOAT_EQ(second->GetMass(), 10 * kPi);
}

TEST(BodyLifetime, AnEmptiedBodyIsFreed) {
    BodyPtr body(new Body);
    const util::WeakPtr<Body> watch(body);
    const GeomPtr circle = MakeCircle(1, {0, 0});
    body->AddGeom(circle);
    body->SetGeoms(GeomSet());
    body.Reset();
    EXPECT_TRUE(watch.Expired());
    EXPECT_EQ(circle->GetBody(), nullptr);
}

TEST(BodyLifetime, ABodyHeldOnlyByItsGeomsSurvivesItsRebuild) {
    const GeomPtr circle = MakeCircle(1, {0, 0});
    {
        BodyPtr body(new Body);
        body->AddGeom(circle);
    }
    // Only the geom holds the body now; its rebuild detaches that very reference.
    circle->RecalcGeoms();
    auto* body = dynamic_cast<Body*>(circle->GetBody());
    ASSERT_NE(body, nullptr);
    EXPECT_FLOAT_EQ(body->GetMass(), 2 * kPi);
    EXPECT_EQ(body->GetGeoms().size(), 1u);

    // Handing the geom over frees the former body on the way.
    const util::WeakPtr<Body> former(body);
    BodyPtr taker(new Body);
    taker->AddGeom(circle);
    EXPECT_TRUE(former.Expired());
    EXPECT_EQ(circle->GetBody(), taker.Get());
    taker->SetGeoms(GeomSet());
}

// --- Transforms ---

TEST_F(BodyTest, UpdateTransformsPlacesGeomsByAngleAndPosition) {
    const BodyPtr body = MakeBody();
    const GeomPtr near = MakeCircle(1, {0, 0});
    GeomPtr box(new physics::Box);
    box->SetTransform(physics::Transform{{1, 0}, {2, 0}});
    body->SetGeoms(SetOf({near, box}));
    // Density 2 both: circle mass 2 pi, box mass 2.
    const float m1 = 2 * kPi;
    const float m2 = 2;
    const Vec2 centre = Vec2(2 * m2, 0) / (m1 + m2);
    ExpectNear(body->position, centre);

    body->angle = kPi / 2;
    body->position = {10, 20};
    body->UpdateTransforms();

    ExpectNear(body->GetTransform().rotation, {0, 1});
    ExpectNear(body->GetTransform().translation, {10, 20});
    // Offsets from the centre turn a quarter: (x, 0) becomes (0, x).
    ExpectNear(near->GetPosition(), Vec2(10, 20 - centre.x));
    ExpectNear(box->GetPosition(), Vec2(10, 20 + 2 - centre.x));
    const auto* placedBox = static_cast<physics::Box*>(box.Get());
    ExpectNear(placedBox->GetWorldBox().centre, Vec2(10, 20 + 2 - centre.x));
    ExpectNear(placedBox->GetWorldBox().axis1, {0, 1});
    ExpectNear(body->GetInverseTransform().Apply(box->GetPosition()), Vec2(2 - centre.x, 0));
    ExpectNear(box->GetInverseTransform().Apply(box->GetPosition()), {0, 0});
}

TEST_F(BodyTest, UpdateTransformsWrapsTheAngle) {
    const BodyPtr body = MakeBody();
    body->AddGeom(MakeCircle(1, {0, 0}));
    const float turn = 6.2831855f;

    struct Case {
        float in;
        float out;
    };
    const Case cases[] = {
        {0.5f, 0.5f},
        {7.0f, std::fmod(7.0f, turn)},
        {-7.0f, std::fmod(-7.0f, turn)},
        {4.0f, 4.0f - turn},
        {-4.0f, -4.0f + turn},
        {kPi, kPi},
        {-kPi, kPi},
        {10.0f, std::fmod(10.0f, turn) - turn},
    };
    for (const Case& c : cases) {
        body->angle = c.in;
        body->UpdateTransforms();
        EXPECT_FLOAT_EQ(body->angle, c.out) << c.in;
        EXPECT_GT(body->angle, -kPi) << c.in;
        EXPECT_LE(body->angle, kPi) << c.in;
    }
    for (const float bad : {std::nanf(""), math::Infinity(), -math::Infinity()}) {
        body->angle = bad;
        body->UpdateTransforms();
        EXPECT_EQ(body->angle, 0) << bad;
        ExpectNear(body->GetTransform().rotation, {1, 0});
    }
}

TEST_F(BodyTest, BadnessFollowsMotionAndGeoms) {
    const BodyPtr body = MakeBody();
    EXPECT_TRUE(body->IsBad());
    body->AddGeom(MakeCircle(1, {0, 0}));
    EXPECT_FALSE(body->IsBad());
    body->velocity = {std::nanf(""), 0};
    EXPECT_TRUE(body->IsBad());
    body->velocity = {0, 0};
    EXPECT_FALSE(body->IsBad());

    // A geom taken away behind the body's back breaks its contract.
    const GeomPtr geom = body->GetPlacedGeoms()[0].geom;
    geom->SetBody(nullptr);
    ExpectCodeAssertion([&] { (void)body->IsBad(); }, "bp->geom->GetBodyPtr() == this");
    geom->SetBody(body);
}

}  // namespace
