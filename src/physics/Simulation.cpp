#include "physics/Simulation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <unordered_map>

#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Contact.h"
#include "physics/Hinge.h"
#include "physics/Joint.h"
#include "physics/MaterialDefaults.h"
#include "physics/Particle.h"
#include "physics/SPH.h"
#include "physics/Shapes.h"
#include "physics/Solver.h"
#include "physics/StepWorkers.h"
#include "util/Assert.h"
#include "util/Clock.h"
#include "util/LexicalCast.h"
#include "util/Profiler.h"

namespace physics {

using math::Vec2;

Simulation::Simulation() : script::Reflected("Sim") {
    RegisterAttributes();

    // IDs come from running counters: the world objects must be the first of each kind.
    m_worldGeom = GeomPtr(new WorldGeom);
    m_worldBody = BodyPtr(new Body);
    CODE_ASSERT(m_worldGeom->GetID() == 0);
    CODE_ASSERT(m_worldBody->GetID() == 0);
    Clear();
}

Simulation::~Simulation() {
    ReleaseLinks();
    ReleaseBodies();
    // The world body keeps its geom for good; cut the geom's back reference instead.
    m_worldGeom->SetBody(nullptr);
}

void Simulation::RegisterAttributes() {
    AddAttrib(running, "running", true);
    AddAttrib(timeFactor, "timeFactor", 1.0f);
    AddAttrib(timeDelta, "timeDelta", 0.01f);
    AddAttrib(gravity, "gravity", Vec2(0, -9.8f));
    AddAttrib(gravitySwitch, "gravitySwitch", true);
    AddAttrib(airSwitch, "airSwitch", true);
    AddAttrib(airFrictionLinear, "airFrictionLinear", 0.01f);
    AddAttrib(airFrictionQuadratic, "airFrictionQuadratic", 0.0f);
    AddAttrib(rotFrictionLinear, "rotFrictionLinear", 0.01f);
    AddAttrib(airDensity, "airDensity", 0.01f);
    AddAttrib(springForce, "springForce", 1000.0f);
    AddAttrib(defaultBodyDensity, "defaultBodyDensity", 2.0f);
    AddAttrib(defaultBodyFriction, "defaultBodyFriction", 0.5f);
    AddAttrib(defaultBodyRestitution, "defaultBodyRestitution", 0.5f);
    AddAttrib(fallLimit, "fallLimit", 1000.0f);
    AddAttrib(prioritizedSolver, "prioritizedSolver", false);
    AddAttrib(targetPenetration, "targetPenetration", 0.001f);
    AddAttrib(solveIter, "solveIter", 30);
    AddAttrib(solveConstant, "solveConstant", 1e8f);
    AddAttrib(solveDcontacts, "solveDcontacts", 5.0f);
    AddAttrib(solveDconstraints, "solveDconstraints", 5.0f);
    AddAttrib(solvePenetrationDamping, "solvePenetrationDamping", false);
    AddAttrib(solveDistFactor, "solveDistFactor", 1.0f);
    AddAttrib(solveVelFactor, "solveVelFactor", 1.0f);
    AddAttrib(solveAccFactor, "solveAccFactor", 1.0f);
    AddAttrib(solveRegularizationFactor, "solveRegularizationFactor", 1.0f);
    AddAttrib(solvePreSortConstraints, "solvePreSortConstraints", true);
    AddAttrib(leapFrog, "leapFrog", true);
    AddAttrib(adHocSolver, "adHocSolver", false);
    AddAttrib(warmStart, "warmStart", true);
    AddAttrib(warmStartFactor, "warmStartFactor", 0.5f);
    AddAttrib(maxPositionCorrection, "maxPositionCorrection", math::Infinity());

    SetLimits();

    AddCommand("time",
               [this]() -> script::ObjectPtr { return script::ValueToObject(m_simulatedTime); });

    // New geoms read their material from the defaults; keep them in step at once, not at
    // the next step, so that a shape made right after a change gets it.
    const util::WeakPtr<util::Pointee> self(this);
    for (auto* attrib : {&defaultBodyDensity, &defaultBodyFriction, &defaultBodyRestitution}) {
        (*attrib)->GetOnChange().Add(self, [this]() { SyncMaterialDefaults(); });
    }
    SyncMaterialDefaults();
}

void Simulation::SetLimits() {
    using script::NumberRange;
    // A step of no time divides by zero; one of more than a second means nothing but a
    // world that blows up.
    static const NumberRange kStep(0, NumberRange::Open, 1, NumberRange::Closed);
    // The damping of a row in steps: q = 1 + 4 d is divided by, and a negative one turns
    // damping into its opposite.
    static const NumberRange kDamping(0, NumberRange::Closed, std::numeric_limits<float>::max(),
                                      NumberRange::Closed);
    // No position correction at all is the largest; minus infinity is no bound but a NaN.
    static const NumberRange kCorrection(-std::numeric_limits<float>::max(), NumberRange::Closed,
                                         math::Infinity(), NumberRange::Closed);
    // Thousands of passes over every contact make one step last seconds.
    static const script::IntRange kIterations(0, kMaxSolveIter);

    // Each of these goes into every step's arithmetic: infinity or NaN there makes every
    // body's numbers the same.
    for (script::AttribPtr<float>* finite :
         {&timeFactor, &airFrictionLinear, &airFrictionQuadratic, &rotFrictionLinear, &airDensity,
          &springForce, &defaultBodyDensity, &defaultBodyFriction, &defaultBodyRestitution,
          &targetPenetration, &solveDistFactor, &solveVelFactor, &solveAccFactor,
          &solveRegularizationFactor, &warmStartFactor}) {
        (*finite)->SetLimits(NumberRange::Finite());
    }
    timeDelta->SetLimits(kStep);
    gravity->SetLimits(script::FiniteVector::Get());
    fallLimit->SetLimits(NumberRange::AnyNumber());
    solveIter->SetLimits(kIterations);
    solveConstant->SetLimits(NumberRange::Positive());
    solveDcontacts->SetLimits(kDamping);
    solveDconstraints->SetLimits(kDamping);
    maxPositionCorrection->SetLimits(kCorrection);
}

void Simulation::SyncMaterialDefaults() {
    MaterialDefaults& defaults = MaterialDefaults::Current();
    defaults.density = defaultBodyDensity->Get();
    defaults.friction = defaultBodyFriction->Get();
    defaults.restitution = defaultBodyRestitution->Get();
}

SolverSettings Simulation::GetSolverSettings() const {
    SolverSettings s;
    s.timeDelta = timeDelta->Get();
    s.solveConstant = solveConstant->Get();
    s.solveDcontacts = solveDcontacts->Get();
    s.solveDconstraints = solveDconstraints->Get();
    s.solveDistFactor = solveDistFactor->Get();
    s.solveVelFactor = solveVelFactor->Get();
    s.solveAccFactor = solveAccFactor->Get();
    s.solveRegularizationFactor = solveRegularizationFactor->Get();
    s.leapFrog = leapFrog->Get();
    s.adHocSolver = adHocSolver->Get();
    s.targetPenetration = targetPenetration->Get();
    s.maxPositionCorrection = maxPositionCorrection->Get();
    s.warmStart = warmStart->Get();
    s.warmStartFactor = warmStartFactor->Get();
    s.solveIter = solveIter->Get();
    s.solvePreSortConstraints = solvePreSortConstraints->Get();
    s.prioritizedSolver = prioritizedSolver->Get();
    return s;
}

Vec2 Simulation::GetEffectiveGravity() const {
    return gravitySwitch->Get() ? gravity->Get() : Vec2(0, 0);
}

void Simulation::AddBody(BodyPtr body) {
    CODE_ASSERT(body);
    // The flag spares the search for the body that is new, as nearly all are.
    if (body->IsInWorld() && std::find(m_bodies.begin(), m_bodies.end(), body) != m_bodies.end()) {
        return;
    }
    body->UpdateTransforms();
    body->SetInWorld(true);
    m_bodies.push_back(std::move(body));
}

void Simulation::RestoreBodyOrder(const BodyList& order) {
    std::unordered_map<const Body*, size_t> rank;
    rank.reserve(order.size());
    for (size_t i = 0; i < order.size(); ++i) {
        rank.emplace(order[i].Get(), i);
    }
    const auto rankOf = [&rank](const BodyPtr& body) {
        const auto found = rank.find(body.Get());
        return found == rank.end() ? std::numeric_limits<size_t>::max() : found->second;
    };
    std::stable_sort(
        m_bodies.begin(), m_bodies.end(),
        [&rankOf](const BodyPtr& a, const BodyPtr& b) { return rankOf(a) < rankOf(b); });
}

BodyPtr Simulation::AddBodyOf(const GeomPtr& geom) {
    BodyPtr body(new Body());
    body->SetGeom(geom);
    AddBody(body);
    return body;
}

bool Simulation::RemoveBody(const BodyPtr& body) {
    if (body == m_worldBody) {
        return false;
    }
    // From the back: the newest bodies are the ones most often taken out again, and a
    // scene taken down from its last entity costs no shifting at all.
    const auto found = std::find(m_bodies.rbegin(), m_bodies.rend(), body);
    if (found == m_bodies.rend()) {
        return false;
    }
    // Held for the call: the list's reference may be the last one.
    const BodyPtr keep = body;
    keep->SetGeoms(GeomSet());
    keep->SetInWorld(false);
    m_bodies.erase(std::next(found).base());
    return true;
}

namespace {

// Each body's own pass before the solve: the first half of a leap-frog step, where the
// simulation takes those, and no velocity change yet.
class BeforeSolving : public SPH::ForcesDone {
public:
    BeforeSolving(bool leap, float h) : m_leap(leap), m_half(h / 2) {}
    void Visit(AbstractBody& body) const {
        if (m_leap) {
            Simulation::IntegrateVelocity(body, m_half);
        }
        ClearVelocityChange(body);
    }
    void Visit(Particle& particle) const override { Visit(static_cast<AbstractBody&>(particle)); }

private:
    bool m_leap;
    float m_half;
};

// Bodies per part of the loops that move each body on its own.
constexpr size_t kBodyGrain = 2048;

// Joints and hinges come and go alike; only what they do on the way in and out differs.
template <class Set, class Ptr, class Attach>
void AddLink(Set& set, Ptr link, Attach attach) {
    if (!link || set.count(link)) {
        return;
    }
    attach(*link);
    set.insert(std::move(link));
}

template <class Set, class Ptr, class Detach>
size_t RemoveLink(Set& set, const Ptr& link, Detach detach) {
    const auto found = set.find(link);
    if (found == set.end()) {
        return 0;
    }
    // Held for the call: the set's reference may be the last one.
    const Ptr keep = link;
    detach(*keep);
    set.erase(found);
    return 1;
}

// Gathers first, since removing from a set while walking it would lose the walk.
template <class Set, class Ptr, class Remove>
void RemoveInvalidLinks(const Set& set, std::vector<Ptr>& removals, Remove remove) {
    for (const Ptr& link : set) {
        if (!link->IsValid()) {
            removals.push_back(link);
        }
    }
    for (const Ptr& link : removals) {
        remove(link);
    }
    removals.clear();
}

}  // namespace

void Simulation::AddJoint(JointPtr joint) {
    CODE_ASSERT(joint);
    AddLink(m_joints, std::move(joint), [](Joint& j) { j.OnAdd(); });
}

size_t Simulation::RemoveJoint(const JointPtr& joint) {
    return RemoveLink(m_joints, joint, [](Joint& j) { j.OnRemove(); });
}

void Simulation::AddConstraint(HingePtr hinge) {
    CODE_ASSERT(hinge);
    AddLink(m_hinges, std::move(hinge), [](Hinge& h) { h.RegisterNoCollide(); });
}

size_t Simulation::RemoveConstraint(const HingePtr& hinge) {
    return RemoveLink(m_hinges, hinge, [](Hinge& h) { h.UnregisterNoCollide(); });
}

void Simulation::ReleaseLinks() {
    while (!m_joints.empty()) {
        RemoveJoint(*m_joints.begin());
    }
    while (!m_hinges.empty()) {
        RemoveConstraint(*m_hinges.begin());
    }
}

void Simulation::AddParticle(ParticlePtr particle) {
    CODE_ASSERT(particle);
    particle->SetInWorld(true);
    m_particles.push_back(std::move(particle));
}

void Simulation::ClearParticles() {
    for (const ParticlePtr& particle : m_particles) {
        particle->SetInWorld(false);
    }
    m_particles.clear();
}

void Simulation::ReleaseBodies() {
    // Emptying the geom set breaks each body's cycle with its geoms.
    for (const BodyPtr& body : m_bodies) {
        if (body != m_worldBody) {
            body->SetGeoms(GeomSet());
        }
        body->SetInWorld(false);
    }
    m_bodies.clear();
}

void Simulation::Clear() {
    ReleaseLinks();
    ReleaseBodies();
    ClearParticles();
    m_allBodies.clear();
    m_contactCache.Clear();
    m_accumulated = 0;
    m_simulatedTime = 0;
    m_realtimeFraction = 0;
    m_worldBody->SetGeom(m_worldGeom);
    m_worldBody->SetInWorld(true);
    m_bodies.push_back(m_worldBody);
}

void Simulation::Update(double frameSeconds) {
    VORRA_PROFILE("Simulation::Update");
    m_status.clear();
    timeFactor->SetNative(std::max(timeFactor->Get(), 0.0f));

    const float factor = timeFactor->Get();
    if (running->Get() && !math::NearZero(factor)) {
        m_accumulated += frameSeconds * factor;
        const double wanted = m_accumulated;
        const double loopStart = util::Clock::Seconds();
        const float h = timeDelta->Get();
        while (m_accumulated > 0) {
            const double stepStart = util::Clock::Seconds();
            StepTimed(running->Get());
            const double stepEnd = util::Clock::Seconds();
            m_accumulated = static_cast<float>(m_accumulated) - h;
            const double now = util::Clock::Seconds();
            if ((now - loopStart) + frameSeconds + (stepEnd - stepStart) > m_maxUpdateSeconds) {
                break;
            }
        }
        if (m_accumulated <= 0) {
            // The small overshoot is carried into the next frame.
            m_realtimeFraction = 1;
            m_status = "100% realtime.\n";
        } else {
            m_realtimeFraction = static_cast<float>((wanted - m_accumulated) / wanted);
            // The backlog is dropped: catching up would only make the next frame slower.
            m_accumulated = 0;
            char line[32];
            std::snprintf(line, sizeof line, "%3d%% realtime\n",
                          static_cast<int>(std::lround(m_realtimeFraction * 100)));
            m_status = line;
        }
    } else {
        m_status = "Frozen\n";
        Step(false);
    }
    RemoveBadObjects();
    AppendCounts();
}

void Simulation::AppendCounts() {
    size_t geomCount = 0;
    for (const BodyPtr& body : m_bodies) {
        geomCount += body->GetGeoms().size();
    }
    size_t bodyCount = m_bodies.size();
    if (m_worldBody->GetGeoms().size() == 1) {
        --bodyCount;
    }
    const size_t particleCount = m_particles.size();
    const size_t springCount = m_joints.size();
    const size_t hingeCount = m_hinges.size();
    m_status += util::LexicalCast<util::String>(bodyCount) + " bodies\n";
    m_status += util::LexicalCast<util::String>(geomCount - 1) + " geometries\n";
    m_status += util::LexicalCast<util::String>(particleCount) + " particles\n";
    m_status += util::LexicalCast<util::String>(GetContacts().size()) + " contacts\n";
    m_status += util::LexicalCast<util::String>(springCount) + " springs\n";
    m_status += util::LexicalCast<util::String>(hingeCount) + " hinges\n";
    m_status += "Running at " + util::LexicalCast<util::String>(1 / timeDelta->Get()) + " Hz\n";
}

class Simulation::ParticleForces {
public:
    // Water feels the air whatever airSwitch says; its weight and buoyancy follow the
    // fluid's settings as they stand, its drag the particle's mass of the last fluid step.
    explicit ParticleForces(const Simulation& simulation)
        : m_invDt(1 / simulation.timeDelta->Get()), m_air(simulation.GetAirSettings()) {
        const SPH& fluid = SPH::Get();
        const Vec2 g = simulation.GetEffectiveGravity();
        m_r = fluid.radius->Get();
        const float area = math::Pi * m_r * m_r;
        m_weight = (area * fluid.density->Get()) * g;
        m_buoyancy = -(m_air.density * area) * g;
    }

