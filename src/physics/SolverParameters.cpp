#include "physics/SolverParameters.h"

namespace physics {

SolverParameterBlock SolverParameterBlock::Make(const SolverSettings& settings, math::real d) {
    const math::real h = settings.timeDelta;
    const math::real k = settings.solveConstant;
    const math::real q = 1 + 4 * d;
    SolverParameterBlock block;
    if (settings.adHocSolver) {
        block.a = (1 / h) * settings.solveDistFactor;
        block.b = 0;
        block.e = 0;
    } else {
        block.a = 4 / (q * h) * settings.solveDistFactor;
        block.b = (4 * d / q) * settings.solveVelFactor;
        block.e = 4 / (k * h * h * q) * settings.solveRegularizationFactor;
    }
    block.c = (settings.leapFrog ? h / 2 : 0) * settings.solveAccFactor;
    block.h = h;
    block.targetPenetration = settings.targetPenetration;
    return block;
}

void SolverParameters::Rebuild(const SolverSettings& settings) {
    contacts = SolverParameterBlock::Make(settings, settings.solveDcontacts);
    hinges = SolverParameterBlock::Make(settings, settings.solveDconstraints);
    hinges.targetPenetration = 0;
    maxPositionCorrection = settings.maxPositionCorrection;
    warmStart = settings.warmStart;
    warmStartFactor = settings.warmStartFactor;
}

SolverParameters& SolverParameters::Current() {
    static SolverParameters parameters;
    return parameters;
}

}  // namespace physics
