#pragma once

#include <cstddef>

// Set when the address sanitizer is in the build: gcc names it, clang tells it by feature.
#if defined(__SANITIZE_ADDRESS__)
#define VORRA_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VORRA_ADDRESS_SANITIZER 1
#endif
#endif

namespace util {

// Memory for the many small reference-counted objects of the program (script trees and
// values, attributes, callbacks, entities). Sizes are rounded up to classes of 16 bytes;
// each class keeps a free list carved from large blocks, so making and freeing objects by
// the hundred thousand, as a scene load does, costs a few instructions each and never
// fragments the general heap. Freed memory returns to its list, not to the system.
// One thread only, as the reference counts are. Under the address sanitizer every request
// goes to the general allocator, so that use after free is still caught.
class SmallObjectPool {
public:
    static void* Allocate(size_t size);
    static void Free(void* memory, size_t size) noexcept;
    // What the live objects of the pool take, by their size classes: with the general
    // heap's own figure, the memory a structure of many small objects holds.
    static size_t GetBytesInUse();
    // The blocks taken from the general heap for the lists, in use or not.
    static size_t GetBytesReserved();

    static constexpr size_t kMaxSize = 512;
};

// A standard allocator over the pool, for the small nodes and arrays of the containers
// that every script object and hash bucket carries. Larger requests pass through.
template <class T>
class PoolAllocator {
public:
    using value_type = T;

    PoolAllocator() noexcept = default;
    template <class U>
    PoolAllocator(const PoolAllocator<U>&) noexcept {}

    T* allocate(size_t n) { return static_cast<T*>(SmallObjectPool::Allocate(n * sizeof(T))); }
    void deallocate(T* p, size_t n) noexcept { SmallObjectPool::Free(p, n * sizeof(T)); }

    template <class U>
    bool operator==(const PoolAllocator<U>&) const noexcept {
        return true;
    }
};

}  // namespace util
