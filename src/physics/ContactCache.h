#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "physics/Forward.h"

namespace physics {

// The contacts of the previous step, by key (lower geom ID, higher geom ID, index), so
// that a contact found again takes over its impulses and its time of first touch.
//
// A chained table with prime bucket counts that grows, as the util hash tables do, once
// its entries reach the bucket count. Since the cache is rebuilt whole every step, the
// chains are laid out flat, bucket after bucket, in one array: a lookup reads one range,
// and a rebuild allocates nothing once the arrays have grown.
class ContactCache {
public:
    ContactCache();
    ~ContactCache();
    ContactCache(const ContactCache&) = delete;
    ContactCache& operator=(const ContactCache&) = delete;

    // Matches this step's contacts against the cache, copying impulses and time of first
    // touch from the contacts found, then makes the cache hold exactly these contacts (of
    // equal keys the later one). Takes the contacts over: the list is left empty with its
    // capacity, and the contacts of the step before are released. Returns the number of
    // matches.
    size_t Match(std::vector<ContactPtr>& contacts);
    size_t Match(std::vector<ContactPtr>&& contacts) { return Match(contacts); }

    // This step's contacts, as the last Match took them.
    const std::vector<ContactPtr>& GetContacts() const { return m_held; }

    // Makes the cache hold exactly these contacts, as if a step had just found them: a
    // restored scene matches its next step against the contacts it had.
    void Restore(const std::vector<ContactPtr>& contacts);

    // Empties every bucket and zeroes the counters; the bucket count stays.
    void Clear();

    size_t GetEntryCount() const { return m_entryCount; }
    size_t GetBucketCount() const { return m_bucketCount; }
    size_t GetMatchCount() const { return m_matchCount; }
    // The cached contact of that key, or null.
    Contact* Find(size_t lowerID, size_t higherID, size_t index) const;

private:
    struct Entry {
        size_t lowerID;
        size_t higherID;
        size_t index;
        size_t hash;
        uint32_t slot;  // place in m_held; kEmpty where a later equal key took the entry
    };
    static constexpr uint32_t kEmpty = 0xFFFFFFFFu;

    static bool HasKey(const Entry& entry, size_t hash, size_t lowerID, size_t higherID,
                       size_t index);
    // The place in m_held of the cached contact of the key, or kEmpty.
    uint32_t FindSlot(size_t hash, size_t lowerID, size_t higherID, size_t index) const;
    void Rebuild(std::vector<ContactPtr>& contacts);

    size_t m_bucketCount = 3;
    // Entries of bucket b are m_entries[m_bucketStart[b]] up to m_bucketStart[b + 1].
    std::vector<uint32_t> m_bucketStart;
    std::vector<Entry> m_entries;
    // The cached contacts in the order of their step, holding them alive.
    std::vector<ContactPtr> m_held;
    // No two held contacts share a key, so that the one at a list position is the one a
    // lookup of its key would find.
    bool m_keysUnique = true;
    size_t m_entryCount = 0;
    size_t m_matchCount = 0;
    // Scratch of the rebuild, kept for its capacity.
    std::vector<uint32_t> m_bucketOf;
    std::vector<uint32_t> m_fill;
};

}  // namespace physics
