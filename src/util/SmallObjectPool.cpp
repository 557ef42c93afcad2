#include "util/SmallObjectPool.h"

#include <cstdlib>
#include <new>

namespace util {
namespace {

constexpr size_t kGranule = 16;
constexpr size_t kClasses = SmallObjectPool::kMaxSize / kGranule;
constexpr size_t kBlockBytes = 64 * 1024;

struct FreeNode {
    FreeNode* next;
};

// Plain data with constant initialisation: usable before and after static construction.
struct PoolState {
    FreeNode* free[kClasses];
    size_t bytesInUse;
    size_t bytesReserved;
};

constinit PoolState s_pool{};

[[maybe_unused]] size_t ClassOf(size_t size) {
    return (size + kGranule - 1) / kGranule - 1;
}

// Cuts a fresh block into objects of one class and threads them onto its list. Blocks
// are never released: the lists hold what the peak of live objects needed.
[[maybe_unused]] void Refill(size_t sizeClass) {
    const size_t objectBytes = (sizeClass + 1) * kGranule;
    char* block = static_cast<char*>(std::malloc(kBlockBytes));
    if (!block) {
        throw std::bad_alloc();
    }
    s_pool.bytesReserved += kBlockBytes;
    const size_t count = kBlockBytes / objectBytes;
    FreeNode* head = s_pool.free[sizeClass];
    for (size_t i = count; i-- > 0;) {
        FreeNode* node = reinterpret_cast<FreeNode*>(block + i * objectBytes);
        node->next = head;
        head = node;
    }
    s_pool.free[sizeClass] = head;
}

}  // namespace

void* SmallObjectPool::Allocate(size_t size) {
#if !defined(VORRA_ADDRESS_SANITIZER)
    if (size != 0 && size <= kMaxSize) {
        const size_t sizeClass = ClassOf(size);
        if (!s_pool.free[sizeClass]) {
            Refill(sizeClass);
        }
        FreeNode* node = s_pool.free[sizeClass];
        s_pool.free[sizeClass] = node->next;
        // Freed objects lie scattered once a scene has died: the next request of this
        // class would wait for its node to come from memory. It is on its way instead.
        __builtin_prefetch(node->next, 1);
        s_pool.bytesInUse += (sizeClass + 1) * kGranule;
        return node;
    }
#endif
    return ::operator new(size);
}

void SmallObjectPool::Free(void* memory, size_t size) noexcept {
    if (!memory) {
        return;
    }
#if !defined(VORRA_ADDRESS_SANITIZER)
    if (size != 0 && size <= kMaxSize) {
        const size_t sizeClass = ClassOf(size);
        FreeNode* node = static_cast<FreeNode*>(memory);
        node->next = s_pool.free[sizeClass];
        s_pool.free[sizeClass] = node;
        s_pool.bytesInUse -= (sizeClass + 1) * kGranule;
        return;
    }
#endif
    ::operator delete(memory, size);
}

size_t SmallObjectPool::GetBytesInUse() {
    return s_pool.bytesInUse;
}

size_t SmallObjectPool::GetBytesReserved() {
    return s_pool.bytesReserved;
}

}  // namespace util
