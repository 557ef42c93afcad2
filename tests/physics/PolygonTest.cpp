#include "physics/Polygon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "math/MathUtil.h"
#include "physics/OBBOverlap.h"
#include "util/Exception.h"

namespace {

using math::Vec2;
using math::Vec2List;
using physics::Polygon;

Vec2List Points(std::initializer_list<Vec2> points) {
    return Vec2List(points);
}

void ExpectNear(const Vec2& actual, const Vec2& expected, float tolerance = 1e-5f) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

// The L of three unit squares: concave at (1, 1).
Vec2List LShape() {
    return Points({{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}});
}

float SegmentDist(const Vec2& p, const Vec2& a, const Vec2& b) {
    const Vec2 d = b - a;
    const float t = std::clamp(math::Dot(p - a, d) / d.SquaredLength(), 0.0f, 1.0f);
    return (p - (a + d * t)).Length();
}

// Exact signed distance to a closed outline: nearest segment, sign by ray crossings.
float ExactDist(const Vec2List& outline, const Vec2& p) {
    const size_t n = outline.size();
    float best = math::Infinity();
    bool inside = false;
    for (size_t i = 0; i < n; ++i) {
        const Vec2& a = outline[i];
        const Vec2& b = outline[(i + 1) % n];
        best = std::min(best, SegmentDist(p, a, b));
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y)) {
            inside = !inside;
        }
    }
    return inside ? -best : best;
}

// The larger side of a map cell.
float CellSize(const Polygon& polygon) {
    const Vec2 h = polygon.GetMapBox().halfExtents;
    return 2 * std::max(h.x, h.y) / Polygon::kMapSize;
}

template <class E>
void ExpectThrowWithText(const Vec2List& points, const char* text) {
    try {
        Polygon polygon(points);
        ADD_FAILURE() << "no exception";
    } catch (const E& e) {
        EXPECT_STREQ(e.what(), text);
    }
}

}  // namespace

TEST(Polygon, ClockwiseOutlineIsReversed) {
    const Vec2List ccw = Points({{0, 0}, {3, 0}, {3, 1}, {1, 2}});
    Vec2List cw = ccw;
    std::reverse(cw.begin(), cw.end());
    const Polygon a(ccw);
    const Polygon b(cw);
    ASSERT_EQ(b.GetWorldVertices().size(), 4u);
    // The clockwise list, reversed, is the counter-clockwise twin.
    Vec2List expected = cw;
    std::reverse(expected.begin(), expected.end());
    for (size_t i = 0; i < 4; ++i) {
        ExpectNear(b.GetWorldVertices()[i], expected[i]);
        ExpectNear(a.GetWorldVertices()[i], ccw[i]);
    }
    EXPECT_NEAR(a.Area(), b.Area(), 1e-5f);
    EXPECT_NEAR(a.Area(), 4.0f, 1e-5f);
    ExpectNear(a.GetPosition(), b.GetPosition());
    EXPECT_NEAR(a.InertiaPerMass(), b.InertiaPerMass(), 1e-5f);
    EXPECT_NEAR(a.GetPerimeter(), b.GetPerimeter(), 1e-5f);
}

TEST(Polygon, ConstructionKeepsOutlineAndPlacesAtCentroid) {
    const Polygon square(Points({{1, 1}, {3, 1}, {3, 3}, {1, 3}}));
    EXPECT_FLOAT_EQ(square.Area(), 4);
    // A square of side s: s^2 / 6 per unit mass.
    EXPECT_NEAR(square.InertiaPerMass(), 4.0f / 6, 1e-5f);
    EXPECT_FLOAT_EQ(square.GetPerimeter(), 8);
    ExpectNear(square.GetPosition(), {2, 2});
    ExpectNear(square.GetVertices()[0], {-1, -1});
    ExpectNear(square.GetWorldVertices()[2], {3, 3});
    const physics::LineList& lines = square.GetLines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[3].a, square.GetVertices()[3]);
    EXPECT_EQ(lines[3].b, square.GetVertices()[0]);
    const math::BoundingBox2f box = square.GetBoundingBox();
    ExpectNear(box.min, {1, 1});
    ExpectNear(box.max, {3, 3});
    const physics::BoundingCircle circle = square.GetBoundingCircle();
    ExpectNear(circle.centre, {2, 2});
    EXPECT_NEAR(circle.radius, std::sqrt(2.0f), 1e-5f);
    EXPECT_NEAR(square.GetOBB().Area(), 4, 1e-4f);
    EXPECT_GT(square.GetDistMap()(0, 0), 0);
    EXPECT_EQ(square.GetDistMap().GetWidth(), 128u);
    EXPECT_EQ(square.GetNormalMap().GetHeight(), 128u);
}

