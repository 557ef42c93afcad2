#include "physics/BroadPhase.h"

#include <algorithm>
#include <cmath>

namespace physics {
namespace {

// More cells than this and a box is tested against all others instead: a plane-sized box
// must not fill the grid.
constexpr int64_t kMaxCellsPerBox = 16;
// How far the kept boxes reach past the boxes they were made for, by the larger side.
constexpr float kGrowth = 0.1f;

// floor(v / size), held inside the int range; monotonic in v, which is all that the one
// reporting cell of a pair relies on. Truncation and a step down is floor without a call.
int32_t CellOf(float v, float inverseSize) {
    const float t = std::clamp(v * inverseSize, -1.0e9f, 1.0e9f);
    const int32_t cell = static_cast<int32_t>(t);
    return cell - (t < static_cast<float>(cell) ? 1 : 0);
}

uint32_t HashCell(int32_t x, int32_t y) {
    return (static_cast<uint32_t>(x) * 73856093u) ^ (static_cast<uint32_t>(y) * 19349663u);
}

// The larger side of the average finite box; 1 when there is none to go by.
float CellSize(const util::VectorPOD<math::BoundingBox2f>& boxes) {
    double sum = 0;
    size_t count = 0;
    for (const math::BoundingBox2f& box : boxes) {
        if (box.IsFinite() && !box.IsEmpty()) {
            sum += std::max(box.Width(), box.Height());
            ++count;
        }
    }
    const float size = count ? static_cast<float>(sum / static_cast<double>(count)) : 1.0f;
    return size > 1e-6f && std::isfinite(size) ? size : 1.0f;
}

}  // namespace

void BroadPhase::TakeFlags(const uint8_t* flags, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const uint8_t f = flags ? flags[i] : 0;
        m_flags.push_back(f);
        m_anyLeftOut = m_anyLeftOut || (f & kLeftOut);
    }
}

void BroadPhase::Within(const std::vector<math::BoundingBox2f>& boxes, PairList& pairs,
                        const uint8_t* flags) {
    m_boxes.assign(boxes.data(), boxes.data() + boxes.size());
    m_flags.clear();
    m_anyLeftOut = false;
    TakeFlags(flags, boxes.size());
    Search(static_cast<uint32_t>(boxes.size()), false, pairs);
}

void BroadPhase::Across(const std::vector<math::BoundingBox2f>& first,
                        const std::vector<math::BoundingBox2f>& second, PairList& pairs,
                        const uint8_t* firstFlags, const uint8_t* secondFlags) {
    pairs.clear();
    if (first.empty() || second.empty()) {
        return;
    }
    m_boxes.assign(first.data(), first.data() + first.size());
    for (const math::BoundingBox2f& box : second) {
        m_boxes.push_back(box);
    }
    m_flags.clear();
    m_anyLeftOut = false;
    TakeFlags(firstFlags, first.size());
    TakeFlags(secondFlags, second.size());
    Search(static_cast<uint32_t>(first.size()), true, pairs);
}

bool BroadPhase::GrownBoxesHold(uint32_t split, bool across) const {
    if (!m_grownValid || m_grownAcross != across || m_grownSplit != split ||
        m_grown.size() != m_boxes.size()) {
        return false;
    }
    // A NaN fails the test, and makes the search start over.
    bool hold = true;
    for (size_t k = 0; k < m_boxes.size(); ++k) {
        const math::BoundingBox2f& box = m_boxes[k];
        const math::BoundingBox2f& grown = m_grown[k];
        hold &= grown.min.x <= box.min.x && grown.min.y <= box.min.y && box.max.x <= grown.max.x &&
                box.max.y <= grown.max.y;
    }
    return hold;
}

