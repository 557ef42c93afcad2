#include "physics/SPH.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Particle.h"
#include "physics/StepWorkers.h"
#include "util/LexicalCast.h"
#include "util/Profiler.h"

namespace physics {

using math::real;
using math::Vec2;

namespace {

// Half the neighbourhood of a cell: each pair of cells meets once, and each pair of
// particles records itself both ways.
const ParticleHash::Key kHalfNeighbourhood[] = {{0, 0}, {0, 1}, {1, -1}, {1, 0}, {1, 1}};

// Particles per thread in the loops over particles: below this a part costs more to hand
// out than it saves.
constexpr size_t kParticleGrain = 512;
// Pairs per particle that a thread of the search may keep before the caps are applied:
// water has fewer than ten, a pile far more, and a pile is left to one thread.
constexpr size_t kPairsPerParticle = 32;
constexpr size_t kMinPairBudget = 4096;

#ifdef __SSE2__
// For each mask of four lanes, the lanes set in it in order, then zeros; and how many.
struct HitLanes {
    alignas(16) uint32_t lanes[16][4];
    uint32_t count[16];
};
constexpr HitLanes MakeHitLanes() {
    HitLanes table{};
    for (uint32_t mask = 0; mask < 16; ++mask) {
        for (uint32_t lane = 0; lane < 4; ++lane) {
            if ((mask >> lane) & 1) {
                table.lanes[mask][table.count[mask]++] = lane;
            }
        }
    }
    return table;
}
constexpr HitLanes kHitLanes = MakeHitLanes();
#endif

// The correctly rounded root, as std::sqrt gives it, without the branch that sets errno
// for a negative argument: the squared distances here are never negative.
inline real SquareRoot(real x) {
#ifdef __SSE2__
    return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x)));
#else
    return std::sqrt(x);
#endif
}

// The candidates from first to last of xs and ys (readable four past last) whose squared
// distance from (xi, yi) is below reach, in their order, into hits, which has room for
// three more. Four candidates are tested at once; their arithmetic is the scalar one, lane
// by lane, so the distances that the lists compute again are the same bits. Inlined into
// the search: for cells of a few members the call costs about as much as the tests.
[[gnu::always_inline]] inline uint32_t FindHits(real xi, real yi, const real* xs, const real* ys,
                                                uint32_t first, uint32_t last, real reach,
                                                uint32_t* hits) {
    uint32_t count = 0;
#ifdef __SSE2__
    static_assert(ParticleHash::kPadding >= 4);
    const __m128 vxi = _mm_set1_ps(xi);
    const __m128 vyi = _mm_set1_ps(yi);
    const __m128 limit = _mm_set1_ps(reach);
    for (uint32_t k = first; k < last; k += 4) {
        const __m128 dx = _mm_sub_ps(_mm_loadu_ps(xs + k), vxi);
        const __m128 dy = _mm_sub_ps(_mm_loadu_ps(ys + k), vyi);
        const __m128 d2 = _mm_add_ps(_mm_mul_ps(dx, dx), _mm_mul_ps(dy, dy));
        unsigned mask = static_cast<unsigned>(_mm_movemask_ps(_mm_cmplt_ps(d2, limit)));
        if (last - k < 4) {
            // Lanes past the last candidate read padding.
            mask &= (1u << (last - k)) - 1;
        }
        // Without branches: four places are written, the hits first, and only those kept.
        _mm_storeu_si128(
            reinterpret_cast<__m128i*>(hits + count),
            _mm_add_epi32(_mm_set1_epi32(static_cast<int>(k)),
                          _mm_load_si128(reinterpret_cast<const __m128i*>(kHitLanes.lanes[mask]))));
        count += kHitLanes.count[mask];
    }
#else
    for (uint32_t k = first; k < last; ++k) {
        const real dx = xs[k] - xi;
        const real dy = ys[k] - yi;
        if (dx * dx + dy * dy < reach) {
            hits[count++] = k;
        }
    }
#endif
    return count;
}

#ifdef __SSE2__
// The lanes below n.
__m128 FirstLanes(uint32_t n) {
    return _mm_castsi128_ps(
        _mm_cmplt_epi32(_mm_setr_epi32(0, 1, 2, 3), _mm_set1_epi32(static_cast<int>(n))));
}

__m128 Select(__m128 mask, __m128 a, __m128 b) {
    return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b));
}

