#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "physics/Body.h"
#include "physics/Collider.h"
#include "physics/Contact.h"
#include "physics/Polygon.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"

// The contacts the collider makes for each pair of shape kinds, worked out by hand: which geom
// is first, the index, point, normal and depth of each contact, and the order of the list.
//
// Indices: planes number the vertices or corners they test from 0. The vertex and edge tests
// of polygons share one running counter per pair that starts at 0 and steps before each use,
// so their first feature is 1 and every tested feature takes a number, touching or not.
// Box pairs number their two contacts 0 and 1, and a circle whose centre is inside a
// polygon gets the one index size_t(-1).

namespace {

using math::Vec2;

constexpr float kHalfPi = 1.5707964f;
// Arithmetic on shapes given exactly.
constexpr float kTol = 1e-5f;
// Values read from a polygon's distance and normal maps, which are bilinear samples of a
// 128 by 128 grid: good to a small part of a cell away from corners.
constexpr float kMapTol = 5e-3f;
constexpr size_t kCentreInside = static_cast<size_t>(-1);

// Bodies made for one test, each known by a name. The geoms hold their bodies, so every set
// is emptied at the end to let both go.
class Scene {
public:
    ~Scene() {
        for (const physics::BodyPtr& body : bodies) {
            body->SetGeoms(physics::GeomSet());
        }
    }

    // One geom placed at a point and angle in a body of its own.
    physics::Geom* Place(const std::string& name, physics::Geom* geom, const Vec2& at,
                         float angle = 0, bool fixed = false) {
        geom->SetTransform(physics::Transform::FromAngle(angle, at));
        return Hold(name, geom, fixed);
    }

    // A polygon stays where its world points put it.
    physics::Polygon* AddPolygon(const std::string& name, const math::Vec2List& points,
                                 bool fixed = false) {
        physics::Polygon* polygon = new physics::Polygon(points);
        Hold(name, polygon, fixed);
        return polygon;
    }

    // Several geoms, already placed, in one body.
    void AddBody(const std::string& name, std::initializer_list<physics::Geom*> geoms) {
        physics::GeomSet set;
        for (physics::Geom* geom : geoms) {
            set.insert(physics::GeomPtr(geom));
        }
        physics::BodyPtr body(new physics::Body());
        body->SetGeoms(set);
        Register(name, body);
    }

    std::string NameOf(const physics::AbstractBody* body) const {
        const auto it = names.find(body);
        return it == names.end() ? std::string("?") : it->second;
    }

    physics::ContactList Contacts(bool broadPhase, const physics::BodyList& extra = {}) const {
        physics::BodyList all = bodies;
        all.insert(all.end(), extra.begin(), extra.end());
        physics::Collider collider(broadPhase);
        collider.AssignBodies(all);
        physics::ContactList contacts;
        collider.Collide(contacts);
        return contacts;
    }

    physics::BodyList bodies;
    std::map<const physics::AbstractBody*, std::string> names;

private:
    physics::Geom* Hold(const std::string& name, physics::Geom* geom, bool fixed) {
        physics::GeomPtr held(geom);
        physics::BodyPtr body(new physics::Body());
        body->AddGeom(held);
        body->SetStatic(fixed);
        Register(name, body);
        return geom;
    }

