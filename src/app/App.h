#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "app/AppGUI.h"
#include "app/AppModel.h"
#include "app/entities/Entity.h"
#include "gui/Component.h"
#include "math/BoundingBox2.h"
#include "physics/Contact.h"
#include "rendering/Texture.h"
#include "util/Singleton.h"

namespace app {

class Background;
using BackgroundPtr = util::SharedPtr<Background>;
class GLPainter;
class Painter;
class WaterRenderer;

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
    // One frame of the scene: the water's field, the echo of the last frame, the sky, the
    // water, every entity in view at a depth of its own, the debug overlays and the tool's;
    // then the interface above it.
    void DrawComp() override;

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
    AppModel& GetModel() { return m_model; }
    const BackgroundPtr& GetBackground() const { return m_background; }
    // The tool in force draws its overlay through this, over the scene in world
    // coordinates.
    void SetToolOverlay(std::function<void(Painter&)> draw) { m_toolOverlay = std::move(draw); }
    // The world box the window shows.
    math::BoundingBox2f GetViewBox() const;
    // The contacts of the latest step, kept while the simulation pauses.
    // The contacts of the last step, which the collision overlay draws.
    const physics::ContactList& GetContacts() const;

    // Window pixels a second that an arrow key moves the view.
    static constexpr float kPanSpeed = 400;

private:
    // The entities in view, and those a preview transform moves, in scene order.
    void Cull(const math::BoundingBox2f& view);
    // Sets the mouse-over flags from the group under the mouse.
    void UpdateMouseOver();
    void DrawFade(math::Vec2 viewport);
    void DrawEntities();
    void DrawBodyCenters() const;
    void DrawParticleCenters() const;
    void DrawCollisions() const;
    // The window's size in pixels.
    math::Vec2 GetViewportSize() const;

    AppModel m_model;
    AppGUIPtr m_appGUI;
    BackgroundPtr m_background;
    std::unique_ptr<GLPainter> m_painter;
    std::unique_ptr<WaterRenderer> m_water;
    rendering::TexturePtr m_fadeTexture;
    std::vector<EntityPtr> m_visible;
    std::function<void(Painter&)> m_toolOverlay;
    bool m_firstRun = false;
};

}  // namespace app
