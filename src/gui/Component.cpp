#include "gui/Component.h"

#include <GL/glew.h>

#include <algorithm>

#include "gui/GUI.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "input/Input.h"

namespace gui {

Component::Component(const util::String& name)
    : input::InputDelegator(name), m_border(Border::MakeEmpty()) {}

Component::~Component() = default;

void Component::DrawComp() {
    ColorScope color(m_color);
    DrawBorder();
    DrawChildren();
}

void Component::DrawChildren() {
    const math::Vec2 offset = GetBorderOffset();
    for (const ComponentPtr& child : m_children) {
        glPushMatrix();
        glTranslatef(child->m_position.x + offset.x, child->m_position.y + offset.y, 0);
        child->DrawComp();
        glPopMatrix();
    }
}

void Component::DrawBorder() {
    m_border->Draw(m_size.x, m_size.y);
}

void Component::Update(float dt) {
    // A child may remove itself or a sibling while updating: the copy keeps them alive.
    const std::vector<ComponentPtr> children = m_children;
    for (auto it = children.rbegin(); it != children.rend(); ++it) {
        (*it)->Update(dt);
    }
    if (m_tooltip && m_mouseOver && !m_tooltipShown &&
        GUI::GetTime() - m_hoverTime > GUI::kTooltipDelay) {
        ShowTooltip();
    }
}

math::Mat3 Component::GetTransform() const {
    math::Vec2 origin = m_position;
    math::Mat3 parentTransform = math::Mat3::Identity();
    if (const Component* parent = GetParent()) {
        origin += parent->GetBorderOffset();
        parentTransform = parent->GetTransform();
    }
    return parentTransform * math::Mat3::Translation(origin);
}

void Component::SetPosition(float x, float y) {
    if (m_position.x == x && m_position.y == y) {
        return;
    }
    m_position = math::Vec2(x, y);
    Invalidate();
}

void Component::SetSize(float x, float y) {
    if (m_size.x == x && m_size.y == y) {
        return;
    }
    m_size = math::Vec2(x, y);
    Invalidate();
}

void Component::SetMinSize(float x, float y) {
    m_minSize = math::Vec2(x, y);
}

void Component::SetMaxSize(float x, float y) {
    m_maxSize = math::Vec2(x, y);
    SetSize(std::min(m_size.x, x), std::min(m_size.y, y));
}

void Component::DoLayout() {
    if (m_layout) {
        std::vector<ComponentPtr> laidOut;
        laidOut.reserve(m_children.size());
        for (const ComponentPtr& child : m_children) {
            if (!child->m_fixedPosition) {
                laidOut.push_back(child);
            }
        }
        m_layout->LayoutChildren(*this, laidOut);
    }
    m_layoutDirty = false;
}

void Component::Invalidate() {
    DoLayout();
    m_layoutDirty = false;
    if (!m_relayoutParent) {
        return;
    }
    for (auto it = m_children.rbegin(); it != m_children.rend(); ++it) {
        (*it)->LookChanged();
    }
    if (Component* parent = GetParent()) {
        parent->ChildChanged();
    }
}

void Component::ChildChanged() {
    DoLayout();
    m_layoutDirty = false;
}

void Component::LookChanged() {
    if (m_usesLookAndFeel) {
        m_border = GetLookBorder();
        if (!m_border) {
            m_border = Border::MakeEmpty();
        }
    }
}

BorderPtr Component::GetLookBorder() const {
    return LookAndFeel::Get().GetPanelBorder();
}

void Component::OnMouseEnter() {
    m_hoverTime = GUI::GetTime();
}

void Component::OnMouseLeave() {
    m_hoverTime = GUI::GetTime();
    HideTooltip();
}

math::Vec2 Component::GetOuterSize() const {
    return m_size + math::Vec2(m_border->GetLeft() + m_border->GetRight(),
                               m_border->GetTop() + m_border->GetBottom());
}

math::Vec2 Component::GetBorderOffset() const {
    return math::Vec2(m_border->GetLeft(), m_border->GetTop());
}

math::Vec2 Component::GetAbsolutePosition() const {
    return GetTransform().TransformPoint(math::Vec2(0, 0));
}

math::Vec2 Component::ToLocal(const math::Vec2& guiPoint) const {
    return guiPoint - GetAbsolutePosition();
}

bool Component::Contains(const math::Vec2& parentPoint) const {
    const math::Vec2 outer = GetOuterSize();
    return parentPoint.x >= m_position.x && parentPoint.y >= m_position.y &&
           parentPoint.x < m_position.x + outer.x && parentPoint.y < m_position.y + outer.y;
}

void Component::Add(const ComponentPtr& child) {
    if (!child || child.Get() == this) {
        return;
    }
    if (Component* oldParent = child->GetParent()) {
        oldParent->Remove(child);
    }
    input::InputDelegator::Add(input::InputListenerWeakPtr(child.Get()));
    AddReflected(child);
    m_children.push_back(child);
    child->m_parent = ComponentWeakPtr(this);
    Invalidate();
}

void Component::Remove(const ComponentPtr& child) {
    auto it = std::find(m_children.begin(), m_children.end(), child);
    if (it == m_children.end()) {
        return;
    }
    // The removal may drop the last strong reference, and the argument may be the very
    // element erased: keep the child until it is done, and use only the copy.
    const ComponentPtr keep = child;
    m_children.erase(it);
    input::InputDelegator::Remove(input::InputListenerWeakPtr(keep.Get()));
    if (script::VariablePtr variable = FindVariable(keep.Get())) {
        RemoveVariable(variable->GetName());
    }
    keep->m_parent = nullptr;
    keep->ClearMouseOver();
    Invalidate();
}

void Component::RemoveFromParent() {
    if (Component* parent = GetParent()) {
        parent->Remove(ComponentPtr(this));
    }
}

void Component::RemoveAllChildren() {
    while (!m_children.empty()) {
        Remove(m_children.back());
    }
}

void Component::SetBorder(BorderPtr border) {
    m_usesLookAndFeel = false;
    m_border = border ? std::move(border) : Border::MakeEmpty();
    Invalidate();
}

void Component::SetUsesLookAndFeel(bool uses) {
    m_usesLookAndFeel = uses;
    LookChanged();
}

void Component::SetLayout(LayoutPtr layout) {
    m_layout = std::move(layout);
    m_layoutDirty = true;
    Invalidate();
}

void Component::SetTooltip(ComponentPtr tooltip) {
    HideTooltip();
    m_tooltip = std::move(tooltip);
}

void Component::SetMouseOver(bool over) {
    if (over == m_mouseOver) {
        return;
    }
    m_mouseOver = over;
    if (over) {
        OnMouseEnter();
    } else {
        OnMouseLeave();
    }
}

void Component::ClearMouseOver() {
    if (!m_mouseOver) {
        return;
    }
    SetMouseOver(false);
    for (const ComponentPtr& child : m_children) {
        child->ClearMouseOver();
    }
}

void Component::ShowTooltip() {
    if (!GUI::IsAlive()) {
        return;
    }
    GUI& gui = GUI::Get();
    const math::Vec2 screen = gui.GetScreenSize();
    const math::Vec2 size = m_tooltip->GetOuterSize();
    const math::Vec2 mouse = input::Input::Get().GetMousePos();
    const float x = std::max(0.0f, std::min(mouse.x + 8, screen.x - size.x));
    const float y = std::max(0.0f, std::min(mouse.y + 8, screen.y - size.y));
    gui.GetTooltipLayer()->Add(m_tooltip);
    m_tooltip->SetPosition(x, y);
    m_tooltipShown = true;
}

void Component::HideTooltip() {
    if (m_tooltipShown && m_tooltip) {
        m_tooltip->RemoveFromParent();
    }
    m_tooltipShown = false;
}

}  // namespace gui
