#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "math/Vector2.h"
#include "math/Vector3.h"
#include "math/Vector4.h"
#include "script/Exceptions.h"
#include "script/Forward.h"
#include "script/Objects.h"
#include "script/ValueConversions.h"
#include "script/Variable.h"
#include "util/Assert.h"
#include "util/CallbackSet.h"
#include "util/ClassTracker.h"

namespace script {

// The values an attribute takes. A value outside them is refused: the assignment that
// brings it fails with a message naming the limit, a formula that gives it fails that
// frame's update, and the attribute keeps the value it had. Limits are plain objects that
// live as long as the program; an attribute points to them.
template <class T>
class ValueLimits {
public:
    virtual ~ValueLimits() = default;
    // Empty for a value within the limits; otherwise what a value must be ("above 0").
    virtual util::String Refusal(const T& value) const = 0;
};

// Numbers from low to high, each end open or closed; NaN is never within. An end at
// infinity may be closed, so that infinity itself is allowed.
class NumberRange : public ValueLimits<float> {
public:
    enum End { Open, Closed };
    constexpr NumberRange(float low, End lowEnd, float high, End highEnd)
        : m_low(low),
          m_high(high),
          m_lowClosed(lowEnd == Closed),
          m_highClosed(highEnd == Closed) {}
    // Any number but infinity and NaN.
    static const NumberRange& Finite();
    // Any number but NaN, infinities included.
    static const NumberRange& AnyNumber();
    // Above 0 and finite.
    static const NumberRange& Positive();

    util::String Refusal(const float& value) const override;
    bool Contains(float value) const;

private:
    float m_low;
    float m_high;
    bool m_lowClosed;
    bool m_highClosed;
};

// Whole numbers from low to high, both included.
class IntRange : public ValueLimits<int> {
public:
    constexpr IntRange(int low, int high) : m_low(low), m_high(high) {}
    util::String Refusal(const int& value) const override;

private:
    int m_low;
    int m_high;
};

// Vectors with finite components.
class FiniteVector : public ValueLimits<math::TVector2<float>> {
public:
    static const FiniteVector& Get();
    util::String Refusal(const math::TVector2<float>& value) const override;
};

// A typed member of a reflected object: native code reads a plain value, a script sees a
// variable. The script side may hold a function of no arguments instead of a value; it
// is then recalculated every frame and the native value follows it.
class AbstractAttrib : public Variable, public util::ClassTracker<AbstractAttrib> {
public:
    AbstractAttrib(const util::String& name, ObjectPtr value);
    ~AbstractAttrib() override;

    // Replaces the script value and recalculates at once, so that a wrong type fails in
    // the assignment that caused it. A value outside the attribute's limits is refused
    // whole: the old script value comes back, and the failure goes on to the caller.
    void SetValue(ObjectPtr value) override;
    bool IsAttribute() const override { return true; }

    virtual bool IsDefault() const = 0;
    // Back to the value the attribute was made with; a formula is replaced.
    virtual void ResetToDefault() = 0;
    // Brings the native value up to date with the script value.
    virtual void Calc() = 0;

    // Recalculates every attribute; once a frame. A failing attribute is logged and
    // skipped, so one broken formula neither stops the others nor the program.
    static void CalcAll();

    // What the latest Calc produced, after automatic calling.
    const ObjectPtr& GetLastResult() const { return m_lastResult; }
    // The attribute holds this very plain value, and the native side stands for it.
    bool Holds(const ObjectPtr& value) const { return value == GetValue() && IsApplied(); }

protected:
    // A plain value that was applied and has stood since, over a native value nobody
    // changed since: converting it again would give what the native side holds. Every
    // frame recalculates every attribute, so this is the common case by far. The value
    // object cannot have been replaced by another at the same address, since the last
    // result keeps it alive, and values never change once made.
    bool IsApplied() const { return m_applied && GetValue().Get() == m_lastResult.Get(); }
    void SetLastResult(const ObjectPtr& result) { m_lastResult = result; }
    // After a Calc has set the native value from its result. A formula gives a new result
    // each time and must run again; so must a value whose native side lives outside,
    // where it may change without telling.
    void MarkApplied(const ObjectPtr& result) { m_applied = m_keepsNative && result == GetValue(); }
    // For an attribute that holds its native value itself and changes it only in Set:
    // the native side then changes only in ways the attribute sees.
    void KeepsNative() { m_keepsNative = true; }
    // The native value changed by another way than the script value: the next Calc must
    // bring it back.
    void NativeChanged() { m_applied = false; }

private:
    static void CalcGuarded(AbstractAttrib& attribute);

    ObjectPtr m_lastResult;
    bool m_keepsNative = false;
    bool m_applied = false;

    // How many attributes have died, so that a pass notices deaths during it.
    static inline uint64_t s_destroyed = 0;
};

// The interface by type.
template <class T>
class TAttrib : public AbstractAttrib {
public:
    TAttrib(const util::String& name, const T& def)
        : AbstractAttrib(name, ValueToObject(def)), m_default(def) {}

    bool IsDefault() const override { return Get() == m_default; }
    void ResetToDefault() override { SetNative(m_default); }