    void Register(const std::string& name, const physics::BodyPtr& body) {
        bodies.push_back(body);
        names[body.Get()] = name;
    }
};

// One contact as it should come out: the body names of geoms a and b (the normal points out of
// a, toward b), its index, point, normal and depth. Point and depth are checked to tol,
// the normal to normalTol.
struct Expected {
    std::string a;
    std::string b;
    size_t index;
    Vec2 point;
    Vec2 normal;
    float depth;
    float tol = kTol;
    float normalTol = kTol;
};

void ExpectNear(const Vec2& actual, const Vec2& expected, float tol, const char* what) {
    EXPECT_NEAR(actual.x, expected.x, tol) << what;
    EXPECT_NEAR(actual.y, expected.y, tol) << what;
}

// The full list, in order, with the broad phase and with all pairs walked.
void ExpectContacts(const Scene& scene, const std::vector<Expected>& expected,
                    const physics::BodyList& extra = {}) {
    for (bool broadPhase : {true, false}) {
        SCOPED_TRACE(broadPhase ? "with broad phase" : "all pairs");
        const physics::ContactList contacts = scene.Contacts(broadPhase, extra);
        ASSERT_EQ(contacts.size(), expected.size());
        for (size_t k = 0; k < contacts.size(); ++k) {
            SCOPED_TRACE("contact " + std::to_string(k));
            const physics::Contact& c = contacts[k];
            const Expected& e = expected[k];
            EXPECT_EQ(scene.NameOf(c.bodies[0]), e.a);
            EXPECT_EQ(scene.NameOf(c.bodies[1]), e.b);
            EXPECT_EQ(c.GetIndex(), e.index);
            ExpectNear(c.GetPoint(), e.point, e.tol, "point");
            ExpectNear(c.GetNormal(), e.normal, e.normalTol, "normal");
            EXPECT_NEAR(c.GetDepth(), e.depth, e.tol);
        }
    }
}

// Geom IDs of a contact are those of its two geoms, lower first.
void ExpectGeomIDs(const physics::Contact& contact, const physics::Geom* a,
                   const physics::Geom* b) {
    EXPECT_EQ(contact.GetLowerID(), std::min(a->GetID(), b->GetID()));
    EXPECT_EQ(contact.GetHigherID(), std::max(a->GetID(), b->GetID()));
}

Vec2 Axis(float angle) {
    return {std::cos(angle), std::sin(angle)};
}

Vec2 Perp(const Vec2& v) {
    return {-v.y, v.x};
}

}  // namespace

// --- Planes ---

TEST(ShapePair, PlaneAgainstCircleByDistanceFromTheLine) {
    Scene scene;
    // A wall x = -0.5 (normal (1, 0), offset 0.5) and a floor y = -1 (normal (0, 1)).
    physics::Geom* wall = scene.Place("wall", new physics::Plane(), {-0.5f, 0});
    scene.Place("floor", new physics::Plane(), {0, -1}, kHalfPi);
    physics::Geom* touching = scene.Place("touching", new physics::Circle(0.5f), {-0.25f, 1});
    scene.Place("resting", new physics::Circle(0.5f), {0, 4});   // exactly r away: nothing
    scene.Place("clear", new physics::Circle(0.5f), {0.1f, 7});  // beyond r
    scene.Place("fixed", new physics::Circle(0.5f), {-0.25f, 10}, 0, true);  // neither moves
    scene.Place("sunk", new physics::Circle(0.5f), {2, -0.7f});
    scene.Place("parked", new physics::Circle(0.5f), {4, -0.7f}, 0, true);

    // Plane by plane, in list order; the point is the circle's deepest point.
    ExpectContacts(scene, {
                              {"wall", "touching", 0, {-0.75f, 1}, {1, 0}, 0.25f},
                              {"floor", "sunk", 0, {2, -1.2f}, {0, 1}, 0.2f},
                          });
    const physics::ContactList contacts = scene.Contacts(true);
    ASSERT_EQ(contacts.size(), 2u);
    ExpectGeomIDs(contacts[0], wall, touching);
}

TEST(ShapePair, PlaneAgainstPolygonTestsEachVertex) {
    Scene scene;
    scene.Place("floor", new physics::Plane(), {0, 0}, kHalfPi);  // y = 0, solid below
    // Counter-clockwise, so vertex i is the i-th point given.
    scene.AddPolygon("tilted", {Vec2(-1, -0.2f), Vec2(1, -0.1f), Vec2(1, 1), Vec2(-1, 1)});
    scene.AddPolygon("hovering", {Vec2(3, 0.05f), Vec2(5, 0.05f), Vec2(5, 1), Vec2(3, 1)});
    // Given clockwise: the polygon reverses its outline, so (7, -0.05) becomes vertex 0.
    scene.AddPolygon("clockwise", {Vec2(7, 1), Vec2(9, 1), Vec2(9, -0.3f), Vec2(7, -0.05f)});
    scene.AddPolygon("fixed", {Vec2(11, -0.5f), Vec2(13, -0.5f), Vec2(13, 1), Vec2(11, 1)}, true);

    ExpectContacts(scene, {
                              {"floor", "tilted", 0, {-1, -0.2f}, {0, 1}, 0.2f},
                              {"floor", "tilted", 1, {1, -0.1f}, {0, 1}, 0.1f},
                              {"floor", "clockwise", 0, {7, -0.05f}, {0, 1}, 0.05f},
                              {"floor", "clockwise", 1, {9, -0.3f}, {0, 1}, 0.3f},
                          });
}

