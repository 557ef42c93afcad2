#include "app/tools/PanTool.h"

#include "app/Scene.h"

namespace app {

PanTool::PanTool() : Tool("PanTool") {}

PanTool::~PanTool() = default;

void PanTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    // Any button: the right one, or the left-button drags the application makes of the
    // middle and right ones.
    if (event.consumed) {
        return;
    }
    m_last = event.position;
    SetDrawing(true);
    Scene::Get().GetCamera().SetUserPanning(true);
    event.consumed = true;
}

void PanTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    Scene::Get().GetCamera().Translate(event.offset);
    m_last = event.position;
    event.consumed = true;
}

void PanTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!IsDrawing()) {
        return;
    }
    // An end that lies beyond the last motion carries that motion with it.
    if (!event.consumed && event.position != m_last) {
        Scene::Get().GetCamera().Translate(event.offset);
    }
    if (Cancel()) {
        event.consumed = true;
    }
}

bool PanTool::Cancel() {
    if (!IsDrawing()) {
        return false;
    }
    SetDrawing(false);
    Scene::Get().GetCamera().SetUserPanning(false);
    return true;
}

}  // namespace app