void BroadPhase::Search(uint32_t split, bool across, PairList& pairs) {
    if (m_anyLeftOut) {
        m_grownValid = false;
        Find(split, across, pairs);
        SortPairs(pairs);
        return;
    }
    if (!GrownBoxesHold(split, across)) {
        // Each box grows by a tenth of its larger side. One that does not grow (a point, a
        // box too far out for the margin to show, one with a NaN) is searched again
        // whenever it moves.
        m_grown.resize(m_boxes.size());
        for (size_t k = 0; k < m_boxes.size(); ++k) {
            const math::BoundingBox2f& box = m_boxes[k];
            const float margin = kGrowth * std::max(box.Width(), box.Height());
            m_grown[k] = box.Expanded(margin >= 0 ? margin : 0);
        }
        m_boxes.swap(m_grown);
        Find(split, across, m_grownPairs);
        SortPairs(m_grownPairs);
        m_boxes.swap(m_grown);
        m_grownValid = true;
        m_grownAcross = across;
        m_grownSplit = split;
    }
    // Boxes inside their grown boxes overlap only where those do: the pairs are among the
    // grown boxes' pairs, and keep their order.
    pairs.clear();
    const uint32_t offset = across ? split : 0;
    for (const auto& [a, b] : m_grownPairs) {
        if (m_boxes[a].Overlaps(m_boxes[b + offset])) {
            pairs.emplace_back(a, b);
        }
    }
}

void BroadPhase::Report(uint32_t a, uint32_t b, uint32_t split, bool across,
                        PairList& pairs) const {
    if (a > b) {
        std::swap(a, b);
    }
    if (across && !(a < split && b >= split)) {
        return;
    }
    if (m_anyLeftOut) {
        const uint8_t fa = m_flags[a];
        const uint8_t fb = m_flags[b];
        if (((fa & kLeftOut) && (fb & (kLeftOut | kImmovable)) != kImmovable) ||
            ((fb & kLeftOut) && (fa & (kLeftOut | kImmovable)) != kImmovable)) {
            return;
        }
    }
    if (m_boxes[a].Overlaps(m_boxes[b])) {
        pairs.emplace_back(a, across ? b - split : b);
    }
}

