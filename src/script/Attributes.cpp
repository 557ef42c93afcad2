#include "script/Attributes.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "logging/Log.h"
#include "util/Prefetch.h"

#include "util/Profiler.h"
#include "util/VectorPOD.h"

namespace script {

AbstractAttrib::AbstractAttrib(const util::String& name, ObjectPtr value)
    : Variable(name, std::move(value), false) {}

AbstractAttrib::~AbstractAttrib() {
    ++s_destroyed;
}

void AbstractAttrib::SetValue(ObjectPtr value) {
    // The plain value already applied, written again (a restore writes them by the ten
    // thousand): nothing would change on either side, and a plain value has no use for
    // the owner that the write would give it again.
    if (Holds(value)) {
        return;
    }
    ObjectPtr old = GetValue();
    Variable::SetValue(std::move(value));
    try {
        Calc();
    } catch (const RefusedValueException&) {
        // The native side never took the value; the script side goes back to what it
        // stands for.
        Variable::SetValue(std::move(old));
        throw;
    }
}

namespace {

util::String Number(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(value));
    return text;
}

}  // namespace

const NumberRange& NumberRange::Finite() {
    static const NumberRange range(-std::numeric_limits<float>::max(), Closed,
                                   std::numeric_limits<float>::max(), Closed);
    return range;
}

const NumberRange& NumberRange::AnyNumber() {
    static const NumberRange range(-std::numeric_limits<float>::infinity(), Closed,
                                   std::numeric_limits<float>::infinity(), Closed);
    return range;
}

const NumberRange& NumberRange::Positive() {
    static const NumberRange range(0, Open, std::numeric_limits<float>::max(), Closed);
    return range;
}

bool NumberRange::Contains(float value) const {
    return (m_lowClosed ? value >= m_low : value > m_low) &&
           (m_highClosed ? value <= m_high : value < m_high);
}

util::String NumberRange::Refusal(const float& value) const {
    if (Contains(value)) {
        return util::String();
    }
    const float largest = std::numeric_limits<float>::max();
    const bool anyLow = m_lowClosed && m_low <= -largest;
    const bool anyHigh = m_highClosed && m_high >= largest;
    if (anyLow && anyHigh) {
        return m_high == largest ? "must be a finite number" : "must be a number";
    }
    const util::String low = (m_lowClosed ? "at least " : "above ") + Number(m_low);
    const util::String high = (m_highClosed ? "at most " : "below ") + Number(m_high);
    if (anyHigh) {
        return "must be " + low + (m_high == largest ? " and finite" : "");
    }
    if (anyLow) {
        return "must be " + high + (m_low == -largest ? " and finite" : "");
    }
    return "must be " + low + " and " + high;
}

util::String IntRange::Refusal(const int& value) const {
    if (value >= m_low && value <= m_high) {
        return util::String();
    }
    return "must be at least " + std::to_string(m_low) + " and at most " + std::to_string(m_high);
}

const FiniteVector& FiniteVector::Get() {
    static const FiniteVector limits;
    return limits;
}

util::String FiniteVector::Refusal(const math::TVector2<float>& value) const {
    return std::isfinite(value.x) && std::isfinite(value.y) ? util::String()
                                                            : "must have finite components";
}

// Walks a copy of plain pointers, so that a formula or callback may create attributes
// during the pass. One destroyed during the pass is skipped.
// A formula that fails (it stopped giving the right type, or reads a name that is gone)
// costs only its own attribute: the others are still recalculated, and the program goes
// on. The warning repeats only when the failure comes back after a pause.
void AbstractAttrib::CalcGuarded(AbstractAttrib& attribute) {
    try {
        attribute.Calc();
    } catch (const std::exception& e) {
        Log(logging::Warning,
            "Failed to update " + attribute.GetName() + ": " + util::String(e.what()));
    }
}

void AbstractAttrib::CalcAll() {
    VORRA_PROFILE("AbstractAttrib::CalcAll");
    const util::VectorPOD<AbstractAttrib*> attributes = Snapshot();
    VORRA_PROFILE("AbstractAttrib::CalcAll-Loop");
    const auto& live = Instances();
    // Until a formula or callback destroys an attribute, every pointer of the copy is live
    // and needs no look-up.
    const uint64_t destroyedBefore = s_destroyed;
    // The attributes lie far apart in memory: each is fetched a few entries ahead.
    util::VisitPrefetched(
        attributes, 8, [](AbstractAttrib* attribute) { return attribute; },
        [&](AbstractAttrib* attribute) {
            if (s_destroyed == destroyedBefore || live.Contains(attribute)) {
                CalcGuarded(*attribute);
            }
        });
}

template class TAttrib<bool>;
template class TAttrib<float>;
template class TAttrib<int>;
template class TAttrib<unsigned int>;
template class TAttrib<util::String>;
template class TAttrib<math::TVector2<float>>;
template class TAttrib<math::TVector3<float>>;
template class TAttrib<math::TVector4<float>>;
template class TAttrib<math::TVector2<int>>;

template class Attrib<bool>;
template class Attrib<float>;
template class Attrib<int>;
template class Attrib<unsigned int>;
template class Attrib<util::String>;
template class Attrib<math::TVector2<float>>;
template class Attrib<math::TVector3<float>>;
template class Attrib<math::TVector4<float>>;

template class AttribGetSet<bool>;
template class AttribGetSet<float>;
template class AttribGetSet<math::TVector2<float>>;

template class AttribRemotePoker<bool>;
template class AttribRemotePoker<int>;
template class AttribRemotePoker<math::TVector2<int>>;

}  // namespace script
