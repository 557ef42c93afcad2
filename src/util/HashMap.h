#pragma once

#include <utility>

#include "util/HashTable.h"

namespace util {

struct HashMapKey {
    template <class Pair>
    const typename Pair::first_type& operator()(const Pair& entry) const {
        return entry.first;
    }
};

template <class K, class V, class Hasher = DefaultHasher>
class HashMap : public HashTable<std::pair<K, V>, K, HashMapKey, Hasher> {
    using Base = HashTable<std::pair<K, V>, K, HashMapKey, Hasher>;

public:
    // Lookup that inserts a default value for a missing key.
    V& operator[](const K& key) {
        auto it = Base::find(key);
        if (it == Base::end()) {
            it = Base::insert(std::pair<K, V>(key, V())).first;
        }
        return it->second;
    }
};

}  // namespace util