TEST(Polygon, RepeatedAndClosingPointsAreDropped) {
    const Polygon polygon(Points({{0, 0}, {0, 0}, {2, 0}, {2, 2}, {2, 2}, {0, 2}, {0, 0}, {0, 0}}));
    ASSERT_EQ(polygon.GetVertices().size(), 4u);
    ExpectNear(polygon.GetWorldVertices()[3], {0, 2});
    EXPECT_FLOAT_EQ(polygon.Area(), 4);
}

TEST(Polygon, TooFewPointsThrow) {
    ExpectThrowWithText<BadDataException>(Points({{0, 0}, {1, 0}}), "Bad polygon");
    ExpectThrowWithText<BadDataException>(Points({{0, 0}, {1, 0}, {1, 0}, {0, 0}}), "Bad polygon");
    ExpectThrowWithText<BadDataException>(Points({}), "Bad polygon");
}

TEST(Polygon, BowTieThrows) {
    ExpectThrowWithText<BadDataException>(Points({{0, 0}, {2, 2}, {2, 0}, {0, 2}}),
                                          "Self-intersecting polygon");
    // A vertex visited twice counts as a crossing too.
    ExpectThrowWithText<BadDataException>(Points({{0, 0}, {2, 0}, {1, 1}, {2, 2}, {0, 2}, {1, 1}}),
                                          "Self-intersecting polygon");
}

TEST(Polygon, CollinearPointsHaveNoAreaAndNoInertia) {
    const Polygon line(Points({{0, 0}, {1, 1}, {2, 2}}));
    EXPECT_EQ(line.Area(), 0);
    EXPECT_FALSE(math::IsFinite(line.InertiaPerMass()));
    EXPECT_TRUE(math::IsFinite(line.GetPosition()));
}

TEST(Polygon, DistAtSquareCentre) {
    const Polygon square(Points({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}));
    EXPECT_NEAR(square.Dist({0, 0}), -1, CellSize(square));
    EXPECT_NEAR(square.Dist({1.5f, 0}), 0.5f, CellSize(square));
    // Beyond the map the tight box stands in.
    EXPECT_NEAR(square.Dist({4, 0}), 3, 1e-5f);
    EXPECT_NEAR(square.Dist({4, 5}), 5, 1e-5f);
}

TEST(Polygon, OutlineMapRunsAlongThePerimeter) {
    const Polygon square(Points({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}));
    const auto outlineAt = [&square](const Vec2& local) {
        const Vec2 m = square.GetLocalToMap().TransformPoint(local);
        return square.GetOutlineMap()(static_cast<size_t>(std::lround(m.x)),
                                      static_cast<size_t>(std::lround(m.y)));
    };
    const float cell = CellSize(square);
    // Vertex 0 is (-1, -1); the sides are walked counter-clockwise.
    EXPECT_NEAR(outlineAt({0, -1}), 1, cell);
    EXPECT_NEAR(outlineAt({1, 0}), 3, cell);
    EXPECT_NEAR(outlineAt({0, 1.1f}), 5, cell);
    EXPECT_NEAR(outlineAt({-1.1f, 0}), 7, cell);
}

TEST(Polygon, NormalOutsideMapIsZero) {
    const Polygon square(Points({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}));
    EXPECT_EQ(square.Normal({10, 0}), Vec2(0, 0));
    EXPECT_EQ(square.Normal({0, -100}), Vec2(0, 0));
    EXPECT_EQ(square.Normal({1.5f, 1.5f}), Vec2(0, 0));
}

