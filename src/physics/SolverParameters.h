#pragma once

#include "math/MathUtil.h"
#include "math/Real.h"

namespace physics {

// The simulation's solver tunables, as one plain record. Defaults are those of the
// simulation's attributes.
struct SolverSettings {
    math::real timeDelta = 0.01f;
    math::real solveConstant = 1e8f;
    math::real solveDcontacts = 5;
    math::real solveDconstraints = 5;
    math::real solveDistFactor = 1;
    math::real solveVelFactor = 1;
    math::real solveAccFactor = 1;
    math::real solveRegularizationFactor = 1;
    bool leapFrog = true;
    bool adHocSolver = false;
    math::real targetPenetration = 0.001f;
    math::real maxPositionCorrection = math::Infinity();
    bool warmStart = true;
    math::real warmStartFactor = 0.5f;
    int solveIter = 30;
    bool solvePreSortConstraints = true;
    bool prioritizedSolver = false;
};

// Position, velocity and acceleration terms and the regularisation of one kind of row,
// derived from the step h and a damping of d steps.
struct SolverParameterBlock {
    math::real a = 0;  // position
    math::real b = 0;  // velocity
    math::real c = 0;  // acceleration
    math::real e = 0;  // regularisation
    math::real h = 0;
    math::real targetPenetration = 0;  // used by contacts only

    static SolverParameterBlock Make(const SolverSettings& settings, math::real d);
};

// Module-wide solver state. Kept outside the simulation so that a contact, when it is
// made, can read the regularisation of the previous solve and the simulated time. All of
// it starts at zero: contacts made before the first solve have e = 0.
struct SolverParameters {
    SolverParameterBlock contacts;
    SolverParameterBlock hinges;
    math::real maxPositionCorrection = 0;
    bool warmStart = false;
    math::real warmStartFactor = 0;
    // Set by the simulation before it looks for contacts; a contact's time of first touch.
    double simulatedTime = 0;

    // Rebuilds everything but the simulated time; done at the start of every solve.
    void Rebuild(const SolverSettings& settings);

    static SolverParameters& Current();
};

}  // namespace physics
