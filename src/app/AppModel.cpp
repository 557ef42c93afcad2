#include "app/AppModel.h"

#include "app/Camera.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "physics/Simulation.h"

namespace app {

AppModel::AppModel(script::Reflected& app) {
    app.AddAttrib(
        m_maxUndo, "maxUndo", [] { return Undoer::Get().GetMaxUndo(); },
        [](const int& limit) { Undoer::Get().SetMaxUndo(limit); }, Undoer::kDefaultMaxUndo);
    app.AddCommand("undo", [] { Undoer::Get().Undo(); });
    app.AddCommand("redo", [] { Undoer::Get().Redo(); });
}

void AppModel::Update(float dt) {
    physics::Simulation::Get().Update(dt);
    Scene& scene = Scene::Get();
    scene.Update(dt);
    scene.GetCamera().Update(dt);
}

HeadlessApp::HeadlessApp() : script::Reflected("App"), m_model(*this) {}

HeadlessApp::~HeadlessApp() = default;

}  // namespace app
