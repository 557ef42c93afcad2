#pragma once

#include <map>

#include "input/Events.h"
#include "script/Reflected.h"
#include "util/CallbackSet.h"

namespace input {

class InputListener;
using InputListenerPtr = util::SharedPtr<InputListener>;
using InputListenerWeakPtr = util::WeakPtr<InputListener>;

// A node of the input tree. Every node receives every event; each decides for itself by
// the consumed flag and the mouse position whether to act. Any listener is also an object
// of the script.
class InputListener : public script::Reflected {
public:
    static constexpr int kDefaultPriority = 50;

    explicit InputListener(const util::String& name, int priority = kDefaultPriority);
    ~InputListener() override;

    virtual void OnMouseMove(MouseMoveEvent& event);
    // Records the key's state as this listener saw it, unless something ahead consumed it.
    virtual void OnKey(KeyEvent& event);
    virtual void OnGeneralEvent(InputEvent& event);
    virtual void OnDragBegin(DragEvent& event);
    virtual void OnDrag(DragEvent& event);
    virtual void OnDragEnd(DragEvent& event);
    virtual void OnClick(ClickEvent& event);
    virtual void OnJoystickAxis(JoystickEvent& event);

    // Larger is earlier among siblings. A change re-sorts every delegator that holds this.
    int GetPriority() const { return m_priority; }
    void SetPriority(int priority);
    util::CallbackSet& GetPriorityChangedCallbacks() { return m_priorityChanged; }

    // Whether the key was last seen going down by this listener.
    bool IsKeyDownHere(SDLKey key) const;

private:
    int m_priority;
    util::CallbackSet m_priorityChanged;
    std::map<SDLKey, bool> m_keyStates;
};

}  // namespace input
