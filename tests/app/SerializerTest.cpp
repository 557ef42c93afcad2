#include "SceneFixture.h"

#include <fstream>
#include <map>

#include "../util/LogCapture.h"
#include "app/Chain.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "physics/Body.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "script/Variable.h"
#include "util/FileSystem.h"

namespace {

using app::EntityPtr;
using app::Serializer;
using math::Vec2;
using physics::Simulation;
using test_app::SceneTest;

// Every attribute of the entity but its id, as source text.
std::map<util::String, util::String> AttributeCode(const app::Entity& entity) {
    std::map<util::String, util::String> code;
    for (const script::VariablePtr& variable : entity.GetVariables()) {
        if (dynamic_cast<const script::AbstractAttrib*>(variable.Get()) &&
            variable->GetName() != "entityID") {
            code[variable->GetName()] = variable->GetValue()->ToExpression()->ToCode();
        }
    }
    return code;
}

// A scene with one of everything: shapes sharing a body, every joint, a pen, a chain, a
// named group, water and a formula.
void BuildShowcase() {
    app::Scene& scene = app::Scene::Get();
    scene.AddEntity(EntityPtr());
    util::SharedPtr<physics::Plane> plane(new physics::Plane());
    plane->SetTransform(app::PlaneEntity::PlaceAt({0.1f, 1}, 0.5f));
    scene.AddEntity(EntityPtr(new app::PlaneEntity(plane)));

    util::SharedPtr<physics::Box> box(new physics::Box({0.5f, 0.25f}));
    box->SetTransform(physics::Transform::FromAngle(0.3f, {0, 2}));
    util::SharedPtr<app::BoxEntity> boxEntity(new app::BoxEntity(box));
    boxEntity->density->SetNative(3);
    boxEntity->SetController("keys right up left down");
    scene.AddEntity(boxEntity);

    util::SharedPtr<physics::Circle> circle(new physics::Circle(0.4f));
    circle->SetTransform(physics::Transform::FromAngle(0, {0.6f, 2.1f}));
    util::SharedPtr<app::CircleEntity> circleEntity(new app::CircleEntity(circle));
    script::Parser::Get().Execute("formulaFriction = 0.25");
    circleEntity->friction->SetValue(script::Parser::Get().Execute("{ formulaFriction * 2 }"));
    scene.AddEntity(circleEntity);

    const physics::PolygonPtr polygon(
        new physics::Polygon(math::Vec2List{{2, 1}, {3, 1.2f}, {2.6f, 2.5f}, {2.2f, 1.9f}}));
    util::SharedPtr<app::PolyEntity> polyEntity(new app::PolyEntity(polygon));
    scene.AddEntity(polyEntity);

    util::SharedPtr<app::FixJointEntity> fix(new app::FixJointEntity(0.2f));
    const Vec2 fixAt[2] = {{0.45f, 2.1f}, {0.45f, 2.1f}};
    fix->Attach(fixAt);
    scene.AddEntity(fix);

    util::SharedPtr<app::HingeEntity> hinge(new app::HingeEntity(0.3f));
    const Vec2 hingeAt[2] = {{2.5f, 1.6f}, {2.5f, 1.6f}};
    hinge->Attach(hingeAt);
    hinge->motor->SetNative(true);
    hinge->motorTorque->SetNative(40);
    hinge->buttonForward = "right";
    hinge->impulseLimit->SetNative(500);
    scene.AddEntity(hinge);

    util::SharedPtr<app::SpringEntity> spring(new app::SpringEntity(0.25f));
    const Vec2 springAt[2] = {{0, 2}, {2.4f, 1.5f}};
    spring->Attach(springAt);
    spring->length->SetNative(1.5f);
    spring->dampingFactor->SetNative(0.3f);
    scene.AddEntity(spring);

    util::SharedPtr<app::PenEntity> pen(new app::PenEntity(0.2f));
    pen->SetGeom(polygon, {0.1f, 0.1f});
    pen->fadeTime->SetNative(4);
    scene.AddEntity(pen);

    app::ChainPtr chain(new app::Chain());
    chain->AddEntity(0, boxEntity);
    chain->AddEntity(1, fix);
    chain->AddEntity(2, circleEntity);
    scene.GetOrCreateGroup("pair")->Add(boxEntity);
    scene.GetGroup("pair")->Add(polyEntity);

    for (int i = 0; i < 20; ++i) {
        Simulation::Get().AddParticle(physics::ParticlePtr(new physics::Particle(
            Vec2(-2 + 0.1f * static_cast<float>(i % 5), 3 + 0.1f * static_cast<float>(i / 5)),
            Vec2(0, 0))));
    }
}

TEST_F(SceneTest, EveryEntityRoundTripsAndTheTextRepeats) {
    BuildShowcase();
    const util::String first = Save();
    std::vector<std::pair<util::String, std::map<util::String, util::String>>> before;
    for (const EntityPtr& entity : GetScene().GetEntities()) {
        before.emplace_back(entity->GetReflectedName(), AttributeCode(*entity));
    }

    test::LogCapture log(test::LogCapture::kProblems);
    Reload(first);
    EXPECT_TRUE(log.Lines().empty()) << log.Text();
    EXPECT_EQ(Save(), first);

    const std::vector<EntityPtr>& after = GetScene().GetEntities();
    ASSERT_EQ(after.size(), before.size());
    for (size_t i = 0; i < after.size(); ++i) {
        EXPECT_EQ(after[i]->GetReflectedName(), before[i].first);
        EXPECT_EQ(AttributeCode(*after[i]), before[i].second) << before[i].first;
    }
    // What is not an attribute came along too.
    const auto* box = dynamic_cast<app::BoxEntity*>(after[1].Get());
    const auto* circle = dynamic_cast<app::CircleEntity*>(after[2].Get());
    const auto* polygon = dynamic_cast<app::PolyEntity*>(after[3].Get());
    const auto* hinge = dynamic_cast<app::HingeEntity*>(after[5].Get());
    const auto* pen = dynamic_cast<app::PenEntity*>(after[7].Get());
    ASSERT_TRUE(box && circle && polygon && hinge && pen);
    EXPECT_EQ(box->GetController(), "keys right up left down");
    EXPECT_EQ(box->GetBody(), circle->GetBody());
    EXPECT_EQ(hinge->buttonForward, "right");
    EXPECT_EQ(hinge->GetGeom(0), polygon->GetGeom());
    EXPECT_EQ(pen->GetGeom(), polygon->GetGeom());
    // Its maps, built beside the load, are those of the outline built in place.
    const auto& loaded = static_cast<const physics::Polygon&>(*polygon->GetGeom());
    const physics::Polygon inPlace(loaded.GetVertices(), physics::Polygon::KeepLocal());
    ASSERT_EQ(loaded.GetDistMap().size(), inPlace.GetDistMap().size());
    EXPECT_EQ(std::memcmp(loaded.GetDistMap().data(), inPlace.GetDistMap().data(),
                          inPlace.GetDistMap().size() * sizeof(float)),
              0);
    ASSERT_TRUE(box->GetChain());
    EXPECT_EQ(box->GetChain()->GetIndex(circle), 2);
    ASSERT_TRUE(GetScene().GetGroup("pair"));
    EXPECT_EQ(GetScene().GetGroup("pair")->size(), 2u);
    EXPECT_EQ(Simulation::Get().GetParticles().size(), 20u);
    // The formula is still one.
    script::Parser::Get().Execute("formulaFriction = 0.4");
    script::Parser::Get().Update();
    EXPECT_FLOAT_EQ(circle->GetGeom()->friction, 0.8f);
}

TEST_F(SceneTest, ALoadedSceneStepsTheSameBitsEveryTime) {
    BuildShowcase();
    const util::String text = Save();
    std::vector<std::vector<float>> runs;
    for (int run = 0; run < 2; ++run) {
        Reload(text);
        physics::SPH::Get().SeedJitter(7);
        GetScene().RunSteps(150);
        std::vector<float> state;
        for (const physics::BodyPtr& body : Simulation::Get().GetBodies()) {
            state.insert(state.end(), {body->position.x, body->position.y, body->angle,
                                       body->velocity.x, body->angularVelocity});
        }
        for (const physics::ParticlePtr& particle : Simulation::Get().GetParticles()) {
            state.insert(state.end(), {particle->position.x, particle->position.y});
        }
        runs.push_back(state);
    }
    EXPECT_GT(runs[0].size(), 20u);
    EXPECT_EQ(runs[0], runs[1]);
}

TEST_F(SceneTest, IdsInTheFileBindJointsToTheirGeoms) {
    // Ids out of order, one written "id", and a hinge to the second shape.
    const char* text =
        "FileInfo.version = 2;\n"
        "Scene.addBox({size = [1.0, 1.0]; pos = [0.0, 0.0]; angle = 0.0; geomID = 42});\n"
        "Scene.addCircle({radius = 0.5; pos = [5.0, 0.0]; angle = 0.0; id = 7});\n"
        "Scene.addHinge({geom0 = 7; geom0pos = [0.1, 0.0]; geom1 = 42; geom1pos = [0.0, 0.2]});\n"
        "Scene.addSpring({geom0 = 99; world0pos = [1.0, 1.0]; geom1 = 42; geom1pos = [0.0, 0.0]})";
    test::LogCapture log;
    const app::GroupPtr created = Reload(text);
    EXPECT_EQ(created->size(), 4u);
    EXPECT_TRUE(log.Contains("Couldn't find geom with ID 99")) << log.Text();
    const std::vector<EntityPtr>& entities = GetScene().GetEntities();
    const auto* box = dynamic_cast<app::BoxEntity*>(entities[0].Get());
    const auto* circle = dynamic_cast<app::CircleEntity*>(entities[1].Get());
    const auto* hinge = dynamic_cast<app::HingeEntity*>(entities[2].Get());
    const auto* spring = dynamic_cast<app::SpringEntity*>(entities[3].Get());
    ASSERT_TRUE(box && circle && hinge && spring);
    EXPECT_EQ(hinge->GetGeom(0), circle->GetGeom());
    EXPECT_EQ(hinge->GetGeom(1), box->GetGeom());
    EXPECT_EQ(hinge->GetWorld(0), Vec2(5.1f, 0));
    // The unknown end holds on to the ground at its world point.
    EXPECT_EQ(spring->GetGeom(0), Simulation::Get().GetWorldGeom());
    EXPECT_EQ(spring->GetWorld(0), Vec2(1, 1));
    EXPECT_TRUE(spring->IsInSimulation());
}

TEST_F(SceneTest, BadLinesCostOnlyThemselves) {
    const char* text =
        "FileInfo.version = 2;\n"
        "Scene.addBox 5;\n"
        "Scene.addBox({size = [1.0, 1.0]; pos = [0.0, 0.0]; angle = 0.0; density = \"heavy\"; "
        "friction = 0.2; geomID = 1});\n"
        "Scene.addBox({pos = [3.0, 0.0]});\n"
        "Scene.addCircle({pos = [1.0, 1.0]});\n"
        "Scene.addPolygon({vecs = [[0.0, 0.0], [1.0, 1.0]]});\n"
        "Scene.addHinge({geom0 = 1; geom0pos = [0.0, 0.0]; geom1 = -1});\n"
        "Scene.addFixjoint({});\n"
        "Scene.addGroup({entityIDs = [1, 2, 3]});\n"
        "Scene.addCircle({radius = 0.5; pos = [0.0, 4.0]; angle = 0.0; chain = 1; chainNr = -3});\n"
        "FileInfo.version = 3;\n"
        "Scene.addCircle({radius = 0.25; pos = [0.0, 5.0]; angle = 0.0})";
    test::LogCapture log;
    const app::GroupPtr created = Reload(text);
    const util::String all = log.Text();
    EXPECT_TRUE(
        log.Contains("Bad argument to scene creator function, must be an inline function "
                     "with zero arguments (i.e.: {...} )"))
        << all;
    EXPECT_TRUE(log.Contains("Bad value for density")) << all;
    EXPECT_TRUE(log.Contains("Missing key: size")) << all;
    EXPECT_TRUE(log.Contains("Missing key: radius")) << all;
    EXPECT_TRUE(log.Contains("Bad polygon")) << all;
    EXPECT_TRUE(log.Contains("Joint connected to unknown geometry")) << all;
    EXPECT_TRUE(log.Contains("Failed to attach joint to any geometry")) << all;
    EXPECT_TRUE(log.Contains("Loading scene from a newer version of Vorra. Go to ")) << all;
    EXPECT_TRUE(log.Contains(" and download the latest version!")) << all;
    // The good box with its good keys, and the circle after the notice.
    ASSERT_EQ(created->size(), 2u);
    const auto* box = dynamic_cast<app::BoxEntity*>(GetScene().GetEntities()[0].Get());
    ASSERT_TRUE(box);
    EXPECT_FLOAT_EQ(box->GetGeom()->friction, 0.2f);
    EXPECT_EQ(box->density->Get(), box->density->GetDefault());
    EXPECT_EQ(GetScene().GetEntities().size(), 2u);
}

// A shape of no area, or not finite, is made; its body turns it away as it turns away any
// such geom, and the body, left with nothing, leaves the world at the next step, and the
// shape the scene after it. Nothing else of the file is lost.
TEST_F(SceneTest, DegenerateShapesCostOnlyThemselves) {
    const char* text =
        "Scene.addCircle({radius = 0.0; pos = [0.0, 1.0]; angle = 0.0});\n"
        "Scene.addCircle({radius = 0.5; pos = [0.0, 3.0]; angle = 0.0});\n"
        "Scene.addBox({size = [0.0, 1.0]; pos = [2.0, 1.0]; angle = 0.0});\n"
        "Scene.addBox({size = [1.0, -1.0]; pos = [4.0, 1.0]; angle = 0.0});\n"
        "Scene.addPolygon({vecs = [[0.0, 0.0], [1.0, 0.0], [2.0, 0.0]]; pos = [6.0, 1.0]; "
        "angle = 0.0});\n"
        "Scene.addPlane({normal = [0.0, 1.0]; dist = +inf});\n"
        "Scene.addPlane({normal = [0.0, 0.0]; dist = 0.0});\n"
        "Scene.addBox({size = [1.0, 1.0]; pos = [0.0, 6.0]; angle = 0.0})";
    test::LogCapture log(test::LogCapture::kProblems);
    const app::GroupPtr created = Reload(text);
    EXPECT_TRUE(log.Contains("Bad geometry in Body::AddGeoms")) << log.Text();
    EXPECT_TRUE(log.Contains("\"det != 0\"")) << log.Text();  // a plane needs a normal
    EXPECT_EQ(created->size(), 7u);
    GetScene().RunSteps(2);
    ASSERT_EQ(GetScene().GetEntities().size(), 2u);
    for (const EntityPtr& entity : GetScene().GetEntities()) {
        EXPECT_TRUE(entity->IsInSimulation());
        EXPECT_GT(entity->GetBoundingBox().min.y, 2.0f);
    }
}

TEST_F(SceneTest, TextsThatDoNotParseOrAreNoSceneLoseNothing) {
    AddBox({0, 0});
    const util::String path = testing::TempDir() + "broken.vra";
    const util::String good = testing::TempDir() + "good.vra";
    ASSERT_TRUE(Serializer::Get().Save(good));
    {
        std::ofstream file(path);
        file << "Scene.addBox({size = [1.0, 1.0]; pos = [0.0, 0.0]; angle = 0.0});\n"
                "Scene.addBox({size = [1.0, 1.0]; pos = [(2.0, 0.0]";
    }
    test::LogCapture log;
    EXPECT_FALSE(LoadFile(path));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);  // the scene in hand stays
    EXPECT_FALSE(LoadFile(testing::TempDir() + "missing.vra"));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);

    // Garbage of every byte and every cut of a good file load what they can.
    util::String garbage;
    for (int i = 0; i < 2000; ++i) {
        garbage += static_cast<char>((i * 7919) % 256);
    }
    Reload(garbage);
    const util::String text = util::FileSystem::Get().ReadTextFile(good);
    for (size_t cut = 0; cut < text.size(); cut += 97) {
        Reload(text.substr(0, cut));
    }
    EXPECT_TRUE(LoadFile(good));
    EXPECT_EQ(GetScene().GetEntities().size(), 1u);
}

