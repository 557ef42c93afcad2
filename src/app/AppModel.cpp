#include "app/AppModel.h"

#include "app/Camera.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/entities/FiniteGeomEntity.h"
#include "physics/Simulation.h"

namespace app {

AppModel::AppModel(script::Reflected& app) {
    app.AddAttrib(language, "language", util::String("English"));
    app.AddAttrib(lineWidth, "lineWidth", 4.0f);
    app.AddAttrib(pointSize, "pointSize", 4.0f);
    app.AddAttrib(drawOBBs, "drawOBBs", false);
    app.AddAttrib(drawMapOBBs, "drawMapOBBs", false);
    app.AddAttrib(drawBCs, "drawBCs", false);
    app.AddAttrib(drawVertices, "drawVertices", false);
    app.AddAttrib(drawCollisions, "drawCollisions", false);
    app.AddAttrib(drawParticleCenters, "drawParticleCenters", false);
    app.AddAttrib(drawBodyCenters, "drawBodyCenters", false);
    app.AddAttrib(polyTCFactor, "polyTCFactor", math::Vec2(10, 10));
    app.AddAttrib(selectColor, "selectColor", math::Vec3(1, 0.5f, 0.5f));
    app.AddAttrib(fadeColor, "fadeColor", math::Vec3(0, 0, 0));
    app.AddAttrib(fadeScale, "fadeScale", math::Vec2(0.95f, 0.95f));
    app.AddAttrib(fadeTranslate, "fadeTranslate", math::Vec2(0, 0));
    app.AddAttrib(fadeRotate, "fadeRotate", 0.0f);
    app.AddAttrib(minPointDist, "minPointDist", 0.2f);
    app.AddAttrib(maxPointDist, "maxPointDist", 0.5f);
    app.AddAttrib(dpi, "DPI", Camera::kDefaultDPI);
    app.AddAttrib(maxSPHSpawn, "maxSPHSpawn", FiniteGeomEntity::kDefaultMaxSPHSpawn);
    app.AddAttrib(waterElongation, "waterElongation", 0.05f);
    app.AddAttrib(waterMaxElongation, "waterMaxElongation", 2.0f);
    app.AddAttrib(metaCutoff, "metaCutoff", 0.5f);
    app.AddAttrib(borderWidth, "borderWidth", 0.1f);
    app.AddAttrib(
        maxUndo, "maxUndo", [] { return Undoer::Get().GetMaxUndo(); },
        [](const int& limit) { Undoer::Get().SetMaxUndo(limit); }, Undoer::kDefaultMaxUndo);
    app.AddAttrib(autosaveTime, "autosaveTime", 30.0f);
    app.AddAttrib(chainDensityFactor, "chainDensityFactor", 20.0f);
    app.AddAttrib(dragToolStrength, "dragToolStrength", 0.25f);
    app.AddAttrib(waterColor, "waterColor", math::Vec4(0.1f, 0.1f, 1.0f, 0.7f));
    app.AddAttrib(simpleWater, "simpleWater", false);
    app.AddAttrib(waterFanceyFactor, "waterFanceyFactor", 10.0f);
    app.AddAttrib(borders, "borders", true);
    app.AddCommand("undo", [] { Undoer::Get().Undo(); });
    app.AddCommand("redo", [] { Undoer::Get().Redo(); });
}

void AppModel::Update(float dt) {
    physics::Simulation::Get().Update(dt);
    Scene& scene = Scene::Get();
    scene.Update(dt);
    // Sizes given in inches of the screen follow a DPI changed from a script.
    scene.GetCamera().SetDPI(GetDPI());
    scene.GetCamera().Update(dt);
}

HeadlessApp::HeadlessApp() : script::Reflected("App"), m_model(*this) {}

HeadlessApp::~HeadlessApp() = default;

}  // namespace app
