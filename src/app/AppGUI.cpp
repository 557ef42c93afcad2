#include "app/AppGUI.h"

#include <algorithm>
#include <cmath>

#include "app/Actions.h"
#include "app/App.h"
#include "app/Camera.h"
#include "app/FileInfo.h"
#include "app/Language.h"
#include "app/PopupActions.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Snapshot.h"
#include "app/Thumbnail.h"
#include "app/Undoer.h"
#include "app/tools/DragTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/Tools.h"
#include "app/widgets/Widget.h"
#include "app/widgets/WidgetFactory.h"
#include "app/widgets/Window.h"
#include "core/Subsystem.h"
#include "input/Input.h"
#include "input/KeyCodes.h"
#include "logging/Log.h"
#include "os/OS.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "script/Parser.h"
#include "util/Clock.h"
#include "util/FileSystem.h"
#include "util/Profiler.h"
#include "util/StringUtil.h"
#include "util/Version.h"

namespace app {

namespace {

const input::SDLKey kLeft = input::MouseKey(input::kMouseLeft);
const input::SDLKey kMiddle = input::MouseKey(input::kMouseMiddle);
const input::SDLKey kRight = input::MouseKey(input::kMouseRight);

bool IsMouseDown(input::SDLKey key) {
    return input::Input::IsAlive() && input::Input::Get().IsKeyDown(key);
}

math::Vec2 ToWorld(const math::Vec2& gui) {
    return Scene::Get().GetCamera().GUIToWorld(gui);
}

bool IsWaterAt(const math::Vec2& world) {
    const float radius = physics::SPH::Get().radius->Get();
    for (const physics::ParticlePtr& particle : physics::Simulation::Get().GetParticles()) {
        if ((particle->position - world).SquaredLength() <= radius * radius) {
            return true;
        }
    }
    return false;
}

// The widgets that the configuration keeps, and whether each is open on a first run.
struct KeptWidget {
    const char* name;
    bool visibleByDefault;
};
constexpr KeptWidget kKeptWidgets[] = {
    {"Toolbar", true},  {"SimControl", true}, {"SimInfo", true}, {"File", false},
    {"Options", false}, {"Help", false},      {"About", false},
};

}  // namespace

AppGUI::AppGUI() : gui::Component("AppGUI") {
    SetReflectedName("AppGUI");
    AddAttrib(zoomFactor, "zoomFactor", 0.2f);
    AddAttrib(freeDrawing, "freeDrawing", false);
    AddAttrib(autoGlue, "autoGlue", false);
    AddAttrib(leftClickMenus, "leftClickMenus", false);
    AddAttrib(drawHingesWhenRunning, "drawHingesWhenRunning", true);
    AddAttrib(trapUser, "trapUser", false);
    AddAttrib(simpleMode, "simpleMode", false);
    m_popupLayer = gui::ComponentPtr(new gui::Component("PopupLayer"));
    m_popupLayer->SetPassesMouseThrough(true);
    Add(m_popupLayer);
    for (const KeptWidget& kept : kKeptWidgets) {
        m_placements.emplace_back(new WidgetPlacement(kept.name, kept.visibleByDefault));
        AddReflected(script::ReflectedPtr(m_placements.back()));
        m_kept.emplace_back();
    }
    m_lastAutosave = util::Clock::Seconds();
}

AppGUI::~AppGUI() = default;

Tool& AppGUI::GetTool() const {
    return *Tools::Get().GetTool();
}

std::vector<gui::ComponentPtr> AppGUI::GetWidgets() const {
    VORRA_PROFILE("AppGUI::GetWidgets");
    std::vector<gui::ComponentPtr> widgets;
    for (const gui::ComponentPtr& child : GetChildren()) {
        if (dynamic_cast<Widget*>(child.Get())) {
            widgets.push_back(child);
        }
    }
    return widgets;
}

gui::ComponentPtr AppGUI::FindWidget(const util::String& name) const {
    for (const gui::ComponentPtr& widget : GetWidgets()) {
        if (static_cast<const Widget&>(*widget).GetWidgetName() == name) {
            return widget;
        }
    }
    return gui::ComponentPtr();
}

void AppGUI::ClosePopups() {
    HideWidget("File");
    m_popupLayer->RemoveAllChildren();
}

void AppGUI::ShowPopup(const gui::ComponentPtr& popup) {
    ClosePopups();
    m_popupLayer->Add(popup);
    RaisePopupLayer();
}

void AppGUI::RaisePopupLayer() {
    // The layer goes last, so that it draws above the widgets and hears events first.
    Remove(m_popupLayer);
    Add(m_popupLayer);
}

void AppGUI::ShowCentred(const WindowPtr& popup) {
    popup->PlaceNear((GetSize() - popup->GetOuterSize()) * 0.5f);
    ShowPopup(gui::ComponentPtr(popup));
}

void AppGUI::SetUpWidgets() {
    const bool simple = simpleMode->Get();
    for (size_t i = 0; i < m_placements.size(); ++i) {
        if (m_kept[i]) {
            m_kept[i]->Hide();
        }
        const util::String& name = m_placements[i]->GetReflectedName();
        m_kept[i] = WidgetFactory::Get().Make(name);
        if (!m_kept[i]) {
            continue;
        }
        m_kept[i]->Show(*this);
        m_placements[i]->Apply(*m_kept[i]);
        if (!m_placements[i]->visible->Get() || (simple && !IsInSimpleMode(name))) {
            m_kept[i]->Hide();
        }
    }
    m_simpleShown = simple;
    RaisePopupLayer();
}

util::SharedPtr<Widget> AppGUI::GetKeptWidget(const util::String& name) const {
    for (size_t i = 0; i < m_placements.size(); ++i) {
        if (m_placements[i]->GetReflectedName() == name) {
            return m_kept[i];
        }
    }
    return util::SharedPtr<Widget>();
}

bool AppGUI::ShowWidget(const util::String& name) {
    const util::SharedPtr<Widget> widget = GetKeptWidget(name);
    if (!widget) {
        return false;
    }
    if (!widget->IsShown()) {
        widget->Show();
    }
    // Opening one brings it above the others, the popups still above all.
    Remove(gui::ComponentPtr(widget));
    Add(gui::ComponentPtr(widget));
    RaisePopupLayer();
    return true;
}

void AppGUI::HideWidget(const util::String& name) {
    if (const util::SharedPtr<Widget> widget = GetKeptWidget(name)) {
        widget->Hide();
    }
}

void AppGUI::ToggleWidget(const util::String& name) {
    const util::SharedPtr<Widget> widget = GetKeptWidget(name);
    if (widget && widget->IsShown()) {
        widget->Hide();
    } else {
        ShowWidget(name);
    }
}

void AppGUI::ResetWidgetPlacements() {
    for (const WidgetPlacementPtr& placement : m_placements) {
        placement->Reset();
    }
}

bool AppGUI::IsInSimpleMode(const util::String& name) {
    return name == "Toolbar" || name == "SimControl";
}

void AppGUI::FollowWidgets() {
    const bool simple = simpleMode->Get();
    for (size_t i = 0; i < m_placements.size(); ++i) {
        if (!m_kept[i]) {
            continue;
        }
        const util::String& name = m_placements[i]->GetReflectedName();
        const bool reduced = simple && !IsInSimpleMode(name);
        if (simple != m_simpleShown && !IsInSimpleMode(name)) {
            // Into the reduced interface the widget goes; out of it, it comes back as it was.
            if (simple) {
                m_kept[i]->Hide();
            } else if (m_placements[i]->visible->Get()) {
                m_kept[i]->Show();
            }
        }
        m_placements[i]->Record(*m_kept[i], reduced);
    }
    m_simpleShown = simple;
}

void AppGUI::OpenPopupMenu(const math::Vec2& position) {
    const Scene& scene = Scene::Get();
    util::String menu = "EntityOptions";
    if (scene.GetSelection()->empty()) {
        menu = IsWaterAt(ToWorld(position)) ? "WaterMenu" : "BackgroundMenu";
    }
    const WindowPtr popup = WidgetFactory::Get().MakeMenu(menu, scene.GetSelection());
    popup->PlaceNear(position);
    ShowPopup(gui::ComponentPtr(popup));
}

void AppGUI::Update(float dt) {
    VORRA_PROFILE("AppGUI::Update");
    // The interface covers the application's whole area, and popups may go anywhere on it.
    if (const gui::Component* parent = GetParent(); parent && parent->GetSize() != GetSize()) {
        SetPosition(0, 0);
        SetSize(parent->GetSize());
    }
    if (m_popupLayer->GetSize() != GetSize()) {
        m_popupLayer->SetSize(GetSize());
    }
    gui::Component::Update(dt);
    FollowWidgets();
    if (core::Subsystem::IsAlive()) {
        util::String caption = GetWindowCaption();
        if (caption != m_caption) {
            m_caption = std::move(caption);
            core::Subsystem::Get().SetCaption(m_caption);
        }
    }
    const double now = util::Clock::Seconds();
    if (App::IsAlive() && now - m_lastAutosave > App::Get().GetModel().autosaveTime->Get()) {
        Autosave();
        m_lastAutosave = now;
    }
    Tools::Get().Update(dt);
}

void AppGUI::Autosave() {
    VORRA_PROFILE("Autosave");
    util::FileSystem& files = util::FileSystem::Get();
    script::Parser::Get().SaveConfig(files.GetWorkDirectory() + "config.autosave.cfg");
    SaveSceneAs("_AUTOSAVE.vra", true);
}

void AppGUI::OnKey(input::KeyEvent& event) {
    gui::Component::OnKey(event);
    if (event.consumed) {
        return;
    }
    if (event.down && HandleGlobalKey(event)) {
        event.consumed = true;
        return;
    }
    GetTool().OnKey(event);
    if (!event.consumed) {
        Tools::Get().OnKey(event);
    }
}

bool AppGUI::HandleGlobalKey(const input::KeyEvent& event) {
    using namespace input::key;
    const input::SDLKey key = event.key;
    if (key == input::MouseKey(input::kMouseWheelUp) ||
        key == input::MouseKey(input::kMouseWheelDown)) {
        Wheel(key == input::MouseKey(input::kMouseWheelUp) ? 1 : -1, event.position, event.shift);
        return true;
    }
    if (key == Escape) {
        if (GetTool().Cancel()) {
            return true;
        }
        if (!m_popupLayer->GetChildren().empty()) {
            ClosePopups();
            return true;
        }
        return false;
    }
    if (!event.ctrl) {
        if (event.alt || event.shift) {
            return false;
        }
        if (key == Space) {
            ToggleRunning();
            return true;
        }
        if (key == Delete || key == Backspace) {
            EraseSelection();
            return true;
        }
        return false;
    }
    Scene& scene = Scene::Get();
    switch (key) {
        case 'a': {
            Group all;
            for (const EntityPtr& entity : scene.GetEntities()) {
                all.Add(entity);
            }
            scene.Select(all);
        }
            return true;
        case 's': {
            ShowCentred(WidgetFactory::Get().MakeSavePopup());
            return true;
        }
        case 'o': {
            ShowCentred(WidgetFactory::Get().MakeLoadPopup());
            return true;
        }
        case 'n':
            NewScene();
            return true;
        case 'q':
            if (trapUser->Get()) {
                return false;
            }
            core::Subsystem::Get().RequestExit();
            return true;
        case 'v':
            PasteSceneCode(ToWorld(event.position));
            return true;
        case 'z':
            Undoer::Get().Undo();
            return true;
        case 'y':
            Undoer::Get().Redo();
            return true;
        case 'g':
            GroupSelection();
            return true;
        case 'u':
            UngroupSelection();
            return true;
        default:
            return false;
    }
}

void AppGUI::Wheel(int direction, const math::Vec2& position, bool shift) {
    Scene& scene = Scene::Get();
    if (shift) {
        if (direction > 0) {
            scene.MoveToFront(*scene.GetSelection());
        } else {
            scene.MoveToBack(*scene.GetSelection());
        }
        return;
    }
    Camera& camera = scene.GetCamera();
    const float zoom = camera.GetZoom();
    if ((direction < 0 && zoom <= Camera::kMinZoom) ||
        (direction > 0 && zoom >= Camera::kMaxZoom)) {
        return;
    }
    // The point under the mouse stays where it is.
    const math::Vec2 anchor = camera.GUIToWorld(position);
    camera.SetZoom(zoom * std::pow(2.0f, static_cast<float>(direction) * zoomFactor->Get()));
    camera.Translate(position - camera.WorldToGUI(anchor));
}

void AppGUI::ToggleRunning() {
    physics::Simulation& sim = physics::Simulation::Get();
    if (sim.running->Get()) {
        sim.running->SetNative(false);
        return;
    }
    // The start is a step of its own, so that a run can be undone.
    Undoer::Get().Do(ActionPtr(new SimStart("UndoSimStart")));
}

void AppGUI::GroupSelection() {
    Scene& scene = Scene::Get();
    const GroupPtr& selection = scene.GetSelection();
    if (selection->empty()) {
        return;
    }
    RecordStep("UndoGroupAssignment", [&scene, &selection]() {
        util::String name;
        for (int i = 1; name.empty() || scene.GetGroup(name); ++i) {
            name = "Group" + std::to_string(i);
        }
        scene.GetOrCreateGroup(name)->Add(*selection);
        return true;
    });
}

void AppGUI::UngroupSelection() {
    Scene& scene = Scene::Get();
    const GroupPtr selection = scene.GetSelection();
    if (selection->empty()) {
        return;
    }
    RecordStep("UndoGroupRemoval", [&scene, &selection]() {
        for (const GroupPtr& group :
             std::vector<GroupPtr>(scene.GetGroups().begin(), scene.GetGroups().end())) {
            if (group != selection && !group->GetName().empty()) {
                group->Remove(*selection);
            }
        }
        return true;
    });
}

void AppGUI::EraseSelection() {
    EraseMembers(*Scene::Get().GetSelection());
}

void AppGUI::OnDragBegin(input::DragEvent& event) {
    gui::Component::OnDragBegin(event);
    Tools& tools = Tools::Get();
    m_dragOverride = false;
    if (!event.consumed && (event.key == kLeft || event.key == kRight)) {
        // A drag that starts on the selection moves it (or pulls it, while running), and
        // with the right button turns it, whatever the tool.
        Scene& scene = Scene::Get();
        const EntityPtr entity = scene.GetEntityAt(ToWorld(event.start));
        if (entity && scene.GetSelection()->Contains(entity) && !tools.GetTemporaryTool()) {
            ToolPtr takeOver;
            if (event.key == kRight) {
                takeOver = tools.Find<RotateTool>();
            } else if (physics::Simulation::Get().running->Get()) {
                takeOver = tools.Find<DragTool>();
            } else {
                takeOver = tools.Find<MoveTool>();
            }
            tools.SetOverrideTool(takeOver);
            m_dragOverride = true;
        }
    }
    GetTool().OnDragBegin(event);
}

void AppGUI::OnDrag(input::DragEvent& event) {
    gui::Component::OnDrag(event);
    if (!m_dragOverride && !IsMouseDown(kLeft) && (IsMouseDown(kMiddle) || IsMouseDown(kRight))) {
        // Each motion of the middle or right button is one small drag of the pan tool.
        const ToolPtr pan = Tools::Get().Find<PanTool>();
        if (pan && !event.consumed) {
            input::DragEvent step = event;
            step.key = kLeft;
            pan->OnDragBegin(step);
            step.consumed = false;
            pan->OnDrag(step);
            step.consumed = false;
            pan->OnDragEnd(step);
            event.consumed = true;
            return;
        }
    }
    GetTool().OnDrag(event);
}

void AppGUI::OnDragEnd(input::DragEvent& event) {
    gui::Component::OnDragEnd(event);
    GetTool().OnDragEnd(event);
    if (m_dragOverride) {
        Tools::Get().SetOverrideTool(ToolPtr());
        m_dragOverride = false;
    }
}

void AppGUI::OnClick(input::ClickEvent& event) {
    gui::Component::OnClick(event);
    GetTool().OnClick(event);
    if (event.consumed) {
        return;
    }
    Scene& scene = Scene::Get();
    const math::Vec2 world = ToWorld(event.position);
    const bool left = event.key == kLeft;
    if (event.key == kRight || (left && event.clicks == 2) || (left && leftClickMenus->Get())) {
        const EntityPtr entity = scene.GetEntityAt(world);
        if (entity && !scene.GetSelection()->Contains(entity)) {
            scene.GetSelection()->Clear();
            scene.SelectAt(world);
        }
        OpenPopupMenu(event.position);
        event.consumed = true;
        return;
    }
    if (left && event.clicks == 1) {
        if (scene.GetEntityAt(world)) {
            scene.SelectAt(world);
        } else {
            scene.GetSelection()->Clear();
        }
    }
}

void AppGUI::OnGeneralEvent(input::InputEvent& event) {
    gui::Component::OnGeneralEvent(event);
    if (event.consumed || event.kind != input::InputEvent::Kind::FileDropped) {
        return;
    }
    event.consumed = true;
    if (!util::EndsWithIgnoreCase(event.text, ".vra")) {
        Log(logging::Warning, "Only scene files can be dropped here, not " + event.text);
        return;
    }
    LoadScene(event.text, false);
}

util::String AppGUI::GetWindowCaption() {
    util::String name;
    if (FileInfo::IsAlive() && FileInfo::Get().GetFileName() != "unnamed") {
        name = SceneLoader::DisplayName(FileInfo::Get().GetFileName());
    }
    if (name.empty() && Language::IsAlive()) {
        name = Language::Get().Translate("UnnamedScene");
    }
    return name.empty() ? util::GetVersionString() : name + " - " + util::GetVersionString();
}

void AppGUI::MakeSnapshotAction() {
    Undoer::Get().Do(
        ActionPtr(new SnapshotAction("UndoSnapshot", SnapshotPtr(new app::Snapshot()))));
}

util::String AppGUI::NormaliseScenePath(util::String path) {
    if (!util::EndsWithIgnoreCase(path, ".vra")) {
        path += ".vra";
    }
    if (path.find('/') == util::String::npos) {
        path =
            util::FileSystem::Get().GetWorkDirectory() + util::FileSystem::GetScenesFolder() + path;
    }
    return path;
}

void AppGUI::LoadScene(util::String path, bool internal) {
    std::replace(path.begin(), path.end(), '\\', '/');
    // The loader names the current file once the load worked, after the step's snapshot:
    // undoing the load then gives back the file name too, and a failed load leaves it.
    if (!internal) {
        ClosePopups();
    }
    path = NormaliseScenePath(path);
    physics::Simulation::Get().running->SetNative(false);
    Undoer::Get().Do(ActionPtr(new SceneLoader("UndoLoadScene", false, path)));
}

void AppGUI::SaveSceneAs(util::String path, bool internal) {
    FileInfo& info = FileInfo::Get();
    // The file the user works on stays his own whatever an internal save writes.
    const util::String userFile = info.GetFileName();
    try {
        if (!internal) {
            info.SetFileName(path);
            ClosePopups();
        }
        path = NormaliseScenePath(path);
        if (Serializer::Get().Save(path) && !internal) {
            Log(logging::Info, "Scene saved to " + path);
            // The File window shows the scene by this picture.
            Thumbnail::SaveBeside(path);
        }
    } catch (const std::exception& e) {
        Log(logging::Debug, "Error: " + util::String(e.what()) + "\n" + VORRA_LOCATION + "\n");
    } catch (...) {
        Log(logging::Debug, "Fail\n");
    }
    if (internal) {
        info.SetFileName(userFile);
    }
}

}  // namespace app
