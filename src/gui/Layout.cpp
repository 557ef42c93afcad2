#include "gui/Layout.h"

#include <algorithm>

namespace gui {
namespace {

// Children of a layout must not ask the parent for a layout while it is laying them out.
class RelayoutPause {
public:
    explicit RelayoutPause(const std::vector<ComponentPtr>& children) : m_children(children) {
        for (const ComponentPtr& child : m_children) {
            child->SetRelayoutParent(false);
        }
    }
    ~RelayoutPause() {
        for (const ComponentPtr& child : m_children) {
            child->SetRelayoutParent(true);
        }
    }

private:
    const std::vector<ComponentPtr>& m_children;
};

math::Vec2 Along(int axis, float along, float across) {
    return axis == 0 ? math::Vec2(along, across) : math::Vec2(across, along);
}

// SetSize invalidates the parent, which lays it out again: that second pass finds the
// same sizes and stops at once.
void ResizeParent(Component& parent, const math::Vec2& size) {
    parent.SetSize(size);
}

}  // namespace

void ListLayout::LayoutChildren(Component& parent, const std::vector<ComponentPtr>& children) {
    if (children.empty()) {
        ResizeParent(parent, math::Vec2(0, 0));
        return;
    }
    const int across = 1 - m_axis;
    math::Vec2 extent;
    {
        RelayoutPause pause(children);
        float cursor = 0;
        float largestAcross = 0;
        for (const ComponentPtr& child : children) {
            math::Vec2 size = child->GetSize();
            size[across] = std::min(size[across], parent.GetMaxSize()[across]);
            child->SetSize(size);
            child->SetPosition(Along(m_axis, cursor, 0));
            const math::Vec2 outer = child->GetOuterSize();
            cursor += outer[m_axis] + m_spacing;
            largestAcross = std::max(largestAcross, outer[across]);
        }
        extent = Along(m_axis, cursor - m_spacing, largestAcross);
    }
    ResizeParent(parent, extent);
}

void BorderLayout::LayoutChildren(Component& parent, const std::vector<ComponentPtr>& children) {
    if (children.empty()) {
        return;
    }
    const int across = 1 - m_axis;
    RelayoutPause pause(children);
    float sumAlong = 0;
    float largestAcross = 0;
    for (const ComponentPtr& child : children) {
        const math::Vec2 outer = child->GetOuterSize();
        sumAlong += outer[m_axis];
        largestAcross = std::max(largestAcross, outer[across]);
    }
    const float spacing = m_spacing * static_cast<float>(children.size() - 1);
    const float available = parent.GetSize()[m_axis] - spacing;
    const float acrossSize = parent.GetSize()[across];
    float cursor = 0;
    for (size_t i = 0; i < children.size(); ++i) {
        const ComponentPtr& child = children[i];
        const math::Vec2 border = child->GetOuterSize() - child->GetSize();
        float along = sumAlong > 0 ? child->GetOuterSize()[m_axis] * available / sumAlong
                                   : available / static_cast<float>(children.size());
        // The last child takes what rounding left, so the row ends at the parent's edge.
        if (i + 1 == children.size()) {
            along = available + spacing - cursor;
        }
        along = std::max(along, child->GetMinSize()[m_axis] + border[m_axis]);
        child->SetPosition(Along(m_axis, cursor, 0));
        child->SetSize(Along(m_axis, std::max(0.0f, along - border[m_axis]),
                             std::max(0.0f, acrossSize - border[across])));
        cursor += along + m_spacing;
    }
}

}  // namespace gui
