#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "WorldTest.h"
#include "math/MathUtil.h"
#include "physics/Contact.h"
#include "physics/Hinge.h"
#include "physics/Joint.h"

namespace {

using math::Vec2;
using physics::BodyPtr;
using physics::GeomPtr;
using physics::Hinge;
using physics::HingePtr;
using physics::JointPtr;
using physics::SpringJoint;
using test_physics::kPi;

class LinkTest : public test_physics::WorldTest {
protected:
    void SetUp() override {
        WorldTest::SetUp();
        // No air: the laws below are those of the links alone.
        sim.airSwitch->SetNative(false);
    }

    static GeomPtr GeomOf(const BodyPtr& body) { return body->GetPlacedGeoms()[0].geom; }
    GeomPtr World() const { return sim.GetWorldGeom(); }

    HingePtr Pin(const GeomPtr& a, const GeomPtr& b, const Vec2& at) {
        HingePtr hinge(new Hinge(a, b, at));
        sim.AddConstraint(hinge);
        return hinge;
    }

    // Times at which x goes from positive to negative, between samples by linear
    // interpolation, over the given number of steps.
    template <class Sample>
    std::vector<double> DownCrossings(int steps, Sample sample) {
        std::vector<double> times;
        const double h = sim.timeDelta->Get();
        float before = sample();
        for (int i = 1; i <= steps; ++i) {
            sim.Step(true);
            const float now = sample();
            if (before > 0 && now <= 0) {
                times.push_back(h * (i - 1) + h * before / (before - now));
            }
            before = now;
        }
        return times;
    }

