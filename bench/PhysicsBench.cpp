// vorra-bench: steps standard scenes headless and prints one line of key=value fields per
// scene: its size, the median time of a step after a settling phase, where that time
// goes, what the collider costs with and without its broad phase, and a check of the
// final state.
//
//   vorra-bench --list          names the scenes
//   vorra-bench [SCENE]...      runs some (all without arguments)
//   --detail                    also prints the profiler's tree of a step
//   --narrow                    sweeps contacts with four-lane vectors even where the
//                               processor has eight, as older processors would
//   --threads N                 steps on N threads (1 without it); the results are the same
//   --time-only                 only the step time and the final-state check: no profiled
//                               split and no collider timings, for side-by-side runs

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "math/Vector2.h"
#include "physics/Body.h"
#include "physics/Collider.h"
#include "physics/Contact.h"
#include "physics/Hinge.h"
#include "physics/Joint.h"
#include "physics/Particle.h"
#include "physics/Polygon.h"
#include "physics/RowBatches.h"
#include "physics/SPH.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"
#include "physics/StepWorkers.h"
#include "util/Pointee.h"
#include "util/Profiler.h"
#include "util/Random.h"

namespace {

using math::Vec2;
using physics::Body;
using physics::BodyPtr;
using physics::Simulation;

constexpr float kPi = 3.1415927f;

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double Median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

BodyPtr AddGeom(physics::Geom* geom, const Vec2& at, float angle = 0) {
    physics::GeomPtr held(geom);
    held->SetTransform(physics::Transform::FromAngle(angle, at));
    return Simulation::Get().AddBodyOf(held);
}

// A plane through the point whose inner side faces along the normal.
void AddPlane(const Vec2& through, const Vec2& normal) {
    AddGeom(new physics::Plane(), through, std::atan2(normal.y, normal.x));
}

// A floor at y = 0 and walls at x = -halfWidth and x = halfWidth.
void AddOpenBox(float halfWidth) {
    AddPlane({0, 0}, {0, 1});
    AddPlane({-halfWidth, 0}, {1, 0});
    AddPlane({halfWidth, 0}, {-1, 0});
}

struct Scene {
    std::string name;
    std::string description;
    std::function<void(std::vector<BodyPtr>&)> build;
    int settleSteps;
    int measuredSteps;
    // Appends the fields that check the final state.
    std::function<std::string(const std::vector<BodyPtr>&)> check;
    // A pile-up that the collider without its broad phase would pair all against all.
    bool pileUp = false;
};

std::string Field(const char* key, double value) {
    char text[64];
    std::snprintf(text, sizeof text, " %s=%.4g", key, value);
    return text;
}

float KineticEnergy(const std::vector<BodyPtr>& bodies) {
    double sum = 0;
    for (const BodyPtr& body : bodies) {
        sum += body->GetKineticEnergy();
    }
    return static_cast<float>(sum);
}

// The pile's kinetic energy, and whether it has settled: less than a hundredth of a joule
// a body, about 0.1 m/s for these sizes, is what is left of the creep of a resting pile.
std::string SettledFields(const std::vector<BodyPtr>& bodies) {
    const float kinetic = KineticEnergy(bodies);
    const bool settled = kinetic < 0.01f * static_cast<float>(bodies.size());
    return Field("kinetic", kinetic) + " settled=" + (settled ? "yes" : "no");
}

Scene Pyramid(int base) {
    return Scene{
        "pyramid" + std::to_string(base),
        "a pyramid of " + std::to_string(base * (base + 1) / 2) + " unit boxes on a plane, base " +
            std::to_string(base),
        [base](std::vector<BodyPtr>& bodies) {
            AddPlane({0, 0}, {0, 1});
            for (int row = 0; row < base; ++row) {
                const int count = base - row;
                for (int i = 0; i < count; ++i) {
                    const float x = i - (count - 1) * 0.5f;
                    bodies.push_back(AddGeom(new physics::Box(Vec2(0.5f, 0.5f)), {x, 0.5f + row}));
                }
            }
        },
        100,
        300,
        [base](const std::vector<BodyPtr>& bodies) {
            const float top = bodies.back()->position.y;
            const float expected = base - 0.5f;
            // Standing: the top has sunk by no more than the contact depths below it.
            return Field("top_y", top) + Field("expected_top_y", expected) +
                   " standing=" + (std::fabs(top - expected) < 0.05f * base ? "yes" : "no");
        }};
}

Scene Circles() {
    return Scene{"circles1000",
                 "1,000 circles of radius 0.5 poured into a box of three planes",
                 [](std::vector<BodyPtr>& bodies) {
                     AddOpenBox(15);
                     util::Random random(1);
                     for (int i = 0; i < 1000; ++i) {
                         const float x = -14.4f + (i % 28) * 1.07f + random.GetUniform(0, 0.05f);
                         const float y = 1 + (i / 28) * 1.1f;
                         bodies.push_back(AddGeom(new physics::Circle(0.5f), {x, y}));
                     }
                 },
                 600,
                 300,
                 [](const std::vector<BodyPtr>& bodies) { return SettledFields(bodies); }};
}

// A star-shaped outline: vertices at sorted angles with radii between 0.6 and 1 of the
// size, so that it is simple but often concave.
math::Vec2List Blob(util::Random& random, int vertices, float size) {
    math::Vec2List outline;
    for (int i = 0; i < vertices; ++i) {
        const float angle = 2 * kPi * (i + random.GetUniform(0, 0.5f)) / vertices;
        const float radius = size * random.GetUniform(0.6f, 1);
        outline.push_back(Vec2(std::cos(angle), std::sin(angle)) * radius);
    }
    return outline;
}

Scene Polygons() {
    return Scene{"polygons200",
                 "200 drawn polygons of 8 to 40 vertices piled in a box",
                 [](std::vector<BodyPtr>& bodies) {
                     AddOpenBox(8);
                     util::Random random(2);
                     for (int i = 0; i < 200; ++i) {
                         const int vertices = random.GetUniformInt(8, 40);
                         const float size = random.GetUniform(0.4f, 0.8f);
                         math::Vec2List outline = Blob(random, vertices, size);
                         const Vec2 at(-7 + (i % 9) * 1.75f, 1 + (i / 9) * 1.75f);
                         for (Vec2& point : outline) {
                             point += at;
                         }
                         bodies.push_back(Simulation::Get().AddBodyOf(
                             physics::GeomPtr(new physics::Polygon(outline))));
                     }
                 },
                 800,
                 300,
                 [](const std::vector<BodyPtr>& bodies) { return SettledFields(bodies); }};
}

// A column of water, a quarter of the box wide, let go at the box's left wall. Particles
// start a little closer than the kernel radius, every other row shifted by a millimetre:
// on an exact square grid at the kernel radius, columns would not see each other. The
// check tells how far the front has run and how much water is left.
Scene DamBreak(int particles) {
    const int columns = static_cast<int>(std::lround(std::sqrt(particles / 2.0)));
    const int rows = particles / columns;
    const float step = 0.09f;
    const float halfWidth = columns * step * 2;
    return Scene{
        "dambreak" + std::to_string(columns * rows),
        "a dam break: " + std::to_string(columns * rows) + " water particles, " +
            std::to_string(columns) + " wide, let go in a box of planes",
        [=](std::vector<BodyPtr>&) {
            AddOpenBox(halfWidth);
            Simulation& sim = Simulation::Get();
            for (int y = 0; y < rows; ++y) {
                for (int x = 0; x < columns; ++x) {
                    const Vec2 at(-halfWidth + step * (x + 0.5f) + 0.001f * (y % 2),
                                  step * (y + 0.5f));
                    sim.AddParticle(physics::ParticlePtr(new physics::Particle(at, {0, 0})));
                }
            }
        },
        100,
        300,
        [=](const std::vector<BodyPtr>&) {
            float front = -halfWidth;
            for (const physics::ParticlePtr& p : Simulation::Get().GetParticles()) {
                front = std::max(front, p->position.x);
            }
            return Field("front_x", front) + Field("box_right_x", halfWidth) + " water_kept=" +
                   (Simulation::Get().GetParticles().size() == static_cast<size_t>(columns * rows)
                        ? "all"
                        : "lost");
        }};
}

// Circle links of radius 0.1 side by side, each pinned to the next where they touch, the
// first pinned to the ground: let go level, the chain swings down.
Scene Chain(int links) {
    return Scene{
        "chain" + std::to_string(links),
        "a chain of " + std::to_string(links) +
            " circle links on hinges, hung from the ground and let go level",
        [=](std::vector<BodyPtr>& bodies) {
            Simulation& sim = Simulation::Get();
            const float r = 0.1f;
            physics::GeomPtr previous = sim.GetWorldGeom();
            for (int i = 0; i < links; ++i) {
                bodies.push_back(AddGeom(new physics::Circle(r), {r + 2 * r * i, 0}));
                const physics::GeomPtr link = bodies.back()->GetPlacedGeoms()[0].geom;
                sim.AddConstraint(
                    physics::HingePtr(new physics::Hinge(previous, link, Vec2(2 * r * i, 0))));
                previous = link;
            }
        },
        100,
        300,
        [=](const std::vector<BodyPtr>& bodies) {
            // Each hinge's two anchors should coincide; report the worst gap.
            float gap = 0;
            for (const physics::HingePtr& hinge : Simulation::Get().GetHinges()) {
                gap = std::max(gap, (hinge->GetWorldAnchorB() - hinge->GetWorldAnchorA()).Length());
            }
            return Field("lowest_y", bodies.back()->position.y) + Field("max_gap", gap) +
                   " hinges=" + std::to_string(Simulation::Get().GetHinges().size());
        }};
}

// A soft block: boxes of 0.4 on a 0.5 grid, each joined by springs to its right and upper
// neighbours and across both diagonals of each square (without them the grid folds flat),
// dropped on the floor. Strength 1 and the spring tool's damping of 0.1: at damping 1 a
// box pulled by eight springs is damped past what an explicit step can hold.
Scene SpringGrid(int side) {
    return Scene{
        "springgrid" + std::to_string(side),
        "a " + std::to_string(side) + " by " + std::to_string(side) +
            " grid of boxes joined by springs, dropped on a plane",
        [=](std::vector<BodyPtr>& bodies) {
            Simulation& sim = Simulation::Get();
            AddPlane({0, 0}, {0, 1});
            const float pitch = 0.5f;
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    bodies.push_back(
                        AddGeom(new physics::Box(Vec2(0.2f, 0.2f)), {pitch * x, 1 + pitch * y}));
                }
            }
            auto geomAt = [&](int x, int y) {
                return bodies[y * side + x]->GetPlacedGeoms()[0].geom;
            };
            auto join = [&](int x0, int y0, int x1, int y1) {
                if (x1 < side && y1 < side) {
                    const float rest = pitch * std::hypot(float(x1 - x0), float(y1 - y0));
                    sim.AddJoint(physics::JointPtr(new physics::SpringJoint(
                        geomAt(x0, y0), geomAt(x1, y1), {0, 0}, {0, 0}, rest, 1.0f, 0.1f)));
                }
            };
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    join(x, y, x + 1, y);
                    join(x, y, x, y + 1);
                    join(x, y, x + 1, y + 1);
                    if (x + 1 < side) {
                        join(x + 1, y, x, y + 1);
                    }
                }
            }
        },
        300,
        300,
        [=](const std::vector<BodyPtr>& bodies) {
            return SettledFields(bodies) + Field("top_y", bodies.back()->position.y) +
                   " springs=" + std::to_string(Simulation::Get().GetJoints().size());
        }};
}

