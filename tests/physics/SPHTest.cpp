#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "WorldTest.h"
#include "physics/Particle.h"
#include "physics/ParticleHash.h"
#include "physics/SPH.h"
#include "physics/StepWorkers.h"
#include "script/ValueConversions.h"
#include "util/LexicalCast.h"
#include "util/Random.h"

namespace {

using math::Vec2;
using physics::Particle;
using physics::ParticleHash;
using physics::ParticleList;
using physics::ParticlePtr;
using physics::SPH;

// The fluid step on its own, outside the simulation's step.
class SPHTest : public test_physics::WorldTest {
protected:
    SPH& fluid = SPH::Get();

    ParticlePtr Make(const Vec2& at, const Vec2& velocity = {0, 0}) {
        ParticlePtr particle(new Particle(at, velocity));
        list.push_back(particle);
        return particle;
    }

    float Published(const char* name) const {
        return script::ObjectToValue<float>(fluid.GetVariable(name)->GetValue());
    }

    ParticleList list;
};

TEST_F(SPHTest, LoneParticleHasItsOwnDensityAndAges) {
    const ParticlePtr p = Make({0.3f, -0.2f});
    fluid.Update(list, 0.01f);

    ASSERT_EQ(p->neighbours.size(), 1u);
    EXPECT_EQ(p->neighbours.Other(p->neighbours[0]), p.Get());
    EXPECT_EQ(p->neighbours[0].distance, 0);
    // m W(0) = m 315 K1 h^6, with K1 = 1 / (h^9 64 pi).
    const double h = 0.1f;
    const double m = 3.1415927f * 0.05f * 0.05f;
    const double expected = m * 315 * std::pow(h, 6) / (std::pow(h, 9) * 201.06194);
    EXPECT_NEAR(p->density, expected, expected * 1e-5);
    EXPECT_FLOAT_EQ(p->pressure, 400 * (p->density - 1));
    EXPECT_EQ(p->force, Vec2(0, 0));
    EXPECT_FLOAT_EQ(p->age, 0.01f);
    fluid.Update(list, 0.01f);
    EXPECT_FLOAT_EQ(p->age, 0.02f);

    EXPECT_FLOAT_EQ(Published("AVG_neighCount"), 1);
    EXPECT_FLOAT_EQ(Published("AVG_density"), p->density);
    EXPECT_FLOAT_EQ(Published("AVG_pressure"), p->pressure);
    EXPECT_EQ(script::ObjectToValue<util::String>(fluid.GetVariable("hashInfo")->GetValue()),
              "Number of elements:  1\nAverage bucket size: " +
                  util::LexicalCast<util::String>(1.0f / 3) + "\nMaximum bucket size: 1\n");

    // A change of mass settings reaches the particle at the next step; its geom keeps the
    // radius it was made with.
    fluid.radius->SetNative(0.1f);
    fluid.Update(list, 0.01f);
    EXPECT_FLOAT_EQ(p->GetMass(), 3.1415927f * 0.01f);
    EXPECT_EQ(p->GetInertia(), p->GetMass());
    EXPECT_FLOAT_EQ(p->GetGeom().GetRadius(), 0.05f);
    EXPECT_FLOAT_EQ(fluid.GetKernelRadius(), 0.2f);
}

TEST_F(SPHTest, ParticlesMeetJustInsideTheKernelRadius) {
    const float h = fluid.GetKernelRadius();
    const ParticlePtr a = Make({0, 0});
    const ParticlePtr b = Make({h, 0});
    fluid.Update(list, 0.01f);
    EXPECT_EQ(a->neighbours.size(), 1u);
    EXPECT_EQ(b->neighbours.size(), 1u);

    a->force = b->force = Vec2(0, 0);
    b->position = Vec2(0.999f * h, 0.0f);
    fluid.Update(list, 0.01f);
    ASSERT_EQ(a->neighbours.size(), 2u);
    ASSERT_EQ(b->neighbours.size(), 2u);
    EXPECT_EQ(a->neighbours.Other(a->neighbours[1]), b.Get());
    EXPECT_EQ(a->neighbours.Delta(a->neighbours[1]), Vec2(0.999f * h, 0));
    EXPECT_EQ(b->neighbours.Delta(b->neighbours[1]), Vec2(-0.999f * h, 0));
    EXPECT_FLOAT_EQ(a->neighbours[1].distance, 0.999f * h);
    // Positive pressure pushes them apart, equally.
    EXPECT_LT(a->force.x, 0);
    EXPECT_EQ(a->force.x, -b->force.x);
    EXPECT_EQ(a->age, 0);
}

// Each list holds the particle first, then exactly the others within h, whatever the cell
// size, also where truncation makes the cells along the axes twice as wide.
TEST_F(SPHTest, NeighbourListsHoldExactlyThePairsWithinTheKernelRadius) {
    util::Random random(11);
    for (int i = 0; i < 400; ++i) {
        Make({random.GetUniform(-0.6f, 0.6f), random.GetUniform(-0.6f, 0.6f)});
    }
    // Some exactly on the axes and on cell borders.
    Make({0, 0});
    Make({-0.2f, 0.2f});
    Make({0.2f, -0.4f});
    const float h = fluid.GetKernelRadius();
    for (float bucketSize : {2.0f, 1.0f, 3.5f}) {
        fluid.bucketSize->SetNative(bucketSize);
        fluid.Update(list, 0.01f);
        size_t entries = 0;
        for (const ParticlePtr& p : list) {
            ASSERT_GE(p->neighbours.size(), 1u);
            EXPECT_EQ(p->neighbours.Other(p->neighbours[0]), p.Get());
            std::vector<const Particle*> listed;
            for (size_t k = 1; k < p->neighbours.size(); ++k) {
                const Particle::Neighbour& n = p->neighbours[k];
                EXPECT_EQ(p->neighbours.Delta(n), p->neighbours.Other(n)->position - p->position);
                listed.push_back(p->neighbours.Other(n));
            }
            std::vector<const Particle*> expected;
            for (const ParticlePtr& q : list) {
                const Vec2 d = q->position - p->position;
                if (q != p && d.x * d.x + d.y * d.y < h * h) {
                    expected.push_back(q.Get());
                }
            }
            std::sort(listed.begin(), listed.end());
            std::sort(expected.begin(), expected.end());
            EXPECT_EQ(listed, expected) << "bucket size " << bucketSize;
            entries += p->neighbours.size();
        }
        EXPECT_FLOAT_EQ(Published("AVG_neighCount"),
                        static_cast<float>(entries) / static_cast<float>(list.size()));
    }
}

TEST_F(SPHTest, HashCellsTruncateTowardZeroAndTheTableKeepsItsSize) {
    EXPECT_EQ(ParticleHash::KeyOf({-0.15f, 0.15f}, 5), ParticleHash::Key(0, 0));
    EXPECT_EQ(ParticleHash::KeyOf({-0.25f, 0.45f}, 5), ParticleHash::Key(-1, 2));
    EXPECT_EQ(ParticleHash::KeyOf({1e30f, std::nanf("")}, 5), ParticleHash::Key(1 << 30, 0));
    EXPECT_EQ(ParticleHash::InitialBucketCount(0), 3u);
    EXPECT_EQ(ParticleHash::InitialBucketCount(8), 11u);
    EXPECT_EQ(ParticleHash::InitialBucketCount(9), 11u);
    EXPECT_EQ(ParticleHash::InitialBucketCount(5000), 5003u);
    // The bucket of a hash is its remainder, found without dividing.
    for (const size_t divisor :
         {size_t{1}, size_t{3}, size_t{5003}, size_t{1000003}, size_t{4294967291u}}) {
        const uint64_t factor = ParticleHash::RemainderFactor(divisor);
        uint32_t value = 0x9E3779B9u;
        for (int k = 0; k < 2000; ++k) {
            value = value * 1664525u + 1013904223u;
            for (const uint32_t v :
                 {value, uint32_t(k), uint32_t(divisor - 1), uint32_t(divisor), 0xFFFFFFFFu}) {
                ASSERT_EQ(ParticleHash::Remainder(v, divisor, factor), v % divisor) << v;
            }
        }
    }

    // Four particles size the table to 5 buckets; eight separate cells then outgrow it
    // (5 -> 11), and a later step keeps the larger table.
    ParticleHash hash;
    std::vector<ParticlePtr> held;
    std::vector<Particle*> particles;
    for (int i = 0; i < 8; ++i) {
        held.emplace_back(new Particle(Vec2(static_cast<float>(i), 0), {0, 0}));
        particles.push_back(held.back().Get());
    }
    hash.Build(particles.data(), 4, 0.5f);
    EXPECT_EQ(hash.BucketCount(), 5u);
    EXPECT_EQ(hash.CellCount(), 4u);
    hash.Build(particles.data(), 8, 0.5f);
    EXPECT_EQ(hash.BucketCount(), 11u);
    EXPECT_EQ(hash.CellCount(), 8u);
    hash.Build(particles.data(), 2, 0.5f);
    EXPECT_EQ(hash.BucketCount(), 11u);
    // Cells list their members in list order, and every slot is accounted for.
    hash.Build(particles.data(), 8, 100.0f);
    ASSERT_EQ(hash.CellCount(), 1u);
    for (size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(hash.SlotOf(i), i);
        EXPECT_EQ(hash.Members()[i], particles[i]);
    }
}

// A key finds its own cell or none, around every cell: where the cells lie close enough
// to be looked up on a grid, and where one far drop leaves every look-up to the table.
TEST_F(SPHTest, HashFindsCellsByKeyNearAndFar) {
    util::Random random(5);
    std::vector<ParticlePtr> held;
    std::vector<Particle*> particles;
    for (int i = 0; i < 300; ++i) {
        held.emplace_back(
            new Particle(Vec2(random.GetUniform(-2, 2), random.GetUniform(-1, 3)), {0, 0}));
        particles.push_back(held.back().Get());
    }
    ParticleHash hash;
    for (const bool strewn : {false, true}) {
        if (strewn) {
            held.emplace_back(new Particle(Vec2(1e30f, -1e30f), {0, 0}));
            particles.push_back(held.back().Get());
        }
        hash.Build(particles.data(), particles.size(), 0.2f);
        std::vector<const ParticleHash::Cell*> cells;
        hash.ForEachCell([&](const ParticleHash::Cell& cell) { cells.push_back(&cell); });
        ASSERT_GT(cells.size(), 50u);
        for (const ParticleHash::Cell* cell : cells) {
            for (int dy = -2; dy <= 2; ++dy) {
                for (int dx = -2; dx <= 2; ++dx) {
                    const ParticleHash::Key key = cell->key + ParticleHash::Key(dx, dy);
                    const ParticleHash::Cell* expected = nullptr;
                    for (const ParticleHash::Cell* other : cells) {
                        expected = other->key == key ? other : expected;
                    }
                    ASSERT_EQ(hash.Find(key), expected) << key.x << ", " << key.y;
                }
            }
        }
    }
}

// A lone particle feels no fluid force, so its force is its jitter alone: m jitter (n2, n1).
TEST_F(SPHTest, JitterDrawsStandardNormalsOnlyWhenAsked) {
    std::vector<ParticlePtr> lone;
    for (int i = 0; i < 2000; ++i) {
        lone.push_back(Make({static_cast<float>(i), 0}));
    }
    lone[5]->SetStatic(true);
    auto forces = [&] {
        std::vector<Vec2> result;
        for (const ParticlePtr& p : lone) {
            result.push_back(p->force);
            p->force = Vec2(0, 0);
        }
        return result;
    };
    fluid.SeedJitter(7);
    fluid.Update(list, 0.01f);  // jitter 0: no draws
    EXPECT_EQ(lone[0]->force, Vec2(0, 0));
    fluid.jitter->SetNative(2);
    fluid.Update(list, 0.01f);
    const std::vector<Vec2> afterQuietStep = forces();
    fluid.SeedJitter(7);
    fluid.Update(list, 0.01f);
    EXPECT_EQ(forces(), afterQuietStep);

    // The static particle still draws its pair, and takes nothing.
    EXPECT_EQ(afterQuietStep[5], Vec2(0, 0));
    const double scale = fluid.GetParticleMass() * 2;
    double sum = 0;
    double squares = 0;
    for (const Vec2& f : afterQuietStep) {
        for (double n : {f.x / scale, f.y / scale}) {
            sum += n;
            squares += n * n;
        }
    }
    const double count = 2.0 * (static_cast<double>(lone.size()) - 1);
    EXPECT_NEAR(sum / count, 0, 0.05);
    EXPECT_NEAR(squares / count, 1, 0.08);
}

TEST_F(SPHTest, VelocitySmoothingTakesTheKernelMeanOfTheOldVelocities) {
    const ParticlePtr a = Make({0, 0}, {1, 0});
    const ParticlePtr b = Make({0.06f, 0}, {0, 2});
    const ParticlePtr c = Make({0.12f, 0}, {-3, 0});
    fluid.Update(list, 0.01f);
    const float w0 = fluid.Density(0);
    const float w1 = fluid.Density(0.06f);
    ASSERT_EQ(a->neighbours.size(), 2u);  // c lies beyond h of a
    ASSERT_EQ(b->neighbours.size(), 3u);

    c->SetStatic(true);
    fluid.SmoothVelocities();
    EXPECT_NEAR(a->velocity.x, w0 / (w0 + w1), 1e-5);
    EXPECT_NEAR(a->velocity.y, 2 * w1 / (w0 + w1), 1e-5);
    // b sees the old velocities of a and c, not a's new one.
    EXPECT_NEAR(b->velocity.x, (w1 * 1 - w1 * 3) / (w0 + 2 * w1), 1e-5);
    EXPECT_NEAR(b->velocity.y, 2 * w0 / (w0 + 2 * w1), 1e-5);
    EXPECT_EQ(c->velocity, Vec2(-3, 0));

    fluid.velocitySmoothing->SetNative(false);
    const Vec2 before = a->velocity;
    fluid.SmoothVelocities();
    EXPECT_EQ(a->velocity, before);
}

// Cells meet only where their members come within h of each other, and the test of each
// pair decides in float arithmetic: pairs a few ulps either side of h, across the borders
// of cells in every direction, are found exactly as the test decides them.
TEST_F(SPHTest, PairsAtTheEdgeOfTheKernelAreFoundAcrossCells) {
    const float h = fluid.GetKernelRadius();
    util::Random random(5);
    for (int i = 0; i < 60; ++i) {
        const Vec2 base(random.GetUniform(-0.5f, 0.5f), random.GetUniform(-0.5f, 0.5f));
        Make(base);
        for (int turn = 0; turn < 8; ++turn) {
            const float angle = 0.7853982f * static_cast<float>(turn);
            const float reach = h * (1 - random.GetUniform(-3e-7f, 3e-7f));
            Make(base + Vec2(reach * std::cos(angle), reach * std::sin(angle)));
        }
    }
    for (float bucketSize : {2.0f, 1.0f, 3.5f}) {
        fluid.bucketSize->SetNative(bucketSize);
        fluid.Update(list, 0.01f);
        size_t near = 0;
        for (const ParticlePtr& p : list) {
            std::vector<const Particle*> listed;
            for (size_t k = 1; k < p->neighbours.size(); ++k) {
                listed.push_back(p->neighbours.Other(p->neighbours[k]));
            }
            std::vector<const Particle*> expected;
            for (const ParticlePtr& q : list) {
                const Vec2 d = q->position - p->position;
                const float squared = d.x * d.x + d.y * d.y;
                if (q != p && squared < h * h) {
                    expected.push_back(q.Get());
                }
                near += std::abs(squared - h * h) < 1e-6f * h * h ? 1 : 0;
            }
            std::sort(listed.begin(), listed.end());
            std::sort(expected.begin(), expected.end());
            EXPECT_EQ(listed, expected) << "bucket size " << bucketSize;
        }
        EXPECT_GT(near, 600u);
    }
}

// The fluid's loops share their work among threads, the neighbour search in ranges of
// cells whose pairs are then taken in order: any number of threads gives the same bits.
// Water, water dense enough for the caps to act, water so dense that a thread leaves the
// rest of its search to the calling one, and a pile.
TEST_F(SPHTest, AnyNumberOfThreadsGivesTheSameBits) {
    physics::StepWorkers& workers = physics::StepWorkers::Get();
    const unsigned threadsBefore = workers.GetThreadCount();
    struct Water {
        float influence;
        float spacing;  // in kernel radii
        int side;
        Vec2 at;
        int pile;
    };
    // The densest away from the axes, where cells are twice as wide and it would be a pile.
    for (const Water& water : {Water{2, 0.8f, 40, {0, 0}, 0}, Water{0.5f, 0.3f, 40, {0, 0}, 0},
                               Water{2, 0.15f, 45, {1, 1}, 0}, Water{2, 0.8f, 30, {0, 0}, 600}}) {
        const auto run = [&](unsigned threads) {
            ResetFluid();
            fluid.influence->SetNative(water.influence);
            workers.SetThreadCount(threads);
            const bool split = workers.SplitEverything(true);
            const float step = water.spacing * fluid.GetKernelRadius();
            ParticleList particles;
            for (int y = 0; y < water.side; ++y) {
                for (int x = 0; x < water.side; ++x) {
                    const float shift = 0.001f * static_cast<float>(y % 3);
                    particles.emplace_back(new Particle(
                        water.at + Vec2(step * static_cast<float>(x - water.side / 2) + shift,
                                        step * static_cast<float>(y - water.side / 3)),
                        {0, 0}));
                }
            }
            for (int i = 0; i < water.pile; ++i) {
                particles.emplace_back(new Particle({0.3f, 0.2f}, {0, 0}));
            }
            for (int i = 0; i < 5; ++i) {
                for (const ParticlePtr& p : particles) {
                    p->force = Vec2(0, 0);
                }
                fluid.Update(particles, 0.01f);
                for (const ParticlePtr& p : particles) {
                    p->velocity += 0.01f * p->force / p->GetMass();
                    p->position += 0.01f * p->velocity;
                }
                fluid.SmoothVelocities();
            }
            std::vector<float> state;
            for (const ParticlePtr& p : particles) {
                state.insert(state.end(), {p->position.x, p->position.y, p->velocity.x,
                                           p->velocity.y, p->force.x, p->force.y, p->density,
                                           p->pressure, p->tension.x, p->tension.y});
                for (const Particle::Neighbour& n : p->neighbours) {
                    const Vec2 delta = p->neighbours.Delta(n);
                    state.insert(state.end(),
                                 {static_cast<float>(n.slot), n.distance, delta.x, delta.y});
                }
            }
            workers.SplitEverything(split);
            return state;
        };
        const std::vector<float> one = run(1);
        for (unsigned threads : {2u, 3u}) {
            const std::vector<float> many = run(threads);
            ASSERT_EQ(one.size(), many.size());
            EXPECT_EQ(std::memcmp(one.data(), many.data(), one.size() * sizeof(float)), 0)
                << "spacing " << water.spacing << ", pile " << water.pile << ", threads "
                << threads;
        }
    }
    workers.SetThreadCount(threadsBefore);
}

}  // namespace
