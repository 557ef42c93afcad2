#pragma once

#include <vector>

#include "app/tools/Tool.h"
#include "input/InputListener.h"
#include "util/Singleton.h"

namespace app {

// Owns one of each tool and chooses the one in force: the temporary tool (borrowed while
// its key is held) over the override (a manipulating tool for one gesture) over the base
// tool. A tool key tapped switches the base tool; held, it lends its tool until released.
class Tools : public input::InputListener, public util::Singleton<Tools> {
public:
    Tools();
    ~Tools() override;

    // The tool in force.
    const ToolPtr& GetTool() const;
    const ToolPtr& GetBaseTool() const { return m_base; }
    const ToolPtr& GetOverrideTool() const { return m_override; }
    const ToolPtr& GetTemporaryTool() const { return m_temporary; }
    // Cancels the present base tool, takes the new one and clears the override.
    void SetBaseTool(const ToolPtr& tool);
    // Null clears it.
    void SetOverrideTool(const ToolPtr& tool);

    // Update of the tool in force, and its cursor.
    void Update(float dt);
    // Tap and hold of the tool keys.
    void OnKey(input::KeyEvent& event) override;

    // Every tool, in the order they were made.
    const std::vector<ToolPtr>& GetAll() const { return m_tools; }
    // The tool of the given kind, or null.
    template <class Kind>
    util::SharedPtr<Kind> Find() const {
        for (const ToolPtr& tool : m_tools) {
            if (Kind* kind = dynamic_cast<Kind*>(tool.Get())) {
                return util::SharedPtr<Kind>(kind);
            }
        }
        return util::SharedPtr<Kind>();
    }
    // The tool a key switches to, or null.
    ToolPtr GetToolForKey(input::SDLKey key) const;

private:
    // A clear of the scene drops the gesture in progress first.
    void CancelTool();

    std::vector<ToolPtr> m_tools;
    std::vector<std::pair<input::SDLKey, ToolPtr>> m_keys;
    ToolPtr m_base;
    ToolPtr m_override;
    ToolPtr m_temporary;
    input::SDLKey m_heldKey = 0;
    double m_pressTime = 0;
    util::String m_cursorName;
};

}  // namespace app
