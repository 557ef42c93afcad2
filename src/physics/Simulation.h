#pragma once

#include <cstddef>
#include <set>
#include <vector>

#include "math/Vector2.h"
#include "physics/Collider.h"
#include "physics/ContactCache.h"
#include "physics/Forward.h"
#include "physics/Particle.h"  // complete, for the particle list's inline copies
#include "physics/SolverParameters.h"
#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/CallbackSet.h"
#include "util/Singleton.h"
#include "util/String.h"
#include "util/VectorPOD.h"

namespace physics {

// Links are walked in the order they were made, the same in every run.
struct BySerial {
    template <class Ptr>
    bool operator()(const Ptr& a, const Ptr& b) const {
        return a->GetSerial() < b->GetSerial();
    }
};
using JointSet = std::set<JointPtr, BySerial>;
using HingeSet = std::set<HingePtr, BySerial>;

// The world: owns the bodies and the contacts of the current step, holds every tunable of
// the physics as a script attribute, and advances time in fixed steps. In the language it
// is the object "Sim". It knows nothing of drawing; the application calls Update once a
// frame with the wall-clock time that passed.
class Simulation : public script::Reflected, public util::Singleton<Simulation> {
public:
    Simulation();
    ~Simulation() override;
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    // v += dt F / m, w += dt T / I; an immovable body stops. Public for the fluid's pass
    // before the solve, which integrates its particles' first half step.
    static void IntegrateVelocity(AbstractBody& body, float dt);

    // Runs as many steps as the frame's time asks for, within a budget of 0.05 s of wall
    // clock; a backlog beyond that is dropped, not caught up. Rewrites the status text.
    void Update(double frameSeconds);
    // One step of timeDelta; a step that does not simulate still finds the contacts, so
    // that the cache survives a pause.
    void Step(bool simulate);
    // A step as Update makes it: the simulated time moves on by timeDelta.
    void StepTimed(bool simulate);

    // A body already in the list is left where it is.
    void AddBody(BodyPtr body);
    // A new body made of the one geom, where the geom is placed, added to the list.
    BodyPtr AddBodyOf(const GeomPtr& geom);
    // Takes the body's geoms from it (which breaks the body-geom cycle) and drops it,
    // keeping the order of the rest. The world body stays. Returns whether it was listed.
    bool RemoveBody(const BodyPtr& body);
    // Takes the joint in (once) and calls its OnAdd; RemoveJoint calls OnRemove and
    // returns the number taken out.
    void AddJoint(JointPtr joint);
    size_t RemoveJoint(const JointPtr& joint);
    // Takes the hinge in (once) and keeps its geoms from colliding with each other;
    // RemoveConstraint lets them collide again and returns the number taken out.
    void AddConstraint(HingePtr hinge);
    size_t RemoveConstraint(const HingePtr& hinge);
    // Water: particles join at the end of the list; removal moves the last one into the gap.
    void AddParticle(ParticlePtr particle);
    void ClearParticles();
    // Back to the world body alone, with no links or water, at time 0. Attributes keep
    // their values.
    void Clear();

    // For restoring a captured world: the time, the order of the bodies (those listed first,
    // in the list's order; any other after them as they stand) and the contact cache. A
    // world brought back to the captured bodies, order and contacts steps on exactly as
    // it did.
    void SetSimulatedTime(double time) { m_simulatedTime = time; }
    void RestoreBodyOrder(const BodyList& order);
    void RestoreContacts(const ContactList& contacts) { m_contactCache.Restore(contacts); }

    const BodyList& GetBodies() const { return m_bodies; }
    const JointSet& GetJoints() const { return m_joints; }
    const HingeSet& GetHinges() const { return m_hinges; }
    const ParticleList& GetParticles() const { return m_particles; }
    const ContactList& GetContacts() const { return m_contactCache.GetContacts(); }
    const ContactCache& GetContactCache() const { return m_contactCache; }
    const GeomPtr& GetWorldGeom() const { return m_worldGeom; }
    const BodyPtr& GetWorldBody() const { return m_worldBody; }
    const util::String& GetStatus() const { return m_status; }
    double GetSimulatedTime() const { return m_simulatedTime; }
    float GetRealtimeFraction() const { return m_realtimeFraction; }
    // The most wall-clock seconds one Update may spend stepping: the frame loop keeps it at
    // the length of a frame at the lowest frame rate it accepts.
    void SetMaxUpdateSeconds(float seconds) { m_maxUpdateSeconds = seconds; }
    float GetMaxUpdateSeconds() const { return m_maxUpdateSeconds; }

    // Fired after every step with its time step, or 0 where the step was frozen.
    util::CallbackArgSet<float>& GetStepCallbacks() { return m_stepCallbacks; }

