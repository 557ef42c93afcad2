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
    util::VectorPOD<Segment> segments;
};

SweepBuffers& Buffers() {
    static SweepBuffers buffers;
    return buffers;
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
    // calls, their bodies' inverse values at hand. Other kinds keep their place in the
    // order and run through their own operations.
    util::VectorPOD<Contact*>& contacts = buffers.contacts;
    util::VectorPOD<ContactRow>& rows = buffers.rows;
    util::VectorPOD<Segment>& segments = buffers.segments;
    contacts.clear();
    rows.clear();
    segments.clear();
    for (Constraint* constraint : order) {
        if (typeid(*constraint) == typeid(Contact)) {
            Contact* contact = static_cast<Contact*>(constraint);
            contacts.push_back(contact);
            rows.resize(rows.size() + 1);
            contact->ToRow(rows.back());
        } else {
            segments.push_back(Segment{rows.size(), constraint});
        }
    }
    segments.push_back(Segment{rows.size(), nullptr});

    const int passes = settings.solveIter;
    for (int pass = 0; pass < passes; ++pass) {
        size_t row = 0;
        for (const Segment& segment : segments) {
            Contact::Sweep(rows.begin() + row, rows.begin() + segment.rowEnd);
            row = segment.rowEnd;
            if (segment.other) {
                segment.other->CalcDelta();
                segment.other->ApplyDelta();
            }
        }
    }

    for (size_t i = 0; i < contacts.size(); ++i) {
        contacts[i]->FromRow(rows[i], passes > 0);
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
