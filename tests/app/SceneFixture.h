#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "app/Actions.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Undoer.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/ControlInputs.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PlaneEntity.h"
#include "physics/Simulation.h"

namespace test_app {

// A fresh scene for every test, with helpers that build shapes as the tools would.
class SceneTest : public testing::Test {
protected:
    void SetUp() override {
        app::Scene::Get().New();
        app::Scene::Get().SetModifierSource(nullptr);
        app::ControlInputs::Get() = app::ControlInputs();
        app::FileInfo::Get().version->SetNative(app::FileInfo::kCurrentVersion);
    }
    void TearDown() override {
        app::Scene::Get().Clear();
        std::error_code ignored;
        std::filesystem::remove_all(ReloadFolder(), ignored);
    }
    static std::filesystem::path ReloadFolder() {
        return std::filesystem::path(testing::TempDir()) /
               ("vorra-reload-" + std::to_string(getpid()));
    }

    static app::Scene& GetScene() { return app::Scene::Get(); }

    static util::SharedPtr<app::BoxEntity> AddBox(const math::Vec2& at,
                                                  const math::Vec2& halfExtents = {0.5f, 0.5f},
                                                  float angle = 0) {
        util::SharedPtr<physics::Box> box(new physics::Box(halfExtents));
        box->SetTransform(physics::Transform::FromAngle(angle, at));
        util::SharedPtr<app::BoxEntity> entity(new app::BoxEntity(box));
        GetScene().AddEntity(entity);
        return entity;
    }
    static util::SharedPtr<app::CircleEntity> AddCircle(const math::Vec2& at, float radius) {
        util::SharedPtr<physics::Circle> circle(new physics::Circle(radius));
        circle->SetTransform(physics::Transform::FromAngle(0, at));
        util::SharedPtr<app::CircleEntity> entity(new app::CircleEntity(circle));
        GetScene().AddEntity(entity);
        return entity;
    }
    // Attached as the hinge tool attaches: to what lies under each point.
    static util::SharedPtr<app::HingeEntity> AddHinge(const math::Vec2& a, const math::Vec2& b) {
        util::SharedPtr<app::HingeEntity> hinge(new app::HingeEntity(0.3f));
        const math::Vec2 points[2] = {a, b};
        hinge->Attach(points);
        GetScene().AddEntity(hinge);
        return hinge;
    }
    // The floor, y = 0.
    static util::SharedPtr<app::PlaneEntity> AddGround() {
        util::SharedPtr<physics::Plane> plane(new physics::Plane());
        plane->SetTransform(app::PlaneEntity::PlaceAt({0, 1}, 0));
        util::SharedPtr<app::PlaneEntity> entity(new app::PlaneEntity(plane));
        GetScene().AddEntity(entity);
        return entity;
    }

    static util::String Save() { return app::Serializer::Get().Serialize(); }
    // The program's load of a file, as the window's open and the shell's --load make it: a
    // step of the history through the scene loader. False when nothing was loaded.
    static bool LoadFile(const util::String& path) {
        const util::SharedPtr<app::SceneLoader> loader(
            new app::SceneLoader("UndoLoadScene", false, path));
        app::Undoer::Get().Do(loader);
        return loader->HasLoaded();
    }
    // The same for a text, from a file of its own; the entities it made, none when it did
    // not load. The file lies in a folder of this process: tests run side by side.
    static app::GroupPtr Reload(const util::String& text) {
        std::filesystem::create_directories(ReloadFolder());
        const util::String path = (ReloadFolder() / "reload.vra").string();
        std::ofstream(path, std::ios::out | std::ios::trunc | std::ios::binary) << text;
        return LoadFile(path) ? app::Serializer::Get().GetCreated()
                              : app::GroupPtr(new app::Group());
    }
};

}  // namespace test_app
