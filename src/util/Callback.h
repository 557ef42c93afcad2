#pragma once

#include <functional>
#include <utility>

#include "util/Pointee.h"

namespace util {

// A function with an owner. The owner is watched, not held: once it has gone the callback
// is dead and is never called again, so nobody has to unregister in a destructor.
template <class... Args>
class BasicCallback : public Pointee {
public:
    using Function = std::function<void(Args...)>;

    BasicCallback(const WeakPtr<Pointee>& owner, Function function)
        : m_function(std::move(function)), m_owner(owner) {}

    const WeakPtr<Pointee>& GetOwner() const { return m_owner; }
    const Function& GetFunction() const { return m_function; }
    bool IsDead() const { return m_owner.Expired(); }

    // Calls the function if the owner lives, and keeps the owner alive until it returns.
    // Returns whether it was called.
    bool Call(Args... args) const {
        const LockPtr<Pointee> owner(m_owner);
        if (!owner) {
            return false;
        }
        m_function(args...);
        return true;
    }

private:
    Function m_function;
    WeakPtr<Pointee> m_owner;
};

class Callback : public BasicCallback<> {
public:
    using BasicCallback::BasicCallback;
    ~Callback() override;
};

template <class T>
class CallbackArg : public BasicCallback<T> {
public:
    using BasicCallback<T>::BasicCallback;
};

using CallbackPtr = SharedPtr<Callback>;
using CallbackWeakPtr = WeakPtr<Callback>;
template <class T>
using CallbackArgPtr = SharedPtr<CallbackArg<T>>;
using CallbackFloatPtr = CallbackArgPtr<float>;

inline CallbackPtr MakeCallback(const WeakPtr<Pointee>& owner, Callback::Function function) {
    return CallbackPtr(new Callback(owner, std::move(function)));
}

// Binds a method of the owner. Holding the raw pointer is safe: the function only runs
// while the owner is locked alive.
template <class Owner>
CallbackPtr MakeCallback(Owner* owner, void (Owner::*method)()) {
    return MakeCallback(WeakPtr<Pointee>(owner), [owner, method] { (owner->*method)(); });
}

template <class T>
CallbackArgPtr<T> MakeCallbackArg(const WeakPtr<Pointee>& owner,
                                  typename CallbackArg<T>::Function function) {
    return CallbackArgPtr<T>(new CallbackArg<T>(owner, std::move(function)));
}

template <class T, class Owner>
CallbackArgPtr<T> MakeCallbackArg(Owner* owner, void (Owner::*method)(T)) {
    return MakeCallbackArg<T>(WeakPtr<Pointee>(owner),
                              [owner, method](T value) { (owner->*method)(value); });
}

extern template class BasicCallback<>;
extern template class BasicCallback<float>;
extern template class CallbackArg<float>;

}  // namespace util