TEST(ShapePair, PlaneAgainstBoxTestsCornersInFixedOrder) {
    Scene scene;
    scene.Place("wall", new physics::Plane(), {0, 0});  // x = 0, solid to the left
    const float angle = 0.3f;
    const Vec2 e(1, 0.5f);
    const Vec2 centre(0.7f, 3);
    scene.Place("leaning", new physics::Box(e), centre, angle);
    scene.Place("clear", new physics::Box(e), {1.2f, 6}, angle);
    scene.Place("fixed", new physics::Box(e), {0, 9}, 0, true);

    // Corners 0 to 3: +a1 +a2, +a1 -a2, -a1 -a2, -a1 +a2. Turned by 0.3, corners 2 and 3 lie
    // left of the wall, corner 3 deeper.
    const Vec2 a1 = Axis(angle);
    const Vec2 a2 = Perp(a1);
    const Vec2 corner2 = centre - a1 * e.x - a2 * e.y;
    const Vec2 corner3 = centre - a1 * e.x + a2 * e.y;
    ASSERT_LT(corner3.x, corner2.x);
    ASSERT_LT(corner2.x, 0);
    ExpectContacts(scene, {
                              {"wall", "leaning", 2, corner2, {1, 0}, -corner2.x},
                              {"wall", "leaning", 3, corner3, {1, 0}, -corner3.x},
                          });
}

// --- Circles ---

TEST(ShapePair, CircleAgainstCircleMeetsHalfwayThroughTheOverlap) {
    Scene scene;
    scene.Place("big", new physics::Circle(1), {0, 0});
    scene.Place("small", new physics::Circle(0.5f), {1.2f, 0.5f});
    scene.Place("c0", new physics::Circle(1), {10, 0});
    scene.Place("c1", new physics::Circle(1), {11, 0});
    scene.Place("c2", new physics::Circle(1), {10.5f, 0.8f});
    scene.Place("edge", new physics::Circle(0.5f), {0, 10});
    scene.Place("kiss", new physics::Circle(1), {1.5f, 10});  // exactly touching: nothing

    // Distance 1.3 of reach 1.5: overlap 0.2, normal (12, 5) / 13, the point 0.9 along it.
    const Vec2 n(12.0f / 13, 5.0f / 13);
    // The three overlap pairwise; pairs come as (0, 1), (0, 2), (1, 2).
    const float d = std::sqrt(0.5f * 0.5f + 0.8f * 0.8f);
    const Vec2 n02 = Vec2(0.5f, 0.8f) / d;
    const Vec2 n12 = Vec2(-0.5f, 0.8f) / d;
    const float overlap = 2 - d;
    ExpectContacts(scene, {
                              {"big", "small", 0, n * 0.9f, n, 0.2f},
                              {"c0", "c1", 0, {10.5f, 0}, {1, 0}, 1},
                              {"c0", "c2", 0, Vec2(10, 0) + n02 * (1 - overlap / 2), n02, overlap},
                              {"c1", "c2", 0, Vec2(11, 0) + n12 * (1 - overlap / 2), n12, overlap},
                          });
}

TEST(ShapePair, CircleOrderDecidesTheNormal) {
    // The same pair as above, listed the other way round: the first circle is geom a.
    Scene scene;
    physics::Geom* small = scene.Place("small", new physics::Circle(0.5f), {1.2f, 0.5f});
    physics::Geom* big = scene.Place("big", new physics::Circle(1), {0, 0});
    const Vec2 n(-12.0f / 13, -5.0f / 13);
    // From the small centre 0.5 - 0.1 along the normal: the same point as before.
    ExpectContacts(scene, {{"small", "big", 0, Vec2(12.0f / 13, 5.0f / 13) * 0.9f, n, 0.2f}});
    const physics::ContactList contacts = scene.Contacts(true);
    ASSERT_EQ(contacts.size(), 1u);
    ExpectGeomIDs(contacts[0], small, big);
}

