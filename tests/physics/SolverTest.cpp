#include "physics/Solver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "TestPieces.h"
#include "physics/AbstractBody.h"
#include "physics/Contact.h"
#include "physics/ContactCache.h"
#include "physics/Geom.h"
#include "physics/SolverParameters.h"

namespace {

using math::Vec2;
using physics::Contact;
// The tests keep hold of the contacts that they hand to the solver.
using ContactPtr = std::shared_ptr<Contact>;
using physics::SolverSettings;

using test_physics::Piece;

Piece MakePiece(float mass, float inertia, const Vec2& at, bool isStatic = false) {
    return test_physics::MakePiece(mass, inertia, at, isStatic, 0);
}

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kGravity = -9.8f;

class SolverTest : public ::testing::Test {
protected:
    SolverTest() : m_saved(physics::SolverParameters::Current()) {
        physics::SolverParameters::Current().Rebuild(settings);
    }
    ~SolverTest() override { physics::SolverParameters::Current() = m_saved; }

    // Ball of mass 2 and radius 0.5 on the static ground: a contact at its lowest point,
    // normal from the ground up to the ball. depth > 0 means overlap.
    ContactPtr Touch(const Piece& on, float depth = 0, size_t index = 0) {
        const Vec2 p = on.body->position - Vec2(0, 0.5f);
        return std::make_shared<Contact>(ground.geom.Get(), on.geom.Get(), index, p, Vec2(0, 1),
                                         depth);
    }

    // The contact of the step before: the ball's impact at the given velocity, solved in
    // full. The ball is put back at rest.
    ContactPtr Impact(const Piece& on, const Vec2& velocity) {
        on.body->velocity = velocity;
        const ContactPtr first = Touch(on);
        Solve({first});
        on.body->velocity = {0, 0};
        on.body->angularVelocity = 0;
        return first;
    }

    // A contact found again: it carries what the one before accumulated.
    ContactPtr Again(const Piece& on, float depth, const ContactPtr& before) {
        const ContactPtr c = Touch(on, depth);
        c->CopyCached(*before);
        return c;
    }

    void Solve(std::vector<ContactPtr> contacts) {
        physics::ConstraintList list;
        for (const ContactPtr& c : contacts) {
            list.push_back(c.get());
        }
        physics::RunSolver(bodies, list, settings);
    }

    void Solve(physics::ContactList& contacts) {
        physics::ConstraintList list;
        for (Contact& c : contacts) {
            list.push_back(&c);
        }
        physics::RunSolver(bodies, list, settings);
    }

    SolverSettings settings;
    Piece ground = MakePiece(kInf, kInf, {0, -1}, true);
    Piece ball = MakePiece(2, 0.25f, {0, 0.5f});
    std::vector<physics::AbstractBody*> bodies{ground.body.Get(), ball.body.Get()};

private:
    physics::SolverParameters m_saved;
};

}  // namespace

TEST(SolverParameters, DefaultsGiveTheDampedRegularisedTerms) {
    const SolverSettings settings;
    const physics::SolverParameterBlock block = physics::SolverParameterBlock::Make(settings, 5);
    EXPECT_FLOAT_EQ(block.a, 19.047619f);
    EXPECT_FLOAT_EQ(block.b, 0.95238096f);
    EXPECT_FLOAT_EQ(block.c, 0.005f);
    EXPECT_FLOAT_EQ(block.e, 1.9047619e-5f);
    EXPECT_FLOAT_EQ(block.h, 0.01f);
    EXPECT_FLOAT_EQ(block.targetPenetration, 0.001f);
}

TEST(SolverParameters, AdHocFactorsAndLeapFrog) {
    SolverSettings settings;
    settings.adHocSolver = true;
    physics::SolverParameterBlock block = physics::SolverParameterBlock::Make(settings, 5);
    EXPECT_FLOAT_EQ(block.a, 100);
    EXPECT_EQ(block.b, 0);
    EXPECT_FLOAT_EQ(block.c, 0.005f);
    EXPECT_EQ(block.e, 0);

    settings.adHocSolver = false;
    settings.leapFrog = false;
    settings.solveDistFactor = 2;
    settings.solveVelFactor = 0.5f;
    settings.solveRegularizationFactor = 3;
    block = physics::SolverParameterBlock::Make(settings, 5);
    EXPECT_FLOAT_EQ(block.a, 2 * 19.047619f);
    EXPECT_FLOAT_EQ(block.b, 0.5f * 0.95238096f);
    EXPECT_EQ(block.c, 0);
    EXPECT_FLOAT_EQ(block.e, 3 * 1.9047619e-5f);

    settings.leapFrog = true;
    settings.solveAccFactor = 4;
    EXPECT_FLOAT_EQ(physics::SolverParameterBlock::Make(settings, 5).c, 0.02f);
}