// What no sensible scene holds: boxes or water particles dropped at one point. The pile's
// own shapes pass through one another; the step stays within a frame's budget, and nothing
// falls through the ground.
Scene BoxPile(int count) {
    Scene scene{"boxpile" + std::to_string(count),
                std::to_string(count) + " unit boxes at one point above a plane",
                [count](std::vector<BodyPtr>& bodies) {
                    AddPlane({0, 0}, {0, 1});
                    for (int i = 0; i < count; ++i) {
                        bodies.push_back(AddGeom(new physics::Box(Vec2(0.5f, 0.5f)), {0, 3},
                                                 0.001f * static_cast<float>(i)));
                    }
                },
                100,
                100,
                [](const std::vector<BodyPtr>& bodies) {
                    float lowest = 1e9f;
                    for (const BodyPtr& body : bodies) {
                        lowest = std::min(lowest, body->position.y);
                    }
                    return Field("lowest_y", lowest) + " on_ground=" + (lowest > 0 ? "yes" : "no");
                }};
    scene.pileUp = true;
    return scene;
}

Scene WaterPile(int count) {
    Scene scene{"waterpile" + std::to_string(count),
                std::to_string(count) + " water particles at one point above a plane",
                [count](std::vector<BodyPtr>&) {
                    AddPlane({0, 0}, {0, 1});
                    for (int i = 0; i < count; ++i) {
                        Simulation::Get().AddParticle(
                            physics::ParticlePtr(new physics::Particle({0, 1}, {0, 0})));
                    }
                },
                20,
                100,
                [](const std::vector<BodyPtr>&) {
                    return " particles_left=" +
                           std::to_string(Simulation::Get().GetParticles().size());
                }};
    scene.pileUp = true;
    return scene;
}

