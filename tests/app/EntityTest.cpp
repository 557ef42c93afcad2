#include <gtest/gtest.h>

#include <cmath>

#include "app/FileInfo.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/EntityColor.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "physics/Body.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/ValueConversions.h"

namespace {

using app::AttributeMap;
using app::BoxEntity;
using app::CircleEntity;
using app::EntityPtr;
using math::Vec2;
using physics::Simulation;

class EntityTest : public testing::Test {
protected:
    void SetUp() override {
        Simulation::Get().Clear();
        app::FileInfo::Get().version->SetNative(app::FileInfo::kCurrentVersion);
    }
    void TearDown() override { Simulation::Get().Clear(); }

    static util::SharedPtr<BoxEntity> MakeBox(const Vec2& at,
                                              const Vec2& halfExtents = {0.5f, 0.5f}) {
        util::SharedPtr<physics::Box> box(new physics::Box(halfExtents));
        box->SetTransform(physics::Transform::FromAngle(0, at));
        return util::SharedPtr<BoxEntity>(new BoxEntity(box));
    }
};

TEST_F(EntityTest, IdsCountUpAndColoursAreNeverDarkOrSky) {
    const int next = app::Entity::PeekNextID();
    const auto a = MakeBox({0, 0});
    const auto b = MakeBox({0, 0});
    EXPECT_EQ(a->entityID->Get(), next);
    EXPECT_EQ(b->entityID->Get(), next + 1);
    EXPECT_EQ(a->zDepth->Get(), -1);

    util::Random random(5);
    const math::Vec4 sky(0.5f, 0.6f, 0.9f, 1);
    for (int i = 0; i < 2000; ++i) {
        const math::Vec4 c = app::RandomEntityColor(random, sky);
        EXPECT_GE(0.3f * c.x + 0.59f * c.y + 0.11f * c.z, 0.05f);
        const math::Vec4 d(c.x - sky.x, c.y - sky.y, c.z - sky.z, 0);
        EXPECT_GE(std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z), 0.1f);
        for (float component : {c.x, c.y, c.z}) {
            EXPECT_GE(component, -1e-6f);
            EXPECT_LE(component, 1 + 1e-6f);
        }
        EXPECT_EQ(c.w, 1);
    }
}

// Script assignments reach the geom at once; a density change reaches the body's mass.
TEST_F(EntityTest, AttributesWriteThroughToTheGeom) {
    const auto entity = MakeBox({0, 2});
    entity->AddToSimulation();
    physics::Geom& geom = *entity->GetGeom();
    entity->friction->SetValue(script::ValueToObject(0.25f));
    entity->restitution->SetNative(0.75f);
    entity->collideWater->SetNative(false);
    entity->collideSet->SetNative(6);
    entity->airFrictionMult->SetNative(3);
    EXPECT_EQ(geom.friction, 0.25f);
    EXPECT_EQ(geom.restitution, 0.75f);
    EXPECT_FALSE(geom.collideWater);
    EXPECT_EQ(geom.collideSet, 6u);
    EXPECT_EQ(geom.airFrictionMult, 3);
    entity->density->SetNative(5);
    EXPECT_FLOAT_EQ(entity->GetBody()->GetMass(), 5);

    const util::SharedPtr<app::PlaneEntity> plane(
        new app::PlaneEntity(util::SharedPtr<physics::Plane>(new physics::Plane())));
    EXPECT_EQ(plane->collideSet->Get(), -1);
    EXPECT_EQ(plane->GetGeom()->collideSet, 0xFFFFFFFFu);
}

TEST_F(EntityTest, EntitiesJoinAndLeaveTheSimulation) {
    const auto entity = MakeBox({1, 2});
    EXPECT_FALSE(entity->IsInSimulation());
    EXPECT_EQ(entity->GetEnergy(), 0);
    entity->Transform(physics::Transform::FromAngle(1, {5, 5}));  // no body: nothing
    EXPECT_EQ(entity->GetGeom()->GetPosition(), Vec2(1, 2));

    entity->AddToSimulation();
    ASSERT_TRUE(entity->IsInSimulation());
    const physics::BodyPtr body = entity->GetBody();
    EXPECT_EQ(Simulation::Get().GetBodies().back(), body);
    EXPECT_TRUE(entity->Contains({1.4f, 2.4f}));
    EXPECT_FALSE(entity->Contains({1.6f, 2}));

    // Two geoms on one body: removing one leaves the body; removing both removes it.
    const auto other = MakeBox({3, 2});
    body->AddGeom(other->GetGeom());
    other->AddToSimulation();
    EXPECT_EQ(other->GetBody(), body);
    entity->RemoveFromSimulation();
    EXPECT_FALSE(entity->IsInSimulation());
    EXPECT_TRUE(other->IsInSimulation());
    EXPECT_TRUE(body->IsInWorld());
    other->RemoveFromSimulation();
    EXPECT_FALSE(body->IsInWorld());
}

