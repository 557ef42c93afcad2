#include <gtest/gtest.h>

#include "physics/SPH.h"
#include "physics/Simulation.h"

namespace {

// The simulation makes the world body and world geom first, so that they draw ID 0 from
// their counters, as in the program: it must exist before any test makes a body or geom.
class WorldEnvironment : public testing::Environment {
public:
    void SetUp() override {
        physics::Simulation::Create();
        physics::SPH::Create();
    }
    void TearDown() override {
        physics::Simulation::Release();
        physics::SPH::Release();
    }
};

[[maybe_unused]] testing::Environment* const kWorldEnvironment =
    testing::AddGlobalTestEnvironment(new WorldEnvironment);

}  // namespace