    void Calc() override {
        if (IsApplied()) {
            return;
        }
        NativeChanged();
        const ObjectPtr result = CallIfNoArgs(GetValue());
        SetLastResult(result);
        const T value = ObjectToValue<T>(result);
        CheckLimits(value);
        Set(value);
        MarkApplied(result);
    }

    // From now on values outside these limits are refused.
    void SetLimits(const ValueLimits<T>& limits) { m_limits = &limits; }
    // Throws RefusedValueException, naming the limit and the value kept, for a value
    // outside the limits.
    void CheckLimits(const T& value) const {
        if (m_limits) {
            const util::String refusal = m_limits->Refusal(value);
            if (!refusal.empty()) {
                Refuse(refusal);
            }
        }
    }

    virtual T Get() const = 0;
    // Fires the on-change callbacks if the value differs; equality is exact.
    virtual void Set(const T& value) = 0;

    // A write from native code. The script side must follow, or the next Calc would undo
    // the change; a formula a script put there is replaced.
    void SetNative(const T& value) {
        // The plain value the script side holds stands for this one already: a restore
        // writes every colour back as it was.
        if (IsApplied() && value == Get()) {
            return;
        }
        CheckLimits(value);
        Set(value);
        SetValue(ValueToObject(Get()));
    }

    // Called after the native value changed.
    util::CallbackSet& GetOnChange() { return m_onChange; }
    const T& GetDefault() const { return m_default; }

protected:
    void CallOnChange() const { m_onChange.CallAll(); }

private:
    [[noreturn]] void Refuse(const util::String& refusal) const {
        throw RefusedValueException(GetName() + " " + refusal + "; it stays " +
                                    ValueToObject(Get())->ToString());
    }

    util::CallbackSet m_onChange;
    T m_default;
    const ValueLimits<T>* m_limits = nullptr;
};

// The attribute holds the native value itself.
template <class T>
class Attrib : public TAttrib<T> {
public:
    Attrib(const util::String& name, const T& def) : TAttrib<T>(name, def), m_value(def) {
        this->KeepsNative();
    }

    T Get() const override { return m_value; }
    void Set(const T& value) override {
        if (value == m_value) {
            return;
        }
        m_value = value;
        this->NativeChanged();
        this->CallOnChange();
    }

private:
    T m_value;
};

// The native value lives behind two function objects. The setter receives the default at
// construction, without callbacks.
template <class T>
class AttribGetSet : public TAttrib<T> {
public:
    using Getter = std::function<T()>;
    using Setter = std::function<void(const T&)>;

    AttribGetSet(const util::String& name, Getter getter, Setter setter, const T& def)
        : TAttrib<T>(name, def), m_getter(std::move(getter)), m_setter(std::move(setter)) {
        m_setter(def);
    }

    T Get() const override { return m_getter(); }
    void Set(const T& value) override {
        if (value == Get()) {
            return;
        }
        m_setter(value);
        this->CallOnChange();
    }

private:
    Getter m_getter;
    Setter m_setter;
};

// The native value lives in a variable elsewhere that other code changes without telling
// (a window size). Calc notices such a change and makes the script side follow, without
// a callback. The variable must outlive the attribute.
template <class T>
class AttribRemotePoker : public TAttrib<T> {
public:
    AttribRemotePoker(const util::String& name, T* remote)
        : TAttrib<T>(name, *NotNull(remote)), m_remote(remote), m_lastSeen(*remote) {}

    T Get() const override { return *m_remote; }
    void Set(const T& value) override {
        if (value == Get()) {
            return;
        }
        *m_remote = value;
        m_lastSeen = value;
        this->CallOnChange();
    }

    void Calc() override {
        const T remote = *m_remote;
        if (remote == m_lastSeen) {
            TAttrib<T>::Calc();
            return;
        }
        m_lastSeen = remote;
        Set(remote);
        this->SetValue(ValueToObject(Get()));
    }

private:
    static T* NotNull(T* remote) {
        CODE_ASSERT(remote);
        return remote;
    }

    T* m_remote;
    T m_lastSeen;
};

extern template class TAttrib<bool>;
extern template class TAttrib<float>;
extern template class TAttrib<int>;
extern template class TAttrib<unsigned int>;
extern template class TAttrib<util::String>;
extern template class TAttrib<math::TVector2<float>>;
extern template class TAttrib<math::TVector3<float>>;
extern template class TAttrib<math::TVector4<float>>;
extern template class TAttrib<math::TVector2<int>>;

extern template class Attrib<bool>;
extern template class Attrib<float>;
extern template class Attrib<int>;
extern template class Attrib<unsigned int>;
extern template class Attrib<util::String>;
extern template class Attrib<math::TVector2<float>>;
extern template class Attrib<math::TVector3<float>>;
extern template class Attrib<math::TVector4<float>>;

extern template class AttribGetSet<bool>;
extern template class AttribGetSet<float>;
extern template class AttribGetSet<math::TVector2<float>>;

extern template class AttribRemotePoker<bool>;
extern template class AttribRemotePoker<int>;
extern template class AttribRemotePoker<math::TVector2<int>>;

}  // namespace script