TEST(ShapePair, FiltersExcludePairsBeforeAnyGeometry) {
    // Every pair here overlaps by 0.2 along x; only the filters tell them apart.
    Scene scene;
    auto pair = [&](const std::string& name, float y, bool fixedA = false, bool fixedB = false) {
        physics::Geom* a = scene.Place(name + "A", new physics::Circle(0.5f), {0, y}, 0, fixedA);
        physics::Geom* b = scene.Place(name + "B", new physics::Circle(0.5f), {0.8f, y}, 0, fixedB);
        return std::make_pair(a, b);
    };
    auto [setA, setB] = pair("set", 0);
    setA->collideSet = 2;
    setB->collideSet = 1;
    auto [sixthA, sixthB] = pair("sixth", 3);  // bit 32 is beyond the five that count
    sixthA->collideSet = 32;
    sixthB->collideSet = 32;
    auto [sharedA, sharedB] = pair("shared", 6);
    sharedA->collideSet = 3 | 32;
    sharedB->collideSet = 2;
    pair("static", 9, true, true);
    pair("half", 12, true, false);
    auto [hingedA, hingedB] = pair("hinged", 15);
    hingedA->AddNoCollide(hingedB);
    hingedB->AddNoCollide(hingedA);
    // Only the first geom's own counts are read.
    auto [onlyA, onlyB] = pair("reverse", 18);
    onlyB->AddNoCollide(onlyA);
    // Two geoms of one body never meet.
    physics::Geom* left = new physics::Circle(0.5f);
    left->SetTransform(physics::Transform::FromAngle(0, {0, 21}));
    physics::Geom* right = new physics::Circle(0.5f);
    right->SetTransform(physics::Transform::FromAngle(0, {0.8f, 21}));
    scene.AddBody("one", {left, right});

    // The world body's geom lies in no list, though its distance says all is inside it.
    const physics::BodyList world{physics::Simulation::Get().GetWorldBody()};

    const Vec2 n(1, 0);
    ExpectContacts(scene,
                   {
                       {"sharedA", "sharedB", 0, {0.4f, 6}, n, 0.2f},
                       {"halfA", "halfB", 0, {0.4f, 12}, n, 0.2f},
                       {"reverseA", "reverseB", 0, {0.4f, 18}, n, 0.2f},
                   },
                   world);

    hingedA->RemoveNoCollide(hingedB);
    hingedB->RemoveNoCollide(hingedA);
    onlyB->RemoveNoCollide(onlyA);
}

TEST(ShapePair, CircleAgainstPolygonByEdgesThenVertices) {
    Scene scene;
    // Edges 0 to 3 take indices 1 to 4, vertices (0, 0), (2, 0), (2, 2), (0, 2) take 5 to 8.
    scene.AddPolygon("square", {Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(0, 2)});
    // Below the bottom edge: its nearest point is inside edge 0.
    scene.Place("edge", new physics::Circle(0.5f), {1.2f, -0.3f});
    // Off the corner (2, 0): both edges end there, so only the vertex touches.
    scene.Place("corner", new physics::Circle(0.5f), {2.3f, -0.3f});
    // Beside the left edge near the top: edge 3 and then vertex (0, 2).
    scene.Place("both", new physics::Circle(0.5f), {-0.3f, 1.7f});
    // Centre inside, 0.25 below the top edge.
    scene.Place("inside", new physics::Circle(0.3f), {1, 1.75f});
    // 0.6 above the top edge, and 0.36 * sqrt(2) off the corner (2, 2).
    scene.Place("above", new physics::Circle(0.5f), {1.2f, 2.6f});
    scene.Place("diagonal", new physics::Circle(0.5f), {2.36f, 2.36f});

    const float s = std::sqrt(0.5f);
    const float cornerGap = std::sqrt(0.18f);
    ExpectContacts(
        scene,
        {
            {"edge", "square", 1, {1.2f, 0}, {0, 1}, 0.2f},
            {"corner", "square", 6, {2, 0}, {-s, s}, 0.5f - cornerGap},
            {"both", "square", 4, {0, 1.7f}, {1, 0}, 0.2f},
            {"both", "square", 8, {0, 2}, {s, s}, 0.5f - cornerGap},
            // The normal is minus the polygon's, and the depth r - Dist.
            {"inside", "square", kCentreInside, {1, 1.75f}, {0, -1}, 0.55f, kMapTol, kMapTol},
        });
}

