#pragma once

#include <cstddef>
#include <vector>

#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/Forward.h"
#include "physics/Particle.h"
#include "physics/ParticleHash.h"
#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Random.h"
#include "util/Singleton.h"
#include "util/String.h"
#include "util/VectorPOD.h"

namespace physics {

// The water: smoothed-particle hydrodynamics over the simulation's particles. Densities and
// pressures come from the neighbours within the kernel radius h = radius * influence; the
// forces are added to the particles' accumulators, and the simulation's solver and
// integrators then move them like any body. A mild, soft, compressible fluid: its speed of
// sound is a setting, not a physical value. In the language it is the object "SPH".
class SPH : public script::Reflected, public util::Singleton<SPH> {
public:
    SPH();
    ~SPH() override;
    SPH(const SPH&) = delete;
    SPH& operator=(const SPH&) = delete;

    // What a step does with each particle once its forces are final.
    class ForcesDone {
    public:
        virtual ~ForcesDone() = default;
        // Called once per particle, on the threads of the step, touching that particle only.
        virtual void Visit(Particle& particle) const = 0;
    };

    // One fluid step: the particles take the present settings, find their neighbours, and
    // get pressure, viscosity, tension and jitter forces; lonely ones age. Publishes the
    // averages. Nothing happens to an empty list. Where done is given, each particle is
    // handed to it once its forces are final, while the fluid's last pass holds it.
    void Update(const ParticleList& particles, math::real dt, const ForcesDone* done = nullptr);
    // After integration: each particle of the last Update takes the kernel-weighted mean
    // velocity of its neighbourhood. Computed for all before any is written, so the result
    // does not depend on the particles' order. Nothing without velocitySmoothing.
    void SmoothVelocities();

    // The kernel radius h, and the kernels at distance d below it, with the constants of
    // the last Update.
    math::real GetKernelRadius() const { return radius->Get() * influence->Get(); }
    // The particles' places as the last Update read them, in the order of its list.
    const math::Vec2* GetPlaces() const { return m_hash.Places(); }
    math::real Density(math::real d) const;    // poly6
    math::real Gradient(math::real d) const;   // of the spiky kernel
    math::real Laplacian(math::real d) const;  // of the viscosity kernel
    // The mass of one particle in the last Update.
    math::real GetParticleMass() const { return m_mass; }
    const ParticleHash& GetHash() const { return m_hash; }

    // Water piled up beyond any that a scene holds is bounded in what it costs: a cell of
    // the hash lets at most GetCellCap() particles take part, in their order, and a
    // neighbour list holds at most GetNeighbourCap() entries, the particle itself among
    // them. Both grow with the neighbourhood's area: the caps are kCellCap and
    // kNeighbourCap with the default bucketSize and influence. Water at rest and in a
    // breaking dam of 80,000 particles stays below half of them.
    static constexpr double kCellCap = 1024;
    static constexpr double kNeighbourCap = 512;
    static constexpr uint32_t kMinCap = 32;
    uint32_t GetCellCap() const;
    uint32_t GetNeighbourCap() const;

    // The kernel radius h = radius * influence that radius and influence keep to.
    static constexpr double kSmallestKernel = 1e-4;
    static constexpr double kLargestKernel = 1e4;

    // A fixed start for the jitter's random stream, for runs that must repeat.
    void SeedJitter(uint32_t seed);
    // Where the jitter's stream stands, so that a restored world draws what it drew.
    struct JitterState {
        util::Random random;
        math::real spareNormal = 0;
        bool hasSpareNormal = false;
    };
    JitterState GetJitterState() const { return {m_random, m_spareNormal, m_hasSpareNormal}; }
    void SetJitterState(const JitterState& state) {
        m_random = state.random;
        m_spareNormal = state.spareNormal;
        m_hasSpareNormal = state.hasSpareNormal;
    }

    script::AttribPtr<float> radius;
    script::AttribPtr<float> influence;
    script::AttribPtr<bool> specialPressure;
    script::AttribPtr<bool> velocitySmoothing;
    script::AttribPtr<float> vaporizeTime;
    script::AttribPtr<float> friction;
    script::AttribPtr<float> restitution;
    script::AttribPtr<float> soundSpeed;
    script::AttribPtr<float> density;
    script::AttribPtr<float> viscosity;
    script::AttribPtr<float> pressMultiplier;
    script::AttribPtr<float> viscMultiplier;
    script::AttribPtr<float> surfaceTension;
    script::AttribPtr<float> jitter;
    script::AttribPtr<float> bucketSize;