TEST(SolverParameters, RebuildFillsBothBlocksAndKeepsTheTime) {
    physics::SolverParameters parameters;
    EXPECT_EQ(parameters.contacts.a, 0);
    EXPECT_EQ(parameters.contacts.e, 0);
    EXPECT_EQ(parameters.hinges.h, 0);
    EXPECT_EQ(parameters.simulatedTime, 0);

    parameters.simulatedTime = 7.5;
    SolverSettings settings;
    settings.solveDconstraints = 1;
    settings.maxPositionCorrection = 0.25f;
    settings.warmStart = false;
    settings.warmStartFactor = 0.75f;
    parameters.Rebuild(settings);
    EXPECT_FLOAT_EQ(parameters.contacts.a, 19.047619f);
    EXPECT_FLOAT_EQ(parameters.hinges.a, 80);
    EXPECT_FLOAT_EQ(parameters.hinges.b, 0.8f);
    EXPECT_FLOAT_EQ(parameters.hinges.e, 4 / (1e8f * 0.01f * 0.01f * 5));
    EXPECT_FLOAT_EQ(parameters.contacts.targetPenetration, 0.001f);
    EXPECT_EQ(parameters.maxPositionCorrection, 0.25f);
    EXPECT_FALSE(parameters.warmStart);
    EXPECT_EQ(parameters.warmStartFactor, 0.75f);
    EXPECT_EQ(parameters.simulatedTime, 7.5);
}

TEST_F(SolverTest, NewContactIsAnImpactWithRestitution) {
    ball.geom->restitution = 0.5f;
    ground.geom->restitution = 0.5f;
    ball.body->velocity = {0, -2};
    const ContactPtr c = Touch(ball);
    ASSERT_FLOAT_EQ(c->GetMassNormal(), 2);
    ASSERT_TRUE(c->SolveInit());
    EXPECT_FLOAT_EQ(c->GetTargetImpulseNormal(), 3 * c->GetMassNormal());
    EXPECT_EQ(c->GetRelativeVelocity(), Vec2(0, -2));
    EXPECT_EQ(c->GetEffectiveMassNormal(), c->GetMassNormal());

    ball.body->velocity = {0, -2};
    Solve({Touch(ball)});
    EXPECT_FLOAT_EQ(ball.body->velocity.y, 1);
    EXPECT_FLOAT_EQ(ball.body->velocity.x, 0);
    EXPECT_EQ(ground.body->velocity, Vec2(0, 0));
    EXPECT_EQ(ground.body->velocityChange, Vec2(0, 0));
}

TEST_F(SolverTest, NoIterationsLeaveTheWarmStart) {
    const ContactPtr before = Impact(ball, {0, -2});
    ASSERT_FLOAT_EQ(before->GetImpulseNormal(), 4);

    settings.solveIter = 0;
    const ContactPtr again = Again(ball, 0, before);
    Solve({again});
    // Half the cached impulse, on a body of mass 2.
    EXPECT_FLOAT_EQ(again->GetImpulseNormal(), 2);
    EXPECT_FLOAT_EQ(ball.body->velocityChange.y, 1);
    EXPECT_FLOAT_EQ(ball.body->velocity.y, 1);
    EXPECT_EQ(ball.body->angularChange, 0);
}

TEST_F(SolverTest, WithoutWarmStartCachedImpulsesAreIgnored) {
    ball.geom->friction = 1;
    const ContactPtr before = Impact(ball, {1, -2});
    ASSERT_GT(before->GetImpulseNormal(), 0);
    ASSERT_NE(before->GetImpulseTangent(), 0);

    settings.warmStart = false;
    settings.solveIter = 0;
    const ContactPtr again = Again(ball, 0, before);
    EXPECT_EQ(again->GetImpulseNormal(), before->GetImpulseNormal());
    Solve({again});
    EXPECT_EQ(again->GetImpulseNormal(), 0);
    EXPECT_EQ(again->GetImpulseTangent(), 0);
    EXPECT_EQ(ball.body->velocity, Vec2(0, 0));
}

