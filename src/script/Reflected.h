#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#include "script/Attributes.h"
#include "script/ClassObject.h"
#include "script/Forward.h"
#include "script/Objects.h"
#include "script/ValueConversions.h"
#include "util/Assert.h"
#include "util/ClassTracker.h"

namespace script {

// A program object that the language can see: a class object with a name. Each class
// registers its commands and attributes in its constructor, in one visible block.
//
// Commands and children are held in constant variables, attributes in variables that a
// script may assign.
class Reflected : public ClassObject, public util::ClassTracker<Reflected> {
public:
    explicit Reflected(const util::String& name);
    ~Reflected() override;

    const util::String& GetReflectedName() const {
        if (m_namePending) {
            ResolveReflectedName();
        }
        return m_reflectedName;
    }
    // Only out of the tree: the name is the one of the variable that holds the object.
    void SetReflectedName(const util::String& name);

    // Moves the child here, under its own name, or "<name>_2", "<name>_3"... if that is
    // taken.
    void AddReflected(ReflectedPtr child);

    // Commands that call a member of this object, which must be a C. A void member gives
    // void; any other result is converted by ValueToObject (an ObjectPtr passes as it is).
    template <class C>
    void AddMemberCmd(const util::String& name, void (C::*member)()) {
        C* ptr = dynamic_cast<C*>(this);
        CODE_ASSERT(ptr);
        AddCommand(name, [ptr, member]() { (ptr->*member)(); });
    }
    template <class C>
    void AddMemberCmd(const util::String& name, void (C::*member)() const) {
        const C* ptr = dynamic_cast<const C*>(this);
        CODE_ASSERT(ptr);
        AddCommand(name, [ptr, member]() { (ptr->*member)(); });
    }
    template <class C, class R>
    void AddMemberCmd(const util::String& name, R (C::*member)()) {
        C* ptr = dynamic_cast<C*>(this);
        CODE_ASSERT(ptr);
        AddCommand(name, [ptr, member]() -> ObjectPtr { return ToObject((ptr->*member)()); });
    }
    template <class C, class R>
    void AddMemberCmd(const util::String& name, R (C::*member)() const) {
        const C* ptr = dynamic_cast<const C*>(this);
        CODE_ASSERT(ptr);
        AddCommand(name, [ptr, member]() -> ObjectPtr { return ToObject((ptr->*member)()); });
    }

    // A free function object of no, one or two ObjectPtr arguments, returning ObjectPtr or
    // nothing (then the command gives void). The arity picks IntrinsicCmd, IntrinsicCmd1
    // or IntrinsicCmd2. Arguments arrive unconverted.
    template <class F>
    void AddCommand(const util::String& name, F function) {
        AddConstant(name, MakeCommand(std::move(function)));
    }

    // Read-only figures: an existing variable gets the value, else a constant is made.
    void SetConstant(const util::String& name, const util::String& value);
    void SetConstant(const util::String& name, float value);

    // Attributes. Each is made with the script value ValueToObject(default), holds the
    // default natively without firing a callback, and is added as a variable; the out
    // parameter is how native code reads it.
    template <class T>
    void AddAttrib(AttribPtr<T>& out, const util::String& name,
                   const std::type_identity_t<T>& def) {
        out = AttribPtr<T>(new Attrib<T>(name, def));
        AddVariable(out);
    }
    // Native value behind function objects.
    template <class T>
    void AddAttrib(AttribGetSetPtr<T>& out, const util::String& name,
                   std::function<std::type_identity_t<T>()> getter,
                   std::function<void(const std::type_identity_t<T>&)> setter,
                   const std::type_identity_t<T>& def) {
        out = AttribGetSetPtr<T>(
            new AttribGetSet<T>(name, std::move(getter), std::move(setter), def));
        AddVariable(out);
    }
    // Native value behind two members of this object, which must be a C:
    // AddAttrib(m_size, "size", &Window::GetSize, &Window::SetSize, Vec2(640, 480)).
    template <class T, class C, class Getter, class Setter>
    void AddAttrib(AttribGetSetPtr<T>& out, const util::String& name, Getter C::*getter,
                   Setter C::*setter, const std::type_identity_t<T>& def) {
        C* ptr = dynamic_cast<C*>(this);
        CODE_ASSERT(ptr);
        AddAttrib(
            out, name, std::function<T()>([ptr, getter]() -> T { return (ptr->*getter)(); }),
            std::function<void(const T&)>([ptr, setter](const T& value) { (ptr->*setter)(value); }),
            def);
    }
    // Native value in a variable elsewhere that other code changes without telling; the
    // variable must outlive the attribute. Its present value is the default.
    template <class T>
    void AddAttrib(AttribRemotePokerPtr<T>& out, const util::String& name, T* remote) {
        out = AttribRemotePokerPtr<T>(new AttribRemotePoker<T>(name, remote));
        AddVariable(out);
    }

    // The reflected name.
    util::String ToString() const override;

protected:
    // For a name that is costly to make and seldom read: the name is made by
    // MakeReflectedName on first use.
    void DeferReflectedName() { m_namePending = true; }
    virtual util::String MakeReflectedName() const;

private:
    void ResolveReflectedName() const;
    void AddConstant(const util::String& name, ObjectPtr value);
    void SetConstantObject(const util::String& name, ObjectPtr value);

    template <class R>
    static ObjectPtr ToObject(R&& result) {
        if constexpr (std::is_convertible_v<R, ObjectPtr>) {
            return ObjectPtr(std::forward<R>(result));
        } else {
            return ValueToObject(std::forward<R>(result));
        }
    }

    template <class F>
    static ObjectPtr MakeCommand(F function) {
        if constexpr (std::is_invocable_v<F&>) {
            if constexpr (std::is_void_v<std::invoke_result_t<F&>>) {
                return ObjectPtr(new IntrinsicCmd([f = std::move(function)]() mutable -> ObjectPtr {
                    f();
                    return ObjectPtr(new Void());
                }));
            } else {
                return ObjectPtr(new IntrinsicCmd(std::move(function)));
            }
        } else if constexpr (std::is_invocable_v<F&, ObjectPtr>) {
            if constexpr (std::is_void_v<std::invoke_result_t<F&, ObjectPtr>>) {
                return ObjectPtr(
                    new IntrinsicCmd1([f = std::move(function)](ObjectPtr a) mutable -> ObjectPtr {
                        f(std::move(a));
                        return ObjectPtr(new Void());
                    }));
            } else {
                return ObjectPtr(new IntrinsicCmd1(std::move(function)));
            }
        } else {
            static_assert(std::is_invocable_v<F&, ObjectPtr, ObjectPtr>,
                          "a command takes no, one or two ObjectPtr arguments");
            if constexpr (std::is_void_v<std::invoke_result_t<F&, ObjectPtr, ObjectPtr>>) {
                return ObjectPtr(new IntrinsicCmd2(
                    [f = std::move(function)](ObjectPtr a, ObjectPtr b) mutable -> ObjectPtr {
                        f(std::move(a), std::move(b));
                        return ObjectPtr(new Void());
                    }));
            } else {
                return ObjectPtr(new IntrinsicCmd2(std::move(function)));
            }
        }
    }

    mutable util::String m_reflectedName;
    mutable bool m_namePending = false;
};

}  // namespace script