    static double MeanPeriod(const std::vector<double>& crossings) {
        return (crossings.back() - crossings.front()) / static_cast<double>(crossings.size() - 1);
    }
};

// --- Hinges ---

TEST_F(LinkTest, PendulumKeepsItsAnchorsTogetherAndItsPeriod) {
    const float length = 2;
    const float radius = 0.1f;
    const float angle = 0.2f;
    const Vec2 pivot(0, 10);
    const BodyPtr ball =
        Add(new physics::Circle(radius), pivot + Vec2(std::sin(angle), -std::cos(angle)) * length);
    const HingePtr hinge = Pin(World(), GeomOf(ball), pivot);

    float worstGap = 0;
    const std::vector<double> crossings = DownCrossings(1200, [&] {
        worstGap =
            std::max(worstGap, (hinge->GetWorldAnchorB() - hinge->GetWorldAnchorA()).Length());
        return ball->position.x;
    });
    ASSERT_GE(crossings.size(), 4u);
    // A physical pendulum: the ball's own inertia lengthens the period a little, and the
    // amplitude of 0.2 rad by a factor of about 1 + 0.2^2 / 16.
    const double g = 9.8;
    const double ideal = 2 * kPi *
                         std::sqrt((radius * radius / 2 + length * length) / (g * length)) *
                         (1 + angle * angle / 16);
    EXPECT_NEAR(MeanPeriod(crossings), ideal, 0.01 * ideal);
    EXPECT_LT(worstGap, 0.005f);
    // It swings still: the constraint takes away little energy.
    EXPECT_GT(std::fabs(ball->position.x), 0.0f);
    EXPECT_NEAR((ball->position - pivot).Length(), length, 0.005f);
}

TEST_F(LinkTest, MotorDrivesToItsSpeedAndBrakesAtZero) {
    const BodyPtr wheel = Add(new physics::Circle(0.5f), {0, 5});
    const HingePtr hinge = Pin(World(), GeomOf(wheel), {0, 5});
    hinge->SetMotor(true);
    hinge->SetMotorSpeed(3);
    hinge->SetMotorTorque(1000);
    Steps(100);
    EXPECT_NEAR(wheel->angularVelocity, 3, 0.03f);
    EXPECT_NEAR(wheel->position.y, 5, 0.001f);  // the hinge holds it up meanwhile

    hinge->SetMotorSpeed(0);
    Steps(50);
    EXPECT_NEAR(wheel->angularVelocity, 0, 0.01f);

    // Without torque the motor can do nothing: the wheel keeps its spin.
    hinge->SetMotorTorque(0);
    wheel->angularVelocity = 2;
    Steps(20);
    EXPECT_FLOAT_EQ(wheel->angularVelocity, 2);
    EXPECT_EQ(hinge->GetMotorImpulse(), 0);
}

TEST_F(LinkTest, HingeBreaksAtItsImpulseLimitAndThenStopsActing) {
    const BodyPtr ball = Add(new physics::Circle(0.1f), {0, 8});
    const float weightPerStep = ball->GetMass() * 9.8f * sim.timeDelta->Get();

    // Twice the weight of a step holds it.
    const HingePtr strong = Pin(World(), GeomOf(ball), {0, 8});
    strong->SetImpulseLimit(2 * weightPerStep);
    Steps(100);
    EXPECT_FALSE(strong->IsBroken());
    EXPECT_NEAR(ball->position.y, 8, 0.001f);
    EXPECT_EQ(sim.GetHinges().size(), 1u);

    // Half of it does not: the hinge breaks in the first solve and goes from the world.
    strong->SetImpulseLimit(weightPerStep / 2);
    sim.Step(true);
    EXPECT_TRUE(strong->IsBroken());
    EXPECT_FALSE(strong->IsValid());
    const float vy = ball->velocity.y;
    sim.Step(true);
    EXPECT_TRUE(sim.GetHinges().empty());
    EXPECT_NEAR(ball->velocity.y, vy - 9.8f * sim.timeDelta->Get(), 1e-4f);
}

TEST_F(LinkTest, HingeBreaksBeyondItsDistanceLimitBeforeAnyImpulse) {
    const BodyPtr ball = Add(new physics::Circle(0.1f), {0, 8});
    // The anchors start a metre apart.
    const HingePtr hinge(new Hinge(World(), GeomOf(ball), {0, 9}, {0, 0}));
    hinge->SetDistanceLimit(0.5f);
    sim.AddConstraint(hinge);
    sim.Step(true);
    EXPECT_TRUE(hinge->IsBroken());
    EXPECT_EQ(hinge->GetImpulse(), Vec2(0, 0));
    // The ball fell freely through the step.
    EXPECT_NEAR(ball->velocity.y, -9.8f * sim.timeDelta->Get(), 1e-6f);
}

TEST_F(LinkTest, HingesThatCannotActAreHarmless) {
    // Two geoms of one body: dropped from every solve, never broken, still valid.
    physics::GeomPtr left(new physics::Circle(0.5f));
    physics::GeomPtr right(new physics::Circle(0.5f));
    left->SetTransform(physics::Transform::FromAngle(0, {-0.5f, 5}));
    right->SetTransform(physics::Transform::FromAngle(0, {0.5f, 5}));
    BodyPtr pair(new physics::Body());
    physics::GeomSet geoms;
    geoms.insert(left);
    geoms.insert(right);
    pair->SetGeoms(geoms);
    sim.AddBody(pair);
    const HingePtr inside = Pin(left, right, {0, 5});

    // Two static bodies.
    const BodyPtr a = Add(new physics::Circle(0.5f), {5, 5});
    const BodyPtr b = Add(new physics::Circle(0.5f), {6, 5});
    a->SetStatic(true);
    b->SetStatic(true);
    const HingePtr fixed = Pin(GeomOf(a), GeomOf(b), {5.5f, 5});

    Steps(50);
    EXPECT_NEAR(pair->velocity.y, -9.8f * 0.5f, 0.01f);  // falls as if unhinged
    EXPECT_EQ(inside->GetImpulse(), Vec2(0, 0));
    EXPECT_TRUE(inside->IsValid());
    EXPECT_TRUE(fixed->IsValid());
    EXPECT_EQ(fixed->GetImpulse(), Vec2(0, 0));
    EXPECT_EQ(a->position, Vec2(5, 5));
    EXPECT_EQ(sim.GetHinges().size(), 2u);

    // A hinge whose body leaves the world leaves with it.
    sim.RemoveBody(pair);
    sim.Step(true);
    EXPECT_EQ(sim.GetHinges().size(), 1u);
}

TEST_F(LinkTest, HingedGeomsNeverCollide) {
    AddGround();
    const BodyPtr a = Add(new physics::Circle(0.5f), {0, 0.5f});
    const BodyPtr b = Add(new physics::Circle(0.5f), {0.6f, 0.5f});
    const HingePtr hinge(new Hinge(GeomOf(a), GeomOf(b), {0.3f, 0.5f}));
    auto touchingEachOther = [&] {
        for (const physics::Contact& c : sim.GetContacts()) {
            const size_t low = std::min(GeomOf(a)->GetID(), GeomOf(b)->GetID());
            const size_t high = std::max(GeomOf(a)->GetID(), GeomOf(b)->GetID());
            if (c.GetLowerID() == low && c.GetHigherID() == high) {
                return true;
            }
        }
        return false;
    };
    sim.Step(false);
    EXPECT_TRUE(touchingEachOther());

    sim.AddConstraint(hinge);
    sim.AddConstraint(hinge);  // once only
    sim.Step(false);
    EXPECT_FALSE(touchingEachOther());
    EXPECT_EQ(sim.RemoveConstraint(hinge), 1u);
    EXPECT_EQ(sim.RemoveConstraint(hinge), 0u);
    sim.Step(false);
    EXPECT_TRUE(touchingEachOther());
}

TEST_F(LinkTest, HingedChainRepeatsBitForBit) {
    auto run = [&] {
        sim.Clear();
        GeomPtr previous = World();
        std::vector<BodyPtr> links;
        for (int i = 0; i < 10; ++i) {
            links.push_back(Add(new physics::Circle(0.2f), {0.4f * static_cast<float>(i + 1), 10}));
            Pin(previous, GeomOf(links.back()), {0.4f * static_cast<float>(i) + 0.2f, 10});
            previous = GeomOf(links.back());
        }
        Steps(200);
        std::vector<float> state;
        for (const BodyPtr& link : links) {
            state.insert(state.end(), {link->position.x, link->position.y, link->velocity.x,
                                       link->velocity.y, link->angle, link->angularVelocity});
        }
        return state;
    };
    const std::vector<float> first = run();
    const std::vector<float> second = run();
    ASSERT_EQ(first.size(), second.size());
    EXPECT_EQ(0, std::memcmp(first.data(), second.data(), first.size() * sizeof(float)));
    // The chain swings down and does not stretch: the last link, 3.8 along it from the
    // pivot, stays within that of it.
    const Vec2 end(first[first.size() - 6], first[first.size() - 5]);
    EXPECT_LT(end.y, 9.9f);
    EXPECT_LT((end - Vec2(0.2f, 10)).Length(), 3.8f + 0.01f);
}

// --- Springs ---

TEST_F(LinkTest, SpringSettlesUnderItsLoadAndOscillatesWithItsStiffness) {
    const float strength = 0.01f;  // k = springForce * m * strength = 10 m
    const BodyPtr box = Add(new physics::Box(), {0, 8});
    const JointPtr spring(
        new SpringJoint(World(), GeomOf(box), {0, 10}, {0, 0}, 1, strength, /*damping=*/0));
    sim.AddJoint(spring);
    sim.AddJoint(spring);  // once only
    EXPECT_EQ(sim.GetJoints().size(), 1u);

    // Undamped, it swings about the stretched length with the period 2 pi sqrt(m / k).
    const float k = sim.springForce->Get() * strength;  // per unit of mass
    const float rest = 10 - (1 + 9.8f / k);
    const std::vector<double> crossings =
        DownCrossings(1000, [&] { return box->position.y - rest; });
    ASSERT_GE(crossings.size(), 4u);
    const double period = 2 * kPi / std::sqrt(k);
    EXPECT_NEAR(MeanPeriod(crossings), period, 0.01 * period);

    // Damped critically, it comes to rest there without swinging through.
    static_cast<SpringJoint&>(*spring).SetDamping(1);
    box->position = {0, 8};
    box->velocity = {0, 0};
    float deepest = 100;
    for (int i = 0; i < 1000; ++i) {
        sim.Step(true);
        deepest = std::min(deepest, box->position.y);
    }
    EXPECT_NEAR(box->position.y, rest, 0.002f);
    EXPECT_GT(deepest, rest - 0.02f);
    EXPECT_NEAR(box->velocity.y, 0, 0.001f);
}

TEST_F(LinkTest, SpringEnergyAndItsEdgeCases) {
    const BodyPtr a = Add(new physics::Circle(0.5f), {0, 5});
    const BodyPtr b = Add(new physics::Circle(0.5f), {3, 5});
    SpringJoint spring(GeomOf(a), GeomOf(b), {0, 0}, {0, 0}, 1, 0.5f);
    // Stretched by 2 between equal masses: mEff = m / 2.
    const float k = sim.springForce->Get() * a->GetMass() / 2 * 0.5f;
    EXPECT_NEAR(spring.GetEnergy(), 0.5f * k * 4, 1e-3f * k);
    spring.ApplyForce();
    EXPECT_NEAR(a->force.x, 2 * k, 1e-3f * k);  // pulled towards b
    EXPECT_NEAR(b->force.x, -2 * k, 1e-3f * k);

    // Coincident anchors: it pushes along (1, 0), body b forwards.
    a->force = b->force = {0, 0};
    b->position = a->position;
    b->UpdateTransforms();
    spring.ApplyForce();
    EXPECT_GT(b->force.x, 0);
    EXPECT_LT(a->force.x, 0);
    EXPECT_EQ(a->force.y, 0);
    EXPECT_TRUE(math::IsFinite(a->force) && math::IsFinite(b->force));

    // A static end takes nothing.
    a->SetStatic(true);
    a->force = b->force = {0, 0};
    spring.ApplyForce();
    EXPECT_EQ(a->force, Vec2(0, 0));
}

TEST_F(LinkTest, InvalidSpringsLeaveTheWorld) {
    const BodyPtr a = Add(new physics::Circle(0.5f), {0, 5});
    const BodyPtr b = Add(new physics::Circle(0.5f), {3, 5});
    const JointPtr sameGeom(new SpringJoint(GeomOf(a), GeomOf(a), {0, 0}, {0.5f, 0}, 1));
    const JointPtr between(new SpringJoint(GeomOf(a), GeomOf(b), {0, 0}, {0, 0}, 1));
    EXPECT_FALSE(sameGeom->IsValid());
    EXPECT_TRUE(between->IsValid());
    sim.AddJoint(sameGeom);
    sim.AddJoint(between);
    const GeomPtr bGeom = GeomOf(b);
    const HingePtr hinge = Pin(World(), bGeom, {3, 5});
    sim.Update(0.01);
    EXPECT_EQ(sim.GetJoints().size(), 1u);
    EXPECT_NE(sim.GetStatus().find("1 springs\n1 hinges\n"), std::string::npos);

    sim.RemoveBody(a);
    sim.Step(true);
    EXPECT_TRUE(sim.GetJoints().empty());
    EXPECT_EQ(sim.RemoveJoint(between), 0u);

    // Clear lets everything go, and hinged geoms may collide again.
    sim.Clear();
    EXPECT_TRUE(sim.GetHinges().empty());
    EXPECT_FALSE(bGeom->IsNoCollide(World().Get()));
}

}  // namespace
