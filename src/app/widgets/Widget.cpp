#include "app/widgets/Widget.h"

#include <algorithm>

#include "gui/GUI.h"
#include "input/KeyCodes.h"

namespace app {
namespace {

bool IsLeft(input::SDLKey key) {
    return key == input::MouseKey(input::kMouseLeft);
}

// The screen in GUI units; nothing before the GUI exists or while it has no real window.
bool ScreenSize(math::Vec2& size) {
    if (!gui::GUI::IsAlive()) {
        return false;
    }
    size = gui::GUI::Get().GetScreenSize();
    // A window that is not made yet reads as one pixel: clamping to it would pile every
    // widget into the corner.
    return size.x > 1 && size.y > 1;
}

}  // namespace

Widget::Widget(const util::String& name) : gui::WobbleComponent(name), m_widgetName(name) {
    SetReflectedName(name);
}

Widget::~Widget() = default;

bool Widget::Show() {
    if (IsShown()) {
        return true;
    }
    const util::LockPtr<gui::Component> host = m_host.Lock();
    if (!host) {
        return false;
    }
    host->Add(gui::ComponentPtr(this));
    KeepOnScreen();
    return true;
}

void Widget::Show(gui::Component& host) {
    m_host = gui::ComponentWeakPtr(&host);
    if (GetParent() != &host) {
        host.Add(gui::ComponentPtr(this));
    }
    KeepOnScreen();
}

void Widget::Hide() {
    m_moving = false;
    if (gui::Component* parent = GetParent()) {
        m_host = gui::ComponentWeakPtr(parent);
        RemoveFromParent();
    }
}

void Widget::Close() {
    // The callbacks may drop the last other reference.
    const gui::ComponentPtr keep(this);
    Hide();
    m_onClose.CallAll();
}

void Widget::SetMinimised(bool minimised) {
    if (minimised == m_minimised) {
        return;
    }
    m_minimised = minimised;
    MinimisedChanged();
    KeepOnScreen();
}

math::Vec2 Widget::ParentOrigin() const {
    if (const gui::Component* parent = GetParent()) {
        return parent->GetAbsolutePosition() + parent->GetBorderOffset();
    }
    // Not placed yet: its parent-to-be, a layer of the whole screen, starts at the corner.
    return math::Vec2(0, 0);
}

math::Vec2 Widget::GetScreenPosition() const {
    return ParentOrigin() + GetPosition();
}

void Widget::SetScreenPosition(const math::Vec2& guiPoint) {
    SetPosition(guiPoint - ParentOrigin());
}

math::Vec2 Widget::Clamped(const math::Vec2& position) const {
    math::Vec2 screen;
    if (!ScreenSize(screen)) {
        return position;
    }
    const math::Vec2 origin = ParentOrigin();
    const math::Vec2 outer = GetOuterSize();
    math::Vec2 result = position;
    for (int axis = 0; axis < 2; ++axis) {
        float onScreen = origin[axis] + position[axis];
        onScreen = std::min(onScreen, screen[axis] - outer[axis]);
        onScreen = std::max(onScreen, 0.0f);
        result[axis] = onScreen - origin[axis];
    }
    return result;
}

void Widget::KeepOnScreen() {
    SetPosition(Clamped(GetPosition()));
}

void Widget::MoveBy(const math::Vec2& offset) {
    SetPosition(Clamped(GetPosition() + offset));
}

void Widget::PlaceNear(const math::Vec2& guiPoint) {
    math::Vec2 screen;
    math::Vec2 corner = guiPoint;
    if (ScreenSize(screen)) {
        const math::Vec2 outer = GetOuterSize();
        for (int axis = 0; axis < 2; ++axis) {
            if (corner[axis] + outer[axis] > screen[axis]) {
                corner[axis] = guiPoint[axis] - outer[axis];
            }
        }
    }
    SetScreenPosition(corner);
    KeepOnScreen();
}

bool Widget::Covers(const math::Vec2& guiPoint) const {
    const math::Vec2 local = ToLocal(guiPoint);
    const math::Vec2 outer = GetOuterSize();
    return local.x >= 0 && local.y >= 0 && local.x < outer.x && local.y < outer.y;
}

void Widget::Update(float dt) {
    gui::WobbleComponent::Update(dt);
    math::Vec2 screen;
    if (ScreenSize(screen) && screen != m_seenScreen) {
        m_seenScreen = screen;
        KeepOnScreen();
    }
}

void Widget::OnKey(input::KeyEvent& event) {
    gui::WobbleComponent::OnKey(event);
    const bool wheel = event.key == input::MouseKey(input::kMouseWheelUp) ||
                       event.key == input::MouseKey(input::kMouseWheelDown);
    if (wheel && !event.consumed && IsMouseOver()) {
        event.consumed = true;
    }
}

void Widget::OnDragBegin(input::DragEvent& event) {
    gui::WobbleComponent::OnDragBegin(event);
    if (event.consumed || !IsLeft(event.key) || !Covers(event.start)) {
        return;
    }
    // A drag that starts on the widget is never the scene's, grip or not.
    event.consumed = true;
    if (!IsGrip(ToLocal(event.start))) {
        return;
    }
    m_moving = true;
    m_dragTarget = GetPosition() + event.offset;
    SetPosition(Clamped(m_dragTarget));
}

void Widget::OnDrag(input::DragEvent& event) {
    gui::WobbleComponent::OnDrag(event);
    if (!m_moving) {
        return;
    }
    m_dragTarget += event.offset;
    SetPosition(Clamped(m_dragTarget));
    event.consumed = true;
}

void Widget::OnDragEnd(input::DragEvent& event) {
    gui::WobbleComponent::OnDragEnd(event);
    if (!m_moving) {
        return;
    }
    m_moving = false;
    event.consumed = true;
}

void Widget::OnClick(input::ClickEvent& event) {
    gui::WobbleComponent::OnClick(event);
    if (!event.consumed && Covers(event.position)) {
        event.consumed = true;
        OnBackgroundClick(event);
    }
}

}  // namespace app