    // The solver's tunables as they stand in the attributes.
    SolverSettings GetSolverSettings() const;
    // Gravity as it acts: (0, 0) while gravitySwitch is off.
    math::Vec2 GetEffectiveGravity() const;

    // With the broad phase off the collider walks all pairs; the result is the same. For
    // comparisons of cost only.
    void SetBroadPhase(bool on) { m_collider = Collider(on); }

    // The attributes, under their script names, in the order of their declaration.
    script::AttribPtr<bool> running;
    script::AttribPtr<float> timeFactor;
    script::AttribPtr<float> timeDelta;
    script::AttribPtr<math::Vec2> gravity;
    script::AttribPtr<bool> gravitySwitch;
    script::AttribPtr<bool> airSwitch;
    script::AttribPtr<float> airFrictionLinear;
    script::AttribPtr<float> airFrictionQuadratic;
    script::AttribPtr<float> rotFrictionLinear;
    script::AttribPtr<float> airDensity;
    script::AttribPtr<float> springForce;
    script::AttribPtr<float> defaultBodyDensity;
    script::AttribPtr<float> defaultBodyFriction;
    script::AttribPtr<float> defaultBodyRestitution;
    script::AttribPtr<float> fallLimit;
    script::AttribPtr<bool> prioritizedSolver;
    script::AttribPtr<float> targetPenetration;
    script::AttribPtr<int> solveIter;
    script::AttribPtr<float> solveConstant;
    script::AttribPtr<float> solveDcontacts;
    script::AttribPtr<float> solveDconstraints;
    script::AttribPtr<bool> solvePenetrationDamping;  // kept for scripts; nothing reads it
    script::AttribPtr<float> solveDistFactor;
    script::AttribPtr<float> solveVelFactor;
    script::AttribPtr<float> solveAccFactor;
    script::AttribPtr<float> solveRegularizationFactor;
    script::AttribPtr<bool> solvePreSortConstraints;
    script::AttribPtr<bool> leapFrog;
    script::AttribPtr<bool> adHocSolver;
    script::AttribPtr<bool> warmStart;
    script::AttribPtr<float> warmStartFactor;
    script::AttribPtr<float> maxPositionCorrection;

    // The most solver passes a step may make.
    static constexpr int kMaxSolveIter = 1000;

private:
    void RegisterAttributes();
    // What each attribute refuses: values that would make every step's numbers infinite or
    // NaN, or a step last seconds.
    void SetLimits();
    void SyncMaterialDefaults();

    void ReleaseLinks();
    void ReleaseBodies();
    // The air as it acts on bodies and water alike.
    struct AirSettings {
        float linear = 0;
        float quadratic = 0;
        float rotational = 0;
        float density = 0;
        bool drag = false;  // some drag at all
    };
    AirSettings GetAirSettings() const;
    // A particle's own forces, its weight and the air's: each particle's alone, so they
    // are given in the pass that looks for bad particles, which touches each anyway.
    class ParticleForces;
    // Removes what has gone bad or fallen too far. Where forces are given, every particle
    // kept takes them.
    void RemoveBadObjects(const ParticleForces* forces = nullptr);
    void RemoveBadParticles(const math::Vec2& down, float fall, const ParticleForces* forces);
    void CalcBodyForces(const math::Vec2& g, float invDt, const AirSettings& air);
    void RebuildAllBodies();
    void CalcForces();
    void CalcContacts();
    // The step's constraints solved, their changes left in the bodies for the pass after.
    void Solve();
    static void IntegratePosition(AbstractBody& body, float dt);
    void AppendCounts();

    GeomPtr m_worldGeom;
    BodyPtr m_worldBody;
    BodyList m_bodies;
    JointSet m_joints;
    HingeSet m_hinges;
    ParticleList m_particles;
    // Whether the fluid stepped in this step: its smoothing works on that step's lists,
    // and it gave the particles the pass before the solve.
    bool m_fluidStepped = false;
    // Bodies, then particles, of this step as plain pointers, so that inner loops touch no counts.
    std::vector<AbstractBody*> m_allBodies;
    // The collider fills this list and the cache takes the contacts over, keeping them for
    // the solve and the next step's matching.
    ContactList m_foundContacts;
    ContactCache m_contactCache;
    Collider m_collider;
    ConstraintList m_constraints;
    BodyList m_removals;
    // Per particle, whether the bad-particle pass found it gone.
    util::VectorPOD<uint8_t> m_particleGone;
    std::vector<JointPtr> m_jointRemovals;
    std::vector<HingePtr> m_hingeRemovals;

    double m_accumulated = 0;
    float m_maxUpdateSeconds = 0.05f;
    float m_realtimeFraction = 0;
    double m_simulatedTime = 0;
    util::String m_status;
    util::CallbackArgSet<float> m_stepCallbacks;
};

}  // namespace physics
