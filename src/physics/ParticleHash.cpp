#include "physics/ParticleHash.h"

#include <algorithm>
#include <limits>

#include "physics/Particle.h"
#include "physics/StepWorkers.h"
#include "util/HashSet.h"
#include "util/Hasher.h"

namespace physics {

namespace {

// Particles per thread in reading their places: below this a part costs more to hand out
// than it saves.
constexpr size_t kGrain = 1024;

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

uint64_t ParticleHash::RemainderFactor(size_t divisor) {
    return ~uint64_t{0} / divisor + 1;
}

size_t ParticleHash::Remainder(uint32_t value, size_t divisor, uint64_t factor) {
    // value % divisor by two multiplications, exact for 32-bit values and divisors (Lemire's
    // method): a division takes far longer, and the table asks for one per particle.
    const uint64_t low = factor * value;
    return static_cast<size_t>((static_cast<unsigned __int128>(low) * divisor) >> 64);
}

size_t ParticleHash::BucketOf(const Key& key) const {
    return Remainder(util::DefaultHasher()(key), m_buckets.size(), m_bucketFactor);
}

const ParticleHash::Cell* ParticleHash::Find(const Key& key) const {
    if (!m_grid.empty()) {
        const int64_t x = int64_t{key.x} - m_gridOrigin.x;
        const int64_t y = int64_t{key.y} - m_gridOrigin.y;
        if (x < 0 || y < 0 || x >= m_gridWidth || y >= m_gridHeight) {
            return nullptr;
        }
        const uint32_t index = m_grid[static_cast<size_t>(y * m_gridWidth + x)];
        return index == kNoCell ? nullptr : &m_cells[index];
    }
    for (uint32_t index : m_buckets[BucketOf(key)]) {
        if (m_cells[index].key == key) {
            return &m_cells[index];
        }
    }
    return nullptr;
}

uint32_t ParticleHash::CellIndex(const Key& key) {
    const size_t at = BucketOf(key);
    util::VectorPOD<uint32_t>& bucket = m_buckets[at];
    for (uint32_t index : bucket) {
        if (m_cells[index].key == key) {
            return index;
        }
    }
    const uint32_t index = static_cast<uint32_t>(m_cells.size());
    m_cells.push_back({key, 0, 0, 0, 0, 0, 0});
    bucket.push_back(index);
    m_used[at / 64] |= uint64_t{1} << (at % 64);
    return index;
}

void ParticleHash::Grow() {
    // The table's own growth rule; cells move over in table order.
    m_spareBuckets.resize(util::HashSet<int>::NextBucketCount(m_buckets.size()));
    const uint64_t spareFactor = RemainderFactor(m_spareBuckets.size());
    for (util::VectorPOD<uint32_t>& bucket : m_spareBuckets) {
        bucket.clear();
    }
    m_spareUsed.resize((m_spareBuckets.size() + 63) / 64);
    std::fill(m_spareUsed.begin(), m_spareUsed.end(), 0);
    ForEachUsedBucket([&](size_t from) {
        for (uint32_t index : m_buckets[from]) {
            const size_t at = Remainder(util::DefaultHasher()(m_cells[index].key),
                                        m_spareBuckets.size(), spareFactor);
            m_spareBuckets[at].push_back(index);
            m_spareUsed[at / 64] |= uint64_t{1} << (at % 64);
        }
    });
    m_buckets.swap(m_spareBuckets);
    m_used.swap(m_spareUsed);
    m_bucketFactor = spareFactor;
}

void ParticleHash::BuildGrid() {
    m_grid.clear();
    if (m_cells.empty()) {
        return;
    }
    Key low = m_cells[0].key;
    Key high = low;
    for (const Cell& cell : m_cells) {
        low.x = std::min(low.x, cell.key.x);
        low.y = std::min(low.y, cell.key.y);
        high.x = std::max(high.x, cell.key.x);
        high.y = std::max(high.y, cell.key.y);
    }
    const int64_t width = int64_t{high.x} - low.x + 1;
    const int64_t height = int64_t{high.y} - low.y + 1;
    // A body of water fills much of its rectangle; drops strewn far apart keep to the table.
    const int64_t limit = 4 * static_cast<int64_t>(m_cells.size()) + 4096;
    if (width > limit || height > limit || width * height > limit) {
        return;
    }
    m_gridOrigin = low;
    m_gridWidth = width;
    m_gridHeight = height;
    m_grid.resize(static_cast<size_t>(width * height));
    std::fill(m_grid.begin(), m_grid.end(), kNoCell);
    for (uint32_t index = 0; index < m_cells.size(); ++index) {
        const Key& key = m_cells[index].key;
        m_grid[static_cast<size_t>((key.y - low.y) * width + (key.x - low.x))] = index;
    }
}

void ParticleHash::Build(Particle* const* particles, size_t count, math::real cellSize) {
    if (m_buckets.empty()) {
        m_buckets.resize(InitialBucketCount(count));
        m_bucketFactor = RemainderFactor(m_buckets.size());
        m_used.resize((m_buckets.size() + 63) / 64);
        std::fill(m_used.begin(), m_used.end(), 0);
    }
    // Only the buckets that the last build used hold anything.
    ForEachUsedBucket([&](size_t at) { m_buckets[at].clear(); });
    std::fill(m_used.begin(), m_used.end(), 0);
    m_cells.clear();
    m_slotOfParticle.resize(count);
    m_keys.resize(count);
    m_points.resize(count);
    const math::real inverseSize = 1 / cellSize;
    // Reading the particles is most of the cost, so all threads take a share.
    StepWorkers::Get().ForParts(count, kGrain, [&](size_t, size_t first, size_t last) {
        for (size_t i = first; i < last; ++i) {
            const math::Vec2 at = particles[i]->position;
            m_points[i] = at;
            m_keys[i] = KeyOf(at, inverseSize);
        }
    });
    // Particles next in the list are often in the same cell.
    Key lastKey{0, 0};
    uint32_t lastIndex = ~0u;
    for (size_t i = 0; i < count; ++i) {
        // The growth check comes with every particle, as with every insertion of a map.
        if (m_buckets.size() <= m_cells.size()) {
            Grow();
        }
        if (lastIndex == ~0u || !(m_keys[i] == lastKey)) {
            lastKey = m_keys[i];
            lastIndex = CellIndex(lastKey);
        }
        ++m_cells[lastIndex].count;
        m_slotOfParticle[i] = lastIndex;
    }
    // A counting sort: each cell's members keep the list order.
    uint32_t next = 0;
    constexpr math::real kInfinity = std::numeric_limits<math::real>::infinity();
    for (Cell& cell : m_cells) {
        cell.first = next;
        next += cell.count;
        cell.count = 0;
        cell.minX = cell.minY = kInfinity;
        cell.maxX = cell.maxY = -kInfinity;
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
        const math::Vec2 at = m_points[i];
        m_xs[slot] = at.x;
        m_ys[slot] = at.y;
        // Compared one way round, so that NaN never enters the bounds.
        if (at.x < cell.minX) {
            cell.minX = at.x;
        }
        if (at.x > cell.maxX) {
            cell.maxX = at.x;
        }
        if (at.y < cell.minY) {
            cell.minY = at.y;
        }
        if (at.y > cell.maxY) {
            cell.maxY = at.y;
        }
    }
    BuildGrid();
    m_tableOrder.resize(m_cells.size());
    size_t position = 0;
    ForEachUsedBucket([&](size_t at) {
        for (uint32_t index : m_buckets[at]) {
            m_tableOrder[position++] = index;
        }
    });
}

uint32_t ParticleHash::LargestCell() const {
    uint32_t largest = 0;
    for (const Cell& cell : m_cells) {
        largest = std::max(largest, cell.count);
    }
    return largest;
}

size_t ParticleHash::LargestBucket() const {
    size_t largest = 0;
    ForEachUsedBucket([&](size_t at) { largest = std::max(largest, m_buckets[at].size()); });
    return largest;
}

}  // namespace physics