// --- Polygons ---

TEST(ShapePair, PolygonAgainstPolygonTestsVerticesAgainstFields) {
    Scene scene;
    // Corner (2, 2) of a lies 0.2 inside b's left edge; b's corner (1.8, 1.7) lies 0.2 inside
    // a's right edge. a's vertices are 1 to 4, b's 5 to 8.
    scene.AddPolygon("a", {Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(0, 2)});
    scene.AddPolygon("b", {Vec2(1.8f, 1.7f), Vec2(3.8f, 1.7f), Vec2(3.8f, 3.7f), Vec2(1.8f, 3.7f)});
    // Crossing bars: the edges cross, but no vertex is inside the other.
    scene.AddPolygon("bar", {Vec2(10, 0), Vec2(14, 0), Vec2(14, 1), Vec2(10, 1)});
    scene.AddPolygon("post", {Vec2(11.5f, -1), Vec2(12.5f, -1), Vec2(12.5f, 2), Vec2(11.5f, 2)});
    // 0.05 right of a.
    scene.AddPolygon("gap", {Vec2(2.05f, 0), Vec2(3, 0), Vec2(3, 1.5f), Vec2(2.05f, 1.5f)});

    // A vertex of a against b's field: the contact runs from b to a, along b's normal.
    ExpectContacts(scene, {
                              {"b", "a", 3, {2, 2}, {-1, 0}, 0.2f, kMapTol, kMapTol},
                              {"a", "b", 5, {1.8f, 1.7f}, {1, 0}, 0.2f, kMapTol, kMapTol},
                          });
}

// --- Boxes ---

TEST(ShapePair, BoxAgainstBoxClipsTheIncidentFace) {
    Scene scene;
    // A box overhanging the right end of a slab. Both find their best axis y at -0.1; at a tie
    // the later box is the reference, so the normal points from it down into the slab. The
    // slab's top face is clipped to the overhang's side at x = 1.3 and ends at x = 2.
    scene.Place("slab", new physics::Box(Vec2(2, 0.5f)), {0, 0}, 0, true);
    scene.Place("overhang", new physics::Box(Vec2(0.5f, 0.5f)), {1.8f, 0.9f});

    // A tilted box dipping one corner 0.05 into a slab: the slab's separation (-0.05) is the
    // greater, so it is the reference; the other end of the incident face stays above, so
    // there is one contact, at the lowest corner.
    const float angle = 0.3f;
    const Vec2 a1 = Axis(angle);
    const Vec2 a2 = Perp(a1);
    const float drop = 0.5f * (a1.x + a1.y);  // centre height over the lowest corner
    const Vec2 tiltedCentre(10, 0.5f + drop - 0.05f);
    scene.Place("ground", new physics::Box(Vec2(2, 0.5f)), {10, 0}, 0, true);
    scene.Place("tilted", new physics::Box(Vec2(0.5f, 0.5f)), tiltedCentre, angle);
    const Vec2 lowest = tiltedCentre - a1 * 0.5f - a2 * 0.5f;

    // Side by side, 0.05 deep: the right box is the reference with normal (-1, 0). The left
    // box's right face runs from (20.5, -0.5), clipped to -0.2, to (20.5, 0.5); both points
    // have the same x, so the first one added takes index 1.
    scene.Place("left", new physics::Box(Vec2(0.5f, 0.5f)), {20, 0});
    scene.Place("right", new physics::Box(Vec2(0.5f, 0.5f)), {20.95f, 0.3f});

    // Bounding boxes overlap, but the turned box's own axis separates them.
    scene.Place("square", new physics::Box(Vec2(0.5f, 0.5f)), {30, 0});
    scene.Place("diamond", new physics::Box(Vec2(0.5f, 0.5f)), {30.9f, 0.9f}, 0.7853982f);

    ExpectContacts(scene, {
                              {"overhang", "slab", 0, {1.3f, 0.5f}, {0, -1}, 0.1f},
                              {"overhang", "slab", 1, {2, 0.5f}, {0, -1}, 0.1f},
                              {"ground", "tilted", 0, lowest, {0, 1}, 0.05f},
                              {"right", "left", 1, {20.5f, -0.2f}, {-1, 0}, 0.05f},
                              {"right", "left", 0, {20.5f, 0.5f}, {-1, 0}, 0.05f},
                          });
}

