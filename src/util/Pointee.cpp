#include "util/Pointee.h"

#include <cstdlib>
#include <new>
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

// Handles are made for every object, down to each script value, and freed by the sweep:
// they come from blocks of their own with a free list threaded through the unused ones,
// so neither costs a trip to the general allocator.
class HandlePool {
public:
    PointeeHandle* Allocate() {
        if (!m_free) {
            AddBlock();
        }
        PointeeHandle* handle = m_free;
        m_free = reinterpret_cast<PointeeHandle*>(handle->pointee);
        return handle;
    }

    void Free(PointeeHandle* handle) {
        handle->pointee = reinterpret_cast<Pointee*>(m_free);
        m_free = handle;
    }

private:
    static constexpr size_t kBlockSize = 4096;

    void AddBlock() {
        PointeeHandle* block =
            static_cast<PointeeHandle*>(std::malloc(kBlockSize * sizeof(PointeeHandle)));
        if (!block) {
            throw std::bad_alloc();
        }
        m_blocks.push_back(block);  // kept reachable: blocks live as long as the process
        for (size_t i = 0; i < kBlockSize; ++i) {
            Free(&block[i]);
        }
    }

    PointeeHandle* m_free = nullptr;
    VectorPOD<PointeeHandle*> m_blocks;
};

constinit Immortal<HandlePool> s_handlePool;

HandlePool& Handles() {
    return s_handlePool.value;
}

}  // namespace

Pointee::Pointee() : m_handle(Handles().Allocate()) {
    *m_handle = PointeeHandle{this, 0, 0};
    HandleRegistry& registry = Registry();
    try {
        registry.handles.push_back(m_handle);
    } catch (...) {
        Handles().Free(m_handle);
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
            Handles().Free(handle);
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
