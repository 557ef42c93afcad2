#pragma once

namespace util {

// Asks for the first three cache lines of an object that will be read soon: for walks over
// many objects that lie scattered in memory, such as all attributes of a scene.
inline void PrefetchObject(const void* object) {
    const char* bytes = static_cast<const char*>(object);
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + 64);
    __builtin_prefetch(bytes + 128);
}

}  // namespace util
