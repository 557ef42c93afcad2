#include "script/Attributes.h"

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
    Variable::SetValue(std::move(value));
    Calc();
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