    // A pair of slots within the kernel radius, and once the caps let it in, its places in
    // the two lists.
    struct Pair {
        uint32_t i;
        uint32_t j;
        uint32_t atI;
        uint32_t atJ;
    };

private:
    // Calls visit(entry, Density(entry.distance)) for each entry of a list, in order.
    template <class Visit>
    void ForEachWeight(const Particle::Neighbour* list, size_t count, Visit visit) const;
    // The limits of radius and influence, which depend on each other.
    class KernelLimits : public script::ValueLimits<float> {
    public:
        KernelLimits(const SPH& fluid, bool isRadius);
        util::String Refusal(const float& value) const override;

    private:
        const SPH& m_fluid;
        bool m_isRadius;
    };

    void RegisterAttributes();
    void SetLimits();
    // The neighbour search of one thread: a range of cells in table order, the pairs found
    // there, and room for the members of two cells that may meet.
    struct SearchPart {
        size_t firstCell = 0;
        size_t lastCell = 0;
        // Pairs found beyond this many leave the rest of the search to the calling thread,
        // from the cell where it stopped, with the pairs found before that cell.
        size_t budget = 0;
        size_t stoppedAt = 0;
        size_t pairsBefore = 0;
        util::VectorPOD<Pair> pairs;
        // Per slot: the pairs found, then the place of the next one in its list.
        util::VectorPOD<uint32_t> counts;
        // The hits of one slot, and the members of two cells that may meet, those of the
        // later one with their coordinates.
        util::VectorPOD<uint32_t> hits;
        util::VectorPOD<uint32_t> nearA;
        util::VectorPOD<uint32_t> nearB;
        util::VectorPOD<math::real> nearBXs;
        util::VectorPOD<math::real> nearBYs;
    };
    // The lists of the particles in m_entries, each particle's own first; the particles
    // take theirs with their densities, which touch them anyway.
    void FindNeighbors();
    // Finds the pairs of the cells from firstCell to lastCell in table order, those of
    // each cell in the order of its half-neighbourhood; see SPH.cpp for the sinks. Returns
    // lastCell, or the cell where a full sink stopped it.
    template <class Sink>
    size_t SearchCells(size_t firstCell, size_t lastCell, math::real h, uint32_t cellCap,
                       SearchPart& part, Sink& sink) const;
    // With the pairs of all parts found and counted: the counts of the lists, and each
    // part's places for its pairs. False where a list would pass listCap.
    bool PlacePairs(size_t parts, uint32_t listCap);
    // The caps applied to the pairs of the parts in order, each pair given its places; the
    // search of a part that gave up goes on here.
    void ApplyCaps(size_t parts, math::real h, uint32_t cellCap, uint32_t listCap);
    // The lists from the pairs of the parts, placed as ApplyCaps or PlacePairs left them.
    void BuildLists(size_t parts, bool ranked);
    // Logs once when the caps begin to act, and again after they stopped.
    void ReportPileUp(size_t leftOut, uint32_t listCap);
    static uint32_t CapOf(double scaled);
    // What each particle takes from the fluid's settings at every update.
    struct ParticleMaterial {
        math::real radius;
        math::real density;
        math::real friction;
        math::real restitution;
    };
    // Also gives the particles their material, and ages those that have fewer than two in
    // their list by dt.
    void CalcSPHForces(const ParticleMaterial& material, math::real dt, const ForcesDone* done);
    void Jitter();
    // After the forces, within the same update.
    void PublishStatistics();
    // A standard normal number; Box-Muller gives them in pairs, the second kept.
    math::real NextNormal();

    // The particles of the step, plain pointers so that the loops touch no counts.
    util::VectorPOD<Particle*> m_particles;
    // One per thread of the search, kept for the capacity of their buffers.
    std::vector<SearchPart> m_searchParts;
    // All neighbour lists, slot after slot; list s runs from m_listStart[s] to
    // m_listStart[s + 1].
    util::VectorPOD<Particle::Neighbour> m_entries;
    util::VectorPOD<uint32_t> m_listStart;
    util::VectorPOD<uint32_t> m_listCount;
    // Per slot of the hash: the state that neighbours read.
    // Side by side, so that one load takes a neighbour's whole state.
    struct SlotState {
        math::real density;
        math::real pressure;
        math::Vec2 velocity;
    };
    util::VectorPOD<SlotState> m_slotStates;
    // The velocities again after the solve, for the smoothing.
    util::VectorPOD<math::Vec2> m_slotVelocity;
    ParticleHash m_hash;
    util::Random m_random;
    math::real m_spareNormal = 0;
    bool m_hasSpareNormal = false;
    bool m_leftOutLogged = false;
    bool m_fullListsLogged = false;

    KernelLimits m_radiusLimits;
    KernelLimits m_influenceLimits;
    math::real m_h = 0;
    math::real m_mass = 0;
    math::real m_k1 = 0;
    math::real m_k2 = 0;
};

}  // namespace physics
