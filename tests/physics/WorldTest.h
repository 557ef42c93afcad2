#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include "math/Vector2.h"
#include "physics/Body.h"
#include "physics/SPH.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"
#include "physics/Transform.h"

namespace test_physics {

using math::Vec2;
using physics::Body;
using physics::BodyPtr;
using physics::Simulation;

constexpr float kPi = 3.1415927f;

// Every test starts from an empty world with the attributes at their defaults, and leaves
// one behind.
class WorldTest : public testing::Test {
protected:
    void SetUp() override { ResetWorld(); }
    void TearDown() override { ResetWorld(); }

    static void ResetWorld() {
        Simulation& sim = Simulation::Get();
        sim.Clear();
        sim.running->SetNative(true);
        sim.timeFactor->SetNative(1);
        sim.timeDelta->SetNative(0.01f);
        sim.gravity->SetNative(Vec2(0, -9.8f));
        sim.gravitySwitch->SetNative(true);
        sim.airSwitch->SetNative(true);
        sim.airFrictionLinear->SetNative(0.01f);
        sim.airFrictionQuadratic->SetNative(0);
        sim.rotFrictionLinear->SetNative(0.01f);
        sim.airDensity->SetNative(0.01f);
        sim.defaultBodyDensity->SetNative(2);
        sim.defaultBodyFriction->SetNative(0.5f);
        sim.defaultBodyRestitution->SetNative(0.5f);
        sim.fallLimit->SetNative(1000);
        sim.prioritizedSolver->SetNative(false);
        sim.solveIter->SetNative(30);
        sim.warmStart->SetNative(true);
        sim.GetStepCallbacks().Clear();
        ResetFluid();
    }

    static void ResetFluid() {
        physics::SPH& fluid = physics::SPH::Get();
        for (auto* attrib : {&fluid.radius, &fluid.influence, &fluid.vaporizeTime, &fluid.friction,
                             &fluid.restitution, &fluid.soundSpeed, &fluid.density,
                             &fluid.viscosity, &fluid.pressMultiplier, &fluid.viscMultiplier,
                             &fluid.surfaceTension, &fluid.jitter, &fluid.bucketSize}) {
            (*attrib)->SetNative((*attrib)->GetDefault());
        }
        fluid.specialPressure->SetNative(true);
        fluid.velocitySmoothing->SetNative(true);
    }

    // A body of one geom, placed at the point and angle, added to the world.
    static BodyPtr Add(physics::Geom* geom, const Vec2& at, float angle = 0) {
        physics::GeomPtr held(geom);
        held->SetTransform(physics::Transform::FromAngle(angle, at));
        return Simulation::Get().AddBodyOf(held);
    }

    // The ground: a plane through the origin whose normal is turned by the angle from (0, 1).
    static BodyPtr AddGround(float tilt = 0) {
        return Add(new physics::Plane(), {0, 0}, kPi / 2 + tilt);
    }

    static void Steps(int count) {
        for (int i = 0; i < count; ++i) {
            Simulation::Get().Step(true);
        }
    }

    // The world angle of a body's first geom: a body restarts at angle 0 when its geoms
    // are set, so its own angle is relative to how the geoms were placed.
    static float GeomAngle(const Body& body) {
        return body.GetPlacedGeoms()[0].geom->GetTransform().Angle();
    }

    // How far an angle is from the nearest quarter turn.
    static float OffSquare(float angle) { return std::fabs(std::remainder(angle, kPi / 2)); }

    Simulation& sim = Simulation::Get();
};

}  // namespace test_physics
