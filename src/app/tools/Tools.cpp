#include "app/tools/Tools.h"

#include "app/Scene.h"
#include "app/tools/BoxTool.h"
#include "app/tools/BrushTool.h"
#include "app/tools/ChainTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/DragTool.h"
#include "app/tools/FixJointTool.h"
#include "app/tools/HingeTool.h"
#include "app/tools/MoveTool.h"
#include "app/tools/PanTool.h"
#include "app/tools/PenTool.h"
#include "app/tools/PlaneTool.h"
#include "app/tools/RotateTool.h"
#include "app/tools/ScaleTool.h"
#include "app/tools/SketchTool.h"
#include "app/tools/SpringTool.h"
#include "gui/GUI.h"
#include "rendering/TextureManager.h"

#include <GL/glew.h>

namespace app {

Tools::Tools() : input::InputListener("Tools") {
    m_tools = {new MoveTool(),  new RotateTool(), new PanTool(),    new SketchTool(),
               new BrushTool(), new DragTool(),   new PlaneTool(),  new CircleTool(),
               new BoxTool(),   new ChainTool(),  new SpringTool(), new FixJointTool(),
               new HingeTool(), new PenTool(),    new ScaleTool()};
    m_keys = {{'b', Find<BrushTool>()}, {'k', Find<SketchTool>()}, {'d', Find<DragTool>()},
              {'p', Find<PlaneTool>()}, {'c', Find<CircleTool>()}, {'x', Find<BoxTool>()},
              {'n', Find<ChainTool>()}, {'s', Find<SpringTool>()}, {'f', Find<FixJointTool>()},
              {'h', Find<HingeTool>()}, {'e', Find<PenTool>()},    {'r', Find<ScaleTool>()}};
    m_base = Find<SketchTool>();
    Scene::Get().GetOnClear().Add(util::MakeCallback(this, &Tools::CancelTool));
}

void Tools::CancelTool() {
    GetTool()->Cancel();
}

Tools::~Tools() = default;

const ToolPtr& Tools::GetTool() const {
    if (m_temporary) {
        return m_temporary;
    }
    return m_override ? m_override : m_base;
}

void Tools::SetBaseTool(const ToolPtr& tool) {
    if (m_base) {
        m_base->Cancel();
    }
    m_base = tool;
    m_override = nullptr;
}

void Tools::SetOverrideTool(const ToolPtr& tool) {
    m_override = tool;
}

ToolPtr Tools::GetToolForKey(input::SDLKey key) const {
    for (const auto& [mapped, tool] : m_keys) {
        if (mapped == key) {
            return tool;
        }
    }
    return ToolPtr();
}

void Tools::OnKey(input::KeyEvent& event) {
    input::InputListener::OnKey(event);
    if (event.consumed) {
        return;
    }
    if (event.down) {
        if (event.alt || event.ctrl || event.shift || m_heldKey != 0) {
            return;
        }
        const ToolPtr tool = GetToolForKey(event.key);
        if (!tool || tool == GetTool()) {
            return;
        }
        GetTool()->Cancel();
        m_heldKey = event.key;
        m_pressTime = gui::GUI::GetTime();
        m_temporary = tool;
        event.consumed = true;
    } else if (event.key == m_heldKey && m_temporary) {
        // The tooltip's delay tells a tap from a hold.
        if (gui::GUI::GetTime() - m_pressTime > gui::GUI::kTooltipDelay) {
            m_temporary->Cancel();
        } else {
            if (m_base) {
                m_base->Cancel();
            }
            m_base = m_temporary;
            m_override = nullptr;
        }
        m_temporary = nullptr;
        m_heldKey = 0;
        event.consumed = true;
    }
}

void Tools::Update(float dt) {
    const ToolPtr tool = GetTool();
    tool->Update(dt);
    const util::String name = tool->GetCursorName();
    if (name == m_cursorName || !gui::GUI::IsAlive()) {
        return;
    }
    m_cursorName = name;
    rendering::TextureHandle cursor;
    if (!name.empty()) {
        cursor = rendering::TextureManager::Get().Load("cursors/" + name, GL_RGBA);
    }
    gui::GUI::Get().SetCursor(cursor, gui::ComponentWeakPtr());
}

}  // namespace app
