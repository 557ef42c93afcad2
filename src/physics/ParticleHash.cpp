#include "physics/ParticleHash.h"

#include <algorithm>

#include "physics/Particle.h"
#include "util/HashSet.h"
#include "util/Hasher.h"

namespace physics {

namespace {

// Far beyond any place a particle survives, and safe to step one cell past.
constexpr int kCellLimit = 1 << 30;

int TruncatedCell(math::real scaled) {
    if (scaled != scaled) {
        return 0;
    }
    if (scaled <= -kCellLimit) {
        return -kCellLimit;
    }
    if (scaled >= kCellLimit) {
        return kCellLimit;
    }
    return static_cast<int>(scaled);
}

}  // namespace

size_t ParticleHash::InitialBucketCount(size_t n) {
    return util::HashSet<int>::OddPrimeFrom(std::max<size_t>(n | 1, 3));
}

ParticleHash::Key ParticleHash::KeyOf(const math::Vec2& point, math::real inverseSize) {
    return {TruncatedCell(inverseSize * point.x), TruncatedCell(inverseSize * point.y)};
}

size_t ParticleHash::BucketOf(const Key& key) const {
    return util::DefaultHasher()(key) % m_buckets.size();
}

const ParticleHash::Cell* ParticleHash::Find(const Key& key) const {
    for (uint32_t index : m_buckets[BucketOf(key)]) {
        if (m_cells[index].key == key) {
            return &m_cells[index];
        }
    }
    return nullptr;
}

uint32_t ParticleHash::CellIndex(const Key& key) {
    util::VectorPOD<uint32_t>& bucket = m_buckets[BucketOf(key)];
    for (uint32_t index : bucket) {
        if (m_cells[index].key == key) {
            return index;
        }
    }
    const uint32_t index = static_cast<uint32_t>(m_cells.size());
    m_cells.push_back({key, 0, 0});
    bucket.push_back(index);
    return index;
}

void ParticleHash::Grow() {
    // The table's own growth rule; cells move over in table order.
    m_spareBuckets.resize(util::HashSet<int>::NextBucketCount(m_buckets.size()));
    for (util::VectorPOD<uint32_t>& bucket : m_spareBuckets) {
        bucket.clear();
    }
    for (const util::VectorPOD<uint32_t>& bucket : m_buckets) {
        for (uint32_t index : bucket) {
            const Key& key = m_cells[index].key;
            m_spareBuckets[util::DefaultHasher()(key) % m_spareBuckets.size()].push_back(index);
        }
    }
    m_buckets.swap(m_spareBuckets);
}

void ParticleHash::Build(Particle* const* particles, size_t count, math::real cellSize) {
    if (m_buckets.empty()) {
        m_buckets.resize(InitialBucketCount(count));
    }
    for (util::VectorPOD<uint32_t>& bucket : m_buckets) {
        bucket.clear();
    }
    m_cells.clear();
    m_slotOfParticle.resize(count);
    const math::real inverseSize = 1 / cellSize;
    for (size_t i = 0; i < count; ++i) {
        // The growth check comes with every particle, as with every insertion of a map.
        if (m_buckets.size() <= m_cells.size()) {
            Grow();
        }
        const uint32_t index = CellIndex(KeyOf(particles[i]->position, inverseSize));
        ++m_cells[index].count;
        m_slotOfParticle[i] = index;
    }
    // A counting sort: each cell's members keep the list order.
    uint32_t next = 0;
    for (Cell& cell : m_cells) {
        cell.first = next;
        next += cell.count;
        cell.count = 0;
    }
    m_members.resize(count);
    // Padded, so that a reader may take a fixed run of coordinates past the last one.
    m_xs.resize(count + kPadding, 0);
    m_ys.resize(count + kPadding, 0);
    for (size_t i = 0; i < count; ++i) {
        Cell& cell = m_cells[m_slotOfParticle[i]];
        const uint32_t slot = cell.first + cell.count++;
        m_slotOfParticle[i] = slot;
        m_members[slot] = particles[i];
        m_xs[slot] = particles[i]->position.x;
        m_ys[slot] = particles[i]->position.y;
    }
}

size_t ParticleHash::LargestBucket() const {
    size_t largest = 0;
    for (const util::VectorPOD<uint32_t>& bucket : m_buckets) {
        largest = std::max(largest, bucket.size());
    }
    return largest;
}

}  // namespace physics
