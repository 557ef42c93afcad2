#pragma once

#include <cstddef>
#include <new>

namespace util {

// Recycles the memory of one class through a free list: short-lived objects made and freed
// by the thousand each frame (script values) skip the general allocator. Memory comes back
// to the list, never to the system, so the list is as long as the most ever alive at once.
// Under the address sanitizer it steps aside, so that use after free is still caught.
template <class T>
class Recycler {
public:
    static void* Allocate(size_t size) {
#if !defined(__SANITIZE_ADDRESS__)
        if (size == sizeof(T) && s_free) {
            Node* node = s_free;
            s_free = node->next;
            return node;
        }
#endif
        return ::operator new(size);
    }

    static void Free(void* memory, size_t size) {
#if !defined(__SANITIZE_ADDRESS__)
        if (size == sizeof(T)) {
            Node* node = static_cast<Node*>(memory);
            node->next = s_free;
            s_free = node;
            return;
        }
#endif
        ::operator delete(memory, size);
    }

private:
    struct Node {
        Node* next;
    };
    static_assert(sizeof(T) >= sizeof(Node), "a recycled object holds the list's link");

    static inline Node* s_free = nullptr;
};

}  // namespace util
