#pragma once

#include <cstddef>

namespace util {

// Asks for the first three cache lines of an object that will be read soon: for walks over
// many objects that lie scattered in memory, such as all attributes of a scene.
inline void PrefetchObject(const void* object) {
    const char* bytes = static_cast<const char*>(object);
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + 64);
    __builtin_prefetch(bytes + 128);
}

// Asks for the one or two cache lines of a record of at most 64 bytes that may lie across
// a line's end, such as a packed row in an array, or the part of an object past its start
// that a loop reads.
inline void PrefetchSpan(const void* first, size_t size) {
    const char* bytes = static_cast<const char*>(first);
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + size - 1);
}

// Visits each item in order, fetching the object of the item a few places ahead, so that
// a walk over objects scattered in memory waits for few of them.
template <class Items, class ObjectOf, class Visit>
void VisitPrefetched(const Items& items, size_t ahead, ObjectOf objectOf, Visit visit) {
    const size_t count = items.size();
    for (size_t i = 0; i < count; ++i) {
        if (i + ahead < count) {
            PrefetchObject(objectOf(items[i + ahead]));
        }
        visit(items[i]);
    }
}

}  // namespace util
