#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "WorldTest.h"
#include "physics/Collider.h"
#include "physics/Contact.h"
#include "physics/Particle.h"
#include "physics/Polygon.h"
#include "physics/SPH.h"
#include "script/Exceptions.h"
#include "script/ValueConversions.h"

namespace {

using math::Vec2;
using physics::BodyPtr;
using physics::Particle;
using physics::ParticlePtr;
using physics::SPH;
using test_physics::kPi;

// Water in the running simulation.
class WaterTest : public test_physics::WorldTest {
protected:
    SPH& fluid = SPH::Get();

    // A vertical plane at x; the solid side is to the left for a left wall.
    static BodyPtr Wall(float x, bool left) {
        return Add(new physics::Plane(), {x, 0}, left ? 0 : kPi);
    }
    static BodyPtr StaticBox(const Vec2& centre, const Vec2& halfExtents) {
        BodyPtr body = Add(new physics::Box(halfExtents), centre);
        body->SetStatic(true);
        return body;
    }
    // A block of nx by ny particles at rest, a little closer than the kernel radius, every
    // other row shifted by a millimetre so that columns meet.
    void Pour(const Vec2& corner, int nx, int ny, float step = 0.09f) {
        for (int y = 0; y < ny; ++y) {
            for (int x = 0; x < nx; ++x) {
                const Vec2 at = corner + Vec2(x * step + 0.001f * (y % 2), y * step);
                sim.AddParticle(ParticlePtr(new Particle(at, {0, 0})));
            }
        }
    }
    size_t CountWhere(bool (*test)(const Particle&)) const {
        return std::count_if(sim.GetParticles().begin(), sim.GetParticles().end(),
                             [&](const ParticlePtr& p) { return test(*p); });
    }
    float Kinetic() const {
        float sum = 0;
        for (const ParticlePtr& p : sim.GetParticles()) {
            sum += p->GetKineticEnergy();
        }
        return sum;
    }
    // The height below which nine tenths of the water (left or right of x = 1.5, or all)
    // lies: the surface, less its spray.
    enum class Side { Left, Right, Both };
    float Surface(Side side = Side::Both) const {
        std::vector<float> heights;
        for (const ParticlePtr& p : sim.GetParticles()) {
            const bool left = p->position.x < 1.5f;
            if (side == Side::Both || left == (side == Side::Left)) {
                heights.push_back(p->position.y);
            }
        }
        std::sort(heights.begin(), heights.end());
        return heights.empty() ? 0 : heights[heights.size() * 9 / 10];
    }
    float Published(const char* name) const {
        return script::ObjectToValue<float>(fluid.GetVariable(name)->GetValue());
    }
};

// Each shape touches a particle closer than a tenth of the fluid's radius to it, with one
// contact of index 0 at the particle's centre.
TEST_F(WaterTest, ParticlesTouchEveryShapeWithinTheirSkin) {
    const float margin = 0.1f * fluid.radius->Get();
    std::vector<BodyPtr> shapes = {
        AddGround(),
        Add(new physics::Circle(0.5f), {3, 3}),
        Add(new physics::Box(Vec2(0.5f, 0.5f)), {6, 3}),
        Add(new physics::Polygon(math::Vec2List{{-0.5f, -0.5f}, {0.5f, -0.5f}, {0, 0.5f}}), {9, 3}),
    };
    // Just inside the skin of each: under the ground, above the circle, left of the box,
    // inside the triangle's lower edge.
    const std::vector<Vec2> inside = {{1, 0.004f}, {3, 3.504f}, {5.496f, 3}, {9, 2.68f}};
    const std::vector<Vec2> outside = {{1, 0.006f}, {3, 3.506f}, {5.494f, 3}, {9.8f, 2}};
    std::vector<ParticlePtr> particles;
    for (const Vec2& at : inside) {
        particles.emplace_back(new Particle(at, {0, 0}));
    }
    for (const Vec2& at : outside) {
        particles.emplace_back(new Particle(at, {0, 0}));
    }
    physics::Collider collider;
    physics::ContactList contacts;
    collider.AssignBodies(sim.GetBodies(), particles);
    collider.Collide(contacts);
    // Planes first, then circles, polygons, boxes.
    ASSERT_EQ(contacts.size(), 4u);
    const size_t order[] = {0, 1, 3, 2};
    for (size_t k = 0; k < 4; ++k) {
        const size_t shape = order[k];
        physics::Geom* geom = shapes[shape]->GetPlacedGeoms()[0].geom.Get();
        const Vec2 p = inside[shape];
        const physics::Contact& c = contacts[k];
        EXPECT_EQ(c.bodies[0], shapes[shape].Get());
        EXPECT_EQ(c.bodies[1], particles[shape].Get());
        EXPECT_EQ(c.GetPoint(), p);
        EXPECT_EQ(c.GetNormal(), geom->Normal(p));
        EXPECT_FLOAT_EQ(c.GetDepth(), margin - geom->Dist(p));
    }

    // Without collideWater a shape lets water through.
    for (const BodyPtr& shape : shapes) {
        shape->GetPlacedGeoms()[0].geom->collideWater = false;
    }
    contacts.clear();
    collider.AssignBodies(sim.GetBodies(), particles);
    collider.Collide(contacts);
    EXPECT_TRUE(contacts.empty());
}

TEST_F(WaterTest, ParticlesFallLeaveAndCountLikeBodies) {
    sim.airFrictionLinear->SetNative(0);
    sim.rotFrictionLinear->SetNative(0);
    const ParticlePtr falling(new Particle({0, 100}, {0, 0}));
    const ParticlePtr broken(new Particle({5, 100}, {0, 0}));
    const ParticlePtr deep(new Particle({10, -2000}, {0, 0}));
    for (const ParticlePtr& p : {falling, broken, deep}) {
        sim.AddParticle(p);
    }
    broken->velocity.x = std::nanf("");
    sim.Update(0.01);
    EXPECT_EQ(sim.GetParticles().size(), 1u);
    EXPECT_FALSE(broken->IsInWorld());
    EXPECT_FALSE(deep->IsInWorld());
    EXPECT_NE(sim.GetStatus().find("\n1 particles\n"), util::String::npos);

    // Its weight follows the fluid's density and the air lifts it: a = g (1 - rho_air / rho).
    Steps(99);
    EXPECT_NEAR(falling->velocity.y, -9.8f * 0.99f, 0.01f);
    sim.Clear();
    EXPECT_TRUE(sim.GetParticles().empty());
    EXPECT_FALSE(falling->IsInWorld());
}

// A jitter too small to change a fall still sends the particles through the pass before
// the solve, by its other way: they fall bit for bit as without it.
TEST_F(WaterTest, TinyJitterFallsBitForBitAsNone) {
    const auto fall = [&](float amount) {
        sim.Clear();
        fluid.jitter->SetNative(amount);
        const ParticlePtr p(new Particle({0, 100}, {0, 0}));
        sim.AddParticle(p);
        Steps(20);
        fluid.jitter->SetNative(0);
        return std::make_pair(p->position.y, p->velocity.y);
    };
    const auto without = fall(0);
    EXPECT_LT(without.second, -1.0f);
    EXPECT_EQ(fall(1e-30f), without);
}

TEST_F(WaterTest, LoneParticleVaporizesAfterItsTime) {
    AddGround();
    const ParticlePtr lone(new Particle({-1, 0.5f}, {0, 0}));
    sim.AddParticle(lone);
    // Water in a narrow vessel keeps itself alive.
    StaticBox({-0.1f, 1}, {0.1f, 1});
    StaticBox({0.5f, 1}, {0.1f, 1});
    Pour({0.05f, 0.05f}, 4, 4);
    fluid.vaporizeTime->SetNative(2);
    Steps(198);
    EXPECT_TRUE(lone->IsInWorld());
    EXPECT_NEAR(lone->age, 1.98f, 1e-3);
    Steps(4);
    EXPECT_FALSE(lone->IsInWorld());
    EXPECT_EQ(sim.GetParticles().size(), 16u);
    Steps(300);
    EXPECT_EQ(sim.GetParticles().size(), 16u);
}

// The equation of state drives the density toward its rest value: with a kernel wide enough
// that a particle's own share is small and a stiff enough fluid, the settled water's mean
// density is within a few percent of it. (With the default kernel a lone particle alone has
// about twelve times the rest density, and the water is a packing of repelling particles.)
TEST_F(WaterTest, WaterSettlesNearItsRestDensity) {
    fluid.influence->SetNative(8);
    fluid.soundSpeed->SetNative(40);
    fluid.density->SetNative(2);
    AddGround();
    Wall(0, true);
    Wall(2, false);
    Pour({0.05f, 0.05f}, 10, 20);
    Steps(600);
    EXPECT_EQ(sim.GetParticles().size(), 200u);
    EXPECT_LT(Kinetic(), 1e-3f);
    EXPECT_NEAR(Published("AVG_density"), 2, 0.2);
    EXPECT_GT(Published("AVG_neighCount"), 20);
}

bool OnLeft(const Particle& p) {
    return p.position.x < 1.5f;
}

// The divider leaves a gap of five particle diameters; much narrower gaps can jam, since
// the water is a packing of repelling particles.
TEST_F(WaterTest, VesselsJoinedAtTheBottomLevelOut) {
    AddGround();
    Wall(0, true);
    Wall(3, false);
    StaticBox({1.5f, 2}, {0.05f, 1.5f});
    Pour({0.05f, 0.05f}, 15, 30);
    ASSERT_EQ(CountWhere(OnLeft), 450u);
    Steps(1000);
    // The two sides are equally wide: equal levels hold equal water.
    EXPECT_NEAR(Surface(Side::Left), Surface(Side::Right), 0.05f);
    EXPECT_NEAR(static_cast<float>(CountWhere(OnLeft)), 225.0f, 20.0f);
}

bool Outside(const Particle& p) {
    return p.position.x > 1.5f;
}

TEST_F(WaterTest, WaterFlowsOutWhenAWallIsRemoved) {
    AddGround();
    Wall(0, true);
    const BodyPtr gate = Wall(1.2f, false);
    Pour({0.05f, 0.05f}, 12, 15);
    Steps(100);
    EXPECT_EQ(CountWhere(Outside), 0u);
    sim.RemoveBody(gate);
    Steps(200);
    EXPECT_GT(CountWhere(Outside), 60u);
}

TEST_F(WaterTest, LightBoxFloatsAndHeavyBoxSinks) {
    for (const float density : {0.2f, 20.0f}) {
        ResetWorld();
        AddGround();
        Wall(0, true);
        Wall(3, false);
        Pour({0.05f, 0.05f}, 32, 12);
        Steps(150);
        const float surface = Surface();
        BodyPtr box = Add(new physics::Box(Vec2(0.2f, 0.2f)), {1.5f, surface + 0.4f});
        box->GetPlacedGeoms()[0].geom->density = density;
        box->GetPlacedGeoms()[0].geom->RecalcGeoms();
        Steps(400);
        if (density < 1) {
            EXPECT_GT(box->position.y, surface - 0.2f) << "surface at " << surface;
            EXPECT_LT(box->position.y, surface + 0.4f);
        } else {
            EXPECT_LT(box->position.y, 0.35f) << "surface at " << surface;
        }
    }
}

// On the shelf, even where the water above presses it into the shelf's skin.
bool Above(const Particle& p) {
    return p.position.y > 0.95f;
}

TEST_F(WaterTest, CollideWaterOffLetsWaterPassThroughAShape) {
    for (const bool collide : {true, false}) {
        ResetWorld();
        AddGround();
        const BodyPtr shelf = StaticBox({0.5f, 1}, {5, 0.1f});
        shelf->GetPlacedGeoms()[0].geom->collideWater = collide;
        Pour({0.1f, 1.5f}, 8, 5);
        Steps(100);
        EXPECT_EQ(CountWhere(Above), collide ? 40u : 0u);
    }
}

// A splash over a circle and a box, built twice, steps to the same bits; with jitter too,
// given the same start of its random stream.
TEST_F(WaterTest, WaterRepeatsBitForBit) {
    auto run = [&](float jitter) {
        ResetWorld();
        fluid.jitter->SetNative(jitter);
        fluid.SeedJitter(3);
        AddGround();
        Wall(0, true);
        Wall(2, false);
        Add(new physics::Circle(0.2f), {0.6f, 0.3f});
        Add(new physics::Box(Vec2(0.2f, 0.1f)), {1.4f, 0.3f}, 0.3f);
        Pour({0.05f, 0.8f}, 10, 10);
        Steps(300);
        std::vector<float> state;
        for (const ParticlePtr& p : sim.GetParticles()) {
            state.insert(state.end(), {p->position.x, p->position.y, p->velocity.x, p->velocity.y});
        }
        for (const BodyPtr& body : sim.GetBodies()) {
            state.insert(state.end(), {body->position.x, body->position.y, body->angle});
        }
        return state;
    };
    for (const float jitter : {0.0f, 0.5f}) {
        const std::vector<float> first = run(jitter);
        const std::vector<float> second = run(jitter);
        ASSERT_EQ(first.size(), second.size());
        EXPECT_EQ(std::memcmp(first.data(), second.data(), first.size() * sizeof(float)), 0);
    }
}

}  // namespace