TEST_F(EntityTest, TransformMovesTheShapeAndItsBody) {
    const auto entity = MakeBox({1, 0});
    entity->AddToSimulation();
    entity->BeginTransform();
    EXPECT_TRUE(entity->IsTransforming());
    // A quarter turn about the origin, then up by 1.
    entity->Transform(physics::Transform::FromAngle(1.5707964f, {0, 1}));
    entity->EndTransform();
    EXPECT_FALSE(entity->IsTransforming());
    EXPECT_NEAR(entity->GetGeom()->GetPosition().x, 0, 1e-6);
    EXPECT_NEAR(entity->GetGeom()->GetPosition().y, 2, 1e-6);
    EXPECT_NEAR(entity->GetBody()->position.y, 2, 1e-6);
    const math::BoundingBox2f box = entity->GetBoundingBox();
    EXPECT_NEAR(box.min.y, 1.5f, 1e-5);
    EXPECT_TRUE(entity->Intersects({{-1, 2}, {1, 3}}));
    EXPECT_FALSE(entity->Intersects({{2, 2}, {3, 3}}));
}

TEST_F(EntityTest, EnergyIsMotionPlusHeight) {
    const auto entity = MakeBox({0, 3});
    entity->AddToSimulation();
    physics::Body& body = *entity->GetBody();
    body.velocity = Vec2(2, 0);
    body.angularVelocity = 1;
    // Mass 2 (density 2, area 1); inertia 2 / 6; height energy 2 * 9.8 * 3.
    const float expected = 0.5f * 2 * 4 + 0.5f * (2.0f / 6) + 2 * 9.8f * 3;
    EXPECT_NEAR(entity->GetEnergy(), expected, 1e-3);
    Simulation::Get().gravitySwitch->SetNative(false);
    EXPECT_NEAR(entity->GetEnergy(), expected - 2 * 9.8f * 3, 1e-4);
    Simulation::Get().gravitySwitch->SetNative(true);
}

// Each kind writes its keys and reads them back into an equal entity.
TEST_F(EntityTest, EveryKindRoundTripsThroughItsKeys) {
    const auto box = MakeBox({1, 2}, {0.5f, 1.5f});
    box->friction->SetNative(0.3f);
    box->color->SetNative(math::Vec4(0.1f, 0.2f, 0.3f, 0.4f));
    box->zDepth->SetNative(7);
    AttributeMap keys;
    box->Serialize(keys);
    EXPECT_EQ(script::ObjectToValue<Vec2>(keys["size"]), Vec2(1, 3));
    EXPECT_EQ(script::ObjectToValue<int>(keys["geomID"]),
              static_cast<int>(box->GetGeom()->GetID()));
    EXPECT_FALSE(keys.Contains("body"));

    const auto copy = MakeBox({0, 0});
    copy->Deserialize(keys);
    EXPECT_EQ(copy->GetBox().GetLocalBox().halfExtents, Vec2(0.5f, 1.5f));
    EXPECT_EQ(copy->GetGeom()->GetPosition(), Vec2(1, 2));
    EXPECT_EQ(copy->friction->Get(), 0.3f);
    EXPECT_EQ(copy->GetGeom()->friction, 0.3f);
    EXPECT_EQ(copy->color->Get(), math::Vec4(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(copy->zDepth->Get(), 7);

    util::SharedPtr<physics::Circle> circle(new physics::Circle(0.5f));
    const util::SharedPtr<CircleEntity> round(new CircleEntity(circle));
    keys.clear();
    round->Serialize(keys);
    keys["radius"] = script::ValueToObject(2.0f);
    round->Deserialize(keys);
    EXPECT_EQ(circle->GetRadius(), 2);

    const physics::PolygonPtr triangle(
        new physics::Polygon(math::Vec2List{{0, 0}, {3, 0}, {0, 3}}));
    const util::SharedPtr<app::PolyEntity> poly(new app::PolyEntity(triangle));
    keys.clear();
    poly->Serialize(keys);
    const auto vecs = script::ObjectToValue<std::vector<Vec2>>(keys["vecs"]);
    ASSERT_EQ(vecs.size(), triangle->GetVertices().size());
    EXPECT_EQ(vecs[1], triangle->GetVertices()[1]);

    // A file before version 2 has opaque three-component colours.
    app::FileInfo::Get().version->SetNative(1);
    keys["color"] = script::ValueToObject(math::Vec3(1, 0.5f, 0.25f));
    poly->Deserialize(keys);
    EXPECT_EQ(poly->color->Get(), math::Vec4(1, 0.5f, 0.25f, 1));

    // A key of the wrong type costs only itself.
    keys.clear();
    keys["friction"] = script::ValueToObject(util::String("rough"));
    keys["restitution"] = script::ValueToObject(0.9f);
    poly->Deserialize(keys);
    EXPECT_EQ(poly->friction->Get(), triangle->friction);
    EXPECT_EQ(poly->restitution->Get(), 0.9f);
}

TEST_F(EntityTest, ClonesAreLooseCopiesWithTheSameAttributes) {
    const auto box = MakeBox({1, 2}, {0.5f, 1.5f});
    box->density->SetNative(4);
    box->AddToSimulation();
    const EntityPtr clone = box->Clone();
    auto* copy = dynamic_cast<BoxEntity*>(clone.Get());
    ASSERT_TRUE(copy);
    EXPECT_FALSE(copy->IsInSimulation());
    EXPECT_NE(copy->entityID->Get(), box->entityID->Get());
    EXPECT_NE(copy->GetGeom(), box->GetGeom());
    EXPECT_EQ(copy->GetGeom()->GetPosition(), Vec2(1, 2));
    EXPECT_EQ(copy->GetBox().GetLocalBox().halfExtents, Vec2(0.5f, 1.5f));
    EXPECT_EQ(copy->density->Get(), 4);
    EXPECT_EQ(copy->GetGeom()->density, 4);
    EXPECT_EQ(copy->color->Get(), box->color->Get());
}

}  // namespace
