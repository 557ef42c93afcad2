#include "physics/Geom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/MaterialDefaults.h"
#include "physics/Shapes.h"
#include "util/Exception.h"

namespace {

using math::Vec2;
using physics::Body;
using physics::BodyPtr;
using physics::GeomPtr;
using physics::Transform;

constexpr float kPi = 3.1415927f;
const float kInf = math::Infinity();

void ExpectNear(const Vec2& actual, const Vec2& expected, float tolerance = 1e-5f) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

Transform At(const Vec2& translation) {
    return Transform{{1, 0}, translation};
}

// A quarter turn counter-clockwise, then the translation.
Transform QuarterTurnAt(const Vec2& translation) {
    return Transform{{0, 1}, translation};
}

// --- Geom basics ---

TEST(Geom, IdsRunOverAllGeoms) {
    const size_t next = physics::Geom::PeekNextID();
    ASSERT_GT(next, 0u) << "the world geom draws 0 first";
    physics::Circle first;
    physics::Box second;
    EXPECT_EQ(first.GetID(), next);
    EXPECT_EQ(second.GetID(), next + 1);
    const physics::Circle copy(first);
    EXPECT_EQ(copy.GetID(), next + 2);
    EXPECT_EQ(physics::Geom::PeekNextID(), next + 3);
}

TEST(Geom, MaterialComesFromTheCurrentDefaults) {
    physics::MaterialDefaults& defaults = physics::MaterialDefaults::Current();
    const physics::MaterialDefaults saved = defaults;
    defaults.density = 5;
    defaults.friction = 0.25f;
    defaults.restitution = 0.75f;
    const physics::Circle circle;
    defaults = saved;

    EXPECT_EQ(circle.density, 5);
    EXPECT_EQ(circle.friction, 0.25f);
    EXPECT_EQ(circle.restitution, 0.75f);
    EXPECT_EQ(circle.airFrictionMult, 1);
    EXPECT_TRUE(circle.collideWater);
    EXPECT_EQ(circle.collideSet, 1u);
    EXPECT_EQ(circle.GetBody(), nullptr);
    EXPECT_EQ(circle.GetPosition(), Vec2(0, 0));
    EXPECT_EQ(circle.GetTransform().rotation, Vec2(1, 0));
    EXPECT_EQ(circle.GetInverseTransform().translation, Vec2(0, 0));

    const physics::Circle later;
    EXPECT_EQ(later.density, saved.density);
}

TEST(Geom, CopyIsLooseWithTheSameMaterialAndPlace) {
    physics::Circle original(2);
    original.density = 3;
    original.friction = 0.1f;
    original.restitution = 0.2f;
    original.airFrictionMult = 4;
    original.collideWater = false;
    original.collideSet = 6;
    original.SetTransform(At({1, 2}));
    physics::Circle other;
    original.AddNoCollide(&other);

    const physics::Circle copy(original);
    EXPECT_EQ(copy.GetRadius(), 2);
    EXPECT_EQ(copy.density, 3);
    EXPECT_EQ(copy.friction, 0.1f);
    EXPECT_EQ(copy.restitution, 0.2f);
    EXPECT_EQ(copy.airFrictionMult, 4);
    EXPECT_FALSE(copy.collideWater);
    EXPECT_EQ(copy.collideSet, 6u);
    EXPECT_EQ(copy.GetPosition(), Vec2(1, 2));
    EXPECT_FALSE(copy.IsNoCollide(&other));
}

TEST(Geom, SetTransformStoresInverseAndPosition) {
    physics::Circle circle;
    const Transform t = Transform::FromAngle(0.7f, {3, -2});
    circle.SetTransform(t);
    EXPECT_EQ(circle.GetTransform().rotation, t.rotation);
    EXPECT_EQ(circle.GetTransform().translation, t.translation);
    EXPECT_EQ(circle.GetPosition(), Vec2(3, -2));
    ExpectNear(circle.GetInverseTransform().Apply({3, -2}), {0, 0});
    ExpectNear(circle.GetInverseTransform().Apply(t.Apply({1, 5})), {1, 5});
}

TEST(Geom, NoCollideIsACount) {
    physics::Circle a;
    physics::Circle b;
    physics::Circle c;
    EXPECT_FALSE(a.IsNoCollide(&b));
    a.AddNoCollide(&b);
    a.AddNoCollide(&b);
    a.AddNoCollide(&c);
    EXPECT_TRUE(a.IsNoCollide(&b));
    EXPECT_FALSE(b.IsNoCollide(&a)) << "each side keeps its own counts";
    a.RemoveNoCollide(&b);
    EXPECT_TRUE(a.IsNoCollide(&b)) << "a second hinge still holds the pair";
    a.RemoveNoCollide(&b);
    EXPECT_FALSE(a.IsNoCollide(&b));
    // Removing once more does not go below zero: a later add counts from nothing again.
    a.RemoveNoCollide(&b);
    a.AddNoCollide(&b);
    EXPECT_TRUE(a.IsNoCollide(&b));
    a.RemoveNoCollide(&b);
    EXPECT_FALSE(a.IsNoCollide(&b));
    EXPECT_TRUE(a.IsNoCollide(&c));
}

// --- Collision filter ---

class CanCollideTest : public testing::Test {
protected:
    // A body of one circle, or of one plane when immovable.
    BodyPtr MakeBody(GeomPtr& geom, bool plane = false) {
        geom = plane ? GeomPtr(new physics::Plane) : GeomPtr(new physics::Circle(1));
        BodyPtr body(new Body);
        body->AddGeom(geom);
        m_bodies.push_back(body);
        return body;
    }
    // Bodies and geoms hold each other: let go of the geoms at the end.
    void TearDown() override {
        for (const BodyPtr& body : m_bodies) {
            body->SetGeoms(physics::GeomSet());
        }
    }