std::vector<Scene> AllScenes() {
    return {Pyramid(20),     Pyramid(40),    Pyramid(100),    Circles(),
            Polygons(),      Chain(100),     SpringGrid(20),  DamBreak(5000),
            DamBreak(20000), BoxPile(10000), WaterPile(20000)};
}

double NodeTotal(const util::Profiler::Node& node, const char* name) {
    double total = 0;
    if (std::strcmp(node.name, name) == 0) {
        total += node.total;
    }
    for (const util::Profiler::Node* child : node.children) {
        total += NodeTotal(*child, name);
    }
    return total;
}

// Milliseconds that the collider takes on the present bodies, with or without its broad
// phase, and the contacts it finds.
double TimeCollider(bool broadPhase, int repeats, size_t& contactCount) {
    physics::Collider collider(broadPhase);
    std::vector<double> times;
    physics::ContactList contacts;
    for (int i = 0; i < repeats; ++i) {
        contacts.clear();
        const double start = Now();
        collider.AssignBodies(Simulation::Get().GetBodies(), Simulation::Get().GetParticles());
        collider.Collide(contacts);
        times.push_back(Now() - start);
        util::SweepHandles();
    }
    contactCount = contacts.size();
    return Median(times) * 1000;
}

// The profiler's tree below the step, in milliseconds per step, indented by depth.
void PrintTree(const util::Profiler::Node& node, double perStep, int depth) {
    std::printf("  %*s%-*s %8.4f\n", 2 * depth, "", 32 - 2 * depth, node.name,
                node.total * perStep);
    for (const util::Profiler::Node* child : node.children) {
        PrintTree(*child, perStep, depth + 1);
    }
}

