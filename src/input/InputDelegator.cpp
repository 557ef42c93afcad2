#include "input/InputDelegator.h"

#include <algorithm>

#include "logging/Log.h"
#include "util/Assert.h"

namespace input {

InputDelegator::InputDelegator(const util::String& name, int priority)
    : InputListener(name, priority) {}

InputDelegator::~InputDelegator() {
    for (auto& [listener, callback] : m_sortCallbacks) {
        if (const util::LockPtr<InputListener> alive(listener); alive) {
            alive->GetPriorityChangedCallbacks().Remove(callback);
        }
    }
}

void InputDelegator::Add(const InputListenerWeakPtr& listener) {
    if (m_iterationLock == 0) {
        AddImpl(listener);
    } else {
        m_modifications.emplace_back(true, listener);
    }
}

void InputDelegator::Remove(const InputListenerWeakPtr& listener) {
    if (m_iterationLock == 0) {
        RemoveImpl(listener);
    } else {
        m_modifications.emplace_back(false, listener);
    }
}

void InputDelegator::AddImpl(const InputListenerWeakPtr& listener) {
    CODE_ASSERT(!m_iterationLock);
    const util::LockPtr<InputListener> alive(listener);
    if (!alive) {
        return;
    }
    // Added twice, a listener sits once, where a fresh addition would.
    RemoveImpl(listener);
    const util::CallbackPtr callback = alive->GetPriorityChangedCallbacks().Add(
        util::WeakPtr<util::Pointee>(this), [this] { Sort(); });
    m_sortCallbacks.emplace_back(listener, callback);
    m_listeners.push_front(listener);
    Sort();
}

bool InputDelegator::RemoveImpl(const InputListenerWeakPtr& listener) {
    CODE_ASSERT(!m_iterationLock);
    const auto callback = std::find_if(m_sortCallbacks.begin(), m_sortCallbacks.end(),
                                       [&](const auto& entry) { return entry.first == listener; });
    if (callback != m_sortCallbacks.end()) {
        if (const util::LockPtr<InputListener> alive(listener); alive) {
            alive->GetPriorityChangedCallbacks().Remove(callback->second);
        }
        m_sortCallbacks.erase(callback);
    }
    const auto it = std::find(m_listeners.begin(), m_listeners.end(), listener);
    if (it == m_listeners.end()) {
        return false;
    }
    m_listeners.erase(it);
    return true;
}

void InputDelegator::Sort() {
    // A delivery walks the queue by position: a sort under its feet could call someone
    // twice or not at all, so it waits for the delivery's end.
    if (m_iterationLock > 0) {
        m_sortPending = true;
        return;
    }
    m_sortPending = false;
    const auto priority = [](const InputListenerWeakPtr& listener) {
        const InputListener* alive = listener.Get();
        return alive ? alive->GetPriority() : -1;
    };
    std::stable_sort(m_listeners.begin(), m_listeners.end(),
                     [&](const auto& a, const auto& b) { return priority(a) > priority(b); });
}

void InputDelegator::EndDelivery() {
    if (--m_iterationLock > 0) {
        return;
    }
    // Changes may queue further changes only through a delivery, which cannot happen here.
    std::vector<std::pair<bool, InputListenerWeakPtr>> modifications;
    modifications.swap(m_modifications);
    for (const auto& [add, listener] : modifications) {
        if (add) {
            AddImpl(listener);
        } else {
            RemoveImpl(listener);
        }
    }
    if (m_sortPending) {
        Sort();
    }
}

template <class Event>
void InputDelegator::FireEvent(void (InputListener::*handler)(Event&), Event& event) {
    ++m_iterationLock;
    try {
        // Listeners added during the delivery wait in the modification list, so the
        // queue keeps its length until the end.
        for (size_t i = 0; i < m_listeners.size(); ++i) {
            const util::LockPtr<InputListener> listener(m_listeners[i]);
            if (!listener) {
                m_modifications.emplace_back(false, m_listeners[i]);
                continue;
            }
            (listener.Get()->*handler)(event);
        }
    } catch (...) {
        Log(logging::Error, "Exception caught in InputDelegator::FireEvent");
        // The lock is taken back; the queued changes wait for the next delivery's end.
        --m_iterationLock;
        throw;
    }
    EndDelivery();
}

void InputDelegator::OnMouseMove(MouseMoveEvent& event) {
    FireEvent(&InputListener::OnMouseMove, event);
}
void InputDelegator::OnKey(KeyEvent& event) {
    FireEvent(&InputListener::OnKey, event);
}
void InputDelegator::OnGeneralEvent(InputEvent& event) {
    FireEvent(&InputListener::OnGeneralEvent, event);
}
void InputDelegator::OnDragBegin(DragEvent& event) {
    FireEvent(&InputListener::OnDragBegin, event);
}
void InputDelegator::OnDrag(DragEvent& event) {
    FireEvent(&InputListener::OnDrag, event);
}
void InputDelegator::OnDragEnd(DragEvent& event) {
    FireEvent(&InputListener::OnDragEnd, event);
}
void InputDelegator::OnClick(ClickEvent& event) {
    FireEvent(&InputListener::OnClick, event);
}
void InputDelegator::OnJoystickAxis(JoystickEvent& event) {
    FireEvent(&InputListener::OnJoystickAxis, event);
}

template void InputDelegator::FireEvent(void (InputListener::*)(MouseMoveEvent&), MouseMoveEvent&);
template void InputDelegator::FireEvent(void (InputListener::*)(KeyEvent&), KeyEvent&);
template void InputDelegator::FireEvent(void (InputListener::*)(InputEvent&), InputEvent&);
template void InputDelegator::FireEvent(void (InputListener::*)(DragEvent&), DragEvent&);
template void InputDelegator::FireEvent(void (InputListener::*)(ClickEvent&), ClickEvent&);
template void InputDelegator::FireEvent(void (InputListener::*)(JoystickEvent&), JoystickEvent&);

}  // namespace input
