#pragma once

#include <cstddef>
#include <stack>

#include "util/Assert.h"

namespace util {

// Something that can be made the current one of its kind, such as a shader program.
class AbstractBinder {
public:
    // May throw like the destructors of Pointee, which bindable resources also derive from.
    virtual ~AbstractBinder() noexcept(false) = default;
    virtual void Bind() { DoBind(); }
    virtual void Unbind() { DoUnbind(); }

protected:
    // The actual switch of the global state.
    virtual void DoBind() = 0;
    virtual void DoUnbind() = 0;
};

// Nested binding of a global state: unbinding restores whatever was bound before. T is the
// derived class itself.
template <class T>
class StackedBind : public AbstractBinder {
public:
    void Bind() override {
        DATA_ASSERT(s_stack.size() < 100);
        if (!s_stack.empty() && !s_keepPreviousBound) {
            AsBinder(s_stack.top())->DoUnbind();
        }
        s_stack.push(static_cast<T*>(this));
        DoBind();
    }

    void Unbind() override {
        DATA_ASSERT(!s_stack.empty());
        DATA_ASSERT(s_stack.top() == this);
        s_stack.pop();
        if (s_stack.empty()) {
            DoUnbind();
            return;
        }
        if (!s_keepPreviousBound) {
            DoUnbind();
        }
        AsBinder(s_stack.top())->DoBind();
    }

    // When set, binding over another one does not unbind it first and unbinding does not
    // undo this one before the previous one is bound again: for states where a bind fully
    // replaces the previous one, this saves the driver calls.
    static void SetKeepPreviousBound(bool keep) { s_keepPreviousBound = keep; }
    static bool GetKeepPreviousBound() { return s_keepPreviousBound; }

    static T* Current() { return s_stack.empty() ? nullptr : s_stack.top(); }
    static size_t Depth() { return s_stack.size(); }

private:
    // The protected operations of another binder are reachable through this class only.
    static StackedBind* AsBinder(T* binder) { return binder; }

    static std::stack<T*> s_stack;
    static bool s_keepPreviousBound;
};

template <class T>
std::stack<T*> StackedBind<T>::s_stack;
template <class T>
bool StackedBind<T>::s_keepPreviousBound = false;

}  // namespace util
