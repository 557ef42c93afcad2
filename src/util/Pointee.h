#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

#include "util/SafeDelete.h"
#include "util/SmallObjectPool.h"
#include "util/String.h"

namespace util {

class Pointee;

// A small heap record that outlives its object, so weak pointers can tell that it died.
struct PointeeHandle {
    Pointee* pointee;  // null from the moment the strong count reaches zero
    int32_t strong;
    int32_t weak;
};

// Base of every reference-counted object. Counts are plain integers: one thread only.
class Pointee {
public:
    Pointee();
    // A copy is a new object with a handle of its own.
    Pointee(const Pointee&) : Pointee() {}
    Pointee& operator=(const Pointee&) { return *this; }
    // Destructors may throw: SafeDelete catches and logs, so a release always completes.
    virtual ~Pointee() noexcept(false);

    // Every shared object comes from the small-object pool; the deleting destructor passes
    // the size of the object's own class.
    static void* operator new(size_t size) { return SmallObjectPool::Allocate(size); }
    static void operator delete(void* memory, size_t size) noexcept {
        SmallObjectPool::Free(memory, size);
    }

    PointeeHandle* GetHandle() const { return m_handle; }

private:
    PointeeHandle* m_handle;
};

namespace pointee_detail {

inline void AddStrong(PointeeHandle* handle) {
    ++handle->strong;
}

// Subtract one; at zero, clear the handle first (so weak pointers already read as
// expired in the destructor), then delete.
inline void ReleaseStrong(PointeeHandle* handle) {
    if (--handle->strong != 0) {
        return;
    }
    Pointee* object = handle->pointee;
    handle->pointee = nullptr;
    SafeDelete(object);
}

[[noreturn]] void ThrowNullDereference(const char* what, const char* function);

}  // namespace pointee_detail

// Per-frame sweep of the handle list: frees handles without any reference. Looks only at
// handles added since the last sweep, unless the list has more than doubled since the last
// full pass.
void SweepHandles();

// Introspection of the ownership machinery, for the frame's statistics and for tests.
size_t LivePointeeCount();
size_t PointeeHandleCount();
size_t PointeeSweepStart();
size_t PointeeLastFullSweepSize();

// Intrusive strong pointer: one word, the count lives in the object's handle.
// Checked access shared by the strong pointer and the lock: a null dereference throws
// the pointer's own message after the throw line.
template <class Derived, class T>
class CheckedAccess {
public:
    T* operator->() const {
        Check();
        return Self().Get();
    }
    T& operator*() const {
        Check();
        return *Self().Get();
    }
    explicit operator bool() const { return Self().Get() != nullptr; }

    void Check() const {
        if (!Self().Get()) {
            pointee_detail::ThrowNullDereference(Derived::kNullMessage, __PRETTY_FUNCTION__);
        }
    }

private:
    const Derived& Self() const { return static_cast<const Derived&>(*this); }
};

template <class T>
class SharedPtr : public CheckedAccess<SharedPtr<T>, T> {
public:
    static constexpr const char* kNullMessage = "Tried to dereference a NULL SharedPtr";

