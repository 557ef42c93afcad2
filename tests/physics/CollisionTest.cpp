#include "physics/Collider.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/Polygon.h"
#include "physics/Shapes.h"

namespace {

using math::Vec2;

// Bodies made for one test, each holding one geom placed in the world. The geoms hold their
// bodies, so the set is emptied at the end to let both go.
class Scene {
public:
    ~Scene() {
        for (const physics::BodyPtr& body : bodies) {
            body->SetGeoms(physics::GeomSet());
        }
    }

    physics::BodyPtr Add(physics::Geom* geom, const Vec2& at, float angle = 0, bool fixed = false) {
        physics::GeomPtr held(geom);
        held->SetTransform(physics::Transform::FromAngle(angle, at));
        physics::BodyPtr body(new physics::Body());
        body->AddGeom(held);
        body->SetStatic(fixed);
        bodies.push_back(body);
        return body;
    }

    physics::ContactList Contacts(bool broadPhase) const {
        physics::Collider collider(broadPhase);
        collider.AssignBodies(bodies);
        physics::ContactList contacts;
        collider.Collide(contacts);
        return contacts;
    }

    physics::BodyList bodies;
};

}  // namespace

TEST(Collision, PlaneAndCircleTouchOnlyWhenOverlapping) {
    Scene scene;
    scene.Add(new physics::Plane(), {0, 0}, 1.5707964f, true);  // normal (0, 1) through 0
    scene.Add(new physics::Circle(1), {0, 1});                  // resting exactly: nothing
    scene.Add(new physics::Circle(1), {5, 1 - 1e-3f});
    const physics::ContactList contacts = scene.Contacts(true);
    ASSERT_EQ(contacts.size(), 1u);
    EXPECT_NEAR(contacts[0].GetDepth(), 1e-3f, 1e-6f);
    EXPECT_NEAR(contacts[0].GetNormal().y, 1, 1e-6f);
    EXPECT_NEAR(contacts[0].GetPoint().x, 5, 1e-6f);
}

TEST(Collision, CoincidentCirclesMakeOneContactWithoutNormal) {
    Scene scene;
    scene.Add(new physics::Circle(0.5f), {1, 1});
    scene.Add(new physics::Circle(0.25f), {1, 1});
    const physics::ContactList contacts = scene.Contacts(true);
    ASSERT_EQ(contacts.size(), 1u);
    EXPECT_EQ(contacts[0].GetNormal(), Vec2(0, 0));
    EXPECT_FLOAT_EQ(contacts[0].GetDepth(), 0.75f);
}

TEST(Collision, BoxRestingOnBoxGivesTwoClippedContacts) {
    Scene scene;
    scene.Add(new physics::Box(Vec2(2, 0.5f)), {0, 0}, 0, true);
    scene.Add(new physics::Box(Vec2(0.5f, 0.5f)), {0.25f, 0.99f});
    const physics::ContactList contacts = scene.Contacts(true);
    ASSERT_EQ(contacts.size(), 2u);
    // Equal separations on both boxes: the later box, the small one, is the reference,
    // and the normal points from it to the first.
    for (const physics::Contact& contact : contacts) {
        EXPECT_NEAR(contact.GetDepth(), 0.01f, 1e-5f);
        EXPECT_NEAR(contact.GetNormal().y, -1, 1e-6f);
    }
    // The one at the smaller x has index 0.
    const physics::Contact& left =
        contacts[0].GetPoint().x < contacts[1].GetPoint().x ? contacts[0] : contacts[1];
    EXPECT_EQ(left.GetIndex(), 0u);
}

TEST(Collision, BroadPhaseFindsExactlyThePairwiseContacts) {
    std::mt19937 random(12345);
    std::uniform_real_distribution<float> position(-12, 12);
    std::uniform_real_distribution<float> size(0.2f, 1.5f);
    std::uniform_real_distribution<float> angle(-3.1f, 3.1f);
    for (int round = 0; round < 6; ++round) {
        Scene scene;
        scene.Add(new physics::Plane(), {0, -13}, 1.5707964f, true);
        scene.Add(new physics::Plane(), {-13, 0}, 0, true);
        for (int i = 0; i < 60; ++i) {
            const Vec2 at(position(random), position(random));
            switch (i % 3) {
                case 0:
                    scene.Add(new physics::Circle(size(random)), at);
                    break;
                case 1:
                    scene.Add(new physics::Box(Vec2(size(random), size(random))), at,
                              angle(random));
                    break;
                default: {
                    const float w = size(random);
                    const float h = size(random);
                    // A concave outline: an L.
                    math::Vec2List outline{Vec2(0, 0), Vec2(2 * w, 0), Vec2(2 * w, h),
                                           Vec2(w, h), Vec2(w, 2 * h), Vec2(0, 2 * h)};
                    for (Vec2& v : outline) {
                        v += at;
                    }
                    scene.Add(new physics::Polygon(outline), at, 0);
                }
            }
        }
        const physics::ContactList fast = scene.Contacts(true);
        const physics::ContactList plain = scene.Contacts(false);
        ASSERT_EQ(fast.size(), plain.size()) << "round " << round;
        EXPECT_GT(plain.size(), 10u);  // the scene does collide
        for (size_t k = 0; k < plain.size(); ++k) {
            EXPECT_EQ(fast[k].GetLowerID(), plain[k].GetLowerID()) << k;
            EXPECT_EQ(fast[k].GetIndex(), plain[k].GetIndex()) << k;
            EXPECT_EQ(fast[k].GetPoint(), plain[k].GetPoint()) << k;
            EXPECT_EQ(fast[k].GetNormal(), plain[k].GetNormal()) << k;
            EXPECT_EQ(fast[k].GetDepth(), plain[k].GetDepth()) << k;
        }
    }
}
