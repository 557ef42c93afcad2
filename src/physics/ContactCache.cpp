#include "physics/ContactCache.h"

#include <utility>

#include "physics/Contact.h"
#include "util/HashSet.h"
#include "util/Profiler.h"

namespace physics {

ContactCache::ContactCache() : m_buckets(3) {}

ContactCache::~ContactCache() = default;

void ContactCache::GrowIfFull() {
    // The rule of the util hash tables: grow once the entries reach the bucket count.
    const size_t n = m_buckets.size();
    if (m_entryCount < n) {
        return;
    }
    std::vector<std::vector<Entry>> grown(util::HashSet<size_t>::NextBucketCount(n));
    for (std::vector<Entry>& bucket : m_buckets) {
        for (Entry& entry : bucket) {
            grown[entry.hash % grown.size()].push_back(std::move(entry));
        }
    }
    m_buckets.swap(grown);
}

ContactCache::Entry& ContactCache::Lookup(const Contact& contact) {
    GrowIfFull();
    const size_t hash = contact.GetHash();
    std::vector<Entry>& bucket = m_buckets[hash % m_buckets.size()];
    for (Entry& entry : bucket) {
        if (entry.hash == hash && entry.lowerID == contact.GetLowerID() &&
            entry.higherID == contact.GetHigherID() && entry.index == contact.GetIndex()) {
            return entry;
        }
    }
    bucket.push_back(
        Entry{contact.GetLowerID(), contact.GetHigherID(), contact.GetIndex(), hash, nullptr});
    ++m_entryCount;
    return bucket.back();
}

size_t ContactCache::Match(const std::vector<ContactPtr>& contacts) {
    m_matchCount = 0;
    {
        VORRA_PROFILE("Matching cache");
        for (const ContactPtr& contact : contacts) {
            const Entry& entry = Lookup(*contact);
            if (entry.contact) {
                contact->CopyCached(*entry.contact);
                ++m_matchCount;
            }
        }
    }
    {
        VORRA_PROFILE("Update cache");
        EmptyBuckets();
        for (const ContactPtr& contact : contacts) {
            Lookup(*contact).contact = contact;
        }
    }
    return m_matchCount;
}

void ContactCache::Clear() {
    EmptyBuckets();
    m_matchCount = 0;
}

void ContactCache::EmptyBuckets() {
    for (std::vector<Entry>& bucket : m_buckets) {
        bucket.clear();
    }
    m_entryCount = 0;
}

Contact* ContactCache::Find(size_t lowerID, size_t higherID, size_t index) const {
    const size_t hash = Contact::HashKey(lowerID, higherID, index);
    for (const Entry& entry : m_buckets[hash % m_buckets.size()]) {
        if (entry.lowerID == lowerID && entry.higherID == higherID && entry.index == index) {
            return entry.contact.Get();
        }
    }
    return nullptr;
}

}  // namespace physics