    constexpr SharedPtr() = default;
    constexpr SharedPtr(std::nullptr_t) {}
    // Taking a raw pointer takes a reference: "new" followed by wrapping is how objects
    // enter the system.
    SharedPtr(T* object) : m_object(object) { Acquire(); }
    SharedPtr(const SharedPtr& other) : m_object(other.m_object) { Acquire(); }
    SharedPtr(SharedPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    SharedPtr(const SharedPtr<U>& other) : m_object(other.Get()) {
        Acquire();
    }
    ~SharedPtr() { Release(); }

    SharedPtr& operator=(const SharedPtr& other) {
        SharedPtr(other).swap(*this);
        return *this;
    }
    SharedPtr& operator=(SharedPtr&& other) noexcept {
        SharedPtr(std::move(other)).swap(*this);
        return *this;
    }

    void swap(SharedPtr& other) noexcept { std::swap(m_object, other.m_object); }
    void Reset() { SharedPtr().swap(*this); }

    T* Get() const { return m_object; }

    // Forgets the object without touching its count; only for an object whose
    // construction failed and whose memory is already gone.
    void Abandon() { m_object = nullptr; }

private:
    void Acquire() {
        if (m_object) {
            pointee_detail::AddStrong(static_cast<const Pointee*>(m_object)->GetHandle());
        }
    }
    // Clears the pointer before the release, so that a singleton reached during its own
    // static destruction reads as gone (the phoenix check) instead of dangling.
    void Release() {
        if (T* object = std::exchange(m_object, nullptr)) {
            pointee_detail::ReleaseStrong(static_cast<const Pointee*>(object)->GetHandle());
        }
    }

    T* m_object = nullptr;
};

template <class T, class U>
bool operator==(const SharedPtr<T>& a, const SharedPtr<U>& b) {
    return a.Get() == b.Get();
}
template <class T>
bool operator==(const SharedPtr<T>& a, std::nullptr_t) {
    return !a;
}
template <class T, class U>
bool operator<(const SharedPtr<T>& a, const SharedPtr<U>& b) {
    return std::less<const void*>()(a.Get(), b.Get());
}

template <class T, class U>
SharedPtr<T> StaticPointerCast(const SharedPtr<U>& p) {
    return SharedPtr<T>(static_cast<T*>(p.Get()));
}
template <class T, class U>
SharedPtr<T> DynamicPointerCast(const SharedPtr<U>& p) {
    return SharedPtr<T>(dynamic_cast<T*>(p.Get()));
}

template <class T>
class LockPtr;

// Weak pointer: the object and its handle. Every read first normalises: a handle whose
// object died is let go, and both words are cleared.
template <class T>
class WeakPtr {
public:
    constexpr WeakPtr() = default;
    constexpr WeakPtr(std::nullptr_t) {}
    WeakPtr(T* object) { Attach(object); }
    WeakPtr(const SharedPtr<T>& object) { Attach(object.Get()); }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    WeakPtr(const SharedPtr<U>& object) {
        Attach(object.Get());
    }
    WeakPtr(const WeakPtr& other) { Attach(other.Get()); }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    WeakPtr(const WeakPtr<U>& other) {
        Attach(other.Get());
    }
    ~WeakPtr() { Detach(); }

    WeakPtr& operator=(const WeakPtr& other) {
        if (this != &other) {
            T* object = other.Get();
            Detach();
            Attach(object);
        }
        return *this;
    }

    // The object, or null if it has died.
    T* Get() const {
        Normalize();
        return m_object;
    }
    bool Expired() const { return Get() == nullptr; }
    LockPtr<T> Lock() const { return LockPtr<T>(*this); }
    void Reset() { Detach(); }

    friend bool operator==(const WeakPtr& a, const WeakPtr& b) { return a.Get() == b.Get(); }
    friend bool operator<(const WeakPtr& a, const WeakPtr& b) {
        return std::less<const T*>()(a.Get(), b.Get());
    }

private:
    friend class LockPtr<T>;

    void Normalize() const {
        if (m_handle && !m_handle->pointee) {
            --m_handle->weak;
            m_handle = nullptr;
            m_object = nullptr;
        }
    }
    void Attach(T* object) {
        m_object = object;
        m_handle = object ? static_cast<const Pointee*>(object)->GetHandle() : nullptr;
        if (m_handle) {
            ++m_handle->weak;
        }
    }
    void Detach() {
        if (m_handle) {
            --m_handle->weak;
        }
        m_handle = nullptr;
        m_object = nullptr;
    }

    mutable T* m_object = nullptr;
    mutable PointeeHandle* m_handle = nullptr;
};

// Short-lived guard through which a weak pointer is used. Locking an object that nobody
// owns yet (strong count zero, as inside its own constructor) never deletes it on release.
template <class T>
class LockPtr : public CheckedAccess<LockPtr<T>, T> {
public:
    static constexpr const char* kNullMessage = "Tried to dereference a NULL LockPtr";

    LockPtr() = default;
    explicit LockPtr(const WeakPtr<T>& weak) {
        T* object = weak.Get();
        if (object) {
            m_object = object;
            m_handle = weak.m_handle;
            m_strongAtLock = m_handle->strong;
            pointee_detail::AddStrong(m_handle);
        }
    }
    LockPtr(const LockPtr&) = delete;
    LockPtr& operator=(const LockPtr&) = delete;
    LockPtr(LockPtr&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr)),
          m_handle(std::exchange(other.m_handle, nullptr)),
          m_strongAtLock(other.m_strongAtLock) {}
    ~LockPtr() { Release(); }

    T* Get() const { return m_object; }

private:
    void Release() {
        if (!m_handle) {
            return;
        }
        if (m_strongAtLock != 0) {
            pointee_detail::ReleaseStrong(m_handle);
        } else {
            --m_handle->strong;
        }
        m_handle = nullptr;
        m_object = nullptr;
    }

    T* m_object = nullptr;
    PointeeHandle* m_handle = nullptr;
    int32_t m_strongAtLock = 0;
};

}  // namespace util

template <class T>
struct std::hash<util::SharedPtr<T>> {
    size_t operator()(const util::SharedPtr<T>& p) const { return std::hash<T*>()(p.Get()); }
};