TEST_F(SolverTest, PositionCorrectionIsBoundedOnOneSideOnly) {
    const ContactPtr before = Impact(ball, {0, -1});
    settings.warmStart = false;
    physics::SolverParameters::Current().Rebuild(settings);
    const float a = physics::SolverParameters::Current().contacts.a;

    // Shallower than the target: a pull, which the clamp at 0 never lets act.
    ContactPtr shallow = Again(ball, 0, before);
    ASSERT_TRUE(shallow->SolveInit());
    EXPECT_FLOAT_EQ(shallow->GetTargetImpulseNormal(),
                    -shallow->GetRegularizedMassNormal() * a * 0.001f);
    EXPECT_EQ(shallow->GetEffectiveMassNormal(), shallow->GetRegularizedMassNormal());
    Solve({Again(ball, 0, before)});
    EXPECT_EQ(ball.body->velocity, Vec2(0, 0));

    // Deeper: a push, the same whether the bound is infinite or 0.
    ContactPtr deep = Again(ball, 0.5f, before);
    ASSERT_TRUE(deep->SolveInit());
    const float push = deep->GetTargetImpulseNormal();
    EXPECT_FLOAT_EQ(push, deep->GetRegularizedMassNormal() * a * 0.499f);

    settings.maxPositionCorrection = 0;
    physics::SolverParameters::Current().Rebuild(settings);
    shallow = Again(ball, 0, before);
    ASSERT_TRUE(shallow->SolveInit());
    EXPECT_EQ(shallow->GetTargetImpulseNormal(), 0);
    deep = Again(ball, 0.5f, before);
    ASSERT_TRUE(deep->SolveInit());
    EXPECT_EQ(deep->GetTargetImpulseNormal(), push);

    // A bound below the target cuts the pull, never the push.
    settings.maxPositionCorrection = 0.0005f;
    physics::SolverParameters::Current().Rebuild(settings);
    shallow = Again(ball, 0, before);
    ASSERT_TRUE(shallow->SolveInit());
    EXPECT_FLOAT_EQ(shallow->GetTargetImpulseNormal(),
                    -shallow->GetRegularizedMassNormal() * a * 0.0005f);
    deep = Again(ball, 0.5f, before);
    ASSERT_TRUE(deep->SolveInit());
    EXPECT_EQ(deep->GetTargetImpulseNormal(), push);
}

TEST_F(SolverTest, GaussSeidelStopsTheApproachOfARestingBall) {
    const ContactPtr before = Impact(ball, {0, -1});
    // As the leapfrog step presents it: half a step of gravity on a ball at rest.
    const float h = settings.timeDelta;
    ball.body->force = {0, 2 * kGravity};
    ball.body->velocity = {0, kGravity * h / 2};
    const ContactPtr again = Again(ball, settings.targetPenetration, before);
    Solve({again});
    EXPECT_GE(ball.body->velocity.y, 0);
    EXPECT_GT(again->GetImpulseNormal(), 0);
    // The second half step leaves next to nothing.
    EXPECT_NEAR(ball.body->velocity.y + kGravity * h / 2, 0, 0.01f);
    EXPECT_EQ(ball.body->velocity.x, 0);
}

TEST_F(SolverTest, BallSettlesAtTheTargetDepth) {
    physics::ContactCache cache;
    ball.body->position = {0, 0.6f};
    const float h = settings.timeDelta;
    const float g = kGravity;
    for (int step = 0; step < 300; ++step) {
        physics::SolverParameters::Current().simulatedTime = step * h;
        ball.body->velocity.y += g * h / 2;
        const float depth = 0.5f - ball.body->position.y;
        physics::ContactList contacts;
        if (depth > 0) {
            contacts.push_back(*Touch(ball, depth));
        }
        ball.body->force = {0, 2 * g};
        cache.Match(contacts);
        Solve(cache.GetContacts());
        ball.body->velocity.y += g * h / 2;
        ball.body->position += ball.body->velocity * h;
        ball.body->force = {0, 0};
    }
    EXPECT_NEAR(0.5f - ball.body->position.y, settings.targetPenetration, 0.0005f);
    EXPECT_NEAR(ball.body->velocity.y, 0, 0.01f);
    ASSERT_EQ(cache.GetEntryCount(), 1u);
}

