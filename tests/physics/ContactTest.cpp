#include "physics/Contact.h"

#include <gtest/gtest.h>

#include "util/Pointee.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "TestPieces.h"
#include "math/MathUtil.h"
#include "physics/AbstractBody.h"
#include "physics/ContactCache.h"
#include "physics/Geom.h"
#include "physics/Solver.h"
#include "physics/SolverParameters.h"
#include "util/Exception.h"

namespace {

using math::Vec2;
using physics::Contact;
using physics::ContactList;

using test_physics::Piece;
using test_physics::TestGeom;

Piece MakePiece(float mass, float inertia, const Vec2& at, bool isStatic = false) {
    return test_physics::MakePiece(mass, inertia, at, isStatic, 0.5f);
}

constexpr float kInf = std::numeric_limits<float>::infinity();

// The solver state is process-wide; each test starts from the defaults and puts it back.
class ContactTest : public ::testing::Test {
protected:
    ContactTest() : m_saved(physics::SolverParameters::Current()) {
        physics::SolverParameters::Current().Rebuild(physics::SolverSettings());
    }
    ~ContactTest() override { physics::SolverParameters::Current() = m_saved; }

    // A ball of radius 0.5 and mass 2 whose lowest point touches the static ground at the
    // origin; the normal points from the ground up to the ball.
    Contact Touch(size_t index = 0, float depth = 0) {
        return Contact(ground.geom.Get(), ball.geom.Get(), index, {0, 0}, {0, 1}, depth);
    }

    Piece ground = MakePiece(kInf, kInf, {0, -1}, true);
    Piece ball = MakePiece(2, 0.25f, {0, 0.5f});

private:
    physics::SolverParameters m_saved;
};

}  // namespace

TEST_F(ContactTest, KeyIgnoresTheOrderOfTheGeoms) {
    Piece other = MakePiece(1, 1, {3, 3});
    const Contact ab(ball.geom.Get(), other.geom.Get(), 2, {0, 0}, {1, 0}, 0);
    const Contact ba(other.geom.Get(), ball.geom.Get(), 2, {0, 0}, {-1, 0}, 0);
    EXPECT_EQ(ab.GetLowerID(), ba.GetLowerID());
    EXPECT_EQ(ab.GetHigherID(), ba.GetHigherID());
    EXPECT_EQ(ab.GetIndex(), 2u);
    EXPECT_EQ(ab.GetHash(), ba.GetHash());
    EXPECT_TRUE(ab.SameKey(ba));
    EXPECT_LT(ab.GetLowerID(), ab.GetHigherID());
    EXPECT_EQ(ab.GetHash(), Contact::HashKey(ab.GetLowerID(), ab.GetHigherID(), 2));

    // Geoms 7 and 3 at index 2, either way round, wrapping at 32 bits.
    EXPECT_EQ(Contact::HashKey(3, 7, 2), 0x27C509CEu);
    const Contact other3(ball.geom.Get(), other.geom.Get(), 3, {0, 0}, {1, 0}, 0);
    EXPECT_FALSE(ab.SameKey(other3));
}

TEST_F(ContactTest, CombineIsTheSignedGeometricMean) {
    EXPECT_FLOAT_EQ(Contact::Combine(0.5f, 0.5f), 0.5f);
    EXPECT_EQ(Contact::Combine(1, 0), 0);
    EXPECT_EQ(Contact::Combine(-1, 1), -1);
    EXPECT_EQ(Contact::Combine(-1, -1), 1);
    EXPECT_FLOAT_EQ(Contact::Combine(0.25f, 1), 0.5f);

    ball.geom->friction = 1;
    ground.geom->friction = 0;
    ball.geom->restitution = -1;
    ground.geom->restitution = 1;
    const Contact c = Touch();
    EXPECT_EQ(c.GetFriction(), 0);
    EXPECT_EQ(c.GetRestitution(), -1);
}