TEST(ShapePair, BoxAgainstPolygonTestsBothWays) {
    Scene scene;
    // The polygon's vertices take indices 1 to 4, the box's corners 5 to 8.
    scene.AddPolygon("square", {Vec2(0, 0), Vec2(2, 0), Vec2(2, 2), Vec2(0, 2)});
    // Over the corner (2, 2): that vertex is 0.2 inside the box's bottom face, and the box's
    // corner 2 (1.7, 1.8) is 0.2 inside the square's top edge.
    scene.Place("over", new physics::Box(Vec2(0.5f, 0.5f)), {2.2f, 2.3f});
    // In the notch of an L, 0.3 clear of it, though inside its tight box.
    scene.AddPolygon(
        "ell", {Vec2(10, 0), Vec2(12, 0), Vec2(12, 1), Vec2(11, 1), Vec2(11, 2), Vec2(10, 2)});
    scene.Place("notch", new physics::Box(Vec2(0.3f, 0.3f)), {11.6f, 1.6f});
    // Both static.
    scene.AddPolygon("plinth", {Vec2(20, 0), Vec2(22, 0), Vec2(22, 2), Vec2(20, 2)}, true);
    scene.Place("parked", new physics::Box(Vec2(0.5f, 0.5f)), {21, 2.3f}, 0, true);

    ExpectContacts(scene, {
                              // A polygon vertex in the box: from the box, along its face normal.
                              {"over", "square", 3, {2, 2}, {0, -1}, 0.2f},
                              // A box corner in the polygon: from the polygon, along its normal.
                              {"square", "over", 7, {1.7f, 1.8f}, {0, 1}, 0.2f, kMapTol, kMapTol},
                          });
}

TEST(ShapePair, BoxAgainstCircleFromOutsideAndInside) {
    Scene scene;
    const Vec2 e(1, 0.5f);
    // Above the top face.
    scene.Place("plate", new physics::Box(e), {0, 0});
    scene.Place("above", new physics::Circle(0.5f), {0.3f, 0.8f});
    // Off the corner +a1 +a2 of a turned box: centre at (1.2, 0.7) in the box's frame.
    const float angle = 0.4f;
    const Vec2 a1 = Axis(angle);
    const Vec2 a2 = Perp(a1);
    const Vec2 turnedCentre(10, 0);
    scene.Place("turned", new physics::Box(e), turnedCentre, angle);
    scene.Place("offCorner", new physics::Circle(0.4f), turnedCentre + a1 * 1.2f + a2 * 0.7f);
    // Centre inside, nearer the top face (0.15) than the right one (0.8).
    scene.Place("shallow", new physics::Box(e), {20, 0});
    scene.Place("inTop", new physics::Circle(0.3f), {20.2f, 0.35f});
    // Centre inside, nearer the left face (0.3) than the bottom one (0.4).
    scene.Place("left", new physics::Box(e), {30, 0});
    scene.Place("inLeft", new physics::Circle(0.3f), {29.3f, -0.1f});
    // Exactly r above the top face, and off a corner by more than r though within r + e on
    // each axis.
    scene.Place("near", new physics::Box(e), {40, 0});
    scene.Place("grazing", new physics::Circle(0.5f), {40.3f, 1});
    scene.Place("beyond", new physics::Circle(0.4f), {41.3f, -0.8f});

    const float s = std::sqrt(0.5f);
    const float gap = std::sqrt(0.2f * 0.2f + 0.2f * 0.2f);
    ExpectContacts(scene, {
                              {"plate", "above", 0, {0.3f, 0.5f}, {0, 1}, 0.2f},
                              {"turned", "offCorner", 0, turnedCentre + a1 + a2 * 0.5f,
                               (a1 + a2) * s, 0.4f - gap},
                              // The point is the circle's deepest: its centre moved r down.
                              {"shallow", "inTop", 0, {20.2f, 0.05f}, {0, 1}, 0.45f},
                              {"left", "inLeft", 0, {29.6f, -0.1f}, {-1, 0}, 0.6f},
                          });
}