namespace {

// Settings that make no sense cost the water at most, never the rest of the world.
// Settings that would make every step's numbers NaN are refused and the old value stays;
// nonsense that stays finite costs the water at most.
TEST_F(WaterTest, NonsenseSettingsCostOnlyTheWater) {
    const std::vector<std::pair<script::AttribPtr<float> SPH::*, float>> refused = {
        {&SPH::radius, 0},        {&SPH::radius, -0.05f}, {&SPH::influence, 0},
        {&SPH::influence, 1e-9f}, {&SPH::radius, 1e30f},  {&SPH::bucketSize, 0},
        {&SPH::bucketSize, -1},   {&SPH::density, 0},     {&SPH::soundSpeed, INFINITY},
        {&SPH::jitter, NAN},
    };
    for (const auto& [attribute, value] : refused) {
        const float before = (fluid.*attribute)->Get();
        EXPECT_THROW((fluid.*attribute)->SetNative(value), script::RefusedValueException)
            << (fluid.*attribute)->GetName() << " " << value;
        EXPECT_EQ((fluid.*attribute)->Get(), before);
    }
    const std::vector<std::pair<script::AttribPtr<float> SPH::*, float>> allowed = {
        {&SPH::soundSpeed, 1e20f}, {&SPH::jitter, 1e30f}, {&SPH::bucketSize, 1e-30f}};
    for (const auto& [attribute, value] : allowed) {
        ResetWorld();
        AddGround();
        const BodyPtr box = Add(new physics::Box(Vec2(0.5f, 0.5f)), {3, 0.5f});
        Pour({0.05f, 0.05f}, 5, 5);
        (fluid.*attribute)->SetNative(value);
        Steps(100);
        EXPECT_TRUE(box->IsInWorld());
        EXPECT_NEAR(box->position.y, 0.5f, 0.01f);
        for (const ParticlePtr& p : sim.GetParticles()) {
            EXPECT_FALSE(p->IsBad());
        }
    }
}

}  // namespace