void BroadPhase::Find(uint32_t split, bool across, PairList& pairs) {
    pairs.clear();
    const uint32_t n = static_cast<uint32_t>(m_boxes.size());
    const float inverseSize = 1.0f / CellSize(m_boxes);

    m_entries.clear();
    m_large.clear();
    m_queries.clear();
    m_isLarge.resize(n);
    for (uint32_t k = 0; k < n; ++k) {
        const math::BoundingBox2f& box = m_boxes[k];
        m_isLarge[k] = 1;
        if (!box.IsFinite()) {
            m_large.push_back(k);
            continue;
        }
        const int32_t x0 = CellOf(box.min.x, inverseSize);
        const int32_t x1 = CellOf(box.max.x, inverseSize);
        const int32_t y0 = CellOf(box.min.y, inverseSize);
        const int32_t y1 = CellOf(box.max.y, inverseSize);
        const int64_t width = int64_t{x1} - x0 + 1;
        const int64_t height = int64_t{y1} - y0 + 1;
        if (width <= 0 || height <= 0 || width * height > kMaxCellsPerBox) {
            m_large.push_back(k);
            continue;
        }
        m_isLarge[k] = 0;
        if (m_flags[k] & kLeftOut) {
            m_queries.push_back(Query{x0, y0, x1, y1, k});
            continue;
        }
        for (int32_t y = y0; y <= y1; ++y) {
            for (int32_t x = x0; x <= x1; ++x) {
                m_entries.push_back(Entry{x, y, x0, y0, k});
            }
        }
    }

    // Entries by hashed cell through a counting sort; within a bucket they keep box order.
    uint32_t buckets = 1;
    while (buckets < m_entries.size()) {
        buckets *= 2;
    }
    const uint32_t mask = buckets - 1;
    m_bucketMask = mask;
    m_bucketStart.resize(buckets + 1);
    std::fill(m_bucketStart.begin(), m_bucketStart.end(), 0);
    for (const Entry& e : m_entries) {
        ++m_bucketStart[(HashCell(e.cellX, e.cellY) & mask) + 1];
    }
    for (uint32_t b = 0; b < buckets; ++b) {
        m_bucketStart[b + 1] += m_bucketStart[b];
    }
    m_sorted.resize(m_entries.size());
    for (const Entry& e : m_entries) {
        m_sorted[m_bucketStart[HashCell(e.cellX, e.cellY) & mask]++] = e;
    }

    // Only the cell of the overlap's lower corner reports a pair; the cell of the greater of
    // two values is the greater of their cells.
    auto reportOnce = [&](const Entry& e, const Entry& f) {
        if (f.cellX == e.cellX && f.cellY == e.cellY &&
            std::max(e.minCellX, f.minCellX) == e.cellX &&
            std::max(e.minCellY, f.minCellY) == e.cellY) {
            Report(e.box, f.box, split, across, pairs);
        }
    };
    // The counts moved each start to the next bucket's: walk the buckets by their ends.
    uint32_t begin = 0;
    for (uint32_t b = 0; b < buckets; ++b) {
        const uint32_t end = m_bucketStart[b];
        if (across) {
            // A bucket holds the first list's boxes before the second's: only those pairs
            // are wanted.
            uint32_t second = begin;
            while (second < end && m_sorted[second].box < split) {
                ++second;
            }
            for (uint32_t i = begin; i < second; ++i) {
                for (uint32_t j = second; j < end; ++j) {
                    reportOnce(m_sorted[i], m_sorted[j]);
                }
            }
        } else {
            for (uint32_t i = begin; i < end; ++i) {
                for (uint32_t j = i + 1; j < end; ++j) {
                    reportOnce(m_sorted[i], m_sorted[j]);
                }
            }
        }
        begin = end;
    }

    for (uint32_t large : m_large) {
        for (uint32_t k = 0; k < n; ++k) {
            if (m_isLarge[k] && k <= large) {
                continue;  // a pair of large boxes is taken by the later one
            }
            Report(large, k, split, across, pairs);
        }
    }
    if (!m_queries.empty()) {
        FindForLeftOut(split, across, pairs);
    }
}

void BroadPhase::FindForLeftOut(uint32_t split, bool across, PairList& pairs) {
    for (const Query& q : m_queries) {
        for (int32_t y = q.y0; y <= q.y1; ++y) {
            for (int32_t x = q.x0; x <= q.x1; ++x) {
                const uint32_t bucket = HashCell(x, y) & m_bucketMask;
                const uint32_t begin = bucket == 0 ? 0 : m_bucketStart[bucket - 1];
                for (uint32_t i = begin; i < m_bucketStart[bucket]; ++i) {
                    const Entry& e = m_sorted[i];
                    if (e.cellX == x && e.cellY == y && (m_flags[e.box] & kImmovable) &&
                        std::max(q.x0, e.minCellX) == x && std::max(q.y0, e.minCellY) == y) {
                        Report(q.box, e.box, split, across, pairs);
                    }
                }
            }
        }
    }
}

void BroadPhase::SortPairs(PairList& pairs) {
    // Two counting passes: by the second index, then stably by the first.
    const uint32_t range = static_cast<uint32_t>(m_boxes.size());
    m_scratch.resize(pairs.size());
    for (int pass = 0; pass < 2; ++pass) {
        m_counts.resize(range + 1);
        std::fill(m_counts.begin(), m_counts.end(), 0);
        auto digit = [pass](const std::pair<uint32_t, uint32_t>& p) {
            return pass == 0 ? p.second : p.first;
        };
        for (const auto& p : pairs) {
            ++m_counts[digit(p) + 1];
        }
        for (uint32_t d = 0; d < range; ++d) {
            m_counts[d + 1] += m_counts[d];
        }
        for (const auto& p : pairs) {
            m_scratch[m_counts[digit(p)]++] = p;
        }
        pairs.swap(m_scratch);
    }
}

}  // namespace physics