const util::Profiler::Node* FindNode(const util::Profiler::Node& node, const char* name) {
    if (node.name && std::strcmp(node.name, name) == 0) {
        return &node;
    }
    for (const util::Profiler::Node* child : node.children) {
        if (const util::Profiler::Node* found = FindNode(*child, name)) {
            return found;
        }
    }
    return nullptr;
}

bool g_detail = false;
bool g_timeOnly = false;

// One step as the program's frame has it: the step, then the sweep of the handles that
// the step's contacts left, which the frame does once a frame. Without the sweep every
// contact's handle would pile up over a run. The seconds of the step alone come back, and
// those of the sweep are added to sweepSeconds.
double FrameStep(double& sweepSeconds) {
    const double start = Now();
    Simulation::Get().Step(true);
    const double stepped = Now();
    util::SweepHandles();
    sweepSeconds += Now() - stepped;
    return stepped - start;
}

// Steps on with the profiler's scopes timed, and times the collider with and without its
// broad phase: where a step's time goes. Without the profile (for side-by-side runs) the
// steps still run, so that the final state is the same either way.
std::string Split(const Scene& scene, const std::vector<BodyPtr>& bodies) {
    Simulation& sim = Simulation::Get();
    util::Profiler& profiler = util::Profiler::Get();
    profiler.Reset();
    profiler.SetOutputOn(!g_timeOnly);
    const int splitSteps = std::max(scene.measuredSteps / 3, 20);
    double splitSweepSeconds = 0;
    for (int i = 0; i < splitSteps; ++i) {
        FrameStep(splitSweepSeconds);
    }
    if (g_timeOnly) {
        return std::string();
    }
    const util::Profiler::Node& root = profiler.GetRoot();
    const double perStep = 1000.0 / splitSteps;
    const double step = NodeTotal(root, "Simu::Step") * perStep;
    const double collide = NodeTotal(root, "Finding contacts") * perStep;
    const double cache =
        (NodeTotal(root, "Matching cache") + NodeTotal(root, "Update cache")) * perStep;
    const double solver = NodeTotal(root, "Solve") * perStep;
    const double neighbours = NodeTotal(root, "FindNeighbors") * perStep;
    const double fluidForces = NodeTotal(root, "CalcSPHForces") * perStep;
    const double smoothing = NodeTotal(root, "SPH vel-smoothing") * perStep;
    if (g_detail) {
        if (const util::Profiler::Node* node = FindNode(root, "Simu::Step")) {
            PrintTree(*node, perStep, 0);
        }
    }
    profiler.SetOutputOn(false);

    const size_t particles = sim.GetParticles().size();
    size_t broadContacts = 0;
    size_t plainContacts = 0;
    const double broad = TimeCollider(true, 21, broadContacts);
    const double plain =
        scene.pileUp ? 0
                     : TimeCollider(false, bodies.size() > 2000 || particles > 10000 ? 3 : 11,
                                    plainContacts);
    plainContacts = scene.pileUp ? broadContacts : plainContacts;

    std::string line;
    if (particles > 0) {
        // Other particles within the kernel radius, the particle itself not counted.
        double listed = 0;
        for (const physics::ParticlePtr& particle : sim.GetParticles()) {
            listed += static_cast<double>(particle->neighbours.size() - 1);
        }
        line += Field("neighbours", listed / static_cast<double>(particles));
    }
    line +=
        Field("neighbour_search_ms", neighbours) + Field("sph_forces_ms", fluidForces) +
        Field("smoothing_ms", smoothing) + Field("collide_ms", collide) + Field("cache_ms", cache) +
        Field("solver_ms", solver) +
        Field("other_ms", step - neighbours - fluidForces - smoothing - collide - cache - solver);
    line += Field("broadphase_collide_ms", broad) + Field("plain_collide_ms", plain);
    line += broadContacts == plainContacts ? " same_contacts=yes" : " same_contacts=no";
    return line;
}

