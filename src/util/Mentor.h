#pragma once

#include <exception>
#include <functional>
#include <typeinfo>
#include <utility>

#include "util/CallbackSet.h"
#include "util/ClassTracker.h"
#include "util/Exception.h"
#include "util/Pointee.h"
#include "util/TypeName.h"

namespace util {

// A resource handle whose resource can be dropped and rebuilt behind its users' backs (the
// graphics context can vanish). All mentors are tracked so that they can be moved between
// loaded and unloaded in bulk.
class AbstractMentor : public Pointee, public ClassTracker<AbstractMentor> {
public:
    ~AbstractMentor() override;
    virtual void Load();
    virtual void Unload();
    // The type of the resource held, so that one class of resources can be reloaded alone.
    virtual const std::type_info& ResourceType() const = 0;

protected:
    // Reports a loader's failure; the load then counts as having given nothing.
    static void ReportLoadFailure(const std::exception& e, const String& location);
    static void ReportUnknownLoadFailure(const String& resourceTypeName, const String& location);
};

// Users hold the mentor, never the resource, and register on-load and on-unload callbacks
// if they cache anything derived from it. A resource that fails to load is replaced by the
// object of the type's default mentor.
template <class T>
class Mentor : public AbstractMentor {
public:
    using Loader = std::function<SharedPtr<T>()>;

    explicit Mentor(Loader loader = Loader()) : m_loader(std::move(loader)) {}

    void Load() override {
        if (m_object) {
            return;
        }
        SharedPtr<T> loaded;
        try {
            loaded = m_loader();
        } catch (const std::exception& e) {
            ReportLoadFailure(e, VORRA_LOCATION);
        } catch (...) {
            ReportUnknownLoadFailure(TypeName<T>(), VORRA_LOCATION);
        }
        if (loaded) {
            m_object = loaded;
            m_onLoad.CallAll();
            return;
        }
        // The default stands in silently: nothing derived from it needs rebuilding, so the
        // on-load callbacks stay quiet. The default itself just stays empty.
        if (s_default && s_default.Get() != this) {
            s_default->Load();
            m_object = s_default->m_object;
        }
    }

    void Unload() override {
        if (!m_object) {
            return;
        }
        m_onUnload.CallAll();
        m_object.Reset();
    }

    const std::type_info& ResourceType() const override { return typeid(T); }

    // Null while unloaded.
    const SharedPtr<T>& Get() const { return m_object; }
    bool IsLoaded() const { return static_cast<bool>(m_object); }
    void SetLoader(Loader loader) { m_loader = std::move(loader); }

    // Called after a load that produced the resource itself.
    CallbackSet& OnLoad() { return m_onLoad; }
    // Called before the resource is let go.
    CallbackSet& OnUnload() { return m_onUnload; }

    static const SharedPtr<Mentor>& GetDefault() { return s_default; }
    static void SetDefault(const SharedPtr<Mentor>& mentor) { s_default = mentor; }
    bool IsDefault() const { return s_default.Get() == this; }

private:
    Loader m_loader;
    SharedPtr<T> m_object;
    CallbackSet m_onLoad;
    CallbackSet m_onUnload;

    static SharedPtr<Mentor> s_default;
};

template <class T>
SharedPtr<Mentor<T>> Mentor<T>::s_default;

}  // namespace util