TEST(Polygon, ThinPolygonGetsMarginOfTwoTenths) {
    const Polygon thin(Points({{0, 0}, {4, 0}, {4, 0.01f}, {0, 0.01f}}));
    const math::OBB2D tight = thin.GetLocalOBB();
    const math::OBB2D map = thin.GetMapBox();
    EXPECT_NEAR(map.halfExtents.x - tight.halfExtents.x, 0.2f, 1e-5f);
    EXPECT_NEAR(map.halfExtents.y - tight.halfExtents.y, 0.2f, 1e-5f);
    ExpectNear(map.centre, tight.centre);
    EXPECT_GT(thin.GetDistMap()(0, 0), 0);
    EXPECT_LT(thin.Dist({2, 0.005f}), 0);
    EXPECT_GT(thin.Dist({2, 0.1f}), 0);

    // A large one gets two cells.
    const Polygon large(Points({{0, 0}, {64, 0}, {64, 12.8f}, {0, 12.8f}}));
    EXPECT_NEAR(large.GetMapBox().halfExtents.x - large.GetLocalOBB().halfExtents.x, 1, 1e-4f);
    EXPECT_NEAR(large.GetMapBox().halfExtents.y - large.GetLocalOBB().halfExtents.y, 0.2f, 1e-4f);
}

TEST(Polygon, MapTransformsInvertEachOther) {
    const Polygon polygon(LShape());
    const math::TMatrix3<float>& toMap = polygon.GetLocalToMap();
    const math::TMatrix3<float>& toLocal = polygon.GetMapToLocal();
    const math::OBB2D map = polygon.GetMapBox();
    // Corners of the map box land half a cell outside the outer cell centres.
    const Vec2 corner = map.centre - map.axis1 * map.halfExtents.x - map.axis2 * map.halfExtents.y;
    ExpectNear(toMap.TransformPoint(corner), {-0.5f, -0.5f}, 1e-3f);
    const Vec2 far = map.centre + map.axis1 * map.halfExtents.x + map.axis2 * map.halfExtents.y;
    ExpectNear(toMap.TransformPoint(far), {127.5f, 127.5f}, 1e-3f);
    ExpectNear(toLocal.TransformPoint(toMap.TransformPoint({0.3f, -0.2f})), {0.3f, -0.2f}, 1e-5f);
}

TEST(Polygon, CopySharesNothing) {
    const Polygon original(LShape());
    const Polygon copy(original);
    EXPECT_NE(copy.GetID(), original.GetID());
    EXPECT_EQ(copy.GetVertices(), original.GetVertices());
    EXPECT_NE(copy.GetVertices().data(), original.GetVertices().data());
    EXPECT_NE(copy.GetWorldVertices().data(), original.GetWorldVertices().data());
    EXPECT_NE(copy.GetLines().data(), original.GetLines().data());
    EXPECT_NE(copy.GetDistMap().data(), original.GetDistMap().data());
    EXPECT_NE(copy.GetNormalMap().data(), original.GetNormalMap().data());
    EXPECT_NE(copy.GetOutlineMap().data(), original.GetOutlineMap().data());
    EXPECT_TRUE(copy.GetDistMap().Elements() == original.GetDistMap().Elements());
    EXPECT_EQ(copy.Area(), original.Area());
    EXPECT_EQ(copy.GetPerimeter(), original.GetPerimeter());
    EXPECT_EQ(copy.Dist({0.5f, 0.5f}), original.Dist({0.5f, 0.5f}));
}

TEST(Polygon, CreateBoxHasSixteenVertices) {
    const physics::PolygonPtr box = Polygon::CreateBox(0, 0, 4, 2);
    const Vec2List& v = box->GetWorldVertices();
    ASSERT_EQ(v.size(), 16u);
    ExpectNear(v[0], {0, 0});
    ExpectNear(v[1], {0.125f, 0});
    ExpectNear(v[2], {2, 0});
    ExpectNear(v[3], {3.875f, 0});
    ExpectNear(v[4], {4, 0});
    ExpectNear(v[5], {4, 0.0625f});
    ExpectNear(v[6], {4, 1});
    ExpectNear(v[8], {4, 2});
    ExpectNear(v[12], {0, 2});
    ExpectNear(v[15], {0, 0.0625f});
    EXPECT_NEAR(box->Area(), 8, 1e-5f);
    ExpectNear(box->GetPosition(), {2, 1});
    EXPECT_NEAR(box->Dist({2, 1}), -1, CellSize(*box));
}

