#include "app/App.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

#include "app/Background.h"
#include "app/Camera.h"
#include "app/GLPainter.h"
#include "app/Scene.h"
#include "app/WaterRenderer.h"
#include "app/tools/Tools.h"
#include "gui/GUI.h"
#include "gui/Primitives.h"
#include "input/Input.h"
#include "input/KeyCodes.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "rendering/GLMatrix.h"
#include "rendering/Renderer.h"
#include "util/Assert.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"

namespace app {

App::App()
    : gui::Component("App"),
      m_model(*this),
      m_background(new Background()),
      m_painter(new GLPainter()),
      m_water(new WaterRenderer()) {
    SetReflectedName("App");
    m_appGUI = AppGUIPtr(new AppGUI());
    Add(gui::ComponentPtr(m_appGUI));
    SetToolOverlay([](Painter& painter) {
        if (Tools::IsAlive()) {
            Tools::Get().GetTool()->Draw(painter);
        }
    });
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
    // The view centres in the application's part of the window, once it has one.
    if (GetSize().x > 0 && GetSize().y > 0) {
        Scene::Get().GetCamera().SetViewport(math::Vec2(0, 0), GetSize());
    }
    m_model.Update(dt);
    m_background->SetSize(GetSize().x, GetSize().y);
    m_background->Update(dt);
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
    return m_model.borderWidth->Get() * GetInchInWorld();
}

math::Vec2 App::GetViewportSize() const {
    const math::TVector2<int> pixels = gui::GUI::Get().ToPixels(GetSize().x, GetSize().y);
    return math::Vec2(static_cast<float>(pixels.x), static_cast<float>(pixels.y));
}

math::BoundingBox2f App::GetViewBox() const {
    const Camera& camera = Scene::Get().GetCamera();
    math::BoundingBox2f box;
    box.Add(camera.GUIToWorld(math::Vec2(0, 0)));
    box.Add(camera.GUIToWorld(GetSize()));
    return box;
}

void App::Cull(const math::BoundingBox2f& view) {
    VORRA_PROFILE("Culling");
    m_visible.clear();
    const math::Mat3 identity = math::Mat3::Identity();
    for (const EntityPtr& entity : Scene::Get().GetEntities()) {
        if (entity->Intersects(view) || entity->previewTransform != identity) {
            m_visible.push_back(entity);
        }
    }
}

void App::DrawComp() {
    VORRA_PROFILE("App::DrawComp");
    DrawBorder();
    Scene& scene = Scene::Get();
    const Camera& camera = scene.GetCamera();
    physics::Simulation& sim = physics::Simulation::Get();
    const math::Mat3 cameraMatrix = camera.GetTransform();
    // A matrix that is not finite would poison every later frame's drawing: skip this one.
    if (!math::IsFinite(cameraMatrix)) {
        DrawChildren();
        return;
    }
    const math::BoundingBox2f view = GetViewBox();
    const math::Vec2 viewport = GetViewportSize();
    Cull(view);

    DrawOptions options;
    options.borders = m_model.borders->Get();
    options.drawJoints = !sim.running->Get() || m_appGUI->GetDrawHingesWhenRunning();
    options.drawOBBs = m_model.drawOBBs->Get();
    options.drawMapOBBs = m_model.drawMapOBBs->Get();
    options.drawBCs = m_model.drawBCs->Get();
    options.drawVertices = m_model.drawVertices->Get();
    m_painter->BeginFrame(GetPixelSize(), GetInchInWorld(), GetBorderWidth(), view, options);

    WaterLook look;
    look.color = m_model.waterColor->Get();
    look.cutoff = m_model.metaCutoff->Get();
    look.elongation = m_model.waterElongation->Get();
    look.maxElongation = m_model.waterMaxElongation->Get();
    look.simple = m_model.simpleWater->Get();
    const physics::ParticleList& particles = sim.GetParticles();
    const float radius = physics::SPH::Get().radius->Get();
    if (!particles.empty() && !look.simple) {
        m_water->DrawMetaTex(cameraMatrix, view, particles, radius, m_visible, *m_painter, viewport,
                             look);
    }
    {
        VORRA_PROFILE("glClear");
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    rendering::Renderer& renderer = rendering::Renderer::Get();
    const math::Colour savedColor = renderer.GetColor();
    {
        VORRA_PROFILE("Setup");
        glDepthMask(GL_FALSE);
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glPushMatrix();
        renderer.SetColor(math::Colour(1, 1, 1, 1));
        glDisable(GL_DEPTH_TEST);
        glEnable(GL_TEXTURE_2D);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
    }
    const math::Vec3 fade = m_model.fadeColor->Get();
    const bool fading = fade.x != 0 || fade.y != 0 || fade.z != 0;
    if (fading) {
        DrawFade(viewport);
    }
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    m_background->SetSize(GetSize().x, GetSize().y);
    m_background->Draw();
    {
        VORRA_PROFILE("Water");
        m_water->Composite(cameraMatrix, view, particles, radius, GetSize(), viewport, look);
    }

    glDepthMask(GL_TRUE);
    rendering::LoadMatrix(cameraMatrix);
    glLineWidth(std::clamp(m_model.lineWidth->Get(), 0.1f, 64.0f));
    glPointSize(std::clamp(m_model.pointSize->Get(), 0.1f, 64.0f));
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    DrawEntities();
    // What follows draws through the fixed pipeline.
    m_painter->ReleaseProgram();

    if (m_model.drawBodyCenters->Get()) {
        DrawBodyCenters();
    }
    if (m_model.drawParticleCenters->Get()) {
        DrawParticleCenters();
    }
    if (m_model.drawCollisions->Get()) {
        DrawCollisions();
    }
    renderer.SetColor(math::Colour(1, 1, 1, 1));
    if (m_toolOverlay) {
        m_toolOverlay(*m_painter);
    }
    if (fading) {
        if (!m_fadeTexture) {
            const rendering::Texture::ImageType type{GL_RGBA, false, 1, 1, 1, 1, 0};
            m_fadeTexture = rendering::TexturePtr(
                new rendering::Texture(WaterRenderer::kFieldSize, WaterRenderer::kFieldSize, type));
        }
        m_fadeTexture->Copy(
            static_cast<size_t>(std::min<float>(viewport.x, WaterRenderer::kFieldSize)),
            static_cast<size_t>(std::min<float>(viewport.y, WaterRenderer::kFieldSize)));
    }
    m_visible.clear();
    glPopMatrix();
    glPopAttrib();
    renderer.ForgetState();
    renderer.SetColor(savedColor);
    m_painter->EndFrame();

    DrawChildren();
}

void App::DrawFade(math::Vec2 viewport) {
    if (!m_fadeTexture) {
        return;
    }
    rendering::Renderer& renderer = rendering::Renderer::Get();
    const math::Vec3 fade = m_model.fadeColor->Get();
    const math::Vec2 translate = m_model.fadeTranslate->Get();
    const math::Vec2 scale = m_model.fadeScale->Get();
    const math::Vec2 size = GetSize();
    const float s = viewport.x / WaterRenderer::kFieldSize;
    const float t = viewport.y / WaterRenderer::kFieldSize;
    glPushMatrix();
    renderer.SetColor(math::Colour(fade.x, fade.y, fade.z, 1));
    m_fadeTexture->Bind();
    glTranslatef(translate.x, translate.y, 0);
    glTranslatef(size.x / 2, size.y / 2, 0);
    glRotatef(m_model.fadeRotate->Get(), 0, 0, 1);
    glScalef(scale.x, scale.y, 1);
    glTranslatef(-size.x / 2, -size.y / 2, 0);
    gui::DrawTexturedRect(0, 0, size.x, size.y, math::Vec2(0, 0), math::Vec2(s, t));
    rendering::Texture::Unbind();
    glPopMatrix();
}

void App::UpdateMouseOver() {
    VORRA_PROFILE("Mouse-over");
    if (!IsMouseOver()) {
        return;
    }
    const GroupPtr under = Scene::Get().GetEntityGroupAt(GetMousePos());
    for (const EntityPtr& entity : m_visible) {
        entity->mouseOver = under->Contains(entity);
    }
}

void App::DrawEntities() {
    VORRA_PROFILE("Entities");
    UpdateMouseOver();
    rendering::Renderer& renderer = rendering::Renderer::Get();
    const math::Colour savedColor = renderer.GetColor();
    const float dz = m_visible.empty() ? 0.0f : 0.9f / static_cast<float>(m_visible.size());
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    const GroupPtr& selection = Scene::Get().GetSelection();
    const math::Mat3 identity = math::Mat3::Identity();
    m_painter->BeginBatching();
    int index = 0;
    for (const EntityPtr& entity : m_visible) {
        entity->selected = selection->Contains(entity);
        m_painter->SetDepth(dz * static_cast<float>(++index));
        if (entity->previewTransform != identity) {
            m_painter->PushTransform(entity->previewTransform);
            entity->Draw(*m_painter);
            m_painter->PopTransform();
        } else {
            entity->Draw(*m_painter);
        }
    }
    m_painter->EndBatching();
    glDisable(GL_DEPTH_TEST);
    renderer.SetColor(savedColor);
}

namespace {

// Each overlay saves and restores the colour and every GL attribute.
class OverlayScope {
public:
    OverlayScope() : m_color(rendering::Renderer::Get().GetColor()) {
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_DEPTH_TEST);
    }
    ~OverlayScope() {
        glPopAttrib();
        rendering::Renderer::Get().ForgetState();
        rendering::Renderer::Get().SetColor(m_color);
    }
    OverlayScope(const OverlayScope&) = delete;
    OverlayScope& operator=(const OverlayScope&) = delete;

private:
    math::Colour m_color;
};

// A line from where a body is to where its velocity takes it in a fortieth of a second.
void VelocityLine(const physics::AbstractBody& body) {
    glVertex2f(body.position.x, body.position.y);
    const math::Vec2 end = body.position + body.velocity * 0.025f;
    glVertex2f(end.x, end.y);
}

bool Moves(const physics::AbstractBody& body) {
    return !body.IsStatic() && body.GetMass() != 0;
}

}  // namespace

void App::DrawBodyCenters() const {
    const OverlayScope scope;
    physics::Simulation& sim = physics::Simulation::Get();
    rendering::Renderer& renderer = rendering::Renderer::Get();
    renderer.SetColor(math::Colour(0, 1, 0, 0.5f));
    glBegin(GL_LINES);
    for (const physics::BodyPtr& body : sim.GetBodies()) {
        if (Moves(*body)) {
            VelocityLine(*body);
        }
    }
    for (const physics::ParticlePtr& particle : sim.GetParticles()) {
        VelocityLine(*particle);
    }
    glEnd();
    renderer.SetColor(math::Colour(0.4f, 1, 0.4f, 0.9f));
    glBegin(GL_POINTS);
    for (const physics::BodyPtr& body : sim.GetBodies()) {
        if (Moves(*body)) {
            glVertex2f(body->position.x, body->position.y);
        }
    }
    for (const physics::ParticlePtr& particle : sim.GetParticles()) {
        glVertex2f(particle->position.x, particle->position.y);
    }
    glEnd();
}

void App::DrawParticleCenters() const {
    const OverlayScope scope;
    const physics::ParticleList& particles = physics::Simulation::Get().GetParticles();
    rendering::Renderer& renderer = rendering::Renderer::Get();
    renderer.SetColor(math::Colour(1, 0, 0, 0.5f));
    glBegin(GL_LINES);
    for (const physics::ParticlePtr& particle : particles) {
        VelocityLine(*particle);
    }
    glEnd();
    renderer.SetColor(math::Colour(1, 0, 0, 1));
    glBegin(GL_POINTS);
    for (const physics::ParticlePtr& particle : particles) {
        glVertex2f(particle->position.x, particle->position.y);
    }
    glEnd();
}

const physics::ContactList& App::GetContacts() const {
    return physics::Simulation::Get().GetContacts();
}

void App::DrawCollisions() const {
    const OverlayScope scope;
    glBegin(GL_LINES);
    for (const physics::Contact& contact : GetContacts()) {
        const math::Vec2 p = contact.GetPoint();
        const math::Vec2 n = contact.GetNormal();
        const math::Vec2 impulse =
            p + n * contact.GetImpulseNormal() + contact.GetTangent() * contact.GetImpulseTangent();
        const math::Vec2 depth = p + n * contact.GetDepth();
        glColor4f(0.5f, 0, 0, 0.5f);
        glVertex2f(p.x, p.y);
        glVertex2f(impulse.x, impulse.y);
        glColor4f(0, 1, 0, 0.5f);
        glVertex2f(p.x, p.y);
        glVertex2f(depth.x, depth.y);
    }
    glEnd();
    // White while the contact is younger than half a second of simulated time.
    const double now = physics::Simulation::Get().GetSimulatedTime();
    glBegin(GL_POINTS);
    for (const physics::Contact& contact : GetContacts()) {
        const bool young = now - contact.GetCreationTime() < 0.5;
        glColor4f(1, young ? 1.0f : 0.0f, young ? 1.0f : 0.0f, 1);
        glVertex2f(contact.GetPoint().x, contact.GetPoint().y);
    }
    glEnd();
}

void App::PrepareFirstRun() {
    m_firstRun = true;
    // The windows open where they open by default, whatever a script said.
    m_appGUI->ResetWidgetPlacements();
}

void App::OnExit() {
    m_appGUI->SaveSceneAs("_ONEXITSAVE.vra", true);
    util::FileSystem& fileSystem = util::FileSystem::Get();
    fileSystem.Remove(fileSystem.GetWorkDirectory() + util::FileSystem::GetScenesFolder() +
                      "_AUTOSAVE.vra");
}

}  // namespace app
