#include <gtest/gtest.h>

#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"

namespace {

// The services a scene needs, made once for the whole run in the program's order, and
// published to the language as the program publishes them.
class SceneEnvironment : public testing::Environment {
public:
    void SetUp() override {
        physics::Simulation::Create();
        physics::SPH::Create();
        app::FileInfo::Create();
        app::Scene::Create();
        script::AddToRoot(&physics::Simulation::Get());
        script::AddToRoot(&physics::SPH::Get());
        script::AddToRoot(&app::Scene::Get());
        app::Serializer::Create();
    }
    void TearDown() override {
        app::Scene::Get().Clear();
        app::Serializer::Release();
        app::Scene::Release();
        app::FileInfo::Release();
        physics::SPH::Release();
        physics::Simulation::Release();
    }
};

[[maybe_unused]] testing::Environment* const kSceneEnvironment =
    testing::AddGlobalTestEnvironment(new SceneEnvironment);

}  // namespace
