#pragma once

#include "util/HashTable.h"

namespace util {

struct HashSetKey {
    template <class T>
    const T& operator()(const T& value) const {
        return value;
    }
};

template <class T, class Hasher = DefaultHasher>
class HashSet : public HashTable<T, T, HashSetKey, Hasher> {};

}  // namespace util
