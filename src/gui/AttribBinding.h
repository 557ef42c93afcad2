#pragma once

#include <exception>
#include <vector>

#include "logging/Log.h"
#include "script/Attributes.h"

namespace gui {

// The attributes of the same name on several objects, that one control shows and writes.
// They are watched, not held: one that died with its object is skipped.
template <class T>
class AttribBinding {
public:
    using WeakAttrib = util::WeakPtr<script::TAttrib<T>>;

    explicit AttribBinding(std::vector<WeakAttrib> attribs = {}) : m_attribs(std::move(attribs)) {}

    const std::vector<WeakAttrib>& GetAttribs() const { return m_attribs; }
    void SetAttribs(std::vector<WeakAttrib> attribs) { m_attribs = std::move(attribs); }

    bool HasLive() const {
        for (const WeakAttrib& attrib : m_attribs) {
            if (!attrib.Expired()) {
                return true;
            }
        }
        return false;
    }

    // The first live attribute's value; false when none lives.
    bool ReadFirst(T& value) const {
        for (const WeakAttrib& attrib : m_attribs) {
            if (const util::LockPtr<script::TAttrib<T>> live(attrib); live) {
                value = live->Get();
                return true;
            }
        }
        return false;
    }

    // The value to every live attribute. One that refuses it must not keep it from the
    // others: its refusal is logged.
    void WriteAll(const T& value) const {
        // A copy: an attribute's callbacks may rebind the control.
        const std::vector<WeakAttrib> attribs = m_attribs;
        for (const WeakAttrib& attrib : attribs) {
            const util::LockPtr<script::TAttrib<T>> live(attrib);
            if (!live) {
                continue;
            }
            try {
                live->SetNative(value);
            } catch (const std::exception& e) {
                Log(logging::Warning, e.what());
            }
        }
    }

private:
    std::vector<WeakAttrib> m_attribs;
};

}  // namespace gui
