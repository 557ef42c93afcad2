#pragma once

#include <cstddef>
#include <exception>
#include <utility>

#include "util/Callback.h"
#include "util/ClassTracker.h"
#include "util/Exception.h"
#include "util/ReentrantOrderedSet.h"

namespace util {

// Callback sets are tracked so that the frame can flush dead callbacks out of them, from
// their first callback on: every attribute has a set, and most never get a callback, so
// the frame need not visit them nor a load register them.
class AbstractCallbackSet : public ClassTracker<AbstractCallbackSet> {
public:
    AbstractCallbackSet() : ClassTracker(Untracked{}) {}
    AbstractCallbackSet(const AbstractCallbackSet&) = default;
    AbstractCallbackSet& operator=(const AbstractCallbackSet&) = default;
    ~AbstractCallbackSet() override;
    // Frees the callbacks whose owners have gone.
    virtual void Flush() = 0;
    // Flush on every set alive: once a frame.
    static void FlushAll();

protected:
    // A throwing callback must not stop the ones behind it: it is reported and skipped.
    static void ReportException(const std::exception& e, const String& location);
    static void ReportUnknownException(const String& location);
};

// The one implementation behind CallbackSet and CallbackArgSet<T>. Callbacks may add and
// remove callbacks (themselves included) while they are being called; such changes take
// effect once the outermost call of the set is over.
template <class CallbackType, class... Args>
class BasicCallbackSet : public AbstractCallbackSet {
public:
    using Pointer = SharedPtr<CallbackType>;
    using Function = typename CallbackType::Function;

    // Adding a present callback moves it to the end.
    void Add(const Pointer& callback) {
        Track();
        m_callbacks.insert(callback);
    }
    // Makes a callback of the owner and the function and adds it. Keep the result to
    // remove it again, or let the owner's death end it.
    Pointer Add(const WeakPtr<Pointee>& owner, Function function) {
        Track();
        Pointer callback(new CallbackType(owner, std::move(function)));
        m_callbacks.InsertNew(callback);
        return callback;
    }
    void Remove(const Pointer& callback) { m_callbacks.erase(callback); }
    void Clear() { m_callbacks.clear(); }

    // Calls every callback whose owner is alive, in order of addition.
    void CallAll(Args... args) const {
        typename ReentrantOrderedSet<Pointer>::WalkGuard guard(m_callbacks);
        const size_t count = m_callbacks.size();
        for (size_t i = 0; i < count; ++i) {
            const Pointer& callback = m_callbacks[i];
            try {
                callback.Check();
                callback->Call(args...);
            } catch (const std::exception& e) {
                ReportException(e, VORRA_LOCATION);
            } catch (...) {
                ReportUnknownException(VORRA_LOCATION);
            }
        }
    }

    // Not needed for correctness, CallAll skips dead callbacks anyway; this frees them.
    void Flush() override {
        m_callbacks.EraseIf(
            [](const Pointer& callback) { return !callback || callback->IsDead(); });
    }

    size_t size() const { return m_callbacks.size(); }
    bool empty() const { return m_callbacks.empty(); }
    bool Contains(const Pointer& callback) const { return m_callbacks.Contains(callback); }
    const ReentrantOrderedSet<Pointer>& Callbacks() const { return m_callbacks; }

private:
    ReentrantOrderedSet<Pointer> m_callbacks;
};

class CallbackSet : public BasicCallbackSet<Callback> {};

template <class T>
class CallbackArgSet : public BasicCallbackSet<CallbackArg<T>, T> {};

extern template class BasicCallbackSet<Callback>;
extern template class BasicCallbackSet<CallbackArg<float>, float>;

}  // namespace util