TEST_F(ContactTest, ConstructionSetsGeometryMassesAndTime) {
    physics::SolverParameters::Current().contacts.e = 0.25f;
    physics::SolverParameters::Current().simulatedTime = 4.5;
    Piece body = MakePiece(2, 3, {0, 0});
    Piece wall = MakePiece(kInf, kInf, {5, 5}, true);
    const Contact c(body.geom.Get(), wall.geom.Get(), 1, {1, 0}, {0, 1}, 0.01f);

    EXPECT_EQ(c.bodies[0], body.body.Get());
    EXPECT_EQ(c.bodies[1], wall.body.Get());
    EXPECT_EQ(c.positionFactor, 1);
    EXPECT_EQ(c.warmStartFactor, 1);
    EXPECT_EQ(c.r1, Vec2(1, 0));
    EXPECT_EQ(c.r2, Vec2(-4, -5));
    EXPECT_EQ(c.GetTangent(), Vec2(-1, 0));
    EXPECT_EQ(c.GetPoint(), Vec2(1, 0));
    EXPECT_EQ(c.GetNormal(), Vec2(0, 1));
    EXPECT_FLOAT_EQ(c.GetDepth(), 0.01f);
    EXPECT_TRUE(c.IsNew());
    EXPECT_EQ(c.GetCreationTime(), 4.5);
    EXPECT_FLOAT_EQ(c.GetFriction(), 0.5f);

    // The static wall counts with inverse values 0 whatever its mass.
    EXPECT_FLOAT_EQ(c.K({0, 1}), 0.5f + 1.0f / 3);
    EXPECT_FLOAT_EQ(c.K({-1, 0}), 0.5f);
    EXPECT_FLOAT_EQ(c.GetMassNormal(), 1.2f);
    EXPECT_FLOAT_EQ(c.GetMassTangent(), 2);
    EXPECT_FLOAT_EQ(c.GetRegularizedMassNormal(), 1 / (0.5f + 1.0f / 3 + 0.25f));
    EXPECT_FLOAT_EQ(c.GetRegularizedMassTangent(), 1 / 0.75f);
    EXPECT_EQ(c.GetEffectiveMassNormal(), c.GetMassNormal());
    EXPECT_EQ(c.GetEffectiveMassTangent(), c.GetMassTangent());
    EXPECT_EQ(c.GetImpulseNormal(), 0);
    EXPECT_EQ(c.GetImpulseTangent(), 0);
}

TEST_F(ContactTest, NonFiniteInputIsACodingError) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    auto expectAssertion = [&](const Vec2& p, const Vec2& n, float d, const std::string& text) {
        try {
            Contact c(ground.geom.Get(), ball.geom.Get(), 0, p, n, d);
            ADD_FAILURE() << "no assertion for " << text;
        } catch (const BadCoderException& e) {
            EXPECT_NE(std::string(e.what()).find("\"" + text + "\""), std::string::npos)
                << e.what();
        }
    };
    expectAssertion({nan, 0}, {0, 1}, 0, "IsFinite(p)");
    expectAssertion({0, 0}, {0, kInf}, 0, "IsFinite(n)");
    expectAssertion({0, 0}, {0, 1}, nan, "IsFinite(d)");
}

TEST_F(ContactTest, BetweenStaticBodiesItIsDroppedBeforeDividing) {
    Piece wall = MakePiece(1, 1, {2, 0}, true);
    Contact c(ground.geom.Get(), wall.geom.Get(), 0, {1, 0}, {1, 0}, 0);
    EXPECT_EQ(c.K({1, 0}), 0);
    EXPECT_EQ(c.GetMassNormal(), kInf);
    EXPECT_EQ(c.GetMassTangent(), kInf);
    EXPECT_FALSE(c.SolveInit());

    // In a solve it leaves the list and touches no body.
    physics::ConstraintList list;
    list.push_back(&c);
    std::vector<physics::AbstractBody*> bodies{ground.body.Get(), wall.body.Get()};
    physics::RunSolver(bodies, list, physics::SolverSettings());
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(wall.body->velocity, Vec2(0, 0));
}

TEST_F(ContactTest, LooseGeomGivesNoSolverRow) {
    util::SharedPtr<TestGeom> loose(new TestGeom());
    Contact c(loose.Get(), ball.geom.Get(), 0, {1, 1}, {0, 1}, 0);
    EXPECT_EQ(c.bodies[0], nullptr);
    EXPECT_EQ(c.r1, Vec2(1, 1));
    EXPECT_FALSE(c.SolveInit());
}

TEST_F(ContactTest, SeparatingFollowsThePresentVelocities) {
    const Contact c = Touch();
    ball.body->velocity = {0, 1};
    EXPECT_TRUE(c.IsSeparating());
    ball.body->velocity = {0, -1};
    EXPECT_FALSE(c.IsSeparating());
    ball.body->velocity = {1, 0};
    EXPECT_FALSE(c.IsSeparating());
    // Spin at the contact point: the ball's bottom moves at w x r.
    ball.body->velocity = {0, 0};
    ball.body->angularVelocity = 1;
    EXPECT_FALSE(c.IsSeparating());
}