TEST_F(SolverTest, FailedRowsAreSwappedOutOfTheList) {
    Piece wall = MakePiece(kInf, kInf, {3, 0}, true);
    Piece other = MakePiece(1, 1, {2, 0.5f});
    bodies.push_back(wall.body.Get());
    bodies.push_back(other.body.Get());
    const ContactPtr dead1(new Contact(ground.geom.Get(), wall.geom.Get(), 0, {3, 0}, {1, 0}, 0));
    const ContactPtr ok1 = Touch(ball);
    const ContactPtr dead2(new Contact(wall.geom.Get(), ground.geom.Get(), 1, {3, 0}, {1, 0}, 0));
    const ContactPtr ok2 = Touch(other);
    physics::ConstraintList list;
    for (const ContactPtr& c : {dead1, ok1, dead2, ok2}) {
        list.push_back(c.get());
    }
    physics::RunSolver(bodies, list, settings);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0], ok2.get());
    EXPECT_EQ(list[1], ok1.get());
}

TEST_F(SolverTest, PreSortLeavesTheCallersOrder) {
    Piece other = MakePiece(1, 1, {2, 0.5f});
    bodies.push_back(other.body.Get());
    ball.body->velocity = {0, -1};
    other.body->velocity = {0, -3};
    const ContactPtr slow = Touch(ball);
    const ContactPtr fast = Touch(other);
    physics::ConstraintList list;
    list.push_back(slow.get());
    list.push_back(fast.get());
    physics::RunSolver(bodies, list, settings);
    EXPECT_EQ(list[0], slow.get());
    EXPECT_EQ(list[1], fast.get());
    EXPECT_NEAR(ball.body->velocity.y, 0, 1e-6f);
    EXPECT_NEAR(other.body->velocity.y, 0, 1e-6f);
}

TEST_F(SolverTest, PrioritizedQueueHoldsOneRowPerPriority) {
    // Two like balls on the ground, each alone: equal priorities, and the second is never
    // queued, so it never acts.
    Piece twin = MakePiece(2, 0.25f, {3, 0.5f});
    bodies.push_back(twin.body.Get());
    ball.body->velocity = {0, -2};
    twin.body->velocity = {0, -2};
    const ContactPtr first = Touch(ball);
    const ContactPtr second = Touch(twin);
    settings.prioritizedSolver = true;
    settings.solveIter = 5;
    Solve({first, second});
    EXPECT_FLOAT_EQ(first->GetImpulseNormal(), 4);
    EXPECT_EQ(second->GetImpulseNormal(), 0);
    EXPECT_NEAR(ball.body->velocity.y, 0, 1e-6f);
    EXPECT_EQ(twin.body->velocity.y, -2);
    EXPECT_TRUE(ground.body->adjacency.empty());
    ASSERT_EQ(ball.body->adjacency.size(), 1u);
    EXPECT_EQ(ball.body->adjacency[0], first.get());
}

TEST_F(SolverTest, PrioritizedNeighbourBringsALeftOutRowBack) {
    // Two rows on one ball, mirror images: the second enters the queue once the first
    // has changed the ball, and between them they stop it.
    ball.body->velocity = {0, -2};
    const Vec2 base = ball.body->position - Vec2(0, 0.5f);
    const ContactPtr left(
        new Contact(ground.geom.Get(), ball.geom.Get(), 0, base - Vec2(0.25f, 0), {0, 1}, 0));
    const ContactPtr right(
        new Contact(ground.geom.Get(), ball.geom.Get(), 1, base + Vec2(0.25f, 0), {0, 1}, 0));
    settings.prioritizedSolver = true;
    Solve({left, right});
    EXPECT_GT(left->GetImpulseNormal(), 0);
    EXPECT_GT(right->GetImpulseNormal(), 0);
    EXPECT_NEAR(ball.body->velocity.y, 0, 1e-3f);
    EXPECT_NEAR(ball.body->angularVelocity, 0, 1e-2f);
    EXPECT_EQ(ball.body->adjacency.size(), 2u);
}

namespace {

// A constraint of another kind: it notes what it sees of the ball's velocity change, so
// that its place in the sweep shows.
class Probe : public physics::Constraint {
public:
    // Records the watched body's vertical velocity change at each CalcDelta, and adds push
    // to it at each ApplyDelta.
    explicit Probe(physics::AbstractBody* watched, float push = 0)
        : m_watched(watched), m_push(push) {
        bodies[1] = watched;
    }
    bool SolveInit() override { return true; }
    void CalcDelta() override { seen.push_back(m_watched->velocityChange.y); }
    void ApplyDelta() override {
        ++applied;
        m_watched->velocityChange.y += m_push;
    }