real LowestLane(__m128 v) {
    v = _mm_min_ps(v, _mm_shuffle_ps(v, v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_min_ps(v, _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtss_f32(v);
}

real HighestLane(__m128 v) {
    v = _mm_max_ps(v, _mm_shuffle_ps(v, v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_max_ps(v, _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtss_f32(v);
}
#endif

// A box of coordinates, from low to high on each axis.
struct Bounds {
    real lowX;
    real lowY;
    real highX;
    real highY;
};

// Two cells meet only where their members come within reach of each other. A pair's test
// takes dx = x_j - x_i, j of the later cell B and i of A. Rounding keeps order, so where
// the same difference with a bound of the other cell in place of one member rounds to h or
// beyond, or to -h or below, so does the pair's: then dx * dx >= h * h, and so is the
// squared distance, which the test refuses. The members of A within reach of B's box are
// kept, then the members of B within reach of the box of those: no pair the test would
// take is lost, and those kept stay in their order. NaN coordinates are never within
// reach, as they never pass the test either.
//
#ifdef __SSE2__
// A box and the reach, each spread over the four lanes, for the tests of the cells' members.
struct BoxLanes {
    BoxLanes(const Bounds& box, real h)
        : lowX(_mm_set1_ps(box.lowX)),
          lowY(_mm_set1_ps(box.lowY)),
          highX(_mm_set1_ps(box.highX)),
          highY(_mm_set1_ps(box.highY)),
          reach(_mm_set1_ps(h)),
          negativeReach(_mm_set1_ps(-h)) {}
    __m128 lowX, lowY, highX, highY, reach, negativeReach;
};
#endif

// The slots from first to last of A within reach of B's box, into near, which has room for
// three more; their own box goes to bounds. Coordinates are readable four past last.
uint32_t NearBox(const real* xs, const real* ys, uint32_t first, uint32_t last, const Bounds& box,
                 real h, uint32_t* near, Bounds& bounds) {
    uint32_t count = 0;
#ifdef __SSE2__
    // Four at a time and without branches: a member's place is written whether it is kept
    // or not, and the next one's overwrites it if not.
    const BoxLanes b(box, h);
    const __m128 infinity = _mm_set1_ps(std::numeric_limits<real>::infinity());
    const __m128 negativeInfinity = _mm_set1_ps(-std::numeric_limits<real>::infinity());
    __m128 lowX = infinity;
    __m128 lowY = infinity;
    __m128 highX = negativeInfinity;
    __m128 highY = negativeInfinity;
    for (uint32_t i = first; i < last; i += 4) {
        const __m128 x = _mm_loadu_ps(xs + i);
        const __m128 y = _mm_loadu_ps(ys + i);
        __m128 within =
            _mm_and_ps(_mm_and_ps(_mm_cmplt_ps(_mm_sub_ps(b.lowX, x), b.reach),
                                  _mm_cmpgt_ps(_mm_sub_ps(b.highX, x), b.negativeReach)),
                       _mm_and_ps(_mm_cmplt_ps(_mm_sub_ps(b.lowY, y), b.reach),
                                  _mm_cmpgt_ps(_mm_sub_ps(b.highY, y), b.negativeReach)));
        if (last - i < 4) {
            within = _mm_and_ps(within, FirstLanes(last - i));
        }
        const unsigned bits = static_cast<unsigned>(_mm_movemask_ps(within));
        near[count] = i;
        count += bits & 1;
        near[count] = i + 1;
        count += (bits >> 1) & 1;
        near[count] = i + 2;
        count += (bits >> 2) & 1;
        near[count] = i + 3;
        count += bits >> 3;
        lowX = _mm_min_ps(lowX, Select(within, x, infinity));
        lowY = _mm_min_ps(lowY, Select(within, y, infinity));
        highX = _mm_max_ps(highX, Select(within, x, negativeInfinity));
        highY = _mm_max_ps(highY, Select(within, y, negativeInfinity));
    }
    bounds = {LowestLane(lowX), LowestLane(lowY), HighestLane(highX), HighestLane(highY)};
#else
    bounds = {std::numeric_limits<real>::infinity(), std::numeric_limits<real>::infinity(),
              -std::numeric_limits<real>::infinity(), -std::numeric_limits<real>::infinity()};
    for (uint32_t i = first; i < last; ++i) {
        const real x = xs[i];
        const real y = ys[i];
        if (box.lowX - x < h && box.highX - x > -h && box.lowY - y < h && box.highY - y > -h) {
            near[count++] = i;
            bounds.lowX = std::min(bounds.lowX, x);
            bounds.lowY = std::min(bounds.lowY, y);
            bounds.highX = std::max(bounds.highX, x);
            bounds.highY = std::max(bounds.highY, y);
        }
    }
#endif
    return count;
}

// The slots from first to last of B within reach of the box of A's kept members, into
// near with their coordinates, which have room for three more.
uint32_t NearMembers(const real* xs, const real* ys, uint32_t first, uint32_t last,
                     const Bounds& box, real h, uint32_t* near, real* nearXs, real* nearYs) {
    uint32_t count = 0;
#ifdef __SSE2__
    const BoxLanes b(box, h);
    for (uint32_t j = first; j < last; j += 4) {
        const __m128 x = _mm_loadu_ps(xs + j);
        const __m128 y = _mm_loadu_ps(ys + j);
        __m128 within =
            _mm_and_ps(_mm_and_ps(_mm_cmplt_ps(_mm_sub_ps(x, b.highX), b.reach),
                                  _mm_cmpgt_ps(_mm_sub_ps(x, b.lowX), b.negativeReach)),
                       _mm_and_ps(_mm_cmplt_ps(_mm_sub_ps(y, b.highY), b.reach),
                                  _mm_cmpgt_ps(_mm_sub_ps(y, b.lowY), b.negativeReach)));
        if (last - j < 4) {
            within = _mm_and_ps(within, FirstLanes(last - j));
        }
        const unsigned bits = static_cast<unsigned>(_mm_movemask_ps(within));
        for (unsigned lane = 0; lane < 4; ++lane) {
            near[count] = j + lane;
            nearXs[count] = xs[j + lane];
            nearYs[count] = ys[j + lane];
            count += (bits >> lane) & 1;
        }
    }
#else
    for (uint32_t j = first; j < last; ++j) {
        const real x = xs[j];
        const real y = ys[j];
        if (x - box.highX < h && x - box.lowX > -h && y - box.highY < h && y - box.lowY > -h) {
            near[count] = j;
            nearXs[count] = x;
            nearYs[count] = y;
            ++count;
        }
    }
#endif
    return count;
}

// Hands the hits of slot i among the candidates from first to last to the sink, a run of
// them at a time, so that a list that is full stops the tests: in a pile most are.
template <class Sink, class SlotOf>
void Search(Sink& sink, uint32_t i, real xi, real yi, const real* xs, const real* ys,
            uint32_t first, uint32_t last, real reach, uint32_t* hits, SlotOf slotOf) {
    constexpr uint32_t kRun = 64;
    for (uint32_t from = first; from < last && sink.Open(i); from += kRun) {
        const uint32_t to = std::min(last, from + kRun);
        sink.Add(i, hits, FindHits(xi, yi, xs, ys, from, to, reach, hits), slotOf);
    }
}

// Takes the pairs while both lists have room, as they are found: counts holds each slot's
// list length so far, at most cap.
class CappedSink {
public:
    CappedSink(uint32_t* counts, uint32_t cap, util::VectorPOD<SPH::Pair>& pairs)
        : m_counts(counts), m_cap(cap), m_pairs(pairs) {}
    bool Full() const { return false; }
    bool Open(uint32_t i) const { return m_counts[i] < m_cap; }
    size_t Count() const { return m_pairs.size(); }
    // The hits of slot i, each the slot that slotOf gives for it.
    template <class SlotOf>
    void Add(uint32_t i, const uint32_t* hits, uint32_t count, SlotOf slotOf) {
        const size_t size = m_pairs.size();
        m_pairs.resize(size + count);
        SPH::Pair* out = m_pairs.data() + size;
        // Slot i's count in a register: no pair has j == i.
        uint32_t countI = m_counts[i];
        for (uint32_t k = 0; k < count && countI < m_cap; ++k) {
            const uint32_t j = slotOf(hits[k]);
            const uint32_t countJ = m_counts[j];
            if (countJ < m_cap) {
                *out++ = {i, j, countI++, countJ};
                m_counts[j] = countJ + 1;
            }
        }
        m_counts[i] = countI;
        m_pairs.resize(static_cast<size_t>(out - m_pairs.data()));
    }

private:
    uint32_t* m_counts;
    uint32_t m_cap;
    util::VectorPOD<SPH::Pair>& m_pairs;
};

// Keeps every pair, for the caps or the places in the lists to be settled afterwards in
// the order of the parts, and counts the pairs of each slot. It has room for a budget and
// one more slot's pairs; past the budget it stops the search.
class CollectingSink {
public:
    CollectingSink(SPH::Pair* pairs, uint32_t* counts, size_t budget)
        : m_pairs(pairs), m_counts(counts), m_budget(budget) {}
    bool Full() const { return m_count > m_budget; }
    bool Open(uint32_t) const { return true; }
    template <class SlotOf>
    void Add(uint32_t i, const uint32_t* hits, uint32_t count, SlotOf slotOf) {
        SPH::Pair* out = m_pairs + m_count;
        for (uint32_t k = 0; k < count; ++k) {
            const uint32_t j = slotOf(hits[k]);
            out[k] = {i, j, 0, 0};
            ++m_counts[j];
        }
        m_counts[i] += count;
        m_count += count;
    }
    size_t Count() const { return m_count; }

private:
    SPH::Pair* m_pairs;
    uint32_t* m_counts;
    size_t m_budget;
    size_t m_count = 0;
};

#ifdef __SSE2__
// SPH::Density of four distances, lane by lane, given h * h and 315 k1.
__m128 DensityLanes(__m128 d, __m128 hh, __m128 k) {
    const __m128 x = _mm_sub_ps(hh, _mm_mul_ps(d, d));
    return _mm_mul_ps(_mm_mul_ps(_mm_mul_ps(k, x), x), x);
}
#endif

// The particles lie apart on the heap, and a loop over them waits for each in turn; asking
// for the state of one some way ahead hides most of that.
constexpr size_t kAhead = 8;
void Prefetch(Particle* const* members, size_t slot, size_t last) {
    if (slot + kAhead < last) {
        const Particle* ahead = members[slot + kAhead];
        __builtin_prefetch(&ahead->force);
        __builtin_prefetch(&ahead->tension);
    }
}

#ifdef __SSE2__
// Four lists side by side, those of four slots in a row, for loops that take a particle in
// each lane: each lane runs through its own list in order, so that its sums are the ones
// the particle's own loop would make. A lane whose list has ended keeps its sums; it reads
// its last entry again, which is not added.
struct Lanes {
    Lanes(const Particle::Neighbour* entries, const uint32_t* starts, size_t slot) {
        for (size_t lane = 0; lane < 4; ++lane) {
            lists[lane] = entries + starts[slot + lane];
            lengths[lane] = starts[slot + lane + 1] - starts[slot + lane];
            longest = std::max(longest, lengths[lane]);
        }
        // Every list holds the particle itself.
        ends = _mm_setr_epi32(static_cast<int>(lengths[0]), static_cast<int>(lengths[1]),
                              static_cast<int>(lengths[2]), static_cast<int>(lengths[3]));
    }
    const Particle::Neighbour& At(size_t lane, uint32_t k) const {
        return lists[lane][std::min(k, lengths[lane] - 1)];
    }
    // The lanes whose lists go on to entry k.
    __m128 Active(uint32_t k) const {
        return _mm_castsi128_ps(_mm_cmplt_epi32(_mm_set1_epi32(static_cast<int>(k)), ends));
    }

    const Particle::Neighbour* lists[4];
    uint32_t lengths[4];
    uint32_t longest = 0;
    __m128i ends;
};
#endif

bool IsMovable(const Particle& particle) {
    return !particle.IsImmovable();
}

}  // namespace

SPH::SPH()
    : script::Reflected("SPH"), m_radiusLimits(*this, true), m_influenceLimits(*this, false) {
    RegisterAttributes();
    // The figures read as zero until the first step with water.
    for (const char* figure : {"AVG_neighCount", "AVG_pressure", "AVG_density"}) {
        SetConstant(figure, 0.0f);
    }
    SetConstant("hashInfo", util::String());
}

SPH::~SPH() = default;

void SPH::RegisterAttributes() {
    AddAttrib(radius, "radius", 0.05f);
    AddAttrib(influence, "influence", 2.0f);
    AddAttrib(specialPressure, "specialPressure", true);
    AddAttrib(velocitySmoothing, "velocitySmoothing", true);
    AddAttrib(vaporizeTime, "vaporizeTime", 5.0f);
    AddAttrib(friction, "friction", 0.01f);
    AddAttrib(restitution, "restitution", 0.0f);
    AddAttrib(soundSpeed, "soundSpeed", 20.0f);
    AddAttrib(density, "density", 1.0f);
    AddAttrib(viscosity, "viscosity", 0.5f);
    AddAttrib(pressMultiplier, "pressMultiplier", 1.0f);
    AddAttrib(viscMultiplier, "viscMultiplier", 1.0f);
    AddAttrib(surfaceTension, "surfaceTension", 0.0f);
    AddAttrib(jitter, "jitter", 0.0f);
    AddAttrib(bucketSize, "bucketSize", 2.0f);
    SetLimits();
}

void SPH::SetLimits() {
    using script::NumberRange;
    for (script::AttribPtr<float>* finite :
         {&friction, &restitution, &soundSpeed, &viscosity, &pressMultiplier, &viscMultiplier,
          &surfaceTension, &jitter}) {
        (*finite)->SetLimits(NumberRange::Finite());
    }
    // Water that never evaporates is fine; NaN never compares.
    vaporizeTime->SetLimits(NumberRange::AnyNumber());
    // A particle of no mass divides by zero.
    density->SetLimits(NumberRange::Positive());
    // A cell of no size puts all particles in one; a hundred kernels wide is one already.
    static const NumberRange kBucket(0, NumberRange::Open, 100, NumberRange::Closed);
    bucketSize->SetLimits(kBucket);
    // The kernels divide by the ninth power of h = radius * influence: a kernel of no size,
    // or one too small or too large for float numbers, makes every step's forces NaN. Each
    // of the two is checked with the present value of the other.
    radius->SetLimits(m_radiusLimits);
    influence->SetLimits(m_influenceLimits);
}

SPH::KernelLimits::KernelLimits(const SPH& fluid, bool isRadius)
    : m_fluid(fluid), m_isRadius(isRadius) {}

util::String SPH::KernelLimits::Refusal(const float& value) const {
    if (!(value > 0) || !std::isfinite(value)) {
        return "must be above 0 and finite";
    }
    const double other = m_isRadius ? m_fluid.influence->Get() : m_fluid.radius->Get();
    const double h = value * other;
    if (h < kSmallestKernel || h > kLargestKernel) {
        char text[128];
        std::snprintf(text, sizeof text,
                      "must keep the kernel radius, radius * influence, between %g and %g",
                      kSmallestKernel, kLargestKernel);
        return text;
    }
    return util::String();
}

void SPH::SeedJitter(uint32_t seed) {
    m_random = util::Random(seed);
    m_hasSpareNormal = false;
}

real SPH::Density(real d) const {
    const real x = m_h * m_h - d * d;
    return 315 * m_k1 * x * x * x;
}

real SPH::Gradient(real d) const {
    const real x = m_h - d;
    return 45 * m_k2 * x * x;
}

real SPH::Laplacian(real d) const {
    return 45 * m_k2 * (m_h - d);
}

template <class Visit>
void SPH::ForEachWeight(const Particle::Neighbour* n, size_t listed, Visit visit) const {
    size_t k = 0;
#ifdef __SSE2__
    // The kernel four entries at a time, the visits still one by one and in order, so the
    // sums are the scalar ones. (Particles side by side, a lane each, as for the forces,
    // cost more here than they save.)
    const __m128 hh = _mm_set1_ps(m_h * m_h);
    const __m128 k315 = _mm_set1_ps(315 * m_k1);
    for (; k + 4 <= listed; k += 4) {
        alignas(16) float w[4];
        _mm_store_ps(w, DensityLanes(_mm_setr_ps(n[k].distance, n[k + 1].distance,
                                                 n[k + 2].distance, n[k + 3].distance),
                                     hh, k315));
        for (size_t lane = 0; lane < 4; ++lane) {
            visit(n[k + lane], w[lane]);
        }
    }
#endif
    for (; k < listed; ++k) {
        visit(n[k], Density(n[k].distance));
    }
}

void SPH::Update(const ParticleList& particles, real dt, const ForcesDone* done) {
    VORRA_PROFILE("SPH::Update");
    m_particles.clear();
    if (particles.empty()) {
        return;
    }
    m_particles.resize(particles.size());
    for (size_t k = 0; k < particles.size(); ++k) {
        m_particles[k] = particles[k].Get();
    }
    const real r = radius->Get();
    m_mass = math::Pi * r * r * density->Get();
    FindNeighbors();
    // Jitter comes after the forces' pass and takes the particles in list order.
    const bool jittered = jitter->Get() != 0;
    CalcSPHForces({r, density->Get(), friction->Get(), restitution->Get()}, dt,
                  jittered ? nullptr : done);
    Jitter();
    if (done && jittered) {
        StepWorkers::Get().ForParts(m_particles.size(), kParticleGrain,
                                    [&](size_t, size_t first, size_t last) {
                                        for (size_t k = first; k < last; ++k) {
                                            done->Visit(*m_particles[k]);
                                        }
                                    });
    }
    PublishStatistics();
}

uint32_t SPH::GetNeighbourCap() const {
    const double spread = influence->Get() / 2.0;
    return CapOf(kNeighbourCap * spread * spread);
}

uint32_t SPH::GetCellCap() const {
    const double spread = bucketSize->Get() * influence->Get() / 4.0;
    return CapOf(kCellCap * spread * spread);
}

uint32_t SPH::CapOf(double scaled) {
    // Never below what a few neighbours need, and a count that fits the slots' type.
    return static_cast<uint32_t>(std::clamp(std::ceil(scaled), double{kMinCap}, 1e9));
}

void SPH::FindNeighbors() {
    VORRA_PROFILE("FindNeighbors");
    const real h = GetKernelRadius();
    {
        VORRA_PROFILE("Hashing particles");
        m_hash.Build(m_particles.data(), m_particles.size(), bucketSize->Get() * h);
    }
    VORRA_PROFILE("Building neighbor lists");
    const size_t count = m_hash.MemberCount();
    const size_t cells = m_hash.CellCount();
    // Each list starts with the particle itself.
    m_listCount.resize(count);
    std::fill(m_listCount.begin(), m_listCount.end(), 1u);
    const uint32_t listCap = GetNeighbourCap();
    const uint32_t cellCap = GetCellCap();
    const uint32_t largest = m_hash.LargestCell();
    size_t leftOut = 0;
    if (largest > cellCap) {
        m_hash.ForEachCell([&](const ParticleHash::Cell& cell) {
            leftOut += cell.count - std::min(cell.count, cellCap);
        });
    }

    // The pairs are those that one thread finds taking the cells in table order, the caps
    // applied as it meets them. Threads each search a range of cells, keeping all pairs;
    // the caps then go through their pairs in range order, which gives the same.
    StepWorkers& workers = StepWorkers::Get();
    const size_t room = std::min(largest, cellCap);
    // A cell whose own pairs would pass a thread's budget is a pile, which the caps cut
    // short on one thread.
    const size_t threads = workers.PartsFor(count, kParticleGrain);
    const bool pile = uint64_t{room} * room / 2 > kPairsPerParticle * count / threads;
    const size_t parts = pile ? 1 : threads;
    if (m_searchParts.size() < parts) {
        m_searchParts.resize(parts);
    }
    for (size_t p = 0; p < parts; ++p) {
        SearchPart& part = m_searchParts[p];
        part.nearA.resize(room + ParticleHash::kPadding);
        part.hits.resize(room + ParticleHash::kPadding);
        part.nearB.resize(room + ParticleHash::kPadding);
        part.nearBXs.resize(room + ParticleHash::kPadding);
        part.nearBYs.resize(room + ParticleHash::kPadding);
        part.pairs.clear();
    }
    bool ranked = true;
    if (parts <= 1) {
        CappedSink sink(m_listCount.data(), listCap, m_searchParts[0].pairs);
        SearchCells(0, cells, h, cellCap, m_searchParts[0], sink);
    } else {
        // Ranges of about the same number of members.
        size_t position = 0;
        size_t members = 0;
        for (size_t p = 0; p < parts; ++p) {
            SearchPart& part = m_searchParts[p];
            const size_t before = members;
            const size_t target = count * (p + 1) / parts;
            part.firstCell = position;
            while (position < cells && members < target) {
                members += m_hash.CellInTableOrder(position++).count;
            }
            part.lastCell = position;
            part.budget = kPairsPerParticle * (members - before) + kMinPairBudget;
            part.pairs.resize(part.budget + room);
            part.counts.resize(count);
        }
        workers.ForParts(parts, 1, [&](size_t, size_t first, size_t last) {
            for (size_t p = first; p < last; ++p) {
                SearchPart& part = m_searchParts[p];
                std::fill(part.counts.begin(), part.counts.end(), 0u);
                CollectingSink sink(part.pairs.data(), part.counts.data(), part.budget);
                part.stoppedAt = SearchCells(part.firstCell, part.lastCell, h, cellCap, part, sink);
                // A part that gave up keeps the pairs of the cells it finished.
                part.pairs.resize(part.stoppedAt < part.lastCell ? part.pairsBefore : sink.Count());
            }
        });
        bool complete = true;
        for (size_t p = 0; p < parts; ++p) {
            complete = complete && m_searchParts[p].stoppedAt == m_searchParts[p].lastCell;
        }
        // Where no list would pass its cap, every pair is taken, and a slot's pairs of one
        // part follow those of the parts before: each part's counts become the places of its
        // first pairs.
        ranked = !complete || !PlacePairs(parts, listCap);
        if (ranked) {
            std::fill(m_listCount.begin(), m_listCount.end(), 1u);
            ApplyCaps(parts, h, cellCap, listCap);
        }
    }
    ReportPileUp(leftOut, listCap);
    BuildLists(parts, ranked);
}

bool SPH::PlacePairs(size_t parts, uint32_t listCap) {
    const size_t count = m_hash.MemberCount();
    std::array<bool, StepWorkers::kMaxThreads> over{};
    StepWorkers::Get().ForParts(count, kParticleGrain, [&](size_t part, size_t first, size_t last) {
        bool passed = false;
        for (size_t slot = first; slot < last; ++slot) {
            uint32_t listed = 1;
            for (size_t p = 0; p < parts; ++p) {
                uint32_t& counted = m_searchParts[p].counts[slot];
                const uint32_t found = counted;
                counted = listed;
                listed += found;
            }
            m_listCount[slot] = listed;
            passed = passed || listed > listCap;
        }
        over[part] = passed;
    });
    return std::find(over.begin(), over.end(), true) == over.end();
}

void SPH::ApplyCaps(size_t parts, real h, uint32_t cellCap, uint32_t listCap) {
    // The caps, in the order of a search on one thread.
    const size_t cells = m_hash.CellCount();
    uint32_t* counts = m_listCount.data();
    for (size_t p = 0; p < parts; ++p) {
        SearchPart& part = m_searchParts[p];
        size_t kept = 0;
        for (const Pair& found : part.pairs) {
            if (counts[found.j] < listCap && counts[found.i] < listCap) {
                Pair& pair = part.pairs[kept++];
                pair = found;
                pair.atI = counts[found.i]++;
                pair.atJ = counts[found.j]++;
            }
        }
        part.pairs.resize(kept);
        if (part.stoppedAt < part.lastCell) {
            // A pile: the rest is searched here, the caps applied as the pairs come.
            CappedSink sink(counts, listCap, part.pairs);
            SearchCells(part.stoppedAt, cells, h, cellCap, part, sink);
            for (size_t q = p + 1; q < parts; ++q) {
                m_searchParts[q].pairs.clear();
            }
            return;
        }
    }
}

template <class Sink>
size_t SPH::SearchCells(size_t firstCell, size_t lastCell, real h, uint32_t cellCap,
                        SearchPart& part, Sink& sink) const {
    const real* xs = m_hash.Xs();
    const real* ys = m_hash.Ys();
    const real reach = h * h;
    uint32_t* nearA = part.nearA.data();
    uint32_t* hits = part.hits.data();
    uint32_t* nearB = part.nearB.data();
    real* nearBXs = part.nearBXs.data();
    real* nearBYs = part.nearBYs.data();
    const auto itself = [](uint32_t k) { return k; };
    const auto gathered = [nearB](uint32_t k) { return nearB[k]; };
    for (size_t position = firstCell; position < lastCell; ++position) {
        const ParticleHash::Cell& a = m_hash.CellInTableOrder(position);
        part.pairsBefore = sink.Count();
        const uint32_t endA = a.first + std::min(a.count, cellCap);
        for (uint32_t i = a.first; i < endA; ++i) {
            if (sink.Full()) {
                return position;
            }
            Search(sink, i, xs[i], ys[i], xs, ys, i + 1, endA, reach, hits, itself);
        }
        for (size_t o = 1; o < std::size(kHalfNeighbourhood); ++o) {
            const ParticleHash::Cell* b = m_hash.Find(a.key + kHalfNeighbourhood[o]);
            if (!b) {
                continue;
            }
            // See NearBox.
            Bounds near;
            const uint32_t countA = NearBox(xs, ys, a.first, endA,
                                            {b->minX, b->minY, b->maxX, b->maxY}, h, nearA, near);
            if (countA == 0) {
                continue;
            }
            const uint32_t countB =
                NearMembers(xs, ys, b->first, b->first + std::min(b->count, cellCap), near, h,
                            nearB, nearBXs, nearBYs);
            if (countB == 0) {
                continue;
            }
            for (size_t k = countB; k < countB + ParticleHash::kPadding; ++k) {
                nearBXs[k] = 0;
                nearBYs[k] = 0;
            }
            for (uint32_t k = 0; k < countA; ++k) {
                if (sink.Full()) {
                    return position;
                }
                const uint32_t i = nearA[k];
                Search(sink, i, xs[i], ys[i], nearBXs, nearBYs, 0, countB, reach, hits, gathered);
            }
        }
    }
    return lastCell;
}

void SPH::BuildLists(size_t parts, bool ranked) {
    // Each list is the particle itself followed by its pairs in the order they were taken,
    // all lists in one store in slot order. Each pair knows its places, or each part where
    // its first pair of each slot goes, so the parts fill the store side by side.
    const size_t count = m_hash.MemberCount();
    m_listStart.resize(count + 1);
    m_listStart[0] = 0;
    for (size_t slot = 0; slot < count; ++slot) {
        m_listStart[slot + 1] = m_listStart[slot] + m_listCount[slot];
    }
    m_entries.resize(m_listStart[count]);
    const real* xs = m_hash.Xs();
    const real* ys = m_hash.Ys();
    Particle::Neighbour* entries = m_entries.data();
    const uint32_t* starts = m_listStart.data();
    // Captured by value: the stores into the lists then leave the pointers in registers.
    const auto enter = [xs, ys, entries, starts](const Pair& pair, uint32_t atI, uint32_t atJ) {
        // The expressions of the test, so the same bits.
        const Vec2 delta(xs[pair.j] - xs[pair.i], ys[pair.j] - ys[pair.i]);
        const real distance = SquareRoot(delta.x * delta.x + delta.y * delta.y);
        entries[starts[pair.i] + atI] = {pair.j, distance};
        entries[starts[pair.j] + atJ] = {pair.i, distance};
    };
    StepWorkers& workers = StepWorkers::Get();
    workers.ForParts(parts, 1, [&](size_t, size_t first, size_t last) {
        for (size_t p = first; p < last; ++p) {
            SearchPart& part = m_searchParts[p];
            if (ranked) {
                for (const Pair& pair : part.pairs) {
                    enter(pair, pair.atI, pair.atJ);
                }
            } else {
                uint32_t* at = part.counts.data();
                for (const Pair& pair : part.pairs) {
                    enter(pair, at[pair.i]++, at[pair.j]++);
                }
            }
        }
    });
    // The particles are given their lists with their densities, which touch them anyway.
    workers.ForParts(count, kParticleGrain, [&](size_t, size_t first, size_t last) {
        for (size_t slot = first; slot < last; ++slot) {
            entries[starts[slot]] = {static_cast<uint32_t>(slot), 0};
        }
    });
}

void SPH::ReportPileUp(size_t leftOut, uint32_t listCap) {
    size_t full = 0;
    for (uint32_t listed : m_listCount) {
        full += listed >= listCap ? 1 : 0;
    }
    if (leftOut > 0 && !m_leftOutLogged) {
        Log(logging::Warning,
            "Too much water in one place: " + util::LexicalCast<util::String>(leftOut) +
                " particles there are left out of the fluid and evaporate");
    }
    m_leftOutLogged = leftOut > 0;
    if (full > 0 && !m_fullListsLogged) {
        Log(logging::Warning,
            "Too much water in one place: " + util::LexicalCast<util::String>(full) +
                " particles there see only " + util::LexicalCast<util::String>(listCap - 1) +
                " of their neighbours");
    }
    m_fullListsLogged = full > 0;
}

void SPH::CalcSPHForces(const ParticleMaterial& material, real dt, const ForcesDone* done) {
    VORRA_PROFILE("CalcSPHForces");
    m_h = GetKernelRadius();
    // The three-dimensional normalisations, kept in two dimensions.
    const double h = m_h;
    m_k1 = static_cast<real>(1.0 / (std::pow(h, 9) * 201.06194));
    m_k2 = static_cast<real>(1.0 / (std::pow(h, 6) * 3.1415927));

    // The neighbours' state is read by slot from arrays in slot order, which keeps the
    // reads close together; each particle's sums still run in its list's order. Each
    // particle is computed on its own, first the densities of all, then the forces. The
    // vector toward a neighbour is taken from the places of the search by slot: the
    // difference either way round is the same number but for the sign of a zero, which
    // no sum sees, as a sum that starts at +0 is never -0.
    const size_t count = m_particles.size();
    const real* xs = m_hash.Xs();
    const real* ys = m_hash.Ys();
    m_slotStates.resize(count);
    Particle* const* members = m_hash.Members();
    const Particle::Neighbour* entries = m_entries.data();
    const uint32_t* starts = m_listStart.data();
    StepWorkers& workers = StepWorkers::Get();
    const real m = m_mass;
    const real c = soundSpeed->Get();
    const real restDensity = density->Get();
    // The pass that gives the particles their densities also gives them the fluid's
    // material and ages those with fewer than two in their list: each touches them anyway.
    const auto setDensity = [&](size_t slot, real sum) {
        Particle& particle = *members[slot];
        particle.SetProps(material.radius, material.density, material.friction,
                          material.restitution);
        const uint32_t listed = starts[slot + 1] - starts[slot];
        particle.age = listed < 2 ? particle.age + dt : 0;
        particle.neighbours = Particle::NeighbourList(entries + starts[slot],
                                                      entries + starts[slot + 1], members, xs, ys);
        particle.density = m * sum;
        // A linear equation of state; below the rest density the pressure pulls.
        particle.pressure = c * c * (particle.density - restDensity);
        m_slotStates[slot] = {particle.density, particle.pressure, particle.velocity};
    };
    workers.ForParts(count, kParticleGrain, [&](size_t, size_t first, size_t last) {
        for (size_t slot = first; slot < last; ++slot) {
            Prefetch(members, slot, last);
            real sum = 0;
            ForEachWeight(entries + starts[slot], starts[slot + 1] - starts[slot],
                          [&](const Particle::Neighbour&, real w) { sum += w; });
            setDensity(slot, sum);
        }
    });

    const bool special = specialPressure->Get();
    const real tensionScale = surfaceTension->Get();
    const real pressScale = pressMultiplier->Get();
    const real viscosityScale = viscMultiplier->Get() * viscosity->Get();
    const SlotState* states = m_slotStates.data();
    const auto addForce = [&](size_t slot, const Vec2& pressureSum, const Vec2& tensionSum,
                              const Vec2& viscositySum) {
        Particle& i = *members[slot];
        i.tension = tensionScale * m * tensionSum;
        if (IsMovable(i)) {
            i.force +=
                m * (-m * pressScale * pressureSum + viscosityScale * m * viscositySum + i.tension);
        }
        if (done) {
            done->Visit(i);
        }
    };
    workers.ForParts(count, kParticleGrain, [&](size_t, size_t first, size_t last) {
        size_t slot = first;
#ifdef __SSE2__
        const __m128 two = _mm_set1_ps(2);
        const __m128 vH = _mm_set1_ps(m_h);
        const __m128 vK = _mm_set1_ps(45 * m_k2);
        for (; slot + 4 <= last; slot += 4) {
            for (size_t lane = 0; lane < 4; ++lane) {
                Prefetch(members, slot + lane, last);
            }
            const Lanes lanes(entries, starts, slot);
            // The scalar arithmetic below, lane by lane.
            __m128 rhoI = _mm_loadu_ps(&states[slot].density);
            __m128 pI = _mm_loadu_ps(&states[slot + 1].density);
            __m128 vIx = _mm_loadu_ps(&states[slot + 2].density);
            __m128 vIy = _mm_loadu_ps(&states[slot + 3].density);
            _MM_TRANSPOSE4_PS(rhoI, pI, vIx, vIy);
            const __m128 xI = _mm_loadu_ps(xs + slot);
            const __m128 yI = _mm_loadu_ps(ys + slot);
            const __m128 twoRhoI = _mm_mul_ps(two, rhoI);
            const __m128 pIOverRho = _mm_div_ps(pI, _mm_mul_ps(rhoI, rhoI));
            __m128 pressureX = _mm_setzero_ps();
            __m128 pressureY = _mm_setzero_ps();
            __m128 tensionX = _mm_setzero_ps();
            __m128 tensionY = _mm_setzero_ps();
            __m128 viscosityX = _mm_setzero_ps();
            __m128 viscosityY = _mm_setzero_ps();
            for (uint32_t k = 0; k < lanes.longest; ++k) {
                const Particle::Neighbour& n0 = lanes.At(0, k);
                const Particle::Neighbour& n1 = lanes.At(1, k);
                const Particle::Neighbour& n2 = lanes.At(2, k);
                const Particle::Neighbour& n3 = lanes.At(3, k);
                // Each neighbour's state in one load, the four turned into lanes.
                __m128 rhoJ = _mm_loadu_ps(&states[n0.slot].density);
                __m128 pJ = _mm_loadu_ps(&states[n1.slot].density);
                __m128 vJx = _mm_loadu_ps(&states[n2.slot].density);
                __m128 vJy = _mm_loadu_ps(&states[n3.slot].density);
                _MM_TRANSPOSE4_PS(rhoJ, pJ, vJx, vJy);
                const __m128 d = _mm_setr_ps(n0.distance, n1.distance, n2.distance, n3.distance);
                const __m128 dx =
                    _mm_sub_ps(_mm_setr_ps(xs[n0.slot], xs[n1.slot], xs[n2.slot], xs[n3.slot]), xI);
                const __m128 dy =
                    _mm_sub_ps(_mm_setr_ps(ys[n0.slot], ys[n1.slot], ys[n2.slot], ys[n3.slot]), yI);
                const __m128 t =
                    special ? _mm_div_ps(_mm_add_ps(pI, pJ), _mm_mul_ps(twoRhoI, rhoJ))
                            : _mm_add_ps(_mm_div_ps(pJ, _mm_mul_ps(rhoJ, rhoJ)), pIOverRho);
                const __m128 x = _mm_sub_ps(vH, d);
                const __m128 g = _mm_mul_ps(_mm_mul_ps(vK, x), x);
                const __m128 laplacian = _mm_mul_ps(vK, x);
                const __m128 gx = _mm_mul_ps(g, dx);
                const __m128 gy = _mm_mul_ps(g, dy);
                const __m128 rhoJI = _mm_mul_ps(rhoJ, rhoI);
                // A lane past its list adds +0, which leaves its sum as it is: a sum that
                // starts at +0 is never -0. The masks stay off the sums' chains.
                const __m128 active = lanes.Active(k);
                pressureX = _mm_add_ps(pressureX, _mm_and_ps(active, _mm_mul_ps(gx, t)));
                pressureY = _mm_add_ps(pressureY, _mm_and_ps(active, _mm_mul_ps(gy, t)));
                tensionX = _mm_add_ps(tensionX, _mm_and_ps(active, _mm_div_ps(gx, rhoJ)));
                tensionY = _mm_add_ps(tensionY, _mm_and_ps(active, _mm_div_ps(gy, rhoJ)));
                viscosityX = _mm_add_ps(
                    viscosityX,
                    _mm_and_ps(active,
                               _mm_div_ps(_mm_mul_ps(_mm_sub_ps(vJx, vIx), laplacian), rhoJI)));
                viscosityY = _mm_add_ps(
                    viscosityY,
                    _mm_and_ps(active,
                               _mm_div_ps(_mm_mul_ps(_mm_sub_ps(vJy, vIy), laplacian), rhoJI)));
            }
            alignas(16) float sums[6][4];
            _mm_store_ps(sums[0], pressureX);
            _mm_store_ps(sums[1], pressureY);
            _mm_store_ps(sums[2], tensionX);
            _mm_store_ps(sums[3], tensionY);
            _mm_store_ps(sums[4], viscosityX);
            _mm_store_ps(sums[5], viscosityY);
            for (size_t lane = 0; lane < 4; ++lane) {
                addForce(slot + lane, Vec2(sums[0][lane], sums[1][lane]),
                         Vec2(sums[2][lane], sums[3][lane]), Vec2(sums[4][lane], sums[5][lane]));
            }
        }
#endif
        for (; slot < last; ++slot) {
            const real rhoI = states[slot].density;
            const real pI = states[slot].pressure;
            const Vec2 vI = states[slot].velocity;
            Vec2 pressureSum(0, 0);
            Vec2 tensionSum(0, 0);
            Vec2 viscositySum(0, 0);
            // The entry of the particle itself adds nothing: its vector and velocity
            // difference are 0.
            for (const Particle::Neighbour* n = entries + starts[slot];
                 n != entries + starts[slot + 1]; ++n) {
                const real rhoJ = states[n->slot].density;
                const real pJ = states[n->slot].pressure;
                const real t = special ? (pI + pJ) / (2 * rhoI * rhoJ)
                                       : pJ / (rhoJ * rhoJ) + pI / (rhoI * rhoI);
                const real g = Gradient(n->distance);
                const Vec2 delta(xs[n->slot] - xs[slot], ys[n->slot] - ys[slot]);
                pressureSum += g * delta * t;
                tensionSum += g * delta / rhoJ;
                viscositySum +=
                    (states[n->slot].velocity - vI) * Laplacian(n->distance) / (rhoJ * rhoI);
            }
            addForce(slot, pressureSum, tensionSum, viscositySum);
        }
    });
}

real SPH::NextNormal() {
    if (m_hasSpareNormal) {
        m_hasSpareNormal = false;
        return m_spareNormal;
    }
    // A uniform of exactly 0 would give an infinite radius; the smallest positive float
    // stands in for it.
    const real u1 = std::max(m_random.GetUniform(0, 1), std::numeric_limits<real>::min());
    const real u2 = m_random.GetUniform(0, 1);
    const real r = std::sqrt(-2 * std::log(u1));
    const real turn = 2 * math::Pi * u2;
    m_spareNormal = r * std::sin(turn);
    m_hasSpareNormal = true;
    return r * std::cos(turn);
}

void SPH::Jitter() {
    const real amount = jitter->Get();
    if (amount == 0) {
        return;
    }
    VORRA_PROFILE("Jitter");
    const real scale = m_mass * amount;
    for (Particle* particle : m_particles) {
        const real n1 = NextNormal();
        const real n2 = NextNormal();
        if (IsMovable(*particle)) {
            particle->force.y += scale * n1;
            particle->force.x += scale * n2;
        }
    }
}

void SPH::PublishStatistics() {
    VORRA_PROFILE("Statistics");
    double neighbours = 0;
    double pressure = 0;
    double densitySum = 0;
    // Summed in list order, from the copies by slot that the forces read.
    const uint32_t* starts = m_listStart.data();
    for (size_t k = 0; k < m_particles.size(); ++k) {
        const uint32_t slot = m_hash.SlotOf(k);
        neighbours += static_cast<double>(starts[slot + 1] - starts[slot]);
        pressure += m_slotStates[slot].pressure;
        densitySum += m_slotStates[slot].density;
    }
    const double count = static_cast<double>(m_particles.size());
    SetConstant("AVG_neighCount", static_cast<float>(neighbours / count));
    SetConstant("AVG_pressure", static_cast<float>(pressure / count));
    SetConstant("AVG_density", static_cast<float>(densitySum / count));

    const size_t cells = m_hash.CellCount();
    const size_t buckets = m_hash.BucketCount();
    const float average = buckets ? static_cast<float>(cells) / static_cast<float>(buckets) : 0;
    SetConstant("hashInfo", "Number of elements:  " + util::LexicalCast<util::String>(cells) +
                                "\n" +
                                "Average bucket size: " + util::LexicalCast<util::String>(average) +
                                "\n" + "Maximum bucket size: " +
                                util::LexicalCast<util::String>(m_hash.LargestBucket()) + "\n");
}

void SPH::SmoothVelocities() {
    if (!velocitySmoothing->Get() || m_particles.empty()) {
        return;
    }
    VORRA_PROFILE("SPH vel-smoothing");
    const size_t count = m_particles.size();
    m_slotVelocity.resize(count);
    Particle* const* members = m_hash.Members();
    const Particle::Neighbour* entries = m_entries.data();
    const uint32_t* starts = m_listStart.data();
    StepWorkers& workers = StepWorkers::Get();
    workers.ForParts(count, kParticleGrain, [&](size_t, size_t first, size_t last) {
        for (size_t slot = first; slot < last; ++slot) {
            Prefetch(members, slot, last);
            m_slotVelocity[slot] = members[slot]->velocity;
        }
    });
    // The means read the copies only: a Jacobi pass, the same whatever the particles' order.
    const Vec2* slotVelocity = m_slotVelocity.data();
    const auto setMean = [&](size_t slot, real weights, const Vec2& sum) {
        Particle& particle = *members[slot];
        if (IsMovable(particle)) {
            particle.velocity = sum / weights;
        }
    };
    workers.ForParts(count, kParticleGrain, [&](size_t, size_t first, size_t last) {
        for (size_t slot = first; slot < last; ++slot) {
            Prefetch(members, slot, last);
            // The lists of the last Update, which the particles hold too.
            const Particle::Neighbour* n = entries + starts[slot];
            const size_t listed = starts[slot + 1] - starts[slot];
#ifdef __SSE2__
            // The three sums side by side, (x, y, weights): each entry adds w (v.x, v.y, 1),
            // the same numbers as the sums one by one, as w * 1 is w. The weights are those
            // of ForEachWeight, kept in their vector: its scalar visits cost back most of
            // what the packing saves.
            const __m128 hh = _mm_set1_ps(m_h * m_h);
            const __m128 k315 = _mm_set1_ps(315 * m_k1);
            const __m128 ones = _mm_set1_ps(1);
            const auto velocityAndOne = [&](uint32_t other) {
                return _mm_loadl_pi(ones, reinterpret_cast<const __m64*>(&slotVelocity[other]));
            };
            __m128 sums = _mm_setzero_ps();
            size_t k = 0;
            for (; k + 4 <= listed; k += 4) {
                const __m128 w = DensityLanes(_mm_setr_ps(n[k].distance, n[k + 1].distance,
                                                          n[k + 2].distance, n[k + 3].distance),
                                              hh, k315);
                sums = _mm_add_ps(sums, _mm_mul_ps(_mm_shuffle_ps(w, w, _MM_SHUFFLE(0, 0, 0, 0)),
                                                   velocityAndOne(n[k].slot)));
                sums = _mm_add_ps(sums, _mm_mul_ps(_mm_shuffle_ps(w, w, _MM_SHUFFLE(1, 1, 1, 1)),
                                                   velocityAndOne(n[k + 1].slot)));
                sums = _mm_add_ps(sums, _mm_mul_ps(_mm_shuffle_ps(w, w, _MM_SHUFFLE(2, 2, 2, 2)),
                                                   velocityAndOne(n[k + 2].slot)));
                sums = _mm_add_ps(sums, _mm_mul_ps(_mm_shuffle_ps(w, w, _MM_SHUFFLE(3, 3, 3, 3)),
                                                   velocityAndOne(n[k + 3].slot)));
            }
            for (; k < listed; ++k) {
                sums = _mm_add_ps(sums, _mm_mul_ps(_mm_set1_ps(Density(n[k].distance)),
                                                   velocityAndOne(n[k].slot)));
            }
            alignas(16) float lanes[4];
            _mm_store_ps(lanes, sums);
            setMean(slot, lanes[2], Vec2(lanes[0], lanes[1]));
#else
            real weights = 0;
            Vec2 sum(0, 0);
            ForEachWeight(n, listed, [&](const Particle::Neighbour& entry, real w) {
                weights += w;
                sum += w * slotVelocity[entry.slot];
            });
            setMean(slot, weights, sum);
#endif
        }
    });
}

}  // namespace physics
