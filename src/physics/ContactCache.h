#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "physics/Contact.h"
#include "physics/Forward.h"
#include "util/VectorPOD.h"

namespace physics {

// The contacts of the previous step, by key (lower geom ID, higher geom ID, index), so
// that a contact found again takes over its impulses and its time of first touch.
//
// The contacts are plain values held in the order of their step; an open-addressed table
// of their places, rebuilt every step in arrays that keep their size, finds them by key.
// The bucket count that the Parts' chained table would have is kept as a figure: it grows
// by the hash tables' rule once the entries reach it.
class ContactCache {
public:
    ContactCache();
    ~ContactCache();
    ContactCache(const ContactCache&) = delete;
    ContactCache& operator=(const ContactCache&) = delete;

    // Matches this step's contacts against the cache, copying impulses and time of first
    // touch from the contacts found, then makes the cache hold exactly these contacts (of
    // equal keys the later one). Takes the contacts over: the list is left empty, with the
    // capacity of the step before's list. Returns the number of matches. The look-ups run
    // on the step's threads.
    size_t Match(ContactList& contacts);
    size_t Match(ContactList&& contacts) { return Match(contacts); }

    // This step's contacts, as the last Match took them.
    const ContactList& GetContacts() const { return m_held; }
    // For the solver, which keeps its impulses in them.
    ContactList& GetContacts() { return m_held; }

    // Makes the cache hold exactly these contacts, as if a step had just found them: a
    // restored scene matches its next step against the contacts it had.
    void Restore(const ContactList& contacts);

    // Empties the cache and zeroes the counters; the bucket count stays.
    void Clear();

    size_t GetEntryCount() const { return m_entryCount; }
    size_t GetBucketCount() const { return m_bucketCount; }
    size_t GetMatchCount() const { return m_matchCount; }
    // The cached contact of that key, or null.
    const Contact* Find(size_t lowerID, size_t higherID, size_t index) const;

private:
    // A held contact's key, apart from the contact, so that probes read little memory.
    struct Key {
        uint32_t hash;
        uint32_t index;
        size_t lowerID;
        size_t higherID;
        bool operator==(const Key&) const = default;
    };
    static constexpr uint32_t kEmpty = 0xFFFFFFFFu;

    static Key KeyOf(const Contact& contact);
    // The place in m_held of the cached contact of the key, or kEmpty.
    uint32_t FindSlot(const Key& key) const;
    // The old contact that contact i of the step, of that key, takes over, or null; shift is the
    // offset between new and old places at the last match, tried first.
    const Contact* Lookup(const Key& key, size_t i, ptrdiff_t& shift) const;
    // The table of m_held, whose keys m_keys holds.
    void Rebuild();

    size_t m_bucketCount = 3;
    ContactList m_held;
    util::VectorPOD<Key> m_keys;        // of m_held, alike indexed
    util::VectorPOD<Key> m_newKeys;     // of the contacts of a Match
    util::VectorPOD<uint32_t> m_table;  // places in m_held, kEmpty for a free cell
    size_t m_tableMask = 0;
    // No two held contacts share a key, so that the one at a list position is the one a
    // lookup of its key would find.
    bool m_keysUnique = true;
    size_t m_entryCount = 0;
    size_t m_matchCount = 0;
    util::VectorPOD<uint8_t> m_matched;  // per contact of a Match
};

}  // namespace physics
