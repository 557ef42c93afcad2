#pragma once

#include "util/Assert.h"
#include "util/Exception.h"
#include "util/Pointee.h"
#include "util/TypeName.h"

namespace util {

// Base of every global service. T derives from Pointee first and from Singleton<T> second,
// so the handle exists when this constructor registers the instance. The instance is
// created at first use; creating it again after it died is a programmer's error.
template <class T>
class Singleton {
public:
    // The accessor used everywhere: creates the instance on first use. While T is being
    // constructed it already returns the half-built object.
    static T& Get() {
        if (!s_instance) {
            Create();
        }
        return *s_instance;
    }

    static void Create() {
        if (s_instance) {
            return;
        }
        if (s_created) {
            VORRA_THROW(BadCoderException, "Phoenix singleton detected: " + TypeName<T>());
        }
        s_created = true;
        try {
            new T();
        } catch (...) {
            // The constructor failed after registering: its memory is already gone.
            s_instance.Abandon();
            throw;
        }
    }

    static bool IsAlive() { return static_cast<bool>(s_instance); }
    static bool WasCreated() { return s_created; }

    // Lets the instance go; the object dies unless someone else still holds it.
    static void Release() { s_instance.Reset(); }

protected:
    Singleton() {
        CODE_ASSERT(!s_instance);
        s_instance = SharedPtr<T>(DerivedUnderConstruction(this));
    }
    virtual ~Singleton() noexcept(false) = default;

private:
    // The instance registers from this base's constructor, before T's own constructor
    // runs: the object is not yet a complete T, which the vptr sanitizer would report.
    // The Pointee base is already built, which is all the registration touches.
    __attribute__((no_sanitize("vptr"))) static T* DerivedUnderConstruction(Singleton* base) {
        return static_cast<T*>(base);
    }

    static SharedPtr<T> s_instance;
    static bool s_created;
};

template <class T>
SharedPtr<T> Singleton<T>::s_instance;
template <class T>
bool Singleton<T>::s_created = false;

}  // namespace util
