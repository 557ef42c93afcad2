#pragma once

#include "app/tools/Tool.h"
#include "gui/AbstractButton.h"
#include "rendering/TextureManager.h"

namespace app {

class ToolIcon;
using ToolIconPtr = util::SharedPtr<ToolIcon>;

// The toolbar's button for one tool: the tool's picture, its label and gesture in the
// tooltip. It shows as pressed while its tool is the base tool, and a click makes it so.
class ToolIcon : public gui::AbstractButton {
public:
    // The picture is "tools/<image>"; the label key names the tool in the language, and
    // the same key with "_Tooltip" explains it.
    ToolIcon(const ToolPtr& tool, const util::String& image, const util::String& labelKey);
    ~ToolIcon() override;

    const ToolPtr& GetTool() const { return m_tool; }
    const util::String& GetLabelKey() const { return m_labelKey; }
    const rendering::TextureHandle& GetTexture() const { return m_texture; }
    // Its tool is the base tool.
    bool IsSelected() const;
    // Its tool is in force for the moment, lent by a held key.
    bool IsLent() const;

    void DrawComp() override;

    // The side of the square button, and the room around the picture inside it.
    static constexpr float kSide = 40;
    static constexpr float kInset = 2;

protected:
    void Clicked() override;

private:
    ToolPtr m_tool;
    util::String m_labelKey;
    rendering::TextureHandle m_texture;
};

}  // namespace app