// Strings print as they stand, so a title ending in a backslash escapes its own closing
// quote: the text would not load. The save keeps the good file and puts the text beside it.
TEST_F(SceneTest, ASaveThatWouldNotLoadAgainKeepsTheFileItWouldReplace) {
    const util::String path = testing::TempDir() + "guarded.vra";
    const util::String broken = path + ".broken";
    std::remove(broken.c_str());
    AddBox({0, 0});
    ASSERT_TRUE(Serializer::Get().Save(path));
    const util::String good = util::FileSystem::Get().ReadTextFile(path);

    AddCircle({2, 0}, 0.5f);
    app::FileInfo::Get().title->SetNative("C:\\scenes\\");
    {
        test::LogCapture log(test::LogCapture::kProblems);
        EXPECT_FALSE(Serializer::Get().Save(path));
        EXPECT_TRUE(log.Contains("Couldn't save " + path)) << log.Text();
        EXPECT_TRUE(log.Contains(", FileInfo.title: ")) << log.Text();
        EXPECT_TRUE(log.Contains("the text is in " + broken)) << log.Text();
    }
    EXPECT_EQ(util::FileSystem::Get().ReadTextFile(path), good);
    EXPECT_EQ(util::FileSystem::Get().ReadTextFile(broken), Save());
    EXPECT_FALSE(util::FileSystem::Get().Exists(path + ".saving"));

    // In an entity's line the key is named.
    app::FileInfo::Get().title->SetNative("fixed");
    GetScene().GetOrCreateGroup("left\\")->Add(GetScene().GetEntities()[0]);
    {
        test::LogCapture log(test::LogCapture::kProblems);
        EXPECT_FALSE(Serializer::Get().Save(path));
        EXPECT_TRUE(log.Contains(", key name: ")) << log.Text();
    }
    EXPECT_EQ(util::FileSystem::Get().ReadTextFile(path), good);

    // Fixed, it saves, and the file loads with both shapes.
    GetScene().GetGroup("left\\")->SetName("left");
    ASSERT_TRUE(Serializer::Get().Save(path));
    ASSERT_TRUE(LoadFile(path));
    EXPECT_EQ(GetScene().GetEntities().size(), 2u);
    EXPECT_EQ(app::FileInfo::Get().title->Get(), "fixed");
    std::remove(path.c_str());
    std::remove(broken.c_str());
}