    void Apply(Particle& particle) const {
        if (!particle.IsImmovable()) {
            particle.force += m_weight;
        }
        if (m_air.drag) {
            const float mass = particle.GetMass();
            const float speed = particle.velocity.Length();
            const float c =
                std::min((m_air.linear + m_air.quadratic * speed) * 2 * m_r, m_invDt * mass);
            particle.force -= c * particle.velocity;
            const float spin = std::fabs(particle.angularVelocity);
            const float t =
                std::min(mass * m_air.rotational * spin, particle.GetInertia() * spin * m_invDt);
            particle.torque -= std::copysign(t, particle.angularVelocity);
        }
        if (m_air.density != 0 && !particle.IsStatic()) {
            particle.force += m_buoyancy;
        }
    }

private:
    float m_invDt;
    AirSettings m_air;
    float m_r = 0;
    Vec2 m_weight;
    Vec2 m_buoyancy;
};

void Simulation::StepTimed(bool simulate) {
    Step(simulate);
    // Summed in single precision, as the time of every run must come out the same.
    m_simulatedTime = static_cast<float>(m_simulatedTime) + timeDelta->Get();
}

void Simulation::Step(bool simulate) {
    VORRA_PROFILE("Simu::Step");
    const StepWorkers::Busy busy;
    const float h = timeDelta->Get();
    if (simulate) {
        const ParticleForces particleForces(*this);
        RemoveBadObjects(&particleForces);
    } else {
        RemoveBadObjects();
    }
    RebuildAllBodies();
    m_fluidStepped = false;
    if (simulate) {
        CalcForces();
    }
    CalcContacts();
    const bool isRunning = running->Get();
    const auto clearForces = [](AbstractBody* body) {
        body->force = Vec2(0, 0);
        body->torque = 0;
    };
    if (simulate) {
        // The passes over the bodies around the solve are joined: each body's own values
        // only, in the same order.
        const bool leap = leapFrog->Get();
        const float afterSolve = leap ? h / 2 : h;
        {
            VORRA_PROFILE("Before solving");
            // The bodies come first in the list; the fluid took its particles already.
            const size_t count = m_fluidStepped ? m_bodies.size() : m_allBodies.size();
            const BeforeSolving beforeSolving(leap, h);
            StepWorkers::Get().ForParts(count, kBodyGrain, [&](size_t, size_t first, size_t last) {
                for (size_t i = first; i < last; ++i) {
                    beforeSolving.Visit(*m_allBodies[i]);
                }
            });
        }
        Solve();
        {
            VORRA_PROFILE("After solving");
            StepWorkers::Get().ForEach(m_allBodies, kBodyGrain, [&](AbstractBody* body) {
                ApplyVelocityChange(*body);
                IntegrateVelocity(*body, afterSolve);
                IntegratePosition(*body, h);
                // The forces are spent; a running step clears them for the next.
                if (isRunning) {
                    clearForces(body);
                }
            });
        }
        if (m_fluidStepped) {
            SPH::Get().SmoothVelocities();
        }
    } else if (isRunning) {
        StepWorkers::Get().ForEach(m_allBodies, kBodyGrain, clearForces);
    }
    m_stepCallbacks.CallAll(isRunning ? h : 0.0f);
}

void Simulation::RebuildAllBodies() {
    m_allBodies.clear();
    for (const BodyPtr& body : m_bodies) {
        m_allBodies.push_back(body.Get());
    }
    for (const ParticlePtr& particle : m_particles) {
        m_allBodies.push_back(particle.Get());
    }
}

void Simulation::RemoveBadObjects(const ParticleForces* forces) {
    const float fall = fallLimit->Get();
    const Vec2 down = math::Normalized(GetEffectiveGravity());
    m_removals.clear();
    for (const BodyPtr& body : m_bodies) {
        if (body->IsBad() || Dot(body->position, down) > fall) {
            m_removals.push_back(body);
        }
    }
    for (const BodyPtr& body : m_removals) {
        Log(logging::Debug, "Removing bad object");
        RemoveBody(body);
    }
    m_removals.clear();
    RemoveBadParticles(down, fall, forces);
    // After the bodies, so that links that lost one go in the same pass.
    RemoveInvalidLinks(m_joints, m_jointRemovals, [this](const JointPtr& j) { RemoveJoint(j); });
    RemoveInvalidLinks(m_hinges, m_hingeRemovals,
                       [this](const HingePtr& h) { RemoveConstraint(h); });
}

void Simulation::RemoveBadParticles(const Vec2& down, float fall, const ParticleForces* forces) {
    VORRA_PROFILE("Bad particles");
    const float lifetime = SPH::Get().vaporizeTime->Get();
    m_particleGone.resize(m_particles.size());
    std::array<uint8_t, StepWorkers::kMaxThreads> goneInPart{};
    StepWorkers::Get().ForParts(
        m_particles.size(), kBodyGrain, [&](size_t part, size_t first, size_t last) {
            uint8_t anyGone = 0;
            for (size_t i = first; i < last; ++i) {
                Particle& particle = *m_particles[i];
                const bool gone = particle.IsBad() || particle.age > lifetime ||
                                  Dot(particle.position, down) > fall;
                m_particleGone[i] = gone;
                anyGone |= gone;
                if (forces && !gone) {
                    forces->Apply(particle);
                }
            }
            goneInPart[part] = anyGone;
        });
    if (std::find(goneInPart.begin(), goneInPart.end(), 1) == goneInPart.end()) {
        return;
    }
    size_t i = 0;
    while (i < m_particles.size()) {
        if (m_particleGone[i]) {
            m_particles[i]->SetInWorld(false);
            // The last one takes the slot, and is looked at in its turn.
            if (i + 1 != m_particles.size()) {
                m_particles[i] = std::move(m_particles.back());
                m_particleGone[i] = m_particleGone[m_particles.size() - 1];
            }
            m_particles.pop_back();
        } else {
            ++i;
        }
    }
}

Simulation::AirSettings Simulation::GetAirSettings() const {
    AirSettings air;
    air.linear = airFrictionLinear->Get();
    air.quadratic = airFrictionQuadratic->Get();
    air.rotational = rotFrictionLinear->Get();
    air.density = airDensity->Get();
    air.drag = air.linear != 0 || air.quadratic != 0 || air.rotational != 0;
    return air;
}

void Simulation::CalcForces() {
    VORRA_PROFILE("Simulation::CalcForces");
    const float invDt = 1 / timeDelta->Get();
    const Vec2 g = GetEffectiveGravity();
    const AirSettings air = GetAirSettings();
    CalcBodyForces(g, invDt, air);
    // The particles took theirs in the bad-particle pass.
    // Springs after the bodies' own forces, in the order they were made.
    for (const JointPtr& joint : m_joints) {
        joint->ApplyForce();
    }
    if (running->Get()) {
        // The particles' pass before the solve, taken while the fluid holds each of them.
        const BeforeSolving beforeSolving(leapFrog->Get(), timeDelta->Get());
        SPH::Get().Update(m_particles, timeDelta->Get(), &beforeSolving);
        m_fluidStepped = true;
    }
}

void Simulation::CalcBodyForces(const Vec2& g, float invDt, const AirSettings& air) {
    const bool airOn = airSwitch->Get();
    {
        VORRA_PROFILE("Body forces");
        for (const BodyPtr& bodyPtr : m_bodies) {
            Body& body = *bodyPtr;
            if (body.IsImmovable()) {
                continue;
            }
            const float mass = body.GetMass();
            body.force += mass * g;
            if (!airOn) {
                continue;
            }
            const float speed = body.velocity.Length();
            const Vec2 across =
                speed == 0 ? Vec2(0, 0) : Vec2(body.velocity.y, -body.velocity.x) / speed;
            float widthSum = 0;
            Vec2 pressureCentreSum(0, 0);
            Vec2 centroidSum(0, 0);
            float airFactorSum = 0;
            for (const Body::PlacedGeom& placed : body.GetPlacedGeoms()) {
                const Geom& geom = *placed.geom;
                const math::OBB2D box = geom.GetOBB();
                const float width = 2 * (std::fabs(Dot(across, box.axis2)) * box.halfExtents.y +
                                         std::fabs(Dot(across, box.axis1)) * box.halfExtents.x);
                const float area = geom.Area();
                widthSum += width;
                pressureCentreSum += box.centre * width;
                centroidSum += geom.GetPosition() * area;
                airFactorSum += geom.airFrictionMult * area;
            }
            const float totalArea = body.GetArea();
            const float average = airFactorSum / totalArea;
            if (air.drag && !math::NearZero(speed) && widthSum > 0) {
                const float c = std::min(average * widthSum * (air.linear + air.quadratic * speed),
                                         invDt * mass);
                const Vec2 dragForce = -c * body.velocity;
                body.force += dragForce;
                const Vec2 pressureCentre = pressureCentreSum / widthSum;
                body.torque += Cross(pressureCentre - body.position, dragForce);

                const float spin = std::fabs(body.angularVelocity);
                const float t = std::min(mass * air.rotational * spin * average,
                                         body.GetInertia() * spin * invDt);
                body.torque -= std::copysign(t, body.angularVelocity);
            }
            if (air.density != 0) {
                const Vec2 buoyancy = -(air.density * totalArea) * g;
                body.force += buoyancy;
                body.torque += Cross(centroidSum / totalArea - body.position, buoyancy);
            }
        }
    }
}

void Simulation::CalcContacts() {
    VORRA_PROFILE("Sim::CalcContacts");
    // A contact records when it was first made.
    SolverParameters::Current().simulatedTime = m_simulatedTime;
    {
        VORRA_PROFILE("Finding contacts");
        m_collider.AssignBodies(m_bodies, m_particles);
        // The fluid read the same particles' places within this step, which nothing
        // has moved since.
        if (m_fluidStepped) {
            m_collider.TakeParticlePlaces(SPH::Get().GetPlaces());
        }
        m_collider.Collide(m_foundContacts);
    }
    m_contactCache.Match(m_foundContacts);
}

void Simulation::Solve() {
    m_constraints.clear();
    for (const HingePtr& hinge : m_hinges) {
        m_constraints.push_back(hinge.Get());
    }
    for (Contact& contact : m_contactCache.GetContacts()) {
        m_constraints.push_back(&contact);
    }
    VORRA_PROFILE("Solve");
    SolveConstraints(m_allBodies, m_constraints, GetSolverSettings());
}

void Simulation::IntegrateVelocity(AbstractBody& body, float dt) {
    if (body.IsImmovable()) {
        body.velocity = Vec2(0, 0);
        body.angularVelocity = 0;
    } else {
        body.velocity += dt * body.force * body.GetMassInv();
        body.angularVelocity += dt * body.torque * body.GetInertiaInv();
    }
}

void Simulation::IntegratePosition(AbstractBody& body, float dt) {
    // Each body places only its own geoms.
    if (body.IsImmovable()) {
        return;
    }
    body.position += dt * body.velocity;
    body.angle = WrappedAngle(body.angle + dt * body.angularVelocity);
    body.UpdateTransforms();
}

}  // namespace physics
