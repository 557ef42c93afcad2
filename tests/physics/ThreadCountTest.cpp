// The step on several threads gives the bits of the step on one: every loop that the
// threads share computes each item on its own or joins its parts in order.

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "WorldTest.h"
#include "physics/Hinge.h"
#include "physics/Particle.h"
#include "physics/Polygon.h"
#include "physics/StepWorkers.h"

namespace test_physics {
namespace {

using physics::GeomPtr;
using physics::StepWorkers;

// Splits every loop, however small the world, on the given number of threads; puts the
// default back afterwards.
class ThreadScope {
public:
    explicit ThreadScope(unsigned threads)
        : m_threads(StepWorkers::Get().GetThreadCount()),
          m_split(StepWorkers::Get().SplitEverything(threads > 1)) {
        StepWorkers::Get().SetThreadCount(threads);
    }
    ~ThreadScope() {
        StepWorkers::Get().SetThreadCount(m_threads);
        StepWorkers::Get().SplitEverything(m_split);
    }

private:
    unsigned m_threads;
    bool m_split;
};

class ThreadCountTest : public WorldTest {
protected:
    BodyPtr Add(GeomPtr geom, const Vec2& at, float angle = 0) {
        geom->SetTransform(physics::Transform::FromAngle(angle, at));
        return Simulation::Get().AddBodyOf(geom);
    }

    void Ground() {
        GeomPtr ground(new physics::Plane());
        ground->SetTransform(physics::Transform::FromAngle(kPi / 2, {0, 0}));
        Simulation::Get().AddBodyOf(ground);
    }

    // A pyramid of boxes, a heap of polygons and circles beside it, and a chain of hinged
    // boxes hanging from the world: every kind of pair and both kinds of constraint.
    void RigidWorld() {
        Ground();
        for (int row = 0; row < 12; ++row) {
            for (int i = 0; i < 12 - row; ++i) {
                Add(GeomPtr(new physics::Box(Vec2(0.5f, 0.5f))),
                    {i * 1.05f + row * 0.525f - 6, 0.5f + row * 1.0f});
            }
        }
        for (int i = 0; i < 40; ++i) {
            const Vec2 at(12 + (i % 8) * 1.1f, 1 + (i / 8) * 1.2f);
            if (i % 2 == 0) {
                Add(GeomPtr(new physics::Polygon(math::Vec2List{
                        {-0.5f, -0.4f}, {0.5f, -0.5f}, {0.1f, 0}, {0.3f, 0.5f}, {-0.4f, 0.3f}})),
                    at, 0.3f * i);
            } else {
                Add(GeomPtr(new physics::Circle(0.45f)), at);
            }
        }
        GeomPtr previous = Simulation::Get().GetWorldGeom();
        for (int i = 0; i < 8; ++i) {
            const BodyPtr link = Add(GeomPtr(new physics::Box(Vec2(0.4f, 0.1f))), {-20.0f + i, 12});
            Simulation::Get().AddConstraint(physics::HingePtr(new physics::Hinge(
                previous, link->GetPlacedGeoms()[0].geom, Vec2(-20.5f + i, 12))));
            previous = link->GetPlacedGeoms()[0].geom;
        }
    }

    // A column of water falling on a box and a polygon, in a ground corner.
    void WaterWorld() {
        Ground();
        GeomPtr wall(new physics::Plane());
        wall->SetTransform(physics::Transform::FromAngle(0, {-1, 0}));
        Simulation::Get().AddBodyOf(wall);
        Add(GeomPtr(new physics::Box(Vec2(0.6f, 0.3f))), {3, 0.4f});
        Add(GeomPtr(new physics::Polygon(math::Vec2List{{-1, 0}, {1, 0}, {0, 0.8f}})), {6, 0.1f});
        for (int i = 0; i < 1600; ++i) {
            const Vec2 at(-0.9f + (i % 40) * 0.08f, 0.2f + (i / 40) * 0.08f);
            Simulation::Get().AddParticle(physics::ParticlePtr(new physics::Particle(at, {0, 0})));
        }
    }

    // Every body's and particle's place, angle and velocities as bits.
    static std::vector<uint32_t> State() {
        std::vector<float> values;
        const Simulation& sim = Simulation::Get();
        for (const BodyPtr& body : sim.GetBodies()) {
            values.insert(values.end(),
                          {body->position.x, body->position.y, body->angle, body->velocity.x,
                           body->velocity.y, body->angularVelocity});
        }
        for (const physics::ParticlePtr& p : sim.GetParticles()) {
            values.insert(values.end(),
                          {p->position.x, p->position.y, p->velocity.x, p->velocity.y, p->density});
        }
        std::vector<uint32_t> bits(values.size());
        std::memcpy(bits.data(), values.data(), values.size() * sizeof(float));
        return bits;
    }

    template <class Build, class EachStep>
    std::vector<uint32_t> Run(unsigned threads, int steps, Build build, EachStep eachStep) {
        ResetWorld();
        const ThreadScope scope(threads);
        build();
        for (int i = 0; i < steps; ++i) {
            eachStep(i);
            Simulation::Get().Step(true);
        }
        return State();
    }

    template <class Build>
    std::vector<uint32_t> Run(unsigned threads, int steps, Build build) {
        return Run(threads, steps, build, [](int) {});
    }
};

TEST_F(ThreadCountTest, RigidWorldGivesTheSameBitsOnOneAndOnSeveralThreads) {
    const auto build = [this] { RigidWorld(); };
    const std::vector<uint32_t> one = Run(1, 80, build);
    EXPECT_EQ(Run(2, 80, build), one);
    // The world did something: the pile and the chain moved.
    EXPECT_NE(Run(1, 1, build), one);
}

TEST_F(ThreadCountTest, WaterGivesTheSameBitsOnOneAndOnSeveralThreads) {
    const auto build = [this] { WaterWorld(); };
    const std::vector<uint32_t> one = Run(1, 60, build);
    EXPECT_EQ(Run(2, 60, build), one);
}

// Bodies that go bad in the middle of a run are dropped, the same on every thread count,
// and no thread waits on them; their bad numbers reach none of the bodies they touch.
TEST_F(ThreadCountTest, ABodyGoneBadEndsTheSameOnEveryThreadCount) {
    std::vector<BodyPtr> boxes;
    const auto build = [&] {
        RigidWorld();
        boxes = Simulation::Get().GetBodies();
    };
    const auto spoil = [&](int step) {
        if (step == 30) {
            boxes[5]->force.x = std::numeric_limits<float>::quiet_NaN();
            boxes[60]->position.y = std::numeric_limits<float>::infinity();
        }
    };
    const std::vector<uint32_t> one = Run(1, 80, build, spoil);
    const size_t left = Simulation::Get().GetBodies().size();
    EXPECT_EQ(Run(2, 80, build, spoil), one);
    EXPECT_EQ(Simulation::Get().GetBodies().size(), left);
    EXPECT_EQ(left, boxes.size() - 2);
    boxes.clear();
}

}  // namespace
}  // namespace test_physics
