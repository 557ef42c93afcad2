#include "physics/ContactCache.h"

#include "physics/Contact.h"
#include "util/HashSet.h"
#include "util/Profiler.h"

namespace physics {

ContactCache::ContactCache() : m_bucketStart(m_bucketCount + 1, 0) {}

ContactCache::~ContactCache() = default;

bool ContactCache::HasKey(const Entry& entry, size_t hash, size_t lowerID, size_t higherID,
                          size_t index) {
    return entry.hash == hash && entry.lowerID == lowerID && entry.higherID == higherID &&
           entry.index == index;
}

uint32_t ContactCache::FindSlot(size_t hash, size_t lowerID, size_t higherID, size_t index) const {
    const size_t bucket = hash % (m_bucketStart.size() - 1);
    for (uint32_t e = m_bucketStart[bucket]; e < m_bucketStart[bucket + 1]; ++e) {
        const Entry& entry = m_entries[e];
        if (HasKey(entry, hash, lowerID, higherID, index)) {
            return entry.slot;
        }
    }
    return kEmpty;
}

size_t ContactCache::Match(std::vector<ContactPtr>& contacts) {
    m_matchCount = 0;
    {
        VORRA_PROFILE("Matching cache");
        // Entries as the chained table would count them: the cached ones, plus one for
        // each key looked up in vain. The bucket count grows by the tables' rule.
        size_t entries = m_entryCount;
        // Contacts come in nearly the same order every step, so the cached contact at the
        // last match's offset is tried before the table.
        ptrdiff_t shift = 0;
        for (size_t i = 0; i < contacts.size(); ++i) {
            if (entries >= m_bucketCount) {
                m_bucketCount = util::HashSet<size_t>::NextBucketCount(m_bucketCount);
            }
            Contact& contact = *contacts[i];
            const Contact* old = nullptr;
            const ptrdiff_t guess = static_cast<ptrdiff_t>(i) + shift;
            // A contact lost or gained since moves the rest by one. With repeated keys a
            // position may hold a contact that the table would not give: no guessing then.
            const ptrdiff_t tries = m_keysUnique ? 3 : 0;
            for (ptrdiff_t t = 0; t < tries && !old; ++t) {
                const ptrdiff_t at = guess + (t == 2 ? -1 : t);
                if (at >= 0 && at < static_cast<ptrdiff_t>(m_held.size()) &&
                    m_held[at]->SameKey(contact)) {
                    old = m_held[at].Get();
                    shift = at - static_cast<ptrdiff_t>(i);
                }
            }
            if (!old) {
                const uint32_t slot = FindSlot(contact.GetHash(), contact.GetLowerID(),
                                               contact.GetHigherID(), contact.GetIndex());
                if (slot != kEmpty) {
                    old = m_held[slot].Get();
                    shift = static_cast<ptrdiff_t>(slot) - static_cast<ptrdiff_t>(i);
                }
            }
            if (old) {
                contact.CopyCached(*old);
                ++m_matchCount;
            } else {
                ++entries;
            }
        }
    }
    {
        VORRA_PROFILE("Update cache");
        Rebuild(contacts);
    }
    return m_matchCount;
}

void ContactCache::Rebuild(std::vector<ContactPtr>& contacts) {
    const size_t buckets = m_bucketCount;
    const size_t count = contacts.size();
    // Counting sort by bucket: sizes, then starts, then the entries in list order.
    m_bucketStart.assign(buckets + 1, 0);
    m_bucketOf.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const uint32_t bucket = static_cast<uint32_t>(contacts[i]->GetHash() % buckets);
        m_bucketOf[i] = bucket;
        ++m_bucketStart[bucket + 1];
    }
    for (size_t b = 0; b < buckets; ++b) {
        m_bucketStart[b + 1] += m_bucketStart[b];
    }
    m_fill.assign(m_bucketStart.begin(), m_bucketStart.end() - 1);
    m_entries.resize(count);
    m_keysUnique = true;
    size_t distinct = count;
    for (size_t i = 0; i < count; ++i) {
        const Contact& contact = *contacts[i];
        const uint32_t bucket = m_bucketOf[i];
        bool repeated = false;
        for (uint32_t e = m_bucketStart[bucket]; e < m_fill[bucket]; ++e) {
            Entry& entry = m_entries[e];
            if (entry.slot != kEmpty && HasKey(entry, contact.GetHash(), contact.GetLowerID(),
                                               contact.GetHigherID(), contact.GetIndex())) {
                // Of equal keys the later contact is the cached one.
                entry.slot = static_cast<uint32_t>(i);
                repeated = true;
                break;
            }
        }
        Entry& entry = m_entries[m_fill[bucket]++];
        entry = Entry{contact.GetLowerID(), contact.GetHigherID(), contact.GetIndex(),
                      contact.GetHash(), repeated ? kEmpty : static_cast<uint32_t>(i)};
        if (repeated) {
            m_keysUnique = false;
            --distinct;
        }
    }
    // Swapped, not copied: no contact's count changes, and clearing the list releases the
    // contacts of the step before.
    m_held.swap(contacts);
    contacts.clear();
    m_entryCount = distinct;
}

void ContactCache::Restore(const std::vector<ContactPtr>& contacts) {
    std::vector<ContactPtr> held(contacts);
    // The bucket count as Match would have grown it for this many keys.
    while (held.size() >= m_bucketCount) {
        m_bucketCount = util::HashSet<size_t>::NextBucketCount(m_bucketCount);
    }
    Rebuild(held);
    m_matchCount = 0;
}

void ContactCache::Clear() {
    m_held.clear();
    m_entries.clear();
    m_bucketStart.assign(m_bucketCount + 1, 0);
    m_keysUnique = true;
    m_entryCount = 0;
    m_matchCount = 0;
}

Contact* ContactCache::Find(size_t lowerID, size_t higherID, size_t index) const {
    const uint32_t slot =
        FindSlot(Contact::HashKey(lowerID, higherID, index), lowerID, higherID, index);
    return slot == kEmpty ? nullptr : m_held[slot].Get();
}

}  // namespace physics