TEST(Polygon, AssertMaxDistSplitsLongSides) {
    const Vec2List square = Points({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    EXPECT_EQ(physics::AssertMaxDist(square, 2), square);
    const Vec2List split = physics::AssertMaxDist(square, 0.4f);
    // Each side of 1 becomes three pieces.
    ASSERT_EQ(split.size(), 12u);
    ExpectNear(split[0], {0, 0});
    ExpectNear(split[1], {1.0f / 3, 0});
    ExpectNear(split[2], {2.0f / 3, 0});
    ExpectNear(split[3], {1, 0});
    ExpectNear(split[11], {0, 1.0f / 3});
    // A closed list and repeated points give the same result.
    const Vec2List closed = Points({{0, 0}, {1, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}});
    EXPECT_EQ(physics::AssertMaxDist(closed, 0.4f), split);
    // A side exactly at the limit stays whole.
    EXPECT_EQ(physics::AssertMaxDist(square, 1).size(), 4u);
}

TEST(Polygon, DistOfConcaveShapeMatchesExactDistance) {
    const Vec2List outline = LShape();
    const Polygon polygon(outline);
    const float cell = CellSize(polygon);
    float worst = 0;
    int insideCount = 0;
    for (int i = 0; i <= 40; ++i) {
        for (int j = 0; j <= 40; ++j) {
            const Vec2 p(-0.2f + 2.4f * i / 40, -0.2f + 2.4f * j / 40);
            const float exact = ExactDist(outline, p);
            const float dist = polygon.Dist(p);
            worst = std::max(worst, std::fabs(dist - exact));
            if (std::fabs(exact) > 1.5f * cell) {
                EXPECT_EQ(dist < 0, exact < 0) << p.x << ", " << p.y;
            }
            insideCount += dist < 0;
        }
    }
    EXPECT_LT(worst, 1.5f * cell);
    EXPECT_GT(insideCount, 0);
    // The concave corner: just outside it, diagonally, is outside.
    EXPECT_GT(polygon.Dist({1.1f, 1.1f}), 0);
    EXPECT_LT(polygon.Dist({0.9f, 0.9f}), 0);
}

TEST(Polygon, NormalPointsOutOfEachSide) {
    const Polygon polygon(LShape());
    const float e = 0.02f;
    const struct {
        Vec2 point;
        Vec2 normal;
    } sides[] = {
        {{1, e}, {0, -1}},       {{2 - e, 0.5f}, {1, 0}}, {{1.5f, 1 - e}, {0, 1}},
        {{1 - e, 1.5f}, {1, 0}}, {{0.5f, 2 - e}, {0, 1}}, {{e, 1}, {-1, 0}},
        {{1, -e}, {0, -1}},      {{2 + e, 0.5f}, {1, 0}}, {{-e, 1.5f}, {-1, 0}},
    };
    for (const auto& side : sides) {
        const Vec2 n = polygon.Normal(side.point);
        EXPECT_NEAR(n.Length(), 1, 1e-4f);
        EXPECT_GT(math::Dot(n, side.normal), 0.99f) << side.point.x << ", " << side.point.y;
    }
}

TEST(Polygon, ClosestPointProjectsOnOutline) {
    const Polygon polygon(LShape());
    ExpectNear(polygon.ClosestPoint({1, -3}), {1, 0});
    ExpectNear(polygon.ClosestPoint({3, 2.5f}), {2, 1});
    ExpectNear(polygon.ClosestPoint({1.5f, 1.3f}), {1.5f, 1});
    ExpectNear(polygon.ClosestPoint({0.2f, 0.5f}), {0, 0.5f});
}

TEST(Polygon, SetTransformMovesWorldData) {
    Polygon polygon(Points({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}));
    const physics::Transform t = physics::Transform::FromAngle(math::Pi / 2, {5, 0});
    polygon.SetTransform(t);
    ExpectNear(polygon.GetWorldVertices()[0], {6, -1});
    ExpectNear(polygon.GetWorldLines()[0].a, {6, -1});
    ExpectNear(polygon.GetWorldLines()[0].b, {6, 1});
    ExpectNear(polygon.GetBoundingBox().min, {4, -1});
    ExpectNear(polygon.GetBoundingBox().max, {6, 1});
    ExpectNear(polygon.GetBoundingCircle().centre, {5, 0});
    ExpectNear(polygon.GetOBB().centre, {5, 0});
    EXPECT_NEAR(polygon.Dist({5, 0}), -1, CellSize(polygon));
    EXPECT_GT(polygon.Dist({0, 0}), 0);
    // The local side at +x faces +y in the world now.
    const Vec2 n = polygon.Normal({5.5f, 0.9f});
    ExpectNear(n, {0, 1}, 1e-2f);
    ExpectNear(polygon.ClosestPoint({5.5f, 3}), {5.5f, 1});
}

TEST(Polygon, SegmentTest) {
    using physics::Intersects;
    using physics::Line;
    EXPECT_TRUE(Intersects(Line{{0, 0}, {2, 2}}, Line{{0, 2}, {2, 0}}));
    EXPECT_FALSE(Intersects(Line{{0, 0}, {1, 1}}, Line{{0, 2}, {2, 2}}));
    // Touching counts.
    EXPECT_TRUE(Intersects(Line{{0, 0}, {2, 0}}, Line{{1, 0}, {1, 3}}));
    // Shared start or end meets; chain neighbours do not.
    EXPECT_TRUE(Intersects(Line{{0, 0}, {1, 0}}, Line{{0, 0}, {0, 1}}));
    EXPECT_TRUE(Intersects(Line{{1, 0}, {0, 0}}, Line{{0, 1}, {0, 0}}));
    EXPECT_FALSE(Intersects(Line{{0, 0}, {1, 0}}, Line{{1, 0}, {1, 1}}));
    EXPECT_FALSE(Intersects(Line{{1, 0}, {1, 1}}, Line{{0, 0}, {1, 0}}));
    // Parallel, even overlapping, never meets.
    EXPECT_FALSE(Intersects(Line{{0, 0}, {2, 0}}, Line{{1, 0}, {3, 0}}));
}

TEST(Polygon, ContainmentAndCrossings) {
    const Polygon outer(Points({{0, 0}, {4, 0}, {4, 4}, {0, 4}}));
    const Polygon inner(Points({{1, 1}, {3, 1}, {3, 3}, {1, 3}}));
    const Polygon across(Points({{2, 1}, {6, 1}, {6, 3}, {2, 3}}));
    const Polygon away(Points({{10, 10}, {11, 10}, {11, 11}}));
    EXPECT_TRUE(physics::IsInside(inner, outer));
    EXPECT_FALSE(physics::IsInside(outer, inner));
    EXPECT_FALSE(physics::IsInside(across, outer));
    EXPECT_FALSE(physics::IsInside(away, outer));
    EXPECT_TRUE(physics::MayTouch(across, outer));
    EXPECT_FALSE(physics::MayTouch(away, outer));
    EXPECT_EQ(physics::CountCrossings(inner, outer), 0u);
    EXPECT_EQ(physics::CountCrossings(across, outer), 2u);
    EXPECT_EQ(physics::CountCrossings(outer, across), 2u);
    EXPECT_EQ(physics::CountCrossings(away, outer), 0u);
}

TEST(Polygon, OBBOverlapUsesAllFourAxes) {
    const math::OBB2D a{{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    math::OBB2D b{{2.5f, 0}, {1, 0}, {0, 1}, {1, 1}};
    EXPECT_FALSE(physics::OBBOverlap(a, b));
    b.centre = {2, 0};
    EXPECT_TRUE(physics::OBBOverlap(a, b));
    // A diamond beside the corner: the first box's axes see overlap, the diamond's do not.
    const float r = std::sqrt(0.5f);
    const math::OBB2D diamond{{2.1f, 2.1f}, {r, r}, {-r, r}, {1, 1}};
    EXPECT_FALSE(physics::OBBOverlap(a, diamond));
    EXPECT_FALSE(physics::OBBOverlap(diamond, a));
}

// Outlines of thousands of points are searched by runs of neighbours: the crossing test
// and the farthest pair must come out as the plain double loops find them, to the pair.
TEST(Polygon, LongOutlinesFindCrossingsAndTheFarthestPairAsTheDoubleLoopDoes) {
    auto bruteCrossing = [](const physics::LineList& lines) {
        for (size_t i = 0; i < lines.size(); ++i) {
            for (size_t j = i + 1; j < lines.size(); ++j) {
                if (physics::Intersects(lines[i], lines[j])) {
                    return true;
                }
            }
        }
        return false;
    };
    auto bruteFarthest = [](const Vec2List& points) {
        math::PointPair best{0, 1};
        float distance = -1;
        for (size_t i = 0; i < points.size(); ++i) {
            for (size_t j = i + 1; j < points.size(); ++j) {
                if ((points[j] - points[i]).SquaredLength() > distance) {
                    distance = (points[j] - points[i]).SquaredLength();
                    best = {i, j};
                }
            }
        }
        return best;
    };
    auto linesOf = [](const Vec2List& points) {
        physics::LineList lines;
        for (size_t i = 0; i < points.size(); ++i) {
            lines.push_back({points[i], points[(i + 1) % points.size()]});
        }
        return lines;
    };
    std::srand(3);
    for (const size_t count : {200u, 1000u, 3000u}) {
        // A blob with a wobbly rim, a regular polygon (near ties everywhere), and the blob
        // with two points swapped, which makes it cross itself.
        Vec2List blob;
        Vec2List regular;
        for (size_t i = 0; i < count; ++i) {
            const float angle = 2 * math::Pi * static_cast<float>(i) / static_cast<float>(count);
            const float wobble = 1 + 0.3f * static_cast<float>(std::rand() % 1000) / 1000;
            blob.push_back(Vec2(std::cos(angle), std::sin(angle)) * wobble + Vec2(40, -7));
            regular.push_back(Vec2(std::cos(angle), std::sin(angle)) * 3.0f);
        }
        Vec2List crossed = blob;
        std::swap(crossed[count / 3], crossed[2 * count / 3]);
        for (const Vec2List* points : {&blob, &regular, &crossed}) {
            EXPECT_EQ(physics::AnyIntersect(linesOf(*points)), bruteCrossing(linesOf(*points)))
                << count;
            const math::PointPair fast = math::FarthestPair(points->data(), points->size());
            const math::PointPair plain = bruteFarthest(*points);
            EXPECT_EQ(fast.first, plain.first) << count;
            EXPECT_EQ(fast.second, plain.second) << count;
        }
        EXPECT_FALSE(physics::AnyIntersect(linesOf(blob)));
        EXPECT_TRUE(physics::AnyIntersect(linesOf(crossed)));
    }
}

TEST(Polygon, OutlinesBeyondTheVertexLimitOrNotFiniteAreRefused) {
    Vec2List points;
    for (size_t i = 0; i <= Polygon::kMaxVertices; ++i) {
        const float angle =
            2 * math::Pi * static_cast<float>(i) / static_cast<float>(Polygon::kMaxVertices + 1);
        points.push_back(Vec2(std::cos(angle), std::sin(angle)));
    }
    ExpectThrowWithText<BadDataException>(points,
                                          "Too many vertices in polygon: 8193, at most 8192");
    points.pop_back();
    EXPECT_EQ(Polygon(points).GetVertices().size(), Polygon::kMaxVertices);
    ExpectThrowWithText<BadDataException>(Points({{0, 0}, {1, 0}, {0, INFINITY}}), "Bad polygon");
    ExpectThrowWithText<BadDataException>(Points({{0, 0}, {NAN, 0}, {0, 1}}), "Bad polygon");
}
