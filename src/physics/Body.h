#pragma once

#include <vector>

#include "physics/AbstractBody.h"
#include "physics/Forward.h"
#include "physics/Geom.h"
#include "physics/Transform.h"

namespace physics {

// A rigid body made of geoms. Mass, centre of mass and inertia are never set by hand: they
// are recomputed from the geoms' shapes and densities whenever the geom set changes.
//
// Ownership: a body holds its geoms, and each geom holds a counted pointer to its body. The
// cycle is broken by emptying the geom set (SetGeoms of an empty set), which is what the
// simulation's RemoveBody does; until then the destructor cannot run. Whoever drops a body
// without that leaks it with its geoms.
class Body : public AbstractBody {
public:
    // A geom as attached: its transform relative to the body at the moment of attachment.
    struct PlacedGeom {
        GeomPtr geom;
        Transform placed;
        Transform placedInverse;
    };

    // Everything a step reads of the body, exactly: the motion, the frame the geom set gave
    // it and the geoms' places in that frame. A body set back to it goes on bit for bit as
    // it went on from the moment it was taken, which a rebuild from the geoms cannot promise.
    struct State {
        std::vector<PlacedGeom> placedGeoms;
        Transform transform;
        Transform inverseTransform;
        math::real mass = 0;
        math::real massInv = 0;
        math::real inertia = 0;
        math::real inertiaInv = 0;
        math::real area = 0;
        math::Vec2 position{0, 0};
        math::Vec2 velocity{0, 0};
        math::Vec2 force{0, 0};
        math::real angle = 0;
        math::real angularVelocity = 0;
        math::real torque = 0;
        bool isStatic = false;
    };

    Body() = default;
    // Geoms have one owner each, so a body is not copied.
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;
    ~Body() override;

    // Wraps the angle, then places every geom by body transform times placed transform.
    void UpdateTransforms() override;
    // Also true for a body without geoms, so that the driver removes it.
    bool IsBad() const override;

    // The one routine through which every change of the geom set passes. Geoms keep their
    // world transforms; the body restarts at angle 0 with its origin at the joint centre of
    // mass. Geoms held by another body are taken from it.
    void SetGeoms(const GeomSet& geoms);
    void AddGeom(GeomPtr geom);
    void AddGeoms(const GeomSet& geoms);
    // Replaces all by one.
    void SetGeom(GeomPtr geom);
    // Never the world geom. A geom not held changes nothing, but the rebuild still runs.
    void RemoveGeom(GeomPtr geom);
    // Rebuilds from the present set, so that a change of density or size takes effect.
    void RecalcGeoms();
    // Takes the geom into the set and makes itself its owner at once, but leaves mass,
    // centre and placement to PlaceAddedGeoms, which rebuilds from the whole set once: a
    // file's body of thousands of shapes would otherwise be rebuilt once per shape. Until
    // then the body must not move.
    void AddGeomLater(const GeomPtr& geom);
    void PlaceAddedGeoms();

    State GetState() const;
    // Takes the state back when the body holds exactly the state's geoms, and places them;
    // otherwise changes nothing and answers false.
    bool SetState(const State& state);

    const GeomSet& GetGeoms() const { return m_geoms; }
    const std::vector<PlacedGeom>& GetPlacedGeoms() const { return m_placedGeoms; }
    // Body space to world space, and back.
    const Transform& GetTransform() const { return m_transform; }
    const Transform& GetInverseTransform() const { return m_inverseTransform; }

private:
    // Each geom by body transform times placed transform.
    void PlaceGeoms();
    // Mass, inertia and their inverses all 1: the state of a body without geoms.
    void SetUnitMass();

    Transform m_transform;
    Transform m_inverseTransform;
    std::vector<PlacedGeom> m_placedGeoms;
    GeomSet m_geoms;
    bool m_geomsToPlace = false;
};

}  // namespace physics
