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
    app.AddAttrib(m_dpi, "DPI", Camera::kDefaultDPI);
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
