#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "util/Assert.h"
#include "util/Hasher.h"
#include "util/SmallObjectPool.h"

namespace util {

// Separate chaining with vector buckets and prime sizes, shared by HashSet and HashMap.
// Iteration runs over buckets in ascending index, skipping empty ones, so its order is a
// function of hashes and history and is never meaningful: sort where order matters.
template <class Entry, class Key, class KeyOf, class Hasher>
class HashTable {
public:
    // Buckets are small and made by the thousand: their arrays come from the pool.
    using Bucket = std::vector<Entry, PoolAllocator<Entry>>;
    using Table = std::vector<Bucket>;

    template <class TableRef, class EntryRef>
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = std::remove_reference_t<EntryRef>*;
        using reference = EntryRef;

        Iterator(TableRef& table, size_t bucket, size_t index)
            : m_table(&table), m_bucket(bucket), m_index(index) {
            SkipEmpty();
        }
        // A mutable iterator converts to a constant one.
        template <class T2, class E2>
        Iterator(const Iterator<T2, E2>& other)
            : m_table(other.m_table), m_bucket(other.m_bucket), m_index(other.m_index) {}

        reference operator*() const { return (*m_table)[m_bucket][m_index]; }
        pointer operator->() const { return &(*m_table)[m_bucket][m_index]; }
        Iterator& operator++() {
            ++m_index;
            SkipEmpty();
            return *this;
        }
        Iterator operator++(int) {
            Iterator old = *this;
            ++*this;
            return old;
        }

        friend bool operator==(const Iterator& lhs, const Iterator& rhs) {
            if (lhs.m_table != rhs.m_table) {
                ::AssertionFailed("&lhs.m_table == &rhs.m_table", true, true, __PRETTY_FUNCTION__,
                                  __FILE__, __LINE__);
            }
            return lhs.m_bucket == rhs.m_bucket && lhs.m_index == rhs.m_index;
        }

        size_t BucketIndex() const { return m_bucket; }
        size_t IndexInBucket() const { return m_index; }

    private:
        template <class, class>
        friend class Iterator;
        friend class HashTable;

        // Moves forward to a valid element, or to the end (bucket count, 0).
        void SkipEmpty() {
            while (m_bucket < m_table->size() && m_index >= (*m_table)[m_bucket].size()) {
                ++m_bucket;
                m_index = 0;
            }
        }

        TableRef* m_table;
        size_t m_bucket;
        size_t m_index;
    };

    using iterator = Iterator<Table, Entry&>;
    using const_iterator = Iterator<const Table, const Entry&>;

    HashTable() : m_table(3) {}

    iterator begin() { return iterator(m_table, 0, 0); }
    iterator end() { return iterator(m_table, m_table.size(), 0); }
    const_iterator begin() const { return const_iterator(m_table, 0, 0); }
    const_iterator end() const { return const_iterator(m_table, m_table.size(), 0); }

    size_t size() const { return m_count; }
    bool empty() const { return m_count == 0; }
    size_t BucketCount() const { return m_table.size(); }

    void clear() {
        for (Bucket& bucket : m_table) {
            bucket.clear();
        }
        m_count = 0;
    }

    // An empty table answers without hashing: many tables stay empty for good.
    bool Contains(const Key& key) const { return m_count != 0 && Locate(key).second != kNotFound; }

    iterator find(const Key& key) {
        const auto [bucket, index] = Locate(key);
        return index == kNotFound ? end() : iterator(m_table, bucket, index);
    }
    const_iterator find(const Key& key) const {
        const auto [bucket, index] = Locate(key);
        return index == kNotFound ? end() : const_iterator(m_table, bucket, index);
    }

    // Buckets for n entries at once, so that filling the table does not grow it step by
    // step.
    void reserve(size_t n) {
        size_t buckets = m_table.size();
        while (buckets < n) {
            buckets = NextBucketCount(buckets);
        }
        if (buckets != m_table.size()) {
            Rehash(buckets);
        }
    }

    // An equal key already present stays as it is; the bool says whether the entry is new.
    std::pair<iterator, bool> insert(const Entry& entry) {
        const size_t n = m_table.size();
        if (n <= m_count && n < 2 * n) {
            Grow();
        }
        const Key& key = KeyOf()(entry);
        const auto [bucketIndex, index] = Locate(key);
        if (index != kNotFound) {
            return {iterator(m_table, bucketIndex, index), false};
        }
        Bucket& bucket = m_table[bucketIndex];
        bucket.push_back(entry);
        ++m_count;
        return {iterator(m_table, bucketIndex, bucket.size() - 1), true};
    }

    // The bucket's last element moves into the gap. Returns the number removed.
    size_t erase(const Key& key) {
        const auto [bucket, index] = Locate(key);
        if (index == kNotFound) {
            return 0;
        }
        EraseAt(bucket, index);
        return 1;
    }

    // Returns the iterator to the element that now follows.
    iterator erase(const_iterator position) {
        const size_t bucket = position.m_bucket;
        const size_t index = position.m_index;
        EraseAt(bucket, index);
        return iterator(m_table, bucket, index);
    }

    // The bucket sizes from 3: 7, 17, 37, 79, ... (primes past 8).
    static size_t NextBucketCount(size_t n) {
        size_t m = 2 * n;
        if (m < 3) {
            return 3;
        }
        return OddPrimeFrom(m + 1);
    }

    // The first prime from an odd start of at least 3; values of 8 or less are taken as
    // they are.
    static size_t OddPrimeFrom(size_t m) {
        while (m > 8 && HasOddDivisor(m)) {
            m += 2;
        }
        return m;
    }

protected:
    static constexpr size_t kNotFound = static_cast<size_t>(-1);

    std::pair<size_t, size_t> Locate(const Key& key) const {
        const size_t bucketIndex = Hasher()(key) % m_table.size();
        const Bucket& bucket = m_table[bucketIndex];
        for (size_t i = 0; i < bucket.size(); ++i) {
            if (KeyOf()(bucket[i]) == key) {
                return {bucketIndex, i};
            }
        }
        return {bucketIndex, kNotFound};
    }

private:
    static bool HasOddDivisor(size_t m) {
        if (m % 3 == 0) {
            return true;
        }
        for (size_t d = 5; d * d <= m; d += 2) {
            if (m % d == 0) {
                return true;
            }
        }
        return false;
    }

    void Grow() { Rehash(NextBucketCount(m_table.size())); }

    void Rehash(size_t buckets) {
        Table grown(buckets);
        for (const Entry& entry : static_cast<const HashTable&>(*this)) {
            grown[Hasher()(KeyOf()(entry)) % grown.size()].push_back(entry);
        }
        m_table.swap(grown);
    }

    void EraseAt(size_t bucketIndex, size_t index) {
        Bucket& bucket = m_table[bucketIndex];
        if (index + 1 != bucket.size()) {
            bucket[index] = std::move(bucket.back());
        }
        bucket.pop_back();
        --m_count;
    }

    Table m_table;
    size_t m_count = 0;
};

}  // namespace util