// --- Order of the list ---

TEST(ShapePair, GroupsComeInFixedOrder) {
    Scene scene;
    // Listed in an order unlike the groups, so that only the groups order the result.
    scene.Place("B1", new physics::Box(Vec2(0.5f, 0.5f)), {10, 0.45f});  // on the floor
    scene.Place("B2", new physics::Box(Vec2(0.5f, 0.5f)), {10.9f, 0.6f});
    scene.Place("C1", new physics::Circle(0.5f), {6, 0.4f});  // on the floor
    scene.Place("C2", new physics::Circle(0.5f), {6.8f, 0.6f});
    scene.AddPolygon("P1", {Vec2(0, -0.1f), Vec2(2, -0.1f), Vec2(2, 1.9f), Vec2(0, 1.9f)});
    scene.Place("B3", new physics::Box(Vec2(0.3f, 0.3f)), {-0.2f, 1});  // in P1's left edge
    scene.Place("C3", new physics::Circle(0.5f), {2.3f, 0.8f});         // at P1's right edge
    scene.AddPolygon("P2",
                     {Vec2(1.8f, 1.5f), Vec2(3.8f, 1.5f), Vec2(3.8f, 3.5f), Vec2(1.8f, 3.5f)});
    scene.Place("C4", new physics::Circle(0.4f), {11.7f, 0.6f});  // at B2's right face
    scene.Place("C5", new physics::Circle(0.5f), {-0.8f, 5});     // at the wall
    scene.Place("floor", new physics::Plane(), {0, 0}, kHalfPi);
    scene.Place("wall", new physics::Plane(), {-1, 0});

    struct Entry {
        const char* a;
        const char* b;
        size_t index;
    };
    const std::vector<Entry> expected{
        // Plane by plane: circles, then polygons, then boxes.
        {"floor", "C1", 0},
        {"floor", "P1", 0},
        {"floor", "P1", 1},
        {"floor", "B1", 1},
        {"floor", "B1", 2},
        {"wall", "C5", 0},
        // Polygon-polygon, circle-circle, circle-polygon.
        {"P2", "P1", 3},
        {"P1", "P2", 5},
        {"C1", "C2", 0},
        {"C3", "P1", 2},
        // Box-box (the later box is the reference at a tie), box-polygon, box-circle.
        {"B2", "B1", 1},
        {"B2", "B1", 0},
        {"P1", "B3", 5},
        {"P1", "B3", 6},
        {"B2", "C4", 0},
    };
    for (bool broadPhase : {true, false}) {
        SCOPED_TRACE(broadPhase ? "with broad phase" : "all pairs");
        const physics::ContactList contacts = scene.Contacts(broadPhase);
        ASSERT_EQ(contacts.size(), expected.size());
        for (size_t k = 0; k < contacts.size(); ++k) {
            SCOPED_TRACE("contact " + std::to_string(k));
            EXPECT_EQ(scene.NameOf(contacts[k].bodies[0]), expected[k].a);
            EXPECT_EQ(scene.NameOf(contacts[k].bodies[1]), expected[k].b);
            EXPECT_EQ(contacts[k].GetIndex(), expected[k].index);
            EXPECT_GT(contacts[k].GetDepth(), 0);
        }
    }
}