    std::vector<BodyPtr> m_bodies;
};

TEST_F(CanCollideTest, OnlyTheLowFiveCollideBitsCount) {
    GeomPtr a;
    GeomPtr b;
    const BodyPtr bodyA = MakeBody(a);
    const BodyPtr bodyB = MakeBody(b);
    EXPECT_TRUE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));

    a->collideSet = 32;
    b->collideSet = 32;
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
    a->collideSet = 0xFFFFFFE0u;
    b->collideSet = 0xFFFFFFFFu;
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
    a->collideSet = 2;
    b->collideSet = 1;
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
    a->collideSet = 32 | 16;
    b->collideSet = 64 | 16;
    EXPECT_TRUE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
}

TEST_F(CanCollideTest, NeedsTwoDifferentBodies) {
    GeomPtr a;
    GeomPtr b;
    const BodyPtr bodyA = MakeBody(a);
    const BodyPtr bodyB = MakeBody(b);
    EXPECT_FALSE(physics::CanCollide(nullptr, a.Get(), bodyB.Get(), b.Get()));
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), nullptr, b.Get()));

    // Geoms of one body never collide with one another.
    const GeomPtr second(new physics::Circle(1));
    second->SetTransform(At({1, 0}));
    bodyA->AddGeom(second);
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), bodyA.Get(), second.Get()));
    EXPECT_TRUE(physics::CanCollide(bodyA.Get(), second.Get(), bodyB.Get(), b.Get()));
}

TEST_F(CanCollideTest, OneSideMustMove) {
    GeomPtr a;
    GeomPtr b;
    GeomPtr p;
    GeomPtr q;
    const BodyPtr bodyA = MakeBody(a);
    const BodyPtr bodyB = MakeBody(b);
    const BodyPtr planeP = MakeBody(p, true);
    const BodyPtr planeQ = MakeBody(q, true);
    ASSERT_EQ(planeP->GetMassInv(), 0);

    bodyA->SetStatic(true);
    EXPECT_TRUE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
    EXPECT_TRUE(physics::CanCollide(bodyB.Get(), b.Get(), bodyA.Get(), a.Get()));
    bodyB->SetStatic(true);
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
    // Immovable by infinite mass counts the same as static.
    EXPECT_FALSE(physics::CanCollide(planeP.Get(), p.Get(), planeQ.Get(), q.Get()));
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), planeP.Get(), p.Get()));
    bodyA->SetStatic(false);
    EXPECT_TRUE(physics::CanCollide(bodyA.Get(), a.Get(), planeP.Get(), p.Get()));
    EXPECT_TRUE(physics::CanCollide(planeP.Get(), p.Get(), bodyA.Get(), a.Get()));
}

TEST_F(CanCollideTest, HingedPairsDoNot) {
    GeomPtr a;
    GeomPtr b;
    const BodyPtr bodyA = MakeBody(a);
    const BodyPtr bodyB = MakeBody(b);
    a->AddNoCollide(b.Get());
    EXPECT_FALSE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
    // Only the first geom's counts are asked; hinges enter both sides.
    EXPECT_TRUE(physics::CanCollide(bodyB.Get(), b.Get(), bodyA.Get(), a.Get()));
    a->RemoveNoCollide(b.Get());
    EXPECT_TRUE(physics::CanCollide(bodyA.Get(), a.Get(), bodyB.Get(), b.Get()));
}

