#pragma once

#include <vector>

#include "physics/Forward.h"
#include "physics/SolverParameters.h"

namespace physics {

// One solve of a step: rebuilds the parameter blocks, prepares the constraints (dropping
// those whose SolveInit says no, so the list shrinks), iterates on the chosen schedule and
// adds the velocity changes to the movable bodies. The caller builds the list: hinges
// first, then contacts; its order is part of the result.
void RunSolver(const std::vector<AbstractBody*>& allBodies, ConstraintList& constraints,
               const SolverSettings& settings);

// RunSolver in its parts, for a caller that joins the passes over the bodies to passes of
// its own: every body's changes cleared, then SolveConstraints, then every body's changes
// applied.
void ClearVelocityChange(AbstractBody& body);
void SolveConstraints(const std::vector<AbstractBody*>& allBodies, ConstraintList& constraints,
                      const SolverSettings& settings);
void ApplyVelocityChange(AbstractBody& body);

// Prepares the constraints as RunSolver describes, then projected Gauss-Seidel sweeps in
// list order, or by descending first change if solvePreSortConstraints, and SolveExit. The
// list is left in its order but for the dropped constraints.
void GaussSeidelSolver(ConstraintList& constraints, const SolverSettings& settings);

// Always applies the greatest pending change next, then recomputes the changes of the
// constraints that share a body with it. The queue holds one constraint per priority
// value: one whose priority equals a queued one's is left out until a neighbour changes
// it.
void PrioritizedSolver(const std::vector<AbstractBody*>& allBodies,
                       const ConstraintList& constraints, const SolverSettings& settings);

}  // namespace physics
