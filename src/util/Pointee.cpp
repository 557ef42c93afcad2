#include "util/Pointee.h"

#include <stdexcept>

#include "util/Exception.h"
#include "util/VectorPOD.h"

namespace util {
namespace {

// Never destroyed: objects may still be made and released during static destruction.
template <class T>
union Immortal {
    T value;
    constexpr Immortal() : value() {}
    ~Immortal() {}
};

struct HandleRegistry {
    VectorPOD<PointeeHandle*> handles;
    size_t sweepStart = 0;
    size_t lastFullSweepSize = 0;
    size_t liveObjects = 0;
};

constinit Immortal<HandleRegistry> s_registry;

HandleRegistry& Registry() {
    return s_registry.value;
}

}  // namespace

Pointee::Pointee() : m_handle(new PointeeHandle{this, 0, 0}) {
    HandleRegistry& registry = Registry();
    try {
        registry.handles.push_back(m_handle);
    } catch (...) {
        delete m_handle;
        throw;
    }
    ++registry.liveObjects;
}

Pointee::~Pointee() noexcept(false) {
    --Registry().liveObjects;
}

void SweepHandles() {
    HandleRegistry& registry = Registry();
    VectorPOD<PointeeHandle*>& handles = registry.handles;
    const size_t start = 2 * registry.lastFullSweepSize < handles.size() ? 0 : registry.sweepStart;
    size_t i = start;
    while (i < handles.size()) {
        PointeeHandle* handle = handles[i];
        if (handle->strong == 0 && handle->weak == 0) {
            delete handle;
            handles.erase_unordered(i);
        } else {
            ++i;
        }
    }
    registry.sweepStart = handles.size();
    if (start == 0) {
        registry.lastFullSweepSize = handles.size();
    }
}

size_t LivePointeeCount() {
    return Registry().liveObjects;
}
size_t PointeeHandleCount() {
    return Registry().handles.size();
}
size_t PointeeSweepStart() {
    return Registry().sweepStart;
}
size_t PointeeLastFullSweepSize() {
    return Registry().lastFullSweepSize;
}

namespace pointee_detail {

void ThrowNullDereference(const char* what, const char* function) {
    Throw<std::runtime_error>(what, MakeLocation(__FILE__, __LINE__, function));
}

}  // namespace pointee_detail
}  // namespace util
static_assert(sizeof(util::SharedPtr<util::Pointee>) == sizeof(void*),
              "a strong pointer is one word");