// --- Circle ---

TEST(Circle, DistanceNormalAndClosestPoint) {
    physics::Circle circle(2);
    circle.SetTransform(At({1, 1}));
    EXPECT_EQ(circle.GetCentre(), Vec2(1, 1));
    EXPECT_EQ(circle.GetRadius(), 2);

    EXPECT_FLOAT_EQ(circle.Dist({4, 5}), 3);
    EXPECT_FLOAT_EQ(circle.Dist({1, 2}), -1);
    EXPECT_FLOAT_EQ(circle.Dist({1, 1}), -2);
    ExpectNear(circle.Normal({4, 5}), {0.6f, 0.8f});
    ExpectNear(circle.Normal({1, 0.5f}), {0, -1});
    EXPECT_EQ(circle.Normal({1, 1}), Vec2(0, 0));
    ExpectNear(circle.ClosestPoint({4, 5}), {2.2f, 2.6f});
    ExpectNear(circle.ClosestPoint({1, 1.5f}), {1, 3});
    EXPECT_EQ(circle.ClosestPoint({1, 1}), Vec2(3, 1));
}

TEST(Circle, MassPropertiesAndBounds) {
    physics::Circle circle(2);
    EXPECT_FLOAT_EQ(circle.Area(), kPi * 4);
    EXPECT_FLOAT_EQ(circle.InertiaPerMass(), 2);

    circle.SetTransform(Transform::FromAngle(1, {1, 1}));
    EXPECT_EQ(circle.GetBoundingBox(), math::BoundingBox2f({-1, -1}, {3, 3}));
    // The box stays axis-aligned whatever the rotation.
    const math::OBB2D obb = circle.GetOBB();
    EXPECT_EQ(obb.centre, Vec2(1, 1));
    EXPECT_EQ(obb.axis1, Vec2(1, 0));
    EXPECT_EQ(obb.axis2, Vec2(0, 1));
    EXPECT_EQ(obb.halfExtents, Vec2(2, 2));
    const physics::BoundingCircle bounds = circle.GetBoundingCircle();
    EXPECT_EQ(bounds.centre, Vec2(1, 1));
    EXPECT_EQ(bounds.radius, 2);
}

// --- Box ---

TEST(Box, NewBoxIsTheUnitBoxAtTheOrigin) {
    const physics::Box box;
    const math::OBB2D& local = box.GetLocalBox();
    EXPECT_EQ(local.centre, Vec2(0, 0));
    EXPECT_EQ(local.axis1, Vec2(1, 0));
    EXPECT_EQ(local.axis2, Vec2(0, 1));
    EXPECT_EQ(local.halfExtents, Vec2(0.5f, 0.5f));
    EXPECT_EQ(box.GetOBB().halfExtents, Vec2(0.5f, 0.5f));
    EXPECT_FLOAT_EQ(box.Area(), 1);
    EXPECT_FLOAT_EQ(box.InertiaPerMass(), 2.0f / 12);
    EXPECT_FLOAT_EQ(box.Dist({0, 0}), -0.5f);
}

TEST(Box, MassPropertiesFromHalfExtents) {
    const physics::Box box(Vec2(2, 1));
    EXPECT_FLOAT_EQ(box.Area(), 8);
    EXPECT_FLOAT_EQ(box.InertiaPerMass(), (16 + 4) / 12.0f);
}

TEST(Box, DistanceInsideOutsideAndAtCorners) {
    const physics::Box box(Vec2(2, 1));
    // Inside: the nearer face, negative.
    EXPECT_FLOAT_EQ(box.Dist({0.5f, 0.2f}), -0.8f);
    EXPECT_FLOAT_EQ(box.Dist({-1.8f, 0}), -0.2f);
    // Beside a face: straight distance.
    EXPECT_FLOAT_EQ(box.Dist({2.5f, 0}), 0.5f);
    EXPECT_FLOAT_EQ(box.Dist({0, -3}), 2);
    EXPECT_FLOAT_EQ(box.Dist({3, 0.5f}), 1);
    // Beyond a corner: distance to the corner.
    EXPECT_FLOAT_EQ(box.Dist({3, 2}), std::sqrt(2.0f));
    EXPECT_FLOAT_EQ(box.Dist({-5, -5}), 5);
    EXPECT_FLOAT_EQ(box.Dist({2, 1}), 0);
}

