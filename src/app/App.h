#pragma once

#include <vector>

#include "app/AppGUI.h"
#include "app/AppModel.h"
#include "gui/Component.h"
#include "physics/Contact.h"
#include "util/Singleton.h"

namespace app {

// The application root: the component below the whole interface, where simulated time
// advances, and in the language the object "App". main makes the one instance with new.
class App : public gui::Component, public util::Singleton<App> {
public:
    App();
    ~App() override;

    // The base update, arrow-key panning, then the simulation, the scene and the camera.
    void Update(float dt) override;
    // Keys that reach the application are remembered, so that only they pan the view.
    void OnKey(input::KeyEvent& event) override;

    // The mouse in the world.
    math::Vec2 GetMousePos() const;
    // The world size of a pixel and of an inch of the screen, and the shapes' border.
    float GetPixelSize() const;
    float GetInchInWorld() const;
    float GetBorderWidth() const;

    // Before the first window of a first run.
    void PrepareFirstRun();
    bool IsFirstRun() const { return m_firstRun; }
    // At a normal exit: the scene goes to "_ONEXITSAVE.vra", and the autosave, whose
    // presence would mean a crash, is removed.
    void OnExit();

    const AppGUIPtr& GetAppGUI() const { return m_appGUI; }
    // The contacts of the latest step, kept while the simulation pauses.
    const std::vector<physics::ContactPtr>& GetContacts() const { return m_contacts; }

    // Window pixels a second that an arrow key moves the view.
    static constexpr float kPanSpeed = 400;

private:
    AppModel m_model;
    script::AttribPtr<float> m_borderWidth;
    AppGUIPtr m_appGUI;
    std::vector<physics::ContactPtr> m_contacts;
    bool m_firstRun = false;
};

}  // namespace app
