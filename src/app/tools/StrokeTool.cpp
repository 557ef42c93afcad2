#include "app/tools/StrokeTool.h"

#include <exception>

#include "app/App.h"
#include "app/Painter.h"
#include "logging/Log.h"
#include "util/Exception.h"

namespace app {

StrokeTool::StrokeTool(const util::String& name) : Tool(name) {}

StrokeTool::~StrokeTool() = default;

namespace {

// The settings' own defaults, for a tool used before the application exists.
constexpr float kDefaultMinPointDist = 0.2f;
constexpr float kDefaultMaxPointDist = 0.5f;

}  // namespace

float StrokeTool::MinPointDist() {
    const float inches =
        App::IsAlive() ? App::Get().GetModel().minPointDist->Get() : kDefaultMinPointDist;
    return inches * InchInWorld();
}

float StrokeTool::MaxPointDist() {
    const float inches =
        App::IsAlive() ? App::Get().GetModel().maxPointDist->Get() : kDefaultMaxPointDist;
    return inches * InchInWorld();
}

void StrokeTool::Append(const math::Vec2& gui) {
    stroke::Append(m_points, ToWorld(gui), MinPointDist());
}

void StrokeTool::OnKey(input::KeyEvent& event) {
    Tool::OnKey(event);
    // Whoever else saw the release, the straight edge still has to end at the mouse.
    if (!event.down && IsDrawing() &&
        (event.key == input::key::LShift || event.key == input::key::RShift)) {
        Append(event.position);
    }
}

void StrokeTool::OnDragBegin(input::DragEvent& event) {
    if (event.consumed || !IsLeft(event.key)) {
        return;
    }
    SetDrawing(true);
    event.consumed = true;
    m_points.clear();
    m_points.push_back(ToWorld(event.position));
}

void StrokeTool::OnDrag(input::DragEvent& event) {
    if (event.consumed || !IsDrawing()) {
        return;
    }
    // With Shift held the last point stays, and the stroke goes on straight from it.
    if (!ShiftHeld()) {
        Append(event.position);
    }
    event.consumed = true;
}

void StrokeTool::OnDragEnd(input::DragEvent& event) {
    if (!IsDrawing()) {
        return;
    }
    // Someone else took the end of the gesture: the stroke is dropped unread, not left
    // dangling.
    if (event.consumed || !IsLeft(event.key)) {
        if (event.consumed) {
            Cancel();
        }
        return;
    }
    Append(event.position);
    if (m_points.size() >= 2) {
        try {
            AnalyzeDrawing();
        } catch (const std::exception& e) {
            logging::LogCaughtException(e, VORRA_LOCATION);
        } catch (...) {
            logging::LogCaughtUnknownException(VORRA_LOCATION);
        }
    }
    event.consumed = true;
    m_points.clear();
    SetDrawing(false);
}

bool StrokeTool::Cancel() {
    m_points.clear();
    if (IsDrawing()) {
        SetDrawing(false);
        return true;
    }
    return false;
}

void StrokeTool::DrawStroke(Painter& painter) const {
    if (!IsDrawing() || m_points.empty()) {
        return;
    }
    for (size_t i = 0; i + 1 < m_points.size(); ++i) {
        painter.Line(m_points[i], m_points[i + 1], kStrokeColor);
    }
    if (App::IsAlive()) {
        const math::Vec2 mouse = App::Get().GetMousePos();
        if (mouse != m_points.back()) {
            painter.Line(m_points.back(), mouse, kStrokeColor);
        }
    }
}

}  // namespace app
