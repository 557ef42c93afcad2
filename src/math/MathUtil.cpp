#include "math/MathUtil.h"

#include <algorithm>
#include <vector>

#include "math/BoundingBox2.h"
#include "util/Assert.h"

namespace math {

namespace {

float SquaredDistance(const Vec2* points, size_t i, size_t j) {
    return (points[j] - points[i]).SquaredLength();
}

// The double loop itself, over the pairs that allowed says may matter.
template <class Allowed>
PointPair FarthestOf(const Vec2* points, size_t n, Allowed allowed) {
    PointPair best{0, 1};
    float bestDistance = -1;
    for (size_t i = 0; i < n; ++i) {
        allowed(i, [&](size_t first, size_t last) {
            for (size_t j = std::max(first, i + 1); j < last; ++j) {
                const float distance = SquaredDistance(points, i, j);
                if (distance > bestDistance) {
                    bestDistance = distance;
                    best = {i, j};
                }
            }
        });
    }
    return best;
}

// Runs of this many neighbours are passed over together.
constexpr size_t kRun = 32;

}  // namespace

PointPair FarthestPair(const Vec2* points, size_t n) {
    CODE_ASSERT(n > 1);
    bool finite = true;
    for (size_t i = 0; i < n && finite; ++i) {
        finite = IsFinite(points[i]);
    }
    if (n <= 4 * kRun || !finite) {
        return FarthestOf(points, n, [n](size_t, auto visit) { visit(0, n); });
    }
    // A pair that exists: the point farthest from the first, and the one farthest from it.
    // No pair below it can be the farthest.
    size_t a = 0;
    for (size_t j = 1; j < n; ++j) {
        if (SquaredDistance(points, 0, j) > SquaredDistance(points, 0, a)) {
            a = j;
        }
    }
    float known = 0;
    for (size_t j = 0; j < n; ++j) {
        known = std::max(known, SquaredDistance(points, std::min(a, j), std::max(a, j)));
    }
    // The boxes of the runs; two runs whose boxes lie closer than that pair on every
    // corner hold no pair that matters. The float distance of a pair exceeds the exact one
    // by a few parts in ten million at most: the margin covers it.
    const size_t runs = (n + kRun - 1) / kRun;
    std::vector<BoundingBox2f> boxes(runs);
    for (size_t i = 0; i < n; ++i) {
        boxes[i / kRun].Add(points[i]);
    }
    auto reach = [&](size_t r, size_t s) {
        const BoundingBox2f& p = boxes[r];
        const BoundingBox2f& q = boxes[s];
        const double dx = std::max(double{q.max.x} - p.min.x, double{p.max.x} - q.min.x);
        const double dy = std::max(double{q.max.y} - p.min.y, double{p.max.y} - q.min.y);
        return (dx * dx + dy * dy) * (1 + 1e-5);
    };
    std::vector<size_t> start(runs + 1, 0);
    std::vector<size_t> partners;
    for (size_t r = 0; r < runs; ++r) {
        for (size_t s = r; s < runs; ++s) {
            if (reach(r, s) >= known) {
                partners.push_back(s);
            }
        }
        start[r + 1] = partners.size();
    }
    return FarthestOf(points, n, [&](size_t i, auto visit) {
        const size_t r = i / kRun;
        for (size_t k = start[r]; k < start[r + 1]; ++k) {
            visit(partners[k] * kRun, std::min(n, (partners[k] + 1) * kRun));
        }
    });
}

Vec2 FindMainAxisSimple(const Vec2* points, size_t nPoints) {
    CODE_ASSERT(nPoints > 1);
    const PointPair pair = FarthestPair(points, nPoints);
    return Normalized(points[pair.second] - points[pair.first]);
}

}  // namespace math
