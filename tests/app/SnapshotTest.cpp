#include "app/Snapshot.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <vector>

#include "SceneFixture.h"
#include "app/Actions.h"
#include "app/Undoer.h"
#include "app/entities/PenEntity.h"
#include "physics/Contact.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "script/Parser.h"

namespace test_app {
namespace {

using physics::Simulation;

// Every number a step reads or writes of the world, as bits: bodies, water, contacts with
// their impulses, hinges with their warm starts, pen trails and the clock.
std::vector<uint32_t> WorldBits() {
    std::vector<uint32_t> bits;
    const auto add = [&bits](float value) { bits.push_back(std::bit_cast<uint32_t>(value)); };
    const auto addVec = [&add](const math::Vec2& v) {
        add(v.x);
        add(v.y);
    };
    const Simulation& sim = Simulation::Get();
    add(static_cast<float>(sim.GetSimulatedTime()));
    for (const physics::BodyPtr& body : sim.GetBodies()) {
        addVec(body->position);
        add(body->angle);
        addVec(body->velocity);
        add(body->angularVelocity);
    }
    for (const physics::ParticlePtr& particle : sim.GetParticles()) {
        addVec(particle->position);
        addVec(particle->velocity);
    }
    for (const physics::Contact& contact : sim.GetContacts()) {
        add(contact.GetImpulseNormal());
        add(contact.GetImpulseTangent());
    }
    for (const physics::HingePtr& hinge : sim.GetHinges()) {
        addVec(hinge->GetImpulse());
    }
    for (const app::EntityPtr& entity : app::Scene::Get().GetEntities()) {
        if (const auto* pen = dynamic_cast<const app::PenEntity*>(entity.Get())) {
            bits.push_back(static_cast<uint32_t>(pen->GetTrail().size()));
            if (!pen->GetTrail().empty()) {
                addVec(pen->GetTrail().back().position);
            }
        }
    }
    return bits;
}

class SnapshotTest : public SceneTest {
protected:
    void SetUp() override {
        SceneTest::SetUp();
        app::Undoer::Get().Clear();
        app::Undoer::Get().SetMaxUndo(app::Undoer::kDefaultMaxUndo);
    }
    void TearDown() override {
        app::Undoer::Get().Clear();
        SceneTest::TearDown();
    }
    static app::SnapshotPtr Take() { return app::SnapshotPtr(new app::Snapshot()); }
};

TEST_F(SnapshotTest, RestoredWorldContinuesBitForBit) {
    // Shapes, a motor, springs, a chain, water and a pen: everything that moves.
    ASSERT_TRUE(LoadFile(VORRA_SCENES_DIR "/welcome.vra"));
    ASSERT_FALSE(Simulation::Get().GetParticles().empty());
    ASSERT_FALSE(Simulation::Get().GetHinges().empty());
    ASSERT_FALSE(Simulation::Get().GetJoints().empty());
    GetScene().RunSteps(100);
    const std::vector<app::EntityPtr> entities = GetScene().GetEntities();
    const app::SnapshotPtr snapshot = Take();
    const std::vector<uint32_t> atCapture = WorldBits();
    GetScene().RunSteps(100);
    const std::vector<uint32_t> recorded = WorldBits();
    const util::String recordedText = Save();
    ASSERT_NE(recorded, atCapture);
    ASSERT_FALSE(Simulation::Get().GetContacts().empty());

    for (int round = 0; round < 2; ++round) {
        snapshot->Restore();
        EXPECT_EQ(GetScene().GetEntities(), entities) << "round " << round;
        EXPECT_EQ(WorldBits(), atCapture) << "round " << round;
        GetScene().RunSteps(100);
        EXPECT_EQ(WorldBits(), recorded) << "round " << round;
        EXPECT_EQ(Save(), recordedText) << "round " << round;
    }
}

TEST_F(SnapshotTest, ErasedShapesComeBackAsTheSameObjectsAttached) {
    AddGround();
    const auto left = AddBox({0, 3});
    const auto right = AddBox({0.8f, 3});
    const auto hinge = AddHinge({0.4f, 3}, {0.4f, 3});
    util::SharedPtr<app::PenEntity> pen(new app::PenEntity(0.2f));
    pen->SetGeom(left->GetGeom(), {0.1f, 0});
    GetScene().AddEntity(pen);
    GetScene().GetOrCreateGroup("pair")->Add(left);
    GetScene().GetOrCreateGroup("pair")->Add(right);
    GetScene().GetSelection()->Add(right);
    ASSERT_EQ(hinge->GetGeom(0), right->GetGeom());  // the topmost shape under the point
    ASSERT_EQ(hinge->GetGeom(1), left->GetGeom());
    GetScene().RunSteps(20);
    const std::vector<app::EntityPtr> before = GetScene().GetEntities();
    const std::vector<uint32_t> bits = WorldBits();

    app::EntitySet erased;
    erased.insert(right);
    erased.insert(hinge);
    app::Undoer& undoer = app::Undoer::Get();
    undoer.Do(app::ActionPtr(new app::EraseEntities("UndoErase", erased)));
    GetScene().Update(0.01f);
    EXPECT_EQ(GetScene().GetEntities().size(), 3u);  // ground, left box, pen
    EXPECT_FALSE(hinge->IsInSimulation());
    EXPECT_FALSE(GetScene().GetGroup("pair")->Contains(right));

    undoer.Undo();
    EXPECT_EQ(GetScene().GetEntities(), before);
    EXPECT_EQ(hinge->GetGeom(0), right->GetGeom());
    EXPECT_EQ(hinge->GetGeom(1), left->GetGeom());
    EXPECT_TRUE(hinge->IsInSimulation());
    EXPECT_TRUE(right->IsInSimulation());
    EXPECT_EQ(pen->GetGeom(), left->GetGeom());
    EXPECT_TRUE(GetScene().GetGroup("pair")->Contains(right));
    EXPECT_TRUE(GetScene().GetSelection()->Contains(right));
    EXPECT_EQ(WorldBits(), bits);
    EXPECT_STREQ(undoer.GetRedoLabel(), "UndoErase");

    undoer.Redo();
    EXPECT_EQ(GetScene().GetEntities().size(), 3u);
    EXPECT_FALSE(right->IsInSimulation());
}

TEST_F(SnapshotTest, GroupsAndSettingsFollowTheSnapshot) {
    const auto a = AddBox({0, 1});
    const auto b = AddBox({3, 1});
    GetScene().GetOrCreateGroup("kept")->Add(a);
    Simulation::Get().gravity->SetNative({0, -2});
    app::FileInfo::Get().title->SetNative("Mine");
    const app::SnapshotPtr snapshot = Take();

    GetScene().RemoveGroup(GetScene().GetGroup("kept"));
    GetScene().GetOrCreateGroup("later")->Add(b);
    Simulation::Get().gravity->SetNative({0, -20});
    snapshot->Restore();
    ASSERT_TRUE(GetScene().GetGroup("kept"));
    EXPECT_TRUE(GetScene().GetGroup("kept")->Contains(a));
    EXPECT_EQ(GetScene().GetGroup("kept")->size(), 1u);
    EXPECT_FALSE(GetScene().GetGroup("later"));
    EXPECT_EQ(Simulation::Get().gravity->Get(), math::Vec2(0, -2));
    EXPECT_EQ(app::FileInfo::Get().title->Get(), "Mine");
    EXPECT_TRUE(Simulation::Get().GetParticles().empty());
}

// A restore finds the attributes by the list the capture made: whatever changed them since,
// a script, native code behind the script's back or a formula, they come back, and the
// geom they write through to follows.
TEST_F(SnapshotTest, AttributesComeBackWhicheverWayTheyChanged) {
    const auto box = AddBox({0, 1});
    const auto other = AddBox({3, 1});
    script::Parser::Get().Execute("source = 0.5");
    other->friction->SetValue(script::Parser::Get().Execute("{ source }"));
    ASSERT_EQ(other->friction->Get(), 0.5f);
    box->density->SetNative(2);
    box->color->SetNative(math::Vec4(0.25f, 0.5f, 0.75f, 1));
    const app::SnapshotPtr snapshot = Take();

    box->density->SetValue(script::ValueToObject(7.0f));
    box->restitution->Set(0.9f);
    box->color->SetNative(math::Vec4(1, 0, 0, 1));
    other->friction->SetNative(0.1f);
    snapshot->Restore();
    EXPECT_EQ(box->density->Get(), 2.0f);
    EXPECT_EQ(box->GetGeom()->density, 2.0f);
    EXPECT_EQ(box->restitution->Get(), box->restitution->GetDefault());
    EXPECT_EQ(box->color->Get(), math::Vec4(0.25f, 0.5f, 0.75f, 1));
    // The formula is back, and alive.
    EXPECT_EQ(other->friction->Get(), 0.5f);
    script::Parser::Get().Execute("source = 0.25");
    EXPECT_EQ(other->friction->Get(), 0.25f);
    EXPECT_EQ(other->GetGeom()->friction, 0.25f);

    // Restoring again over an unchanged scene changes nothing.
    snapshot->Restore();
    EXPECT_EQ(box->density->Get(), 2.0f);
    EXPECT_EQ(box->color->Get(), math::Vec4(0.25f, 0.5f, 0.75f, 1));
}

TEST_F(SnapshotTest, RestoreSurvivesAWorldClearedBehindItsBack) {
    AddGround();
    const auto box = AddBox({0, 2});
    const auto hinge = AddHinge({0, 2}, {0, 2});
    const app::SnapshotPtr snapshot = Take();
    const util::String text = Save();

    // The geoms leave the simulation without the scene knowing.
    Simulation::Get().Clear();
    EXPECT_FALSE(box->IsInSimulation());
    snapshot->Restore();
    EXPECT_TRUE(box->IsInSimulation());
    EXPECT_TRUE(hinge->IsInSimulation());
    EXPECT_EQ(Save(), text);
}

TEST_F(SnapshotTest, SimStartUndoesTheWholeRun) {
    AddGround();
    const auto box = AddBox({0, 3});
    Simulation::Get().running->SetNative(false);
    const util::String paused = Save();
    app::Undoer& undoer = app::Undoer::Get();
    undoer.Do(app::ActionPtr(new app::SimStart("UndoSimStart")));
    EXPECT_TRUE(Simulation::Get().running->Get());
    GetScene().RunSteps(50);
    EXPECT_LT(box->GetGeom()->GetPosition().y, 3.0f);

    undoer.Undo();
    EXPECT_FALSE(Simulation::Get().running->Get());
    EXPECT_EQ(Save(), paused);
    undoer.Redo();
    EXPECT_TRUE(Simulation::Get().running->Get());
    EXPECT_EQ(box->GetGeom()->GetPosition(), math::Vec2(0, 3));
}

TEST_F(SnapshotTest, LoadsAreStepsOfTheHistory) {
    const util::String path = testing::TempDir() + "snapshot_load.vra";
    app::FileInfo::Get().SetFileName("");
    AddBox({0, 1});
    AddCircle({2, 2}, 0.5f);
    std::ofstream(path) << Save();
    GetScene().Clear();
    AddBox({0, 1});
    const util::String before = Save();

    app::Undoer& undoer = app::Undoer::Get();
    undoer.Do(app::ActionPtr(new app::SceneLoader("UndoLoadScene", false, path)));
    EXPECT_EQ(app::FileInfo::Get().GetFileName(), path);
    // An edit after the load is a step of its own.
    const app::SnapshotPtr edit = Take();
    AddBox({5, 5});
    undoer.AddSnapshotStep(edit, "UndoBox");
    EXPECT_EQ(GetScene().GetEntities().size(), 3u);

    undoer.Undo();
    EXPECT_EQ(GetScene().GetEntities().size(), 2u);
    undoer.Undo();
    EXPECT_EQ(Save(), before);
    EXPECT_EQ(app::FileInfo::Get().GetFileName(), "");  // a save does not go to the file
    undoer.Redo();
    EXPECT_EQ(GetScene().GetEntities().size(), 2u);
    EXPECT_EQ(app::FileInfo::Get().GetFileName(), path);

    // A missing file changes nothing, but the step stays, and undoes to the same scene.
    const util::String loaded = Save();
    undoer.Do(app::ActionPtr(new app::SceneLoader("UndoLoadScene", false, path + ".none")));
    EXPECT_EQ(Save(), loaded);
    EXPECT_STREQ(undoer.GetUndoLabel(), "UndoLoadScene");
    undoer.Undo();
    EXPECT_EQ(Save(), loaded);
    std::remove(path.c_str());
}

TEST_F(SnapshotTest, ErasedEntityLivesAsLongAsAStepHoldsIt) {
    app::Undoer& undoer = app::Undoer::Get();
    undoer.SetMaxUndo(3);
    util::WeakPtr<app::Entity> weak;
    {
        const auto box = AddBox({0, 1});
        weak = util::WeakPtr<app::Entity>(box);
        app::EntitySet erased;
        erased.insert(box);
        undoer.Do(app::ActionPtr(new app::EraseEntities("UndoErase", erased)));
    }
    GetScene().RunSteps(2);
    EXPECT_FALSE(weak.Expired());
    for (int i = 0; i < 2; ++i) {
        undoer.Do(app::ActionPtr(new app::SnapshotAction("UndoSnapshot", Take())));
        EXPECT_FALSE(weak.Expired());
    }
    // The fourth step drops the erase, the last holder of the box.
    undoer.Do(app::ActionPtr(new app::SnapshotAction("UndoSnapshot", Take())));
    EXPECT_TRUE(weak.Expired());
}

}  // namespace
}  // namespace test_app