TEST_F(SceneTest, OldFilesLoadInPhases) {
    const char* text =
        "version = 1;\n"
        "{type = \"hinge\"; geom0 = 3; geom0pos = [0.0, 0.0]; geom1 = -1; world1pos = [0.0, "
        "2.0]};\n"
        "{type = \"box\"; size = [1.0, 1.0]; pos = [0.0, 2.0]; angle = 0.0; id = 3; color = [1.0, "
        "0.0, 0.0]; group = 4};\n"
        "{type = \"cloud\"};\n"
        "speed = 5;\n"
        "17;\n"
        "{type = \"spring\"; geom0 = 3; geom0pos = [0.0, 0.0]; geom1 = -1; world1pos = [3.0, "
        "3.0]};\n"
        "{type = \"water\"; vecs = [[5.0, 5.0], [5.1, 5.0]]}";
    test::LogCapture log;
    Reload(text);
    EXPECT_TRUE(log.Contains("Old (pre beta 4) file type detected")) << log.Text();
    EXPECT_TRUE(log.Contains("Unknown type: cloud")) << log.Text();
    EXPECT_TRUE(log.Contains("Unknown constant declared in scene file: speed = 5")) << log.Text();
    EXPECT_TRUE(log.Contains("Unknown garbage found in scene file: 17")) << log.Text();
    EXPECT_EQ(app::FileInfo::Get().version->Get(), 1);
    const std::vector<EntityPtr>& entities = GetScene().GetEntities();
    ASSERT_EQ(entities.size(), 3u);
    const auto* box = dynamic_cast<app::BoxEntity*>(entities[0].Get());
    const auto* hinge = dynamic_cast<app::HingeEntity*>(entities[1].Get());
    const auto* spring = dynamic_cast<app::SpringEntity*>(entities[2].Get());
    ASSERT_TRUE(box && hinge && spring);
    EXPECT_EQ(hinge->GetGeom(0), box->GetGeom());
    EXPECT_EQ(box->color->Get(), math::Vec4(1, 0, 0, 1));
    EXPECT_EQ(spring->size->Get(), 0.1f);
    ASSERT_TRUE(GetScene().GetGroup("group_4"));
    EXPECT_EQ(Simulation::Get().GetParticles().size(), 2u);

    // Only a version line gives an empty scene of that version; white space first is not old.
    Reload("version = 1");
    EXPECT_TRUE(GetScene().GetEntities().empty());
    test::LogCapture second;
    Reload(" version = 1");
    EXPECT_FALSE(second.Contains("Old (pre beta 4)"));
}

