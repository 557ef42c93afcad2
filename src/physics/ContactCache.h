#pragma once

#include <cstddef>
#include <vector>

#include "physics/Forward.h"

namespace physics {

// The contacts of the previous step, by key (lower geom ID, higher geom ID, index), so
// that a contact found again takes over its impulses and its time of first touch. A
// chained table with prime bucket counts; buckets keep their capacity between steps.
class ContactCache {
public:
    struct Entry {
        size_t lowerID;
        size_t higherID;
        size_t index;
        size_t hash;
        ContactPtr contact;  // null while only looked up in the matching pass
    };

    ContactCache();
    ~ContactCache();
    ContactCache(const ContactCache&) = delete;
    ContactCache& operator=(const ContactCache&) = delete;

    // Matches this step's contacts against the cache, copying impulses and time of first
    // touch from the contacts found, then makes the cache hold exactly these contacts (of
    // equal keys the later one). Returns the number of matches.
    size_t Match(const std::vector<ContactPtr>& contacts);

    // Empties every bucket and zeroes the counters; the bucket count stays.
    void Clear();

    size_t GetEntryCount() const { return m_entryCount; }
    size_t GetBucketCount() const { return m_buckets.size(); }
    size_t GetMatchCount() const { return m_matchCount; }
    // The cached contact of that key, or null.
    Contact* Find(size_t lowerID, size_t higherID, size_t index) const;

private:
    // The entry of the contact's key, made with a null pointer if there was none.
    Entry& Lookup(const Contact& contact);
    void GrowIfFull();
    void EmptyBuckets();

    std::vector<std::vector<Entry>> m_buckets;
    size_t m_entryCount = 0;
    size_t m_matchCount = 0;
};

}  // namespace physics
