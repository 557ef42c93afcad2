// Worlds that no sensible scene makes, each in a process of its own whose memory and
// processor time the operating system bounds: thousands of shapes or particles at one
// point once made a step take gigabytes and half a minute, and a polygon of many
// thousand vertices minutes to build. Each must pass its steps within the bounds, lose
// nothing that is not part of the pile-up, and say so once in the log.

#include <sys/resource.h>

#include <cmath>
#include <cstdlib>
#include <functional>

#include "../util/LogCapture.h"
#include "WorldTest.h"
#include "physics/Collider.h"
#include "physics/Particle.h"
#include "physics/Polygon.h"
#include "util/Exception.h"
#include "util/SmallObjectPool.h"

namespace {

using math::Vec2;
using physics::BodyPtr;
using test_physics::WorldTest;

// Generous bounds: a sensible scene of this size needs a small part of them.
constexpr rlim_t kMemoryBytes = rlim_t{1536} << 20;
#if defined(VORRA_ADDRESS_SANITIZER)
constexpr rlim_t kProcessorSeconds = 120;
#else
constexpr rlim_t kProcessorSeconds = 20;
#endif

void Limit(int resource, rlim_t value) {
    const rlimit limit{value, value};
    setrlimit(resource, &limit);
}

// Runs the check in a child process under the bounds; the child's exit code tells
// whether the check held, and a child killed for its processor time, or aborted for want
// of memory, fails the test.
void ExpectBounded(const std::function<bool()>& check) {
    EXPECT_EXIT(
        {
#if !defined(VORRA_ADDRESS_SANITIZER)
            // The address sanitizer reserves its shadow memory as address space.
            Limit(RLIMIT_AS, kMemoryBytes);
#endif
            Limit(RLIMIT_CPU, kProcessorSeconds);
            std::_Exit(check() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

class HostileSceneTest : public WorldTest {};

TEST_F(HostileSceneTest, ThousandsOfBoxesAtOnePointRestOnTheGround) {
    ExpectBounded([this] {
        AddGround();
        std::vector<BodyPtr> boxes;
        for (int i = 0; i < 3000; ++i) {
            boxes.push_back(Add(new physics::Box(Vec2(0.5f, 0.5f)), {0, 3}, 0.001f * i));
        }
        test::LogCapture log;
        Steps(150);
        bool rested = log.Contains("Too many shapes piled up in one place: 2984 of them");
        rested = rested &&
                 sim.GetContacts().size() < physics::Collider::kContactsBase + 8 * boxes.size();
        for (const BodyPtr& box : boxes) {
            // Left out of the pile, a box still meets the ground.
            rested = rested && box->IsInWorld() && box->position.y > 0;
        }
        return rested;
    });
}

TEST_F(HostileSceneTest, WaterAtOnePointIsBoundedAndItsExcessEvaporates) {
    ExpectBounded([this] {
        AddGround();
        for (int i = 0; i < 20000; ++i) {
            sim.AddParticle(physics::ParticlePtr(new physics::Particle({0, 1}, {0, 0})));
        }
        physics::SPH& fluid = physics::SPH::Get();
        fluid.vaporizeTime->SetNative(0.1f);
        test::LogCapture log;
        Steps(20);
        bool bounded = log.Contains(
            "Too much water in one place: 18976 particles there are "
            "left out of the fluid and evaporate");
        // Those in the fluid kept each other company; the rest are gone.
        bounded = bounded && sim.GetParticles().size() == fluid.GetCellCap();
        for (const physics::ParticlePtr& particle : sim.GetParticles()) {
            bounded = bounded && particle->neighbours.size() <= fluid.GetNeighbourCap() &&
                      !particle->IsBad();
        }
        return bounded;
    });
}

// Outlines along a thin strip, stacked a hair apart: each one's vertices lie inside all the
// others, so that every pair makes contacts by the hundred, yet the strips are too slim to
// count as a crowd. The step stops at its contact limit.
TEST_F(HostileSceneTest, AStepStopsAtItsContactLimit) {
    ExpectBounded([this] {
        math::Vec2List strip;
        for (int i = 0; i <= 64; ++i) {
            strip.push_back(Vec2(i / 64.0f, 0.0f));
        }
        for (int i = 64; i >= 0; --i) {
            strip.push_back(Vec2(i / 64.0f, 0.02f));
        }
        std::vector<physics::PolygonPtr> strips;
        for (int i = 0; i < 300; ++i) {
            math::Vec2List placed = strip;
            for (Vec2& point : placed) {
                point += Vec2(0, 3 + 1e-4f * static_cast<float>(i));
            }
            const physics::PolygonPtr polygon(new physics::Polygon(placed));
            Add(polygon.Get(), polygon->GetPosition());
        }
        test::LogCapture log;
        sim.Step(true);
        const size_t limit = physics::Collider::kContactsBase + 8 * 300;
        return log.Contains("Too many contacts in one step: after " + std::to_string(limit)) &&
               sim.GetContacts().size() <= limit + 2 * strip.size();
    });
}

TEST_F(HostileSceneTest, PolygonsOfManyVerticesAreBuiltOrRefusedQuickly) {
    ExpectBounded([] {
        // A star whose spikes reach in and out: its edges' boxes overlap far and wide.
        auto star = [](size_t count) {
            math::Vec2List points;
            for (size_t i = 0; i < count; ++i) {
                const float angle = 2 * test_physics::kPi * static_cast<float>(i) / count;
                const float radius = i % 2 ? 0.3f : 5.0f;
                points.push_back(Vec2(radius * std::cos(angle), radius * std::sin(angle)));
            }
            return points;
        };
        const physics::Polygon largest(star(physics::Polygon::kMaxVertices));
        bool refused = false;
        try {
            physics::Polygon tooLarge(star(400000));
        } catch (const BadDataException& e) {
            refused =
                std::string(e.what()).find("Too many vertices in polygon: 400000, at most 8192") !=
                std::string::npos;
        }
        return refused && largest.GetVertices().size() == physics::Polygon::kMaxVertices;
    });
}

}  // namespace
