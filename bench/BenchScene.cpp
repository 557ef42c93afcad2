#include "BenchScene.h"

#include <algorithm>
#include <random>
#include <vector>

#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PolyEntity.h"
#include "logging/Logger.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"

namespace bench {
namespace {

constexpr int kShapeColumns = 50;

math::Vec2 Slot(int index) {
    return math::Vec2(static_cast<float>(index % kShapeColumns) * 1.5f,
                      static_cast<float>(index / kShapeColumns) * 1.5f);
}

}  // namespace

void MakeServices() {
    static bool made = false;
    if (made) {
        return;
    }
    made = true;
    // Only the figures go to the terminal.
    logging::Logger::Get();
    physics::Simulation::Get();
    physics::SPH::Get();
    app::FileInfo::Get();
    script::AddToRoot(&physics::Simulation::Get());
    script::AddToRoot(&physics::SPH::Get());
    script::AddToRoot(&app::Scene::Get());
    app::Serializer::Get();
}

void BuildScene(const SceneSize& size) {
    // The kinds in a fixed mixed order, as a scene drawn by hand has them: the load's work
    // per entity differs by kind, and the polygons' maps build beside the rest.
    enum class Kind { Box, Circle, Polygon };
    std::vector<Kind> kinds(static_cast<size_t>(size.shapes), Kind::Box);
    std::fill_n(kinds.begin(), size.circles, Kind::Circle);
    std::fill_n(kinds.begin() + size.circles, size.polygons, Kind::Polygon);
    std::shuffle(kinds.begin(), kinds.end(), std::mt19937(12345));

    app::Scene& scene = app::Scene::Get();
    scene.Clear();
    std::vector<physics::GeomPtr> geoms;
    for (int slot = 0; slot < size.shapes; ++slot) {
        const math::Vec2 at = Slot(slot);
        physics::GeomPtr geom;
        switch (kinds[static_cast<size_t>(slot)]) {
            case Kind::Box: {
                util::SharedPtr<physics::Box> box(new physics::Box(math::Vec2(0.5f, 0.3f)));
                box->SetTransform(
                    physics::Transform::FromAngle(0.1f * static_cast<float>(slot), at));
                scene.AddEntity(app::EntityPtr(new app::BoxEntity(box)));
                geom = box;
                break;
            }
            case Kind::Circle: {
                util::SharedPtr<physics::Circle> circle(new physics::Circle(0.4f));
                circle->SetTransform(physics::Transform::FromAngle(0, at));
                scene.AddEntity(app::EntityPtr(new app::CircleEntity(circle)));
                geom = circle;
                break;
            }
            case Kind::Polygon: {
                const physics::PolygonPtr polygon(new physics::Polygon(
                    math::Vec2List{at + math::Vec2(-0.5f, -0.4f), at + math::Vec2(0.5f, -0.3f),
                                   at + math::Vec2(0.3f, 0.5f), at + math::Vec2(-0.2f, 0.3f),
                                   at + math::Vec2(-0.6f, 0.1f)}));
                scene.AddEntity(app::EntityPtr(new app::PolyEntity(polygon)));
                geom = polygon;
                break;
            }
        }
        geoms.push_back(geom);
    }
    for (int i = 0; i < size.hinges; ++i) {
        const physics::GeomPtr& a = geoms[static_cast<size_t>(i)];
        const physics::GeomPtr& b = geoms[static_cast<size_t>(i + kShapeColumns)];
        util::SharedPtr<app::HingeEntity> hinge(new app::HingeEntity(0.3f));
        hinge->SetEnds(a, math::Vec2(0, 0.75f), b, math::Vec2(0, -0.75f));
        scene.AddEntity(hinge);
    }
    physics::Simulation& sim = physics::Simulation::Get();
    for (int i = 0; i < size.particles; ++i) {
        sim.AddParticle(physics::ParticlePtr(
            new physics::Particle(math::Vec2(-20 + 0.09f * static_cast<float>(i % 100),
                                             0.09f * static_cast<float>(i / 100)),
                                  math::Vec2(0, 0))));
    }
}

}  // namespace bench
