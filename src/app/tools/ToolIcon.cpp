#include "app/tools/ToolIcon.h"

#include <GL/glew.h>

#include "app/Language.h"
#include "app/tools/Tools.h"
#include "app/widgets/Tooltip.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"

namespace app {
namespace {

const math::Colour kSelectedLine(0.85f, 0.92f, 1, 1);
const math::Colour kLentLine(0.95f, 0.8f, 0.35f, 1);

}  // namespace

ToolIcon::ToolIcon(const ToolPtr& tool, const util::String& image, const util::String& labelKey)
    : gui::AbstractButton("ToolIcon"),
      m_tool(tool),
      m_labelKey(labelKey),
      m_texture(rendering::TextureManager::Get().Load("tools/" + image, GL_RGBA)) {
    SetSize(kSide, kSide);
    SetTooltip(MakeTooltip(Language::Get().Translate(labelKey + "_Tooltip")));
}

ToolIcon::~ToolIcon() = default;

bool ToolIcon::IsSelected() const {
    return m_tool && Tools::IsAlive() && Tools::Get().GetBaseTool() == m_tool;
}

bool ToolIcon::IsLent() const {
    return m_tool && Tools::IsAlive() && !IsSelected() && Tools::Get().GetTemporaryTool() == m_tool;
}

void ToolIcon::Clicked() {
    if (m_tool) {
        Tools::Get().SetBaseTool(m_tool);
    }
    gui::AbstractButton::Clicked();
}

void ToolIcon::DrawComp() {
    gui::Component::DrawComp();
    gui::ColorScope color(GetColor());
    const gui::LookAndFeel& look = gui::LookAndFeel::Get();
    const math::Vec2 size = GetOuterSize();
    const bool selected = IsSelected();
    // The plate behind the picture tells the state: held down, chosen, under the mouse.
    if (IsPressed() || selected) {
        gui::FillRect(0, 0, size.x, size.y, look.GetPressedColor());
    } else if (IsMouseOver()) {
        gui::FillRect(0, 0, size.x, size.y, look.GetHoverColor());
    }
    const float inset = (IsPressed() || selected) ? kInset + 1 : kInset;
    if (m_texture && m_texture->Get()) {
        m_texture->Get()->Bind();
        gui::DrawTexturedRect(inset, inset, size.x - 2 * inset, size.y - 2 * inset);
    }
    if (selected) {
        gui::FrameRect(0, 0, size.x, size.y, 2, kSelectedLine);
    } else if (IsLent()) {
        gui::FrameRect(0, 0, size.x, size.y, 2, kLentLine);
    } else if (IsMouseOver()) {
        gui::FrameRect(0, 0, size.x, size.y, 1, look.GetHoverColor());
    }
}

}  // namespace app