TEST(Box, NormalIsTheNearerFace) {
    const physics::Box box(Vec2(2, 1));
    EXPECT_EQ(box.Normal({0.5f, 0.2f}), Vec2(0, 1));
    EXPECT_EQ(box.Normal({0.5f, -0.2f}), Vec2(0, -1));
    EXPECT_EQ(box.Normal({1.9f, 0.1f}), Vec2(1, 0));
    EXPECT_EQ(box.Normal({-1.9f, 0.1f}), Vec2(-1, 0));
    EXPECT_EQ(box.Normal({2.5f, 0}), Vec2(1, 0));
    EXPECT_EQ(box.Normal({-2.5f, 0}), Vec2(-1, 0));
    // Corners do not round: the face whose line is nearer wins, ties to the second axis.
    EXPECT_EQ(box.Normal({3, 0.5f}), Vec2(0, 1));
    EXPECT_EQ(box.Normal({3, 2}), Vec2(0, 1));
    EXPECT_EQ(box.Normal({3, 2.5f}), Vec2(1, 0));
    // A coordinate of 0 counts as positive.
    EXPECT_EQ(box.Normal({0, 0}), Vec2(0, 1));
    EXPECT_EQ(box.Normal({0.5f, 0}), Vec2(0, 1));
    EXPECT_EQ(box.Normal({0, 3.5f}), Vec2(1, 0));
    EXPECT_EQ(box.Normal({0, -3.5f}), Vec2(1, 0));
}

TEST(Box, ClosestPointFollowsDistanceAndNormal) {
    const physics::Box box(Vec2(2, 1));
    ExpectNear(box.ClosestPoint({0.5f, 0.2f}), {0.5f, 1});
    ExpectNear(box.ClosestPoint({2.5f, 0}), {2, 0});
    ExpectNear(box.ClosestPoint({-1.5f, -0.8f}), {-1.5f, -1});
    ExpectNear(box.ClosestPoint({0, -3}), {0, -1});
}

TEST(Box, FollowsItsTransform) {
    physics::Box box(Vec2(2, 1));
    box.SetTransform(QuarterTurnAt({5, 5}));
    const math::OBB2D world = box.GetWorldBox();
    ExpectNear(world.centre, {5, 5});
    ExpectNear(world.axis1, {0, 1});
    ExpectNear(world.axis2, {-1, 0});
    EXPECT_EQ(world.halfExtents, Vec2(2, 1));
    // The local box is untouched.
    EXPECT_EQ(box.GetLocalBox().axis1, Vec2(1, 0));
    EXPECT_EQ(box.GetLocalBox().centre, Vec2(0, 0));

    EXPECT_FLOAT_EQ(box.Dist({5, 7.5f}), 0.5f);
    ExpectNear(box.Normal({5, 7.5f}), {0, 1});
    ExpectNear(box.ClosestPoint({5, 7.5f}), {5, 7});
    EXPECT_FLOAT_EQ(box.Dist({3.5f, 5}), 0.5f);
    ExpectNear(box.Normal({3.5f, 5}), {-1, 0});
    ExpectNear(box.ClosestPoint({3.5f, 5}), {4, 5});
    EXPECT_FLOAT_EQ(box.Dist({3, 8}), std::sqrt(2.0f));
    EXPECT_FLOAT_EQ(box.Dist({5, 5}), -1);

    const math::BoundingBox2f bounds = box.GetBoundingBox();
    ExpectNear(bounds.min, {4, 3});
    ExpectNear(bounds.max, {6, 7});
    const physics::BoundingCircle circle = box.GetBoundingCircle();
    ExpectNear(circle.centre, {5, 5});
    EXPECT_FLOAT_EQ(circle.radius, std::sqrt(5.0f));
    // Mass properties stay those of the local box.
    EXPECT_FLOAT_EQ(box.Area(), 8);
}

TEST(Box, OffCentreLocalBoxAndTurnedBounds) {
    physics::Box offCentre(math::OBB2D{{1, 0}, {1, 0}, {0, 1}, {0.5f, 0.5f}});
    offCentre.SetTransform(QuarterTurnAt({0, 0}));
    ExpectNear(offCentre.GetOBB().centre, {0, 1});
    ExpectNear(offCentre.GetBoundingBox().min, {-0.5f, 0.5f});
    ExpectNear(offCentre.GetBoundingBox().max, {0.5f, 1.5f});

    physics::Box turned;
    turned.SetTransform(Transform::FromAngle(kPi / 4, {0, 0}));
    const float reach = std::sqrt(0.5f);
    ExpectNear(turned.GetBoundingBox().min, {-reach, -reach});
    ExpectNear(turned.GetBoundingBox().max, {reach, reach});
}

