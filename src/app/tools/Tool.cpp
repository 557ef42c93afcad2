#include "app/tools/Tool.h"

#include <cmath>

#include "app/App.h"
#include "app/Camera.h"
#include "app/Scene.h"
#include "math/MathUtil.h"
#include "util/Clock.h"

namespace app {

Tool::Tool(const util::String& name) : input::InputListener(name) {}

Tool::~Tool() = default;

void Tool::OnKey(input::KeyEvent& event) {
    input::InputListener::OnKey(event);
    if (!event.consumed && event.down && event.key == input::key::Escape && Cancel()) {
        event.consumed = true;
    }
}

bool Tool::BeginGesture(const input::DragEvent& event, math::Vec2& start) {
    if (event.consumed || !IsLeft(event.key)) {
        return false;
    }
    Cancel();
    start = ToWorld(event.start);
    return IsUsablePoint(start);
}

bool IsUsablePoint(const math::Vec2& point) {
    return math::IsFinite(point) && std::fabs(point.x) <= kMaxCoordinate &&
           std::fabs(point.y) <= kMaxCoordinate;
}

bool Tool::EndGesture(input::DragEvent& event) {
    if (!IsDrawing()) {
        return false;
    }
    if (event.consumed) {
        Cancel();
        return false;
    }
    event.consumed = true;
    return true;
}

math::Vec2 Tool::ToWorld(const math::Vec2& gui) {
    return Scene::Get().GetCamera().GUIToWorld(gui);
}

bool Tool::ShiftHeld() {
    return Scene::Get().GetModifiers().shift;
}

bool Tool::CtrlHeld() {
    return Scene::Get().GetModifiers().ctrl;
}

double Tool::Now() {
    return util::Clock::Seconds();
}

float Tool::InchInWorld() {
    return Scene::Get().GetCamera().GetInchInWorld();
}

bool Tool::FreeDrawing() {
    return App::IsAlive() && App::Get().GetAppGUI()->freeDrawing->Get();
}

bool Tool::AutoGlue() {
    return App::IsAlive() && App::Get().GetAppGUI()->autoGlue->Get();
}

}  // namespace app
