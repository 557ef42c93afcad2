#include "app/App.h"

#include "app/Camera.h"
#include "app/Scene.h"
#include "input/Input.h"
#include "input/KeyCodes.h"
#include "math/MathUtil.h"
#include "physics/Simulation.h"
#include "util/Assert.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"

namespace app {

App::App() : gui::Component("App"), m_model(*this) {
    AddAttrib(m_borderWidth, "borderWidth", 0.1f);
    SetReflectedName("App");
    m_appGUI = AppGUIPtr(new AppGUI());
    Add(gui::ComponentPtr(m_appGUI));
    Scene::Get().GetCamera().SetDPI(m_model.GetDPI());
}

App::~App() = default;

void App::OnKey(input::KeyEvent& event) {
    gui::Component::OnKey(event);
    // Records the key as this component saw it: a press that a text field consumed never
    // counts as held here.
    input::InputListener::OnKey(event);
}

void App::Update(float dt) {
    VORRA_PROFILE("App::Update");
    gui::Component::Update(dt);
    if (dt > 0) {
        using input::key::Down;
        using input::key::Left;
        using input::key::Right;
        using input::key::Up;
        const float x = (IsKeyDownHere(Left) ? -1.0f : 0.0f) + (IsKeyDownHere(Right) ? 1.0f : 0.0f);
        const float y = (IsKeyDownHere(Up) ? -1.0f : 0.0f) + (IsKeyDownHere(Down) ? 1.0f : 0.0f);
        if (x != 0 || y != 0) {
            Scene::Get().GetCamera().Translate(math::Vec2(x, y) * (dt * -kPanSpeed));
        }
    }
    m_model.Update(dt);
    m_contacts = physics::Simulation::Get().GetContacts();
    using math::IsFinite;
    CODE_CHECK(IsFinite(GetMousePos()));
}

math::Vec2 App::GetMousePos() const {
    return Scene::Get().GetCamera().GUIToWorld(input::Input::Get().GetMousePos());
}

float App::GetPixelSize() const {
    return Scene::Get().GetCamera().GetPixelSize();
}

float App::GetInchInWorld() const {
    return Scene::Get().GetCamera().GetInchInWorld();
}

float App::GetBorderWidth() const {
    return m_borderWidth->Get() * GetInchInWorld();
}

void App::PrepareFirstRun() {
    m_firstRun = true;
}

void App::OnExit() {
    m_appGUI->SaveSceneAs("_ONEXITSAVE.vra", true);
    util::FileSystem& fileSystem = util::FileSystem::Get();
    fileSystem.Remove(fileSystem.GetWorkDirectory() + util::FileSystem::GetScenesFolder() +
                      "_AUTOSAVE.vra");
}

}  // namespace app
