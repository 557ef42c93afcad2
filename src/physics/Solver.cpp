#include "physics/Solver.h"

#include <algorithm>
#include <functional>
#include <map>
#include <typeinfo>

#include "physics/AbstractBody.h"
#include "physics/Constraint.h"
#include "physics/Contact.h"
#include "util/Assert.h"
#include "util/Profiler.h"

namespace physics {

namespace {

// Priorities as sort keys: a NaN, from a blown-up row, sorts last instead of breaking the
// ordering that sort and map rely on.
math::real SortKey(math::real priority) {
    return priority == priority ? priority : -math::Infinity();
}

// The sweep order as runs of packed contact rows, each run followed by one constraint of
// another kind (none after the last run).
struct Segment {
    size_t rowEnd;
    Constraint* other;
};

// A constraint with its priority beside it, so that sorting does not chase pointers.
struct Keyed {
    math::real key;
    Constraint* constraint;
};

// Kept from solve to solve, so that a step allocates only when its lists outgrow them.
struct SweepBuffers {
    ConstraintList order;
    util::VectorPOD<Keyed> keyed;
    util::VectorPOD<Contact*> contacts;
    util::VectorPOD<ContactRow> rows;
    util::VectorPOD<RowChange> changes;
    util::VectorPOD<Segment> segments;
    util::VectorPOD<SolverBody> bodies;
    util::VectorPOD<AbstractBody*> bodyOwners;
    uint32_t stamp = 0;
};

SweepBuffers& Buffers() {
    static SweepBuffers buffers;
    return buffers;
}

// The body's place in the sweep's array, made on first sight in this solve. A constraint
// of another kind may lack a body; it gets a slot that nothing reads.
uint32_t SolverIndex(SweepBuffers& buffers, AbstractBody* body) {
    if (!body) {
        return 0;
    }
    if (body->solveStamp != buffers.stamp) {
        body->solveStamp = buffers.stamp;
        body->solveIndex = static_cast<uint32_t>(buffers.bodies.size());
        buffers.bodies.push_back(SolverBody{body->velocityChange, body->angularChange,
                                            body->SolverMassInv(), body->SolverInertiaInv()});
        buffers.bodyOwners.push_back(body);
    }
    return body->solveIndex;
}

// Between the array and the bodies' own records, for the constraints that work on those.
void CopyToBody(const SweepBuffers& buffers, AbstractBody* body) {
    if (!body) {
        return;
    }
    const SolverBody& solverBody = buffers.bodies[body->solveIndex];
    body->velocityChange = solverBody.velocityChange;
    body->angularChange = solverBody.angularChange;
}
void CopyFromBody(SweepBuffers& buffers, const AbstractBody* body) {
    if (!body) {
        return;
    }
    SolverBody& solverBody = buffers.bodies[body->solveIndex];
    solverBody.velocityChange = body->velocityChange;
    solverBody.angularChange = body->angularChange;
}

}  // namespace

void RunSolver(const std::vector<AbstractBody*>& allBodies, ConstraintList& constraints,
               const SolverSettings& settings) {
    VORRA_PROFILE("RunSolver");
    SolverParameters::Current().Rebuild(settings);
    {
        VORRA_PROFILE("Init bodies");
        for (AbstractBody* body : allBodies) {
            body->velocityChange = {0, 0};
            body->angularChange = 0;
        }
    }
    {
        VORRA_PROFILE("SolveInit");
        size_t i = 0;
        while (i < constraints.size()) {
            if (constraints[i]->SolveInit()) {
                ++i;
            } else {
                constraints.erase_unordered(i);
            }
        }
    }
    if (settings.prioritizedSolver) {
        PrioritizedSolver(allBodies, constraints, settings);
    } else {
        GaussSeidelSolver(constraints, settings);
    }
    {
        VORRA_PROFILE("SolveExit");
        for (Constraint* constraint : constraints) {
            constraint->SolveExit();
        }
    }
    {
        VORRA_PROFILE("Applying velchanges");
        for (AbstractBody* body : allBodies) {
            if (!body->IsImmovable()) {
                body->velocity += body->velocityChange;
                body->angularVelocity += body->angularChange;
            }
        }
    }
}

void GaussSeidelSolver(const ConstraintList& constraints, const SolverSettings& settings) {
    VORRA_PROFILE("GaussSeidelSolver");
    SweepBuffers& buffers = Buffers();
    ConstraintList& order = buffers.order;
    order = constraints;
    if (settings.solvePreSortConstraints) {
        util::VectorPOD<Keyed>& keyed = buffers.keyed;
        keyed.clear();
        for (Constraint* constraint : order) {
            constraint->CalcDelta();
            keyed.push_back(Keyed{SortKey(constraint->priority), constraint});
        }
        std::sort(keyed.begin(), keyed.end(),
                  [](const Keyed& a, const Keyed& b) { return a.key > b.key; });
        for (size_t i = 0; i < keyed.size(); ++i) {
            order[i] = keyed[i].constraint;
        }
    }

    // Contacts, nearly all of the rows, are swept as packed copies: contiguous, without
    // calls, their bodies in a small array of their own. Other kinds keep their place in
    // the order and run through their own operations on the bodies' records, which are
    // brought up to date around each call.
    util::VectorPOD<Contact*>& contacts = buffers.contacts;
    util::VectorPOD<ContactRow>& rows = buffers.rows;
    util::VectorPOD<Segment>& segments = buffers.segments;
    contacts.clear();
    rows.clear();
    segments.clear();
    buffers.bodies.clear();
    buffers.bodyOwners.clear();
    // A new stamp marks every body unplaced; 0 is what a new body holds.
    if (++buffers.stamp == 0) {
        ++buffers.stamp;
    }
    for (Constraint* constraint : order) {
        const uint32_t body0 = SolverIndex(buffers, constraint->bodies[0]);
        const uint32_t body1 = SolverIndex(buffers, constraint->bodies[1]);
        if (typeid(*constraint) == typeid(Contact)) {
            Contact* contact = static_cast<Contact*>(constraint);
            contacts.push_back(contact);
            rows.resize(rows.size() + 1);
            contact->ToRow(rows.back(), body0, body1);
        } else {
            segments.push_back(Segment{rows.size(), constraint});
        }
    }
    segments.push_back(Segment{rows.size(), nullptr});
    buffers.changes.resize(rows.size());

    const int passes = settings.solveIter;
    for (int pass = 0; pass < passes; ++pass) {
        RowChange* changes = pass + 1 == passes ? buffers.changes.begin() : nullptr;
        size_t row = 0;
        for (const Segment& segment : segments) {
            Contact::Sweep(rows.begin() + row, rows.begin() + segment.rowEnd,
                           buffers.bodies.begin(), changes ? changes + row : nullptr);
            row = segment.rowEnd;
            if (Constraint* other = segment.other) {
                CopyToBody(buffers, other->bodies[0]);
                CopyToBody(buffers, other->bodies[1]);
                other->CalcDelta();
                other->ApplyDelta();
                CopyFromBody(buffers, other->bodies[0]);
                CopyFromBody(buffers, other->bodies[1]);
            }
        }
    }

    for (size_t i = 0; i < buffers.bodyOwners.size(); ++i) {
        CopyToBody(buffers, buffers.bodyOwners[i]);
    }
    for (size_t i = 0; i < contacts.size(); ++i) {
        contacts[i]->FromRow(rows[i], passes > 0 ? &buffers.changes[i] : nullptr);
    }
}

void PrioritizedSolver(const std::vector<AbstractBody*>& allBodies,
                       const ConstraintList& constraints, const SolverSettings& settings) {
    VORRA_PROFILE("PrioritizedSolver");
    for (AbstractBody* body : allBodies) {
        body->adjacency.clear();
    }
    // Keyed by priority alone, so that equal priorities share one place and the later
    // one stays out; erasing by a constraint's priority removes whoever holds it.
    std::map<math::real, Constraint*, std::greater<math::real>> queue;
    uint32_t order = 0;
    for (Constraint* constraint : constraints) {
        constraint->solveOrder = order++;
        if (!(constraint->bodies[0] && constraint->bodies[1])) {
            ::AssertionFailed("bodies[0] && bodies[1]", true, true, __PRETTY_FUNCTION__, __FILE__,
                              __LINE__);
        }
        for (AbstractBody* body : constraint->bodies) {
            if (!body->IsImmovable()) {
                body->adjacency.push_back(constraint);
            }
        }
        constraint->CalcDelta();
        queue.emplace(SortKey(constraint->priority), constraint);
    }

    ConstraintList neighbours;
    const size_t rounds = static_cast<size_t>(std::max(settings.solveIter, 0)) * constraints.size();
    for (size_t round = 0; round < rounds && !queue.empty(); ++round) {
        Constraint* top = queue.begin()->second;
        top->ApplyDelta();

        neighbours.clear();
        for (AbstractBody* body : top->bodies) {
            for (Constraint* c : body->adjacency) {
                neighbours.push_back(c);
            }
        }
        std::sort(
            neighbours.begin(), neighbours.end(),
            [](const Constraint* a, const Constraint* b) { return a->solveOrder < b->solveOrder; });
        Constraint** end = std::unique(neighbours.begin(), neighbours.end());
        for (Constraint** c = neighbours.begin(); c != end; ++c) {
            queue.erase(SortKey((*c)->priority));
            (*c)->CalcDelta();
            queue.emplace(SortKey((*c)->priority), *c);
        }
    }
}

}  // namespace physics