// FNV-1a over the bits of every body's and particle's motion state at the end of a run:
// equal digests mean the same results, bit for bit, whatever the build or thread count.
class StateDigest {
public:
    void Add(const physics::AbstractBody& body) {
        const float values[] = {body.position.x, body.position.y, body.velocity.x,
                                body.velocity.y, body.angle,      body.angularVelocity};
        const auto* bytes = reinterpret_cast<const unsigned char*>(values);
        for (size_t i = 0; i < sizeof values; ++i) {
            m_hash = (m_hash ^ bytes[i]) * 0x100000001B3ull;
        }
    }
    std::string Text() const {
        char text[17];
        std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(m_hash));
        return text;
    }

private:
    uint64_t m_hash = 0xCBF29CE484222325ull;
};

std::string StateField(const std::vector<BodyPtr>& bodies) {
    StateDigest digest;
    for (const BodyPtr& body : bodies) {
        digest.Add(*body);
    }
    for (const physics::ParticlePtr& particle : Simulation::Get().GetParticles()) {
        digest.Add(*particle);
    }
    return " state=" + digest.Text();
}

void RunScene(const Scene& scene) {
    Simulation& sim = Simulation::Get();
    sim.Clear();
    std::vector<BodyPtr> bodies;
    scene.build(bodies);

    double sweepSeconds = 0;
    for (int i = 0; i < scene.settleSteps; ++i) {
        FrameStep(sweepSeconds);
    }
    sweepSeconds = 0;
    std::vector<double> stepTimes;
    stepTimes.reserve(scene.measuredSteps);
    for (int i = 0; i < scene.measuredSteps; ++i) {
        stepTimes.push_back(FrameStep(sweepSeconds));
    }
    const double msPerStep = Median(stepTimes) * 1000;
    const double sweepMs = sweepSeconds * 1000 / scene.measuredSteps;

    std::string line = std::string("scene=") + scene.name +
                       " threads=" + std::to_string(physics::StepWorkers::Get().GetThreadCount()) +
                       " bodies=" + std::to_string(bodies.size()) +
                       " particles=" + std::to_string(sim.GetParticles().size()) +
                       " contacts=" + std::to_string(sim.GetContacts().size());
    line += Field("ms_per_step", msPerStep) + Field("sweep_ms", sweepMs);
    line += Split(scene, bodies);
    line += scene.check(bodies);
    line += StateField(bodies);
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
    sim.Clear();
}

}  // namespace

