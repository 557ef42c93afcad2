#include "physics/SPH.h"

#include <algorithm>
#include <cmath>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Particle.h"
#include "util/LexicalCast.h"
#include "util/Profiler.h"

namespace physics {

using math::real;
using math::Vec2;

namespace {

// Half the neighbourhood of a cell: each pair of cells meets once, and each pair of
// particles records itself both ways.
const ParticleHash::Key kHalfNeighbourhood[] = {{0, 0}, {0, 1}, {1, -1}, {1, 0}, {1, 1}};

// Appends the pairs of slot i with the slots from first to last whose squared distance is
// below reach, in the order of the slots, while both lists have room: counts holds each
// slot's list length so far, at most cap. Four candidates are tested at once; their
// arithmetic is the scalar one, lane by lane, so the distances are the same bits.
void FindPairs(uint32_t i, uint32_t first, uint32_t last, const real* xs, const real* ys,
               real reach, uint32_t* counts, uint32_t cap, util::VectorPOD<SPH::Pair>& pairs) {
    auto add = [&](uint32_t j, real d2) {
        if (counts[j] < cap && counts[i] < cap) {
            pairs.push_back({i, j, std::sqrt(d2), Vec2(xs[j] - xs[i], ys[j] - ys[i])});
            ++counts[i];
            ++counts[j];
        }
    };
#ifdef __SSE2__
    static_assert(ParticleHash::kPadding >= 4);
    const __m128 xi = _mm_set1_ps(xs[i]);
    const __m128 yi = _mm_set1_ps(ys[i]);
    const __m128 limit = _mm_set1_ps(reach);
    for (uint32_t j = first; j < last && counts[i] < cap; j += 4) {
        const __m128 dx = _mm_sub_ps(_mm_loadu_ps(xs + j), xi);
        const __m128 dy = _mm_sub_ps(_mm_loadu_ps(ys + j), yi);
        const __m128 d2 = _mm_add_ps(_mm_mul_ps(dx, dx), _mm_mul_ps(dy, dy));
        unsigned mask = static_cast<unsigned>(_mm_movemask_ps(_mm_cmplt_ps(d2, limit)));
        if (last - j < 4) {
            // Lanes past the last candidate read padding.
            mask &= (1u << (last - j)) - 1;
        }
        if (mask == 0) {
            continue;
        }
        alignas(16) float lanes[4];
        _mm_store_ps(lanes, d2);
        while (mask != 0) {
            const unsigned k = static_cast<unsigned>(__builtin_ctz(mask));
            mask &= mask - 1;
            add(j + k, lanes[k]);
        }
    }
#else
    for (uint32_t j = first; j < last && counts[i] < cap; ++j) {
        const real dx = xs[j] - xs[i];
        const real dy = ys[j] - ys[i];
        const real d2 = dx * dx + dy * dy;
        if (d2 < reach) {
            add(j, d2);
        }
    }
#endif
}

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

void SPH::Update(const ParticleList& particles, real dt) {
    VORRA_PROFILE("SPH::Update");
    m_particles.clear();
    if (particles.empty()) {
        return;
    }
    for (const ParticlePtr& particle : particles) {
        m_particles.push_back(particle.Get());
    }
    {
        VORRA_PROFILE("Update rad/density");
        const real r = radius->Get();
        const real rho = density->Get();
        const real mu = friction->Get();
        const real e = restitution->Get();
        m_mass = math::Pi * r * r * rho;
        for (Particle* particle : m_particles) {
            particle->SetProps(r, rho, mu, e);
        }
    }
    FindNeighbors();
    CalcSPHForces();
    Evaporate(dt);
    Jitter();
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
    const real* xs = m_hash.Xs();
    const real* ys = m_hash.Ys();
    const real reach = h * h;
    const size_t count = m_hash.MemberCount();
    // Each list starts with the particle itself.
    m_listCount.resize(count);
    std::fill(m_listCount.begin(), m_listCount.end(), 1u);
    const uint32_t listCap = GetNeighbourCap();
    const uint32_t cellCap = GetCellCap();
    size_t leftOut = 0;
    // The pairs first, in the order the cells meet them; each list is then the particle
    // itself followed by its pairs in that order, all lists in one store in slot order.
    m_pairs.clear();
    m_hash.ForEachCell([&](const ParticleHash::Cell& a) {
        const uint32_t countA = std::min(a.count, cellCap);
        leftOut += a.count - countA;
        for (const ParticleHash::Key& offset : kHalfNeighbourhood) {
            const ParticleHash::Cell* b = m_hash.Find(a.key + offset);
            if (!b) {
                continue;
            }
            const bool same = b == &a;
            const uint32_t endB = b->first + std::min(b->count, cellCap);
            for (uint32_t i = a.first; i < a.first + countA; ++i) {
                FindPairs(i, same ? i + 1 : b->first, endB, xs, ys, reach, m_listCount.data(),
                          listCap, m_pairs);
            }
        }
    });
    ReportPileUp(leftOut, listCap);

    m_listStart.resize(count + 1);
    m_listStart[0] = 0;
    for (size_t slot = 0; slot < count; ++slot) {
        m_listStart[slot + 1] = m_listStart[slot] + m_listCount[slot];
    }
    m_entries.resize(m_listStart[count]);
    m_listEnd.assign(m_listStart.begin(), m_listStart.begin() + count);
    Particle* const* members = m_hash.Members();
    for (uint32_t slot = 0; slot < count; ++slot) {
        m_entries[m_listEnd[slot]++] = {members[slot], slot, 0, {0, 0}};
    }
    for (const Pair& pair : m_pairs) {
        m_entries[m_listEnd[pair.i]++] = {members[pair.j], pair.j, pair.distance, pair.delta};
        m_entries[m_listEnd[pair.j]++] = {members[pair.i], pair.i, pair.distance, -pair.delta};
    }
    const Particle::Neighbour* entries = m_entries.data();
    for (size_t slot = 0; slot < count; ++slot) {
        members[slot]->neighbours =
            Particle::NeighbourList(entries + m_listStart[slot], entries + m_listStart[slot + 1]);
    }
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

void SPH::CalcSPHForces() {
    VORRA_PROFILE("CalcSPHForces");
    m_h = GetKernelRadius();
    // The three-dimensional normalisations, kept in two dimensions.
    const double h = m_h;
    m_k1 = static_cast<real>(1.0 / (std::pow(h, 9) * 201.06194));
    m_k2 = static_cast<real>(1.0 / (std::pow(h, 6) * 3.1415927));

    // The neighbours' state is read by slot from arrays in slot order, which keeps the
    // reads close together; each particle's sums still run in its list's order.
    const size_t count = m_particles.size();
    m_slotDensity.resize(count);
    m_slotPressure.resize(count);
    m_slotVelocity.resize(count);
    const real m = m_mass;
    const real c = soundSpeed->Get();
    const real restDensity = density->Get();
    for (size_t k = 0; k < count; ++k) {
        Particle& particle = *m_particles[k];
        const uint32_t slot = m_hash.SlotOf(k);
        real sum = 0;
        for (const Particle::Neighbour& n : particle.neighbours) {
            sum += Density(n.distance);
        }
        particle.density = m * sum;
        // A linear equation of state; below the rest density the pressure pulls.
        particle.pressure = c * c * (particle.density - restDensity);
        m_slotDensity[slot] = particle.density;
        m_slotPressure[slot] = particle.pressure;
        m_slotVelocity[slot] = particle.velocity;
    }

    const bool special = specialPressure->Get();
    const real tensionScale = surfaceTension->Get();
    const real pressScale = pressMultiplier->Get();
    const real viscosityScale = viscMultiplier->Get() * viscosity->Get();
    for (Particle* particle : m_particles) {
        Particle& i = *particle;
        const real rhoI = i.density;
        const real pI = i.pressure;
        const Vec2 vI = i.velocity;
        Vec2 pressureSum(0, 0);
        Vec2 tensionSum(0, 0);
        Vec2 viscositySum(0, 0);
        // The entry of the particle itself adds nothing: its vector and velocity
        // difference are 0.
        for (const Particle::Neighbour& n : i.neighbours) {
            const real rhoJ = m_slotDensity[n.slot];
            const real pJ = m_slotPressure[n.slot];
            const real t =
                special ? (pI + pJ) / (2 * rhoI * rhoJ) : pJ / (rhoJ * rhoJ) + pI / (rhoI * rhoI);
            const real g = Gradient(n.distance);
            pressureSum += g * n.delta * t;
            tensionSum += g * n.delta / rhoJ;
            viscositySum += (m_slotVelocity[n.slot] - vI) * Laplacian(n.distance) / (rhoJ * rhoI);
        }
        i.tension = tensionScale * m * tensionSum;
        if (IsMovable(i)) {
            i.force +=
                m * (-m * pressScale * pressureSum + viscosityScale * m * viscositySum + i.tension);
        }
    }
}

void SPH::Evaporate(real dt) {
    VORRA_PROFILE("Evaporation");
    for (Particle* particle : m_particles) {
        if (particle->neighbours.size() < 2) {
            particle->age += dt;
        } else {
            particle->age = 0;
        }
    }
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
    for (const Particle* particle : m_particles) {
        neighbours += static_cast<double>(particle->neighbours.size());
        pressure += particle->pressure;
        densitySum += particle->density;
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
    m_smoothed.resize(count);
    for (size_t k = 0; k < count; ++k) {
        m_slotVelocity[m_hash.SlotOf(k)] = m_particles[k]->velocity;
    }
    for (size_t k = 0; k < count; ++k) {
        real weights = 0;
        Vec2 sum(0, 0);
        for (const Particle::Neighbour& n : m_particles[k]->neighbours) {
            const real w = Density(n.distance);
            weights += w;
            sum += w * m_slotVelocity[n.slot];
        }
        m_smoothed[k] = sum / weights;
    }
    // Written only now: a Jacobi pass, the same whatever the particles' order.
    for (size_t k = 0; k < count; ++k) {
        if (IsMovable(*m_particles[k])) {
            m_particles[k]->velocity = m_smoothed[k];
        }
    }
}

}  // namespace physics
