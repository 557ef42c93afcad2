#include "physics/ContactCache.h"

#include <algorithm>
#include <cstring>

#include "physics/StepWorkers.h"
#include "util/HashSet.h"
#include "util/Prefetch.h"
#include "util/Profiler.h"

namespace physics {

namespace {

// Contacts per part of the parallel look-ups. A look-up is a few reads from memory, and
// the contacts were just written by this thread: sharing them with another core costs
// more than it saves until the lists get very long.
constexpr size_t kMatchGrain = 8192;
// How far ahead a match asks for the contacts it will read.
constexpr size_t kAhead = 8;

// What a match reads and writes of a contact lies in the 64 bytes after the constraint's
// part, which may cross into the next cache line.
void PrefetchCachedPart(const Contact& contact) {
    util::PrefetchSpan(reinterpret_cast<const char*>(&contact) + sizeof(Constraint), 64);
}

}  // namespace

ContactCache::ContactCache() = default;

ContactCache::~ContactCache() = default;

ContactCache::Key ContactCache::KeyOf(const Contact& contact) {
    return Key{static_cast<uint32_t>(contact.GetHash()), static_cast<uint32_t>(contact.GetIndex()),
               contact.GetLowerID(), contact.GetHigherID()};
}

uint32_t ContactCache::FindSlot(const Key& key) const {
    if (m_table.empty()) {
        return kEmpty;
    }
    for (size_t cell = key.hash & m_tableMask;; cell = (cell + 1) & m_tableMask) {
        const uint32_t slot = m_table[cell];
        if (slot == kEmpty || m_keys[slot] == key) {
            return slot;
        }
    }
}

const Contact* ContactCache::Lookup(const Key& key, size_t i, ptrdiff_t& shift) const {
    // Contacts come in nearly the same order every step, so the cached contacts near the
    // last match's offset are tried before the table: a contact lost or gained since moves
    // the rest by one, and a pair whose points swap, or that lost one, by two. With
    // repeated keys a position may hold a contact that the table would not give: no
    // guessing then.
    if (m_keysUnique) {
        const ptrdiff_t guess = static_cast<ptrdiff_t>(i) + shift;
        for (const ptrdiff_t at : {guess, guess + 1, guess - 1, guess + 2, guess - 2}) {
            if (at >= 0 && at < static_cast<ptrdiff_t>(m_keys.size()) && m_keys[at] == key) {
                shift = at - static_cast<ptrdiff_t>(i);
                return &m_held[at];
            }
        }
    }
    const uint32_t slot = FindSlot(key);
    if (slot == kEmpty) {
        return nullptr;
    }
    shift = static_cast<ptrdiff_t>(slot) - static_cast<ptrdiff_t>(i);
    return &m_held[slot];
}

size_t ContactCache::Match(ContactList& contacts) {
    const size_t count = contacts.size();
    {
        VORRA_PROFILE("Matching cache");
        m_matched.resize(count);
        // The keys are kept for the table of the next step, which then need not read the
        // contacts again.
        m_newKeys.resize(count);
        // Each contact reads only the old ones and writes only itself.
        StepWorkers::Get().ForParts(count, kMatchGrain, [&](size_t, size_t first, size_t last) {
            ptrdiff_t shift = 0;
            for (size_t i = first; i < last; ++i) {
                // The contacts were written a while ago, and the old ones a step ago: ask
                // for both a few ahead.
                if (i + kAhead < last) {
                    PrefetchCachedPart(contacts[i + kAhead]);
                    const ptrdiff_t guess = static_cast<ptrdiff_t>(i + kAhead) + shift;
                    if (guess >= 0 && guess < static_cast<ptrdiff_t>(m_held.size())) {
                        PrefetchCachedPart(m_held[static_cast<size_t>(guess)]);
                    }
                }
                Key& key = m_newKeys[i];
                key = KeyOf(contacts[i]);
                const Contact* old = Lookup(key, i, shift);
                if (old) {
                    contacts[i].CopyCached(*old);
                }
                m_matched[i] = old ? 1 : 0;
            }
        });
        // Entries as the chained table would count them: the cached ones, plus one for
        // each key looked up in vain, the growth checked before each look-up.
        size_t entries = m_entryCount;
        m_matchCount = 0;
        for (size_t i = 0; i < count; ++i) {
            if (entries >= m_bucketCount) {
                m_bucketCount = util::HashSet<size_t>::NextBucketCount(m_bucketCount);
            }
            m_matchCount += m_matched[i];
            entries += 1 - m_matched[i];
        }
    }
    {
        VORRA_PROFILE("Update cache");
        // Swapped, not copied: the list handed in takes the old contacts' storage.
        m_held.swap(contacts);
        contacts.clear();
        m_keys.swap(m_newKeys);
        Rebuild();
    }
    return m_matchCount;
}

void ContactCache::Rebuild() {
    const size_t count = m_held.size();
    // At most half full, so that probes stay short.
    size_t size = 16;
    while (size < 2 * count) {
        size *= 2;
    }
    m_table.resize(size);
    std::fill(m_table.begin(), m_table.end(), kEmpty);
    m_tableMask = size - 1;
    m_keysUnique = true;
    size_t distinct = count;
    for (size_t i = 0; i < count; ++i) {
        const Key key = m_keys[i];
        size_t cell = key.hash & m_tableMask;
        while (m_table[cell] != kEmpty && !(m_keys[m_table[cell]] == key)) {
            cell = (cell + 1) & m_tableMask;
        }
        if (m_table[cell] != kEmpty) {
            // Of equal keys the later contact is the cached one.
            m_keysUnique = false;
            --distinct;
        }
        m_table[cell] = static_cast<uint32_t>(i);
    }
    m_entryCount = distinct;
}

void ContactCache::Restore(const ContactList& contacts) {
    m_held = contacts;
    m_keys.resize(m_held.size());
    for (size_t i = 0; i < m_held.size(); ++i) {
        m_keys[i] = KeyOf(m_held[i]);
    }
    // The bucket count as Match would have grown it for this many keys.
    while (m_held.size() >= m_bucketCount) {
        m_bucketCount = util::HashSet<size_t>::NextBucketCount(m_bucketCount);
    }
    Rebuild();
    m_matchCount = 0;
}

void ContactCache::Clear() {
    m_held.clear();
    m_keys.clear();
    m_table.clear();
    m_keysUnique = true;
    m_entryCount = 0;
    m_matchCount = 0;
}

const Contact* ContactCache::Find(size_t lowerID, size_t higherID, size_t index) const {
    const Key key{static_cast<uint32_t>(Contact::HashKey(lowerID, higherID, index)),
                  static_cast<uint32_t>(index), lowerID, higherID};
    const uint32_t slot = FindSlot(key);
    return slot == kEmpty ? nullptr : &m_held[slot];
}

}  // namespace physics
