#pragma once

#include <limits>
#include <vector>

#include "gui/Border.h"
#include "input/InputDelegator.h"
#include "math/Matrix3.h"
#include "math/Vector2.h"
#include "math/Vector4.h"
#include "util/CallbackSet.h"

namespace gui {

class Component;
using ComponentPtr = util::SharedPtr<Component>;
using ComponentWeakPtr = util::WeakPtr<Component>;
class Layout;
using LayoutPtr = util::SharedPtr<Layout>;

// A node of the interface tree. It draws itself and its children, lays them out, and,
// being an input delegator, passes every event on to them: the child drawn last hears it
// first. Positions and sizes are in GUI units. A component's own space has its origin at
// the outer corner of its border; its position is that corner within the parent's inner
// area, which begins after the parent's border. The size is that of the inner area.
class Component : public input::InputDelegator {
public:
    explicit Component(const util::String& name = "Component");
    ~Component() override;

    // Draws the border and the children under this component's colour.
    virtual void DrawComp();
    virtual void DrawChildren();
    virtual void DrawBorder();
    // The children from last to first, then the tooltip.
    virtual void Update(float dt);
    // From this component's own space to the GUI's.
    virtual math::Mat3 GetTransform() const;
    virtual void SetPosition(float x, float y);
    virtual void SetSize(float x, float y);
    virtual void SetMinSize(float x, float y);
    virtual void SetMaxSize(float x, float y);
    virtual void DoLayout();
    virtual void Invalidate();
    virtual void ChildChanged();
    virtual void LookChanged();
    virtual void OnMouseEnter();
    virtual void OnMouseLeave();

    void SetPosition(const math::Vec2& p) { SetPosition(p.x, p.y); }
    void SetSize(const math::Vec2& s) { SetSize(s.x, s.y); }
    const math::Vec2& GetPosition() const { return m_position; }
    const math::Vec2& GetSize() const { return m_size; }
    const math::Vec2& GetMinSize() const { return m_minSize; }
    const math::Vec2& GetMaxSize() const { return m_maxSize; }
    // The size with the border.
    math::Vec2 GetOuterSize() const;
    // Where the inner area begins, relative to the position.
    math::Vec2 GetBorderOffset() const;
    // This component's origin in the GUI's space.
    math::Vec2 GetAbsolutePosition() const;
    // A point of the GUI's space in this component's own space.
    math::Vec2 ToLocal(const math::Vec2& guiPoint) const;
    // Whether a point of the parent's space lies on this component, border included.
    bool Contains(const math::Vec2& parentPoint) const;

    float GetPadding() const { return m_padding; }
    void SetPadding(float padding) { m_padding = padding; }

    void Add(const ComponentPtr& child);
    // Only a child of this component; anything else is left alone.
    void Remove(const ComponentPtr& child);
    void RemoveFromParent();
    void RemoveAllChildren();
    const std::vector<ComponentPtr>& GetChildren() const { return m_children; }
    // Null for the root and for a component that is in no tree.
    Component* GetParent() const { return m_parent.Get(); }

    Border& GetBorder() const { return *m_border; }
    const BorderPtr& GetBorderPtr() const { return m_border; }
    // Null gives the empty border. Turns the look and feel off for this component.
    void SetBorder(BorderPtr border);
    void SetUsesLookAndFeel(bool uses);
    bool UsesLookAndFeel() const { return m_usesLookAndFeel; }
    const LayoutPtr& GetLayout() const { return m_layout; }
    void SetLayout(LayoutPtr layout);
    bool GetRelayoutParent() const { return m_relayoutParent; }
    void SetRelayoutParent(bool on) { m_relayoutParent = on; }
    bool HasFixedPosition() const { return m_fixedPosition; }
    // A layer over others: the mouse is on it only where it is on one of its children.
    bool PassesMouseThrough() const { return m_passesMouseThrough; }
    void SetPassesMouseThrough(bool passes) { m_passesMouseThrough = passes; }
    void SetFixedPosition(bool fixed) { m_fixedPosition = fixed; }
    bool IsLayoutDirty() const { return m_layoutDirty; }

    const math::Colour& GetColor() const { return m_color; }
    void SetColor(const math::Colour& color) { m_color = color; }

    const ComponentPtr& GetTooltip() const { return m_tooltip; }
    void SetTooltip(ComponentPtr tooltip);
    bool IsTooltipShown() const { return m_tooltipShown; }

    bool IsMouseOver() const { return m_mouseOver; }
    // The GUI's walk sets this; entering and leaving call the handlers.
    void SetMouseOver(bool over);
    // Clears the flag here and below, without descending where it is clear already.
    void ClearMouseOver();
    double GetHoverTime() const { return m_hoverTime; }

    util::CallbackSet& GetOnChange() { return m_onChange; }

protected:
    // The border this kind of component takes from the look and feel.
    virtual BorderPtr GetLookBorder() const;

private:
    void ShowTooltip();
    void HideTooltip();

    math::Vec2 m_position;
    math::Vec2 m_size;
    math::Vec2 m_minSize;
    math::Vec2 m_maxSize{std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
    float m_padding = 0.01f;
    bool m_usesLookAndFeel = false;
    bool m_relayoutParent = true;
    std::vector<ComponentPtr> m_children;
    ComponentWeakPtr m_parent;
    BorderPtr m_border;
    LayoutPtr m_layout;
    bool m_fixedPosition = false;
    bool m_passesMouseThrough = false;
    math::Colour m_color{1, 1, 1, 1};
    bool m_layoutDirty = false;
    ComponentPtr m_tooltip;
    bool m_tooltipShown = false;
    bool m_mouseOver = false;
    double m_hoverTime = 0;
    util::CallbackSet m_onChange;
};

}  // namespace gui