int main(int argc, char** argv) {
    physics::Simulation::Create();
    physics::SPH::Create();
    physics::StepWorkers::Get().SetThreadCount(1);
    const std::vector<Scene> scenes = AllScenes();
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
        for (const Scene& scene : scenes) {
            std::printf("%-12s %s\n", scene.name.c_str(), scene.description.c_str());
        }
        return 0;
    }
    std::vector<const Scene*> chosen;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--detail") == 0) {
            g_detail = true;
            continue;
        }
        if (std::strcmp(argv[i], "--threads") == 0 && i + 1 < argc) {
            physics::StepWorkers::Get().SetThreadCount(
                static_cast<unsigned>(std::max(1, std::atoi(argv[++i]))));
            continue;
        }
        if (std::strcmp(argv[i], "--time-only") == 0) {
            g_timeOnly = true;
            continue;
        }
        if (std::strcmp(argv[i], "--narrow") == 0) {
            physics::RowBatches::AllowWideVectors(false);
            continue;
        }
        const auto found = std::find_if(scenes.begin(), scenes.end(),
                                        [&](const Scene& scene) { return scene.name == argv[i]; });
        if (found == scenes.end()) {
            std::fprintf(stderr, "Unknown scene \"%s\"; --list names them.\n", argv[i]);
            return 2;
        }
        chosen.push_back(&*found);
    }
    if (chosen.empty()) {
        for (const Scene& scene : scenes) {
            chosen.push_back(&scene);
        }
    }
    for (const Scene* scene : chosen) {
        RunScene(*scene);
    }
    physics::Simulation::Release();
    physics::SPH::Release();
    return 0;
}