    std::vector<float> seen;
    int applied = 0;

private:
    physics::AbstractBody* m_watched;
    float m_push;
};

}  // namespace

TEST_F(SolverTest, SweepAgreesWithTheContactsOwnOperations) {
    // Three rows with friction and leverage on two bodies, swept once through the packed
    // path and once through the virtual operations.
    Piece plank = MakePiece(3, 0.8f, {1, 1.2f});
    bodies.push_back(plank.body.Get());
    auto run = [&](bool packed) {
        ball.body->velocity = {0.4f, -1.5f};
        ball.body->angularVelocity = 2;
        plank.body->velocity = {-0.2f, -2.5f};
        plank.body->angularVelocity = -1;
        std::vector<ContactPtr> contacts{
            Touch(ball),
            ContactPtr(new Contact(ball.geom.Get(), plank.geom.Get(), 0, {0.4f, 0.9f},
                                   math::Normalized(Vec2(1, 1)), 0.01f)),
            ContactPtr(
                new Contact(ground.geom.Get(), plank.geom.Get(), 0, {1.8f, 0}, {0, 1}, 0.02f))};
        physics::ConstraintList list;
        for (const ContactPtr& c : contacts) {
            list.push_back(c.get());
        }
        physics::SolverParameters::Current().Rebuild(settings);
        for (physics::AbstractBody* body : bodies) {
            body->velocityChange = {0, 0};
            body->angularChange = 0;
        }
        if (packed) {
            physics::GaussSeidelSolver(list, settings);
        } else {
            for (physics::Constraint* c : list) {
                c->SolveInit();
            }
            for (int pass = 0; pass < settings.solveIter; ++pass) {
                for (physics::Constraint* c : list) {
                    c->CalcDelta();
                    c->ApplyDelta();
                }
            }
        }
        std::vector<float> result;
        for (const ContactPtr& c : contacts) {
            result.push_back(c->GetImpulseNormal());
            result.push_back(c->GetImpulseTangent());
            result.push_back(c->GetDeltaNormal());
            result.push_back(c->priority);
        }
        for (physics::AbstractBody* body : bodies) {
            result.push_back(body->velocityChange.x);
            result.push_back(body->velocityChange.y);
            result.push_back(body->angularChange);
        }
        return result;
    };
    settings.solvePreSortConstraints = false;
    const std::vector<float> packed = run(true);
    const std::vector<float> plain = run(false);
    ASSERT_EQ(packed.size(), plain.size());
    for (size_t i = 0; i < packed.size(); ++i) {
        EXPECT_NEAR(packed[i], plain[i], 1e-4f * (1 + std::fabs(plain[i]))) << "at " << i;
    }
    EXPECT_GT(packed[0], 0);
}

TEST_F(SolverTest, OtherConstraintsKeepTheirPlaceInTheSweep) {
    ball.body->velocity = {0, -2};
    const ContactPtr c = Touch(ball);
    Probe probe(ball.body.Get());
    settings.solvePreSortConstraints = false;
    settings.solveIter = 3;
    physics::ConstraintList list;
    list.push_back(&probe);
    list.push_back(c.get());
    physics::RunSolver(bodies, list, settings);
    // Before the contact in the first pass, after it in the others.
    ASSERT_EQ(probe.seen.size(), 3u);
    EXPECT_EQ(probe.seen[0], 0);
    EXPECT_FLOAT_EQ(probe.seen[1], 2);
    EXPECT_FLOAT_EQ(probe.seen[2], 2);
    EXPECT_EQ(probe.applied, 3);
    EXPECT_FLOAT_EQ(c->GetImpulseNormal(), 4);

    // Two in a row on the same body: the second sees what the first applied, and the
    // contact after them sees both. The contact takes back the second pass's push; by the
    // third its impulse is spent, and the last push stays.
    ball.body->velocity = {0, -2};
    const ContactPtr again = Touch(ball);
    Probe pusher(ball.body.Get(), 1);
    Probe watcher(ball.body.Get());
    list = {&pusher, &watcher, again.get()};
    physics::RunSolver(bodies, list, settings);
    EXPECT_EQ(pusher.seen, (std::vector<float>{0, 2, 2}));
    EXPECT_EQ(watcher.seen, (std::vector<float>{1, 3, 3}));
    EXPECT_FLOAT_EQ(again->GetImpulseNormal(), 0);
    EXPECT_FLOAT_EQ(ball.body->velocity.y, 1);
}
