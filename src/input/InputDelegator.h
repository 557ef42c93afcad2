#pragma once

#include <deque>
#include <utility>
#include <vector>

#include "input/InputListener.h"
#include "util/Callback.h"

namespace input {

class InputDelegator;
using InputDelegatorPtr = util::SharedPtr<InputDelegator>;

// A listener that passes every event on to its own listeners, by falling priority and,
// among equal priorities, the latest added first, as a stack of windows needs. It holds
// them weakly: owning them is its owner's business.
//
// Listeners may add and remove listeners, themselves included, while an event is being
// delivered: such changes wait until the delivery is over, so a delivery always visits
// the listeners it started with.
class InputDelegator : public InputListener {
public:
    explicit InputDelegator(const util::String& name, int priority = kDefaultPriority);
    ~InputDelegator() override;

    void Add(const InputListenerWeakPtr& listener);
    void Remove(const InputListenerWeakPtr& listener);

    void OnMouseMove(MouseMoveEvent& event) override;
    void OnKey(KeyEvent& event) override;
    void OnGeneralEvent(InputEvent& event) override;
    void OnDragBegin(DragEvent& event) override;
    void OnDrag(DragEvent& event) override;
    void OnDragEnd(DragEvent& event) override;
    void OnClick(ClickEvent& event) override;
    void OnJoystickAxis(JoystickEvent& event) override;

    // The listeners in delivery order, expired ones included.
    const std::deque<InputListenerWeakPtr>& GetListeners() const { return m_listeners; }

protected:
    // Calls the handler on every listener. A consumed event still travels: each handler
    // tests the flag itself.
    template <class Event>
    void FireEvent(void (InputListener::*handler)(Event&), Event& event);

private:
    void AddImpl(const InputListenerWeakPtr& listener);
    bool RemoveImpl(const InputListenerWeakPtr& listener);
    void Sort();
    void EndDelivery();

    int m_iterationLock = 0;
    bool m_sortPending = false;
    std::deque<InputListenerWeakPtr> m_listeners;
    // Adds (true) and removals (false) asked for during a delivery.
    std::vector<std::pair<bool, InputListenerWeakPtr>> m_modifications;
    // The re-sort callback this delegator put into each listener's priority set.
    std::vector<std::pair<InputListenerWeakPtr, util::CallbackPtr>> m_sortCallbacks;
};

}  // namespace input