// --- Plane ---

TEST(Plane, LocalFormUntilPlaced) {
    const physics::Plane plane;
    EXPECT_EQ(plane.GetNormal(), Vec2(1, 0));
    EXPECT_EQ(plane.GetOffset(), 0);
    EXPECT_FLOAT_EQ(plane.Dist({-2, 7}), -2);

    // Given values last only until the transform places the plane.
    physics::Plane given(Vec2(0, 1), 3);
    EXPECT_EQ(given.GetNormal(), Vec2(0, 1));
    EXPECT_FLOAT_EQ(given.Dist({0, -3}), 0);
    given.SetTransform(At({0, 0}));
    EXPECT_EQ(given.GetNormal(), Vec2(1, 0));
    EXPECT_EQ(given.GetOffset(), 0);
}

TEST(Plane, PlacedByRotationAndTranslation) {
    physics::Plane plane;
    plane.SetTransform(QuarterTurnAt({0, 2}));
    ExpectNear(plane.GetNormal(), {0, 1});
    EXPECT_NEAR(plane.GetOffset(), -2, 1e-6f);
    EXPECT_NEAR(plane.Dist({5, 3}), 1, 1e-6f);
    EXPECT_NEAR(plane.Dist({-5, 0}), -2, 1e-6f);
    ExpectNear(plane.Normal({100, -100}), {0, 1});
    ExpectNear(plane.ClosestPoint({5, 3}), {5, 2});
    ExpectNear(plane.ClosestPoint({5, -1}), {5, 2});

    // Any angle: the normal turns with the transform and the plane passes its origin.
    const Transform t = Transform::FromAngle(0.7f, {3, -2});
    plane.SetTransform(t);
    ExpectNear(plane.GetNormal(), {std::cos(0.7f), std::sin(0.7f)});
    EXPECT_NEAR(plane.Dist({3, -2}), 0, 1e-5f);
    EXPECT_NEAR(plane.Dist(t.Apply({-1.5f, 4})), -1.5f, 1e-5f);
    EXPECT_NEAR(plane.GetNormal().Length(), 1, 1e-6f);
}

TEST(Plane, DegenerateTransformIsRefused) {
    physics::Plane plane;
    try {
        plane.SetTransform(Transform{{0, 0}, {1, 1}});
        ADD_FAILURE() << "no assertion";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"det != 0\""), std::string::npos) << e.what();
    }
}

TEST(Plane, InfiniteInEveryMeasure) {
    physics::Plane plane;
    plane.SetTransform(At({4, 4}));
    EXPECT_EQ(plane.Area(), kInf);
    EXPECT_EQ(plane.InertiaPerMass(), kInf);
    EXPECT_EQ(plane.GetBoundingBox(), math::BoundingBox2f({-kInf, -kInf}, {kInf, kInf}));
    const math::OBB2D obb = plane.GetOBB();
    EXPECT_EQ(obb.centre, Vec2(0, 0));
    EXPECT_EQ(obb.axis1, Vec2(1, 0));
    EXPECT_EQ(obb.axis2, Vec2(0, 1));
    EXPECT_EQ(obb.halfExtents, Vec2(kInf, kInf));
    EXPECT_EQ(plane.GetBoundingCircle().centre, Vec2(0, 0));
    EXPECT_EQ(plane.GetBoundingCircle().radius, kInf);
}

// --- WorldGeom ---

TEST(WorldGeom, HoldsEverythingAndOverlapsNothing) {
    physics::WorldGeom world;
    EXPECT_EQ(world.Dist({1e6f, -3}), -1);
    EXPECT_EQ(world.Normal({1, 2}), Vec2(0, 0));
    EXPECT_EQ(world.Area(), kInf);
    EXPECT_EQ(world.InertiaPerMass(), kInf);
    EXPECT_EQ(world.ClosestPoint({3, 4}), Vec2(3, 4));
    EXPECT_TRUE(world.GetBoundingBox().IsEmpty());
    EXPECT_FALSE(world.GetBoundingBox().Overlaps(math::BoundingBox2f({-1, -1}, {1, 1})));
    EXPECT_EQ(world.GetOBB().halfExtents, Vec2(-kInf, -kInf));
    EXPECT_EQ(world.GetBoundingCircle().radius, -kInf);
}

}  // namespace
