#include "physics/Solver.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>

#include "physics/AbstractBody.h"
#include "physics/Constraint.h"
#include "physics/Contact.h"
#include "physics/RowBatches.h"
#include "physics/StepWorkers.h"
#include "util/Assert.h"
#include "util/Profiler.h"

namespace physics {

namespace {

// Bodies per part of the loops over every body.
constexpr size_t kBodyGrain = 2048;
// Rows per part of the loops over the contact rows, which touch a few of a row's cache
// lines each: below this, handing them to another core costs more than it saves.
constexpr size_t kRowGrain = 4096;

// Priorities as sort keys: a NaN, from a blown-up row, sorts last instead of breaking the
// ordering that sort and map rely on.
math::real SortKey(math::real priority) {
    return priority == priority ? priority : -math::Infinity();
}

// The sweep order as runs of packed contact rows, each run followed by one constraint of
// another kind (none after the last run).
struct Segment {
    size_t rowEnd;  // in the sweep order
    size_t batchEnd;
    Constraint* other;
};

// A place in the constraint list with its priority as an unsigned key that orders like the
// priority, so that sorting chases no pointers.
struct Keyed {
    uint32_t key;
    uint32_t item;
};

// Priorities are squares: their bits order like their values. NaN, from a blown-up row,
// sorts last instead of breaking the order.
uint32_t PriorityKey(math::real priority) {
    if (!(priority >= 0)) {
        return 0;
    }
    uint32_t bits;
    std::memcpy(&bits, &priority, sizeof bits);
    return bits;
}

// Greatest key first, by three passes of an 11-bit radix sort; equal keys keep their order.
void SortDescending(util::VectorPOD<Keyed>& keyed, util::VectorPOD<Keyed>& scratch) {
    constexpr int kBits = 11;
    constexpr uint32_t kMask = (1u << kBits) - 1;
    scratch.resize(keyed.size());
    for (int shift = 0; shift < 32; shift += kBits) {
        uint32_t counts[kMask + 2] = {};
        for (const Keyed& k : keyed) {
            ++counts[((~k.key >> shift) & kMask) + 1];
        }
        for (uint32_t d = 0; d <= kMask; ++d) {
            counts[d + 1] += counts[d];
        }
        for (const Keyed& k : keyed) {
            scratch[counts[(~k.key >> shift) & kMask]++] = k;
        }
        keyed.swap(scratch);
    }
}

// What the sweep hands back of a contact row.
struct RowResult {
    math::real accN;
    math::real accT;
    RowChange change;
};

// Kept from solve to solve, so that a step allocates only when its lists outgrow them.
struct SweepBuffers {
    util::VectorPOD<Keyed> keyed;
    util::VectorPOD<Keyed> keyedScratch;
    util::VectorPOD<ContactRow> listRows;  // in list order
    util::VectorPOD<uint32_t> order;       // contact rows in sweep order
    util::VectorPOD<uint8_t> isContact;    // in list order
    util::VectorPOD<RowChange> laneChanges;
    util::VectorPOD<RowResult> results;  // in list order
    RowBatches batches;
    util::VectorPOD<Segment> segments;
    util::VectorPOD<SolverBody> bodies;
    util::VectorPOD<AbstractBody*> bodyOwners;
    // Bodies whose own records are ahead of the array (flag by place, and a list of them).
    util::VectorPOD<uint8_t> recordAhead;
    util::VectorPOD<AbstractBody*> aheadBodies;
    uint32_t stamp = 0;
};

SweepBuffers& Buffers() {
    static SweepBuffers buffers;
    return buffers;
}

// The body's place in the sweep's array, made on first sight in this solve, with its
// inverse values; the velocity changes are taken once all warm starts are in. A constraint
// of another kind may lack a body; it gets a slot that nothing reads.
uint32_t SolverIndex(SweepBuffers& buffers, AbstractBody* body) {
    if (!body) {
        return 0;
    }
    if (body->solveStamp != buffers.stamp) {
        body->solveStamp = buffers.stamp;
        body->solveIndex = static_cast<uint32_t>(buffers.bodies.size());
        buffers.bodies.push_back(
            SolverBody{{0, 0}, 0, body->SolverMassInv(), body->SolverInertiaInv()});
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

// Constraints of other kinds work on the bodies' own records. While no rows are swept between
// them, a record stays ahead of the array, and is brought back once, before the next rows.
void BringToRecord(SweepBuffers& buffers, AbstractBody* body) {
    if (body && !buffers.recordAhead[body->solveIndex]) {
        CopyToBody(buffers, body);
        buffers.recordAhead[body->solveIndex] = 1;
        buffers.aheadBodies.push_back(body);
    }
}
void BringBackToArray(SweepBuffers& buffers) {
    for (AbstractBody* body : buffers.aheadBodies) {
        CopyFromBody(buffers, body);
        buffers.recordAhead[body->solveIndex] = 0;
    }
    buffers.aheadBodies.clear();
}

// Prepares each constraint in list order, dropping those whose SolveInit says no by moving
// the last one into the gap; onKept(i) follows each one kept at place i.
template <class OnKept>
void PrepareConstraints(ConstraintList& constraints, OnKept onKept) {
    VORRA_PROFILE("SolveInit");
    size_t i = 0;
    while (i < constraints.size()) {
        if (!constraints[i]->SolveInit()) {
            constraints.erase_unordered(i);
            continue;
        }
        onKept(i);
        ++i;
    }
}

}  // namespace

void ClearVelocityChange(AbstractBody& body) {
    body.velocityChange = {0, 0};
    body.angularChange = 0;
}

void ApplyVelocityChange(AbstractBody& body) {
    if (!body.IsImmovable()) {
        body.velocity += body.velocityChange;
        body.angularVelocity += body.angularChange;
    }
}

void RunSolver(const std::vector<AbstractBody*>& allBodies, ConstraintList& constraints,
               const SolverSettings& settings) {
    VORRA_PROFILE("RunSolver");
    StepWorkers::Get().ForEach(allBodies, kBodyGrain,
                               [](AbstractBody* body) { ClearVelocityChange(*body); });
    SolveConstraints(allBodies, constraints, settings);
    StepWorkers::Get().ForEach(allBodies, kBodyGrain,
                               [](AbstractBody* body) { ApplyVelocityChange(*body); });
}

void SolveConstraints(const std::vector<AbstractBody*>& allBodies, ConstraintList& constraints,
                      const SolverSettings& settings) {
    SolverParameters::Current().Rebuild(settings);
    if (settings.prioritizedSolver) {
        PrepareConstraints(constraints, [](size_t) {});
        PrioritizedSolver(allBodies, constraints, settings);
        VORRA_PROFILE("SolveExit");
        for (Constraint* constraint : constraints) {
            constraint->SolveExit();
        }
    } else {
        GaussSeidelSolver(constraints, settings);
    }
}

void GaussSeidelSolver(ConstraintList& constraints, const SolverSettings& settings) {
    VORRA_PROFILE("GaussSeidelSolver");
    SweepBuffers& buffers = Buffers();
    util::VectorPOD<ContactRow>& listRows = buffers.listRows;
    util::VectorPOD<Segment>& segments = buffers.segments;
    util::VectorPOD<Keyed>& keyed = buffers.keyed;
    buffers.bodies.clear();
    buffers.bodyOwners.clear();
    // A new stamp marks every body unplaced; 0 is what a new body holds.
    if (++buffers.stamp == 0) {
        ++buffers.stamp;
    }

    // Contacts, nearly all of the rows, are swept as packed copies: contiguous, without
    // calls, their bodies in a small array of their own. Other kinds keep their place in
    // the order and run through their own operations on the bodies' records, which are
    // brought up to date around each call. One pass over the list prepares each constraint
    // and makes its row.
    listRows.resize(constraints.size());
    util::VectorPOD<uint8_t>& isContact = buffers.isContact;
    isContact.resize(constraints.size());
    PrepareConstraints(constraints, [&](size_t i) {
        Constraint* constraint = constraints[i];
        const uint32_t body0 = SolverIndex(buffers, constraint->bodies[0]);
        const uint32_t body1 = SolverIndex(buffers, constraint->bodies[1]);
        isContact[i] = constraint->IsContact();
        if (isContact[i]) {
            static_cast<Contact*>(constraint)->ToRow(listRows[i], body0, body1);
        }
    });
    // The warm starts are all applied now: the bodies' records start from there.
    for (AbstractBody* owner : buffers.bodyOwners) {
        CopyFromBody(buffers, owner);
    }

    // With the list to be sorted, each constraint's priority from the first change it
    // asks for: the contacts' rows on the step's threads, as each reads the bodies and
    // writes only its own key, then the constraints of other kinds through their own code.
    keyed.resize(constraints.size());
    const bool presort = settings.solvePreSortConstraints;
    StepWorkers::Get().ForParts(
        constraints.size(), kRowGrain, [&](size_t, size_t first, size_t last) {
            for (size_t i = first; i < last; ++i) {
                const math::real priority =
                    presort && isContact[i]
                        ? Contact::RowPriority(listRows[i], buffers.bodies.begin())
                        : 0;
                keyed[i] = Keyed{PriorityKey(priority), static_cast<uint32_t>(i)};
            }
        });
    for (size_t i = 0; presort && i < constraints.size(); ++i) {
        if (!isContact[i]) {
            constraints[i]->CalcDelta();
            keyed[i].key = PriorityKey(constraints[i]->priority);
        }
    }
    if (settings.solvePreSortConstraints) {
        VORRA_PROFILE("Pre-sort");
        SortDescending(keyed, buffers.keyedScratch);
    }

    // The sweep order: runs of contact rows, by their list positions, each run followed by
    // one constraint of another kind.
    util::VectorPOD<uint32_t>& order = buffers.order;
    order.clear();
    segments.clear();
    for (const Keyed& k : keyed) {
        if (isContact[k.item]) {
            order.push_back(k.item);
        } else {
            segments.push_back(Segment{order.size(), 0, constraints[k.item]});
        }
    }
    segments.push_back(Segment{order.size(), 0, nullptr});

    // The rows of each run are swept a batch at a time, the padding of the batches working
    // on a body slot of its own, and each thread of a shared sweep on one more.
    RowBatches& batches = buffers.batches;
    {
        VORRA_PROFILE("Batching");
        const uint32_t dummyBody = static_cast<uint32_t>(buffers.bodies.size());
        for (size_t slot = 0; slot <= StepWorkers::kMaxThreads; ++slot) {
            buffers.bodies.push_back(SolverBody{{0, 0}, 0, 0, 0});
        }
        batches.Clear(dummyBody, buffers.bodies.begin());
        size_t row = 0;
        for (Segment& segment : segments) {
            batches.Add(listRows.begin(), order.begin() + row, segment.rowEnd - row,
                        buffers.bodies.begin());
            segment.batchEnd = batches.BatchCount();
            row = segment.rowEnd;
        }
        buffers.laneChanges.resize(batches.BatchCount() * RowBatch::kLanes);
    }

    const int passes = settings.solveIter;
    {
        VORRA_PROFILE("Sweeps");
        // Without constraints of other kinds, all passes run as one, on the step's threads.
        if (segments.size() == 1) {
            batches.SweepPasses(0, segments[0].batchEnd, passes, buffers.bodies.begin(),
                                buffers.laneChanges.begin());
        }
        buffers.recordAhead.resize(buffers.bodies.size());
        std::fill(buffers.recordAhead.begin(), buffers.recordAhead.end(), 0);
        buffers.aheadBodies.clear();
        for (int pass = 0; pass < passes && segments.size() > 1; ++pass) {
            RowChange* changes = pass + 1 == passes ? buffers.laneChanges.begin() : nullptr;
            size_t batch = 0;
            for (const Segment& segment : segments) {
                // Constraints of other kinds often follow each other: no rows between.
                if (batch != segment.batchEnd) {
                    BringBackToArray(buffers);
                    batches.SweepPasses(batch, segment.batchEnd, 1, buffers.bodies.begin(),
                                        changes);
                }
                batch = segment.batchEnd;
                if (Constraint* other = segment.other) {
                    BringToRecord(buffers, other->bodies[0]);
                    BringToRecord(buffers, other->bodies[1]);
                    other->CalcDelta();
                    other->ApplyDelta();
                }
            }
        }
        BringBackToArray(buffers);
    }

    for (size_t i = 0; i < buffers.bodyOwners.size(); ++i) {
        CopyToBody(buffers, buffers.bodyOwners[i]);
    }
    // Gathered in list order first, so that the contacts are then written in the order they
    // lie in memory.
    util::VectorPOD<RowResult>& results = buffers.results;
    results.resize(constraints.size());
    batches.ForEachResult(
        passes > 0 ? buffers.laneChanges.begin() : nullptr,
        [&](uint32_t row, math::real accN, math::real accT, const RowChange* change) {
            results[row] = RowResult{accN, accT, change ? *change : RowChange{0, 0}};
        });
    // Each contact takes only its own results.
    StepWorkers::Get().ForParts(
        constraints.size(), kRowGrain, [&](size_t, size_t first, size_t last) {
            for (size_t i = first; i < last; ++i) {
                if (isContact[i]) {
                    const RowResult& result = results[i];
                    static_cast<Contact*>(constraints[i])
                        ->TakeResults(result.accN, result.accT,
                                      passes > 0 ? &result.change : nullptr);
                }
            }
        });
    for (const Segment& segment : segments) {
        if (segment.other) {
            segment.other->SolveExit();
        }
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
