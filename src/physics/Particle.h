#pragma once

#include "math/Real.h"
#include "math/Vector2.h"
#include "physics/AbstractBody.h"
#include "physics/Forward.h"
#include "physics/Shapes.h"
#include "util/VectorPOD.h"

namespace physics {

// A drop of water: a body of its own that the fluid moves by forces and that touches rigid
// shapes through its small circular geom. Its mass follows the fluid's settings at every
// fluid step.
class Particle : public AbstractBody {
public:
    // The particle's own shape. It never joins the collider's shape lists: the water groups
    // test particles by their centres.
    class ParticleGeom : public Circular {
    public:
        explicit ParticleGeom(math::real radius) : Circular(radius) {}
    };

    // Another particle within the kernel radius: its slot in the fluid's step and its
    // distance. Eight bytes: the fluid's passes stream millions of them a step.
    struct Neighbour {
        uint32_t slot;
        math::real distance;
    };

    // A particle's neighbours as the fluid's last step found them, in a store of the
    // fluid's, with the particles and the places they had then by slot: valid until its
    // next step.
    class NeighbourList {
    public:
        NeighbourList() = default;
        NeighbourList(const Neighbour* first, const Neighbour* last, Particle* const* bySlot,
                      const math::real* xs, const math::real* ys)
            : m_first(first), m_last(last), m_bySlot(bySlot), m_xs(xs), m_ys(ys) {}
        const Neighbour* begin() const { return m_first; }
        const Neighbour* end() const { return m_last; }
        size_t size() const { return static_cast<size_t>(m_last - m_first); }
        bool empty() const { return m_first == m_last; }
        const Neighbour& operator[](size_t i) const { return m_first[i]; }
        // The particle of an entry of this list.
        Particle* Other(const Neighbour& entry) const { return m_bySlot[entry.slot]; }
        // The vector from this list's particle to an entry's (not a unit vector), from the
        // places the lists were found at. The first entry is the particle itself.
        math::Vec2 Delta(const Neighbour& entry) const {
            const uint32_t own = m_first->slot;
            return {m_xs[entry.slot] - m_xs[own], m_ys[entry.slot] - m_ys[own]};
        }

    private:
        const Neighbour* m_first = nullptr;
        const Neighbour* m_last = nullptr;
        Particle* const* m_bySlot = nullptr;
        const math::real* m_xs = nullptr;
        const math::real* m_ys = nullptr;
    };

    // Takes its radius, density and material from the fluid's settings.
    Particle(const math::Vec2& position, const math::Vec2& velocity);
    ~Particle() override;
    Particle(const Particle&) = delete;
    Particle& operator=(const Particle&) = delete;

    // Area pi r r; mass and inertia both area * density (a particle's inertia equals its
    // mass, deliberately); the geom's material. The geom keeps the radius it was made with.
    void SetProps(math::real radius, math::real density, math::real friction,
                  math::real restitution);
    // Moves the geom to the particle; a disc needs no rotation.
    void UpdateTransforms() override;

    ParticleGeom& GetGeom() { return *m_geom; }
    const ParticleGeom& GetGeom() const { return *m_geom; }

    // Of the last fluid step.
    math::real density = 0;
    math::real pressure = 0;
    math::Vec2 tension{0, 0};

private:
    // Beside tension, in the cache line that the fluid's loops ask for ahead of time.
    util::SharedPtr<ParticleGeom> m_geom;
    // The geom's material as SetProps last wrote it, the only writer: the geom, apart on
    // the heap, is written only when it changes.
    math::real m_geomFriction;
    math::real m_geomRestitution;

public:
    // The first entry is the particle itself, at distance 0.
    NeighbourList neighbours;
    // Seconds spent without a neighbour.
    math::real age = 0;
};

}  // namespace physics