TEST_F(SceneTest, VorraletsPasteAsIndependentCopies) {
    const auto a = AddBox({0, 2});
    const auto b = AddCircle({1, 2}, 0.4f);
    util::SharedPtr<app::HingeEntity> hinge(new app::HingeEntity(0.3f));
    const Vec2 at[2] = {{0.5f, 2}, {0.5f, 2}};
    hinge->Attach(at);
    GetScene().AddEntity(hinge);
    app::Group group;
    group.Add(a);
    group.Add(b);
    group.Add(hinge);
    const util::String vorralet = Serializer::Get().Serialize(group);
    EXPECT_EQ(vorralet.rfind("// Vorralet created by ", 0), 0u);

    const app::GroupPtr first = Serializer::Get().Deserialize(vorralet);
    const app::GroupPtr second = Serializer::Get().Deserialize(vorralet);
    EXPECT_EQ(first->size(), 3u);
    EXPECT_EQ(second->size(), 3u);
    EXPECT_EQ(GetScene().GetEntities().size(), 9u);
    // Each pasted hinge holds the shapes of its own paste.
    for (const app::GroupPtr& paste : {first, second}) {
        const std::vector<EntityPtr> members = paste->InOrder(GetScene().GetEntities());
        const auto* pastedHinge = dynamic_cast<app::HingeEntity*>(members[2].Get());
        ASSERT_TRUE(pastedHinge);
        EXPECT_TRUE(
            pastedHinge->GetGeom(0) == static_cast<app::GeomEntity&>(*members[1]).GetGeom() ||
            pastedHinge->GetGeom(0) == static_cast<app::GeomEntity&>(*members[0]).GetGeom());
        EXPECT_NE(members[0]->entityID->Get(), a->entityID->Get());
    }
    // Moving one copy leaves the other.
    const EntityPtr firstBox = first->InOrder(GetScene().GetEntities())[0];
    firstBox->Transform(physics::Transform::FromAngle(0, {10, 0}));
    const EntityPtr secondBox = second->InOrder(GetScene().GetEntities())[0];
    EXPECT_EQ(static_cast<app::GeomEntity&>(*secondBox).GetGeom()->GetPosition(), Vec2(0, 2));
}

}  // namespace