TEST_F(ContactTest, CacheCarriesImpulsesAndTimeToTheNextStep) {
    physics::ContactCache cache;
    std::vector<physics::AbstractBody*> bodies{ground.body.Get(), ball.body.Get()};

    physics::SolverParameters::Current().simulatedTime = 1.0;
    ball.body->velocity = {0.3f, -2};
    EXPECT_EQ(cache.Match({Touch(0)}), 0u);
    Contact& first = cache.GetContacts()[0];
    EXPECT_TRUE(first.IsNew());
    physics::ConstraintList list;
    list.push_back(&first);
    physics::RunSolver(bodies, list, physics::SolverSettings());
    const float impulseN = first.GetImpulseNormal();
    const float impulseT = first.GetImpulseTangent();
    ASSERT_GT(impulseN, 0);
    ASSERT_NE(impulseT, 0);

    // The same pair, named the other way round, at the same index.
    physics::SolverParameters::Current().simulatedTime = 1.01;
    EXPECT_EQ(cache.Match({Contact(ball.geom.Get(), ground.geom.Get(), 0, {0, 0}, {0, -1}, 0)}),
              1u);
    EXPECT_EQ(cache.GetMatchCount(), 1u);
    const Contact& second = cache.GetContacts()[0];
    EXPECT_FALSE(second.IsNew());
    EXPECT_EQ(second.GetCreationTime(), 1.0);
    EXPECT_EQ(second.GetImpulseNormal(), impulseN);
    EXPECT_EQ(second.GetImpulseTangent(), impulseT);
    EXPECT_EQ(cache.GetEntryCount(), 1u);
    EXPECT_EQ(cache.Find(second.GetLowerID(), second.GetHigherID(), 0), &second);

    // Another index is another contact.
    EXPECT_EQ(cache.Match({Touch(1)}), 0u);
    EXPECT_TRUE(cache.GetContacts()[0].IsNew());
    EXPECT_EQ(cache.GetContacts()[0].GetCreationTime(), 1.01);
}

TEST_F(ContactTest, CacheForgetsAContactAbsentForOneStep) {
    physics::ContactCache cache;
    EXPECT_EQ(cache.Match({Touch()}), 0u);
    EXPECT_EQ(cache.Match({}), 0u);
    EXPECT_EQ(cache.GetEntryCount(), 0u);
    EXPECT_EQ(cache.Match({Touch()}), 0u);
    EXPECT_TRUE(cache.GetContacts()[0].IsNew());
}

TEST_F(ContactTest, CacheKeepsTheLaterOfEqualKeys) {
    physics::ContactCache cache;
    physics::SolverParameters::Current().simulatedTime = 1;
    const Contact early = Touch();
    physics::SolverParameters::Current().simulatedTime = 2;
    const Contact late = Touch();
    // The second finds only the null entry that the first left in the matching pass.
    EXPECT_EQ(cache.Match({early, late}), 0u);
    EXPECT_EQ(cache.GetEntryCount(), 1u);
    EXPECT_EQ(cache.Find(late.GetLowerID(), late.GetHigherID(), 0), &cache.GetContacts()[1]);

    physics::SolverParameters::Current().simulatedTime = 3;
    // Both match what the previous step left.
    EXPECT_EQ(cache.Match({Touch(), Touch()}), 2u);
    EXPECT_EQ(cache.GetContacts()[0].GetCreationTime(), 2);
    EXPECT_EQ(cache.GetContacts()[1].GetCreationTime(), 2);
}

TEST_F(ContactTest, CacheGrowsOnceEntriesReachTheBucketCount) {
    physics::ContactCache cache;
    EXPECT_EQ(cache.GetBucketCount(), 3u);
    ContactList three{Touch(0), Touch(1), Touch(2)};
    cache.Match(three);
    // Taken over, not copied.
    EXPECT_TRUE(three.empty());
    ASSERT_EQ(cache.GetContacts().size(), 3u);
    EXPECT_EQ(cache.GetContacts()[2].GetIndex(), 2u);
    EXPECT_EQ(cache.GetEntryCount(), 3u);
    EXPECT_EQ(cache.GetBucketCount(), 3u);

    const ContactList four{Touch(0), Touch(1), Touch(2), Touch(3)};
    EXPECT_EQ(cache.Match(ContactList(four)), 3u);
    EXPECT_EQ(cache.GetEntryCount(), 4u);
    EXPECT_EQ(cache.GetBucketCount(), 7u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(cache.Find(four[i].GetLowerID(), four[i].GetHigherID(), i),
                  &cache.GetContacts()[i]);
    }

    cache.Clear();
    EXPECT_EQ(cache.GetEntryCount(), 0u);
    EXPECT_EQ(cache.GetMatchCount(), 0u);
    EXPECT_EQ(cache.GetBucketCount(), 7u);
    EXPECT_EQ(cache.Find(four[0].GetLowerID(), four[0].GetHigherID(), 0), nullptr);
}
