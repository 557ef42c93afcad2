#pragma once

#include <vector>

#include "gui/Component.h"

namespace gui {

// Places the children of a component and may size the component itself.
class Layout : public util::Pointee {
public:
    ~Layout() override = default;
    virtual void LayoutChildren(Component& parent, const std::vector<ComponentPtr>& children) = 0;
};

// Children in a row (axis 0) or a column (axis 1), each at its own size, and the parent
// shrunk or grown around them.
class ListLayout : public Layout {
public:
    explicit ListLayout(int axis = 1, float spacing = 0) : m_axis(axis), m_spacing(spacing) {}
    void LayoutChildren(Component& parent, const std::vector<ComponentPtr>& children) override;

private:
    int m_axis;
    float m_spacing;
};

// Children in a row or a column that fills the parent: along the axis each child keeps
// its share in proportion to its own size, and across it each takes the parent's size.
// The parent keeps its size, unless it is smaller than the children's minimum.
class BorderLayout : public Layout {
public:
    explicit BorderLayout(int axis = 0, float spacing = 0) : m_axis(axis), m_spacing(spacing) {}
    void LayoutChildren(Component& parent, const std::vector<ComponentPtr>& children) override;

private:
    int m_axis;
    float m_spacing;
};

}  // namespace gui
