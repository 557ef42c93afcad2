#include "physics/Polygon.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "logging/Log.h"
#include "physics/BackgroundMapBuilds.h"
#include "physics/OBBOverlap.h"
#include "util/Assert.h"
#include "util/Exception.h"

namespace physics {

namespace {

// The floor of the cell size used for the map margin, so that a thin polygon still gets
// room around it (the float 0x3DCCCCCD).
constexpr float kMinCellSize = 0.1f;
// Cells of margin around the tight box.
constexpr float kMarginCells = 2;

// Nearest point of the segment to p, with its parameter along the segment.
struct Projection {
    math::Vec2 point;
    float t;
};

inline Projection Project(const Line& line, const math::Vec2& p) {
    const math::Vec2 d = line.b - line.a;
    const float length2 = d.SquaredLength();
    // A zero-length line (only after float cancellation) is its start point.
    const float t = length2 > 0 ? math::Dot(p - line.a, d) / length2 : 0.0f;
    if (t <= 0) {
        return {line.a, 0};
    }
    if (t >= 1) {
        return {line.b, 1};
    }
    return {line.a + d * t, t};
}

// The build queue, smallest first by squared distance and then by cell index, which for
// cells of one array is the order of their addresses. The frontier of the propagation holds
// thousands of cells, so a single heap spends most of the build sifting. Here entries are
// filed into buckets by distance and only the lowest bucket is a heap. Everything
// in the heap lies below the buckets still filed, and a push that falls at or below the
// heap's bucket joins the heap, so the pops come out in exactly the same order.
class BuildQueue {
public:
    // Empties the queue for a build whose squared distances stay below maxSquaredDist. The
    // buffers keep their capacity from the last build.
    void Reset(float maxSquaredDist) {
        const float lowest = maxSquaredDist * kLowestFraction;
        m_lowestBits = lowest > 0 && math::IsFinite(lowest) ? std::bit_cast<uint32_t>(lowest) : 0;
        m_current = 0;
        m_heads.assign(kBuckets, kNone);
        m_filed.clear();
        m_heap.clear();
    }

    void Push(float squaredDist, uint32_t cell) {
        // The bits of a non-negative float grow with its value: one integer compare orders
        // by distance, then by cell.
        const uint32_t bits = std::bit_cast<uint32_t>(squaredDist);
        const uint64_t key = (static_cast<uint64_t>(bits) << 32) | cell;
        const uint32_t bucket = BucketOf(bits);
        if (bucket <= m_current) {
            m_heap.push_back(key);
            std::push_heap(m_heap.begin(), m_heap.end(), std::greater<uint64_t>());
        } else {
            m_filed.push_back({key, m_heads[bucket]});
            m_heads[bucket] = static_cast<uint32_t>(m_filed.size() - 1);
        }
    }

    // The next cell, or false when the queue is empty.
    bool Pop(uint32_t& cell) {
        while (m_heap.empty()) {
            if (!OpenNextBucket()) {
                return false;
            }
        }
        std::pop_heap(m_heap.begin(), m_heap.end(), std::greater<uint64_t>());
        cell = static_cast<uint32_t>(m_heap.back());
        m_heap.pop_back();
        return true;
    }

private:
    // The buckets split each octave of squared distance into 1024 by the float's leading
    // mantissa bits, which keeps a bucket to a few cells both along the outline and far
    // out, and costs no arithmetic. Twenty octaves reach down to a thousandth of the
    // diagonal, a fifth of a cell; nearer cells share the first bucket.
    static constexpr uint32_t kShift = 13;
    static constexpr uint32_t kOctaves = 20;
    static constexpr uint32_t kBuckets = kOctaves << (23 - kShift);
    static constexpr float kLowestFraction = 1.0f / (1 << kOctaves);
    static constexpr uint32_t kNone = ~0u;

    struct Filed {
        uint64_t key;
        uint32_t next;
    };

    // Monotone in the distance, so that equal keys share a bucket: the bits of a
    // non-negative float grow with its value.
    uint32_t BucketOf(uint32_t squaredDistBits) const {
        if (squaredDistBits <= m_lowestBits) {
            return 0;
        }
        return std::min((squaredDistBits - m_lowestBits) >> kShift, kBuckets - 1);
    }

    bool OpenNextBucket() {
        while (m_current + 1 < kBuckets) {
            ++m_current;
            uint32_t i = m_heads[m_current];
            if (i == kNone) {
                continue;
            }
            for (; i != kNone; i = m_filed[i].next) {
                m_heap.push_back(m_filed[i].key);
            }
            std::make_heap(m_heap.begin(), m_heap.end(), std::greater<uint64_t>());
            return true;
        }
        return false;
    }

    uint32_t m_lowestBits = 0;
    uint32_t m_current = 0;
    std::vector<uint32_t> m_heads;
    std::vector<Filed> m_filed;
    std::vector<uint64_t> m_heap;
};

// The buffers of a build, kept per thread: a map is a few hundred kilobytes of work space,
// and fresh pages for each polygon cost more than clearing the old ones.
struct DistMapScratch {
    std::vector<BuildCell> cells;
    math::Vec2List centres;
    BuildQueue queue;
};

DistMapScratch& Scratch() {
    thread_local DistMapScratch scratch;
    return scratch;
}

}  // namespace

Polygon::Polygon(const math::Vec2List& worldPoints) : Polygon(worldPoints, false) {}

Polygon::Polygon(const math::Vec2List& localPoints, KeepLocal) : Polygon(localPoints, true) {}

Polygon::Polygon(const math::Vec2List& worldPoints, bool keepLocal) {
    // Consecutive repeats carry no edge; a closing copy of the first point neither.
    m_vertices.reserve(worldPoints.size());
    for (size_t i = 0; i < worldPoints.size(); ++i) {
        if (m_vertices.empty() || worldPoints[i] != m_vertices.back()) {
            m_vertices.push_back(worldPoints[i]);
        }
    }
    while (m_vertices.size() > 1 && m_vertices.back() == m_vertices.front()) {
        m_vertices.pop_back();
    }
    if (m_vertices.size() < 3 ||
        !std::all_of(m_vertices.begin(), m_vertices.end(),
                     [](const math::Vec2& v) { return math::IsFinite(v); })) {
        VORRA_THROW(BadDataException, "Bad polygon");
    }
    if (m_vertices.size() > kMaxVertices) {
        VORRA_THROW(BadDataException,
                    "Too many vertices in polygon: " + std::to_string(m_vertices.size()) +
                        ", at most " + std::to_string(kMaxVertices));
    }
    const size_t n = m_vertices.size();

    // Shoelace sums, taken relative to the first point: the same values, with less
    // cancellation for outlines drawn far from the origin.
    const math::Vec2 origin = m_vertices[0];
    float crossSum = 0;
    math::Vec2 centroidSum(0, 0);
    for (size_t i = 0; i < n; ++i) {
        const math::Vec2 a = m_vertices[i] - origin;
        const math::Vec2 b = m_vertices[(i + 1) % n] - origin;
        const float cross = math::Cross(a, b);
        crossSum += cross;
        centroidSum += (a + b) * cross;
    }
    float area = crossSum / 2;
    math::Vec2 centroid = centroidSum / (6 * area) + origin;
    if (!math::IsFinite(centroid)) {
        // No area (all points on one line): the mean keeps the vertices finite, and the
        // inertia below comes out as a non-number that the body rejects.
        centroid = math::Vec2(0, 0);
        for (size_t i = 0; i < n; ++i) {
            centroid += m_vertices[i];
        }
        centroid /= static_cast<float>(n);
    }
    if (area < 0) {
        std::reverse(m_vertices.begin(), m_vertices.end());
        area = -area;
    }
    // Points about their centroid already keep their last bits; any others are moved.
    float extent = 0;
    for (size_t i = 0; i < n; ++i) {
        extent = std::max(extent, std::fabs(m_vertices[i].x) + std::fabs(m_vertices[i].y));
    }
    const bool centred = std::fabs(centroid.x) + std::fabs(centroid.y) <= 1e-5f * extent;
    if (!keepLocal || !centred) {
        for (size_t i = 0; i < n; ++i) {
            m_vertices[i] -= centroid;
        }
    }

    float inertiaSum = 0;
    for (size_t i = 0; i < n; ++i) {
        const math::Vec2 a = m_vertices[i];
        const math::Vec2 b = m_vertices[(i + 1) % n];
        inertiaSum += math::Cross(a, b) * (math::Dot(a, a) + math::Dot(a, b) + math::Dot(b, b));
    }
    const float inertia = inertiaSum / (12 * area);
    if (area < 0 || inertia < 0) {
        Log(logging::Warning, "Bad area or mass in polygon");
    }
    m_area = std::fabs(area);
    m_inertiaPerMass = std::fabs(inertia);

    m_lines.resize(n);
    for (size_t i = 0; i < n; ++i) {
        m_lines[i] = {m_vertices[i], m_vertices[(i + 1) % n]};
    }

    if (AnyIntersect(m_lines)) {
        VORRA_THROW(BadDataException, "Self-intersecting polygon");
    }

    // The two vertices farthest apart give the tight box its main axis, and the bounding
    // circle its centre.
    const math::PointPair far = math::FarthestPair(m_vertices.data(), n);
    const math::Vec2& farA = m_vertices[far.first];
    const math::Vec2& farB = m_vertices[far.second];
    m_obb = math::OBB2D::BuildBest(m_vertices.data(), n, math::Normalized(farB - farA));
    m_localCircle.centre = (farA + farB) * 0.5f;
    float radius2 = 0;
    for (size_t i = 0; i < n; ++i) {
        radius2 = std::max(radius2, (m_vertices[i] - m_localCircle.centre).SquaredLength());
    }
    m_localCircle.radius = std::sqrt(radius2);

    // The map box is the tight box with a margin of two cells, or of 0.2 at least, so that
    // the border cells lie outside and the field has room to turn around corners.
    const float mapCells = static_cast<float>(kMapSize);
    const float cellX = std::max(2 * m_obb.halfExtents.x / mapCells, kMinCellSize);
    const float cellY = std::max(2 * m_obb.halfExtents.y / mapCells, kMinCellSize);
    m_mapBox = m_obb;
    m_mapBox.halfExtents = math::Vec2(m_obb.halfExtents.x + kMarginCells * cellX,
                                      m_obb.halfExtents.y + kMarginCells * cellY);

    // Into the map box's frame, shifted to its corner, scaled to cells, and half a cell back
    // so that cell centres fall on whole numbers.
    const math::Vec2& h = m_mapBox.halfExtents;
    const math::Vec2& c = m_mapBox.centre;
    const math::Vec2& u = m_mapBox.axis1;
    const math::Vec2& v = m_mapBox.axis2;
    const float sx = mapCells / (2 * h.x);
    const float sy = mapCells / (2 * h.y);
    // clang-format off
    m_localToMap = math::TMatrix3<float>(u.x * sx, u.y * sx, (h.x - math::Dot(c, u)) * sx - 0.5f,
                                         v.x * sy, v.y * sy, (h.y - math::Dot(c, v)) * sy - 0.5f,
                                         0,        0,        1);
    // clang-format on
    m_mapToLocal = math::Inverted(m_localToMap);

    m_worldVertices.resize(n);
    m_worldLines.resize(n);
    SetTransform(Transform{math::Vec2(1, 0), centroid});

    // Last, since nothing may throw once a helper holds the polygon.
    BackgroundMapBuilds* builds = BackgroundMapBuilds::Current();
    if (!builds || !builds->Queue(this)) {
        CalcMaps();
    }
}

namespace {

// The first initialiser of a copy: maps still building elsewhere are waited for.
const Polygon& WithMaps(const Polygon& polygon) {
    polygon.GetDistMap();
    return polygon;
}

}  // namespace

Polygon::Polygon(const Polygon& other)
    : Geom(WithMaps(other)),
      m_vertices(other.m_vertices),
      m_worldVertices(other.m_worldVertices),
      m_lines(other.m_lines),
      m_worldLines(other.m_worldLines),
      m_localCircle(other.m_localCircle),
      m_worldCircle(other.m_worldCircle),
      m_boundingBox(other.m_boundingBox),
      m_obb(other.m_obb),
      m_worldOBB(other.m_worldOBB),
      m_mapBox(other.m_mapBox),
      m_localToMap(other.m_localToMap),
      m_mapToLocal(other.m_mapToLocal),
      m_distMap(other.m_distMap),
      m_outlineMap(other.m_outlineMap),
      m_normalMap(other.m_normalMap),
      m_area(other.m_area),
      m_inertiaPerMass(other.m_inertiaPerMass),
      m_perimeter(other.m_perimeter) {}

Polygon::~Polygon() {
    if (m_mapState.load(std::memory_order_acquire) != MapState::Ready) {
        m_mapBuilds->Withdraw(this);
    }
}

void Polygon::FinishMaps() const {
    m_mapBuilds->Finish(this);
}

void Polygon::CalcMaps() {
    CalcDistMap();
    CalcNormalMap();
}

void Polygon::BuildMaps() noexcept {
    try {
        CalcMaps();
        return;
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
    }
    m_distMap.Resize(kMapSize, kMapSize, std::numeric_limits<float>::max());
    m_outlineMap.Resize(kMapSize, kMapSize, 0.0f);
    m_normalMap.Resize(kMapSize, kMapSize, math::Vec2(0, 0));
}

PolygonPtr Polygon::CreateBox(math::real x1, math::real y1, math::real x2, math::real y2) {
    const math::Vec2 corners[4] = {{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}};
    const float fractions[4] = {0, 1.0f / 32, 0.5f, 31.0f / 32};
    math::Vec2List points;
    points.reserve(16);
    for (int side = 0; side < 4; ++side) {
        const math::Vec2& a = corners[side];
        const math::Vec2& b = corners[(side + 1) % 4];
        for (float f : fractions) {
            points.push_back(a + (b - a) * f);
        }
    }
    return PolygonPtr(new Polygon(points));
}

void Polygon::CalcDistMap() {
    // The grid has a frame of one cell that counts as done, so that the propagation visits
    // neighbours without testing the map's edges. A cell's index in the framed grid orders
    // the cells as their index in the map does, so ties still break the same way.
    constexpr int w = kMapSize + 2;
    const auto framedIndex = [](int x, int y) {
        return static_cast<uint32_t>((y + 1) * w + x + 1);
    };
    DistMapScratch& scratch = Scratch();
    std::vector<BuildCell>& cells = scratch.cells;
    cells.assign(static_cast<size_t>(w) * w, BuildCell());
    for (int i = 0; i < w; ++i) {
        cells[static_cast<size_t>(i)].done = true;
        cells[static_cast<size_t>((w - 1) * w + i)].done = true;
        cells[static_cast<size_t>(i * w)].done = true;
        cells[static_cast<size_t>(i * w + w - 1)].done = true;
    }
    // No distance within the map exceeds its diagonal.
    BuildQueue& queue = scratch.queue;
    queue.Reset((m_mapBox.halfExtents * 2).SquaredLength());

    // Cell centres in local space, by the framed index; the frame's are never read.
    math::Vec2List& centres = scratch.centres;
    centres.resize(cells.size());
    for (int y = 0; y < kMapSize; ++y) {
        for (int x = 0; x < kMapSize; ++x) {
            centres[framedIndex(x, y)] = m_mapToLocal.TransformPoint(
                math::Vec2(static_cast<float>(x), static_cast<float>(y)));
        }
    }
    // A cell takes the line if it is strictly nearer than what it has. Earlier entries of the
    // cell stay queued; the done flag skips them when they come up.
    const auto offer = [&](uint32_t index, const Line* line) {
        BuildCell& cell = cells[index];
        const math::Vec2 p = centres[index];
        const float d2 = (p - Project(*line, p).point).SquaredLength();
        if (d2 < cell.squaredDist) {
            cell.closest = line;
            cell.squaredDist = d2;
            queue.Push(d2, index);
        }
    };

    // Seed: every cell that a line's rasterisation touches gets that line. A cell met twice
    // by the same line is offered the same distance again, which changes nothing, so the
    // cells need no de-duplication.
    for (const Line& line : m_lines) {
        const math::Vec2 p0 = m_localToMap.TransformPoint(line.a);
        const math::Vec2 p1 = m_localToMap.TransformPoint(line.b);
        CODE_CHECK(p0 != p1);
        if (!math::IsFinite(p0) || !math::IsFinite(p1)) {
            continue;  // nothing to walk; the cells left without a line are caught below
        }
        int x0 = static_cast<int>(std::floor(p0.x + 0.5f));
        int y0 = static_cast<int>(std::floor(p0.y + 0.5f));
        const int x1 = static_cast<int>(std::floor(p1.x + 0.5f));
        const int y1 = static_cast<int>(std::floor(p1.y + 0.5f));
        const int dx = std::abs(x1 - x0);
        const int dy = std::abs(y1 - y0);
        const int stepX = x1 >= x0 ? 1 : -1;
        const int stepY = y1 >= y0 ? 1 : -1;
        const bool xMajor = dx >= dy;
        const int major = xMajor ? dx : dy;
        const int minor = xMajor ? dy : dx;
        int error = 0;
        for (int i = 0; i <= major; ++i) {
            if (x0 >= 0 && x0 < kMapSize && y0 >= 0 && y0 < kMapSize) {
                offer(framedIndex(x0, y0), &line);
            }
            error += minor;
            const bool minorStep = error * 2 >= major;
            if (minorStep) {
                error -= major;
            }
            if (xMajor) {
                x0 += stepX;
                y0 += minorStep ? stepY : 0;
            } else {
                y0 += stepY;
                x0 += minorStep ? stepX : 0;
            }
        }
    }

    // Dijkstra's order over the feature transform: a cell is final when it comes up first,
    // and then hands its line on to its neighbours, row by row from below and left to right
    // within a row, since of two lines equally near the first offered stays.
    static constexpr int kNeighbours[8] = {-w - 1, -w, -w + 1, -1, 1, w - 1, w, w + 1};
    uint32_t index;
    while (queue.Pop(index)) {
        BuildCell& cell = cells[index];
        if (cell.done) {
            continue;
        }
        cell.done = true;
        CODE_ASSERT(cell.closest);
        const Line* line = cell.closest;
        // Most neighbours are done or hold this line already (it would bring the same
        // distance again), so they are sorted out first without a branch each.
        unsigned open = 0;
        for (int k = 0; k < 8; ++k) {
            const BuildCell& neighbour = cells[index + static_cast<uint32_t>(kNeighbours[k])];
            open |= static_cast<unsigned>(!neighbour.done & (neighbour.closest != line)) << k;
        }
        for (; open != 0; open &= open - 1) {
            offer(index + static_cast<uint32_t>(kNeighbours[std::countr_zero(open)]), line);
        }
    }

    // Outward vertex normals decide the sign where the nearest point is a vertex, which is
    // where the side test of a single line goes wrong at concave corners.
    const size_t n = m_vertices.size();
    math::Vec2List vertexNormals;
    vertexNormals.resize(n);
    for (size_t i = 0; i < n; ++i) {
        const Line& before = m_lines[(i + n - 1) % n];
        const Line& after = m_lines[i];
        const math::Vec2 s =
            math::Normalized(before.b - before.a) + math::Normalized(after.b - after.a);
        vertexNormals[i] = math::Normalized(math::Vec2(s.y, -s.x));
    }

    util::VectorPOD<float> runLength;
    runLength.resize(n + 1);
    runLength[0] = 0;
    for (size_t i = 0; i < n; ++i) {
        runLength[i + 1] = runLength[i] + (m_lines[i].b - m_lines[i].a).Length();
    }
    m_perimeter = runLength[n];

    CODE_ASSERT(m_lines.size() == m_vertices.size());
    m_distMap.Resize(kMapSize, kMapSize);
    m_outlineMap.Resize(kMapSize, kMapSize);
    float* dist = m_distMap.data();
    float* outline = m_outlineMap.data();
    for (int y = 0; y < kMapSize; ++y) {
        for (int x = 0; x < kMapSize; ++x) {
            const size_t index = static_cast<size_t>(y * kMapSize + x);
            const BuildCell& cell = cells[framedIndex(x, y)];
            CODE_ASSERT(cell.closest);
            const Line& line = *cell.closest;
            const size_t lineIndex = static_cast<size_t>(cell.closest - m_lines.data());
            const math::Vec2 p = centres[framedIndex(x, y)];
            const Projection q = Project(line, p);
            // Where the nearest point is an end of the line, that vertex's normal tells the
            // side; elsewhere the line's own side does. Both are worked out and one chosen,
            // since which case a cell falls in follows no pattern the branches could learn.
            const bool atA = q.point == line.a;
            const bool atB = q.point == line.b;
            const size_t nextIndex = lineIndex + 1 == n ? 0 : lineIndex + 1;
            const math::Vec2& normal = vertexNormals[atB ? nextIndex : lineIndex];
            const bool behindVertex = math::Dot(p - q.point, normal) < 0;
            const bool leftOfLine = (p.y - line.a.y) * (line.b.x - line.a.x) -
                                        (p.x - line.a.x) * (line.b.y - line.a.y) >
                                    0;
            const bool inside = (atA || atB) ? behindVertex : leftOfLine;
            const float length = (p - q.point).Length();
            const float d = inside ? -length : length;
            dist[index] = d;
            outline[index] =
                runLength[lineIndex] + q.t * (runLength[lineIndex + 1] - runLength[lineIndex]);
        }
    }

    // The margin puts the corner well outside; anything else is a fault of the build.
    if (!(m_distMap(0, 0) > 0)) {
        VORRA_THROW(BadCoderException, "Bad distance map generated");
    }
}

void Polygon::CalcNormalMap() {
    constexpr int w = kMapSize;
    constexpr int h = kMapSize;
    const float* d = m_distMap.data();
    const auto at = [d](int x, int y) { return d[y * w + x]; };
    m_normalMap.Resize(kMapSize, kMapSize);
    math::Vec2* normals = m_normalMap.data();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            // Central differences span two cells; the one-sided ones at the border are
            // doubled to the same scale.
            float dx;
            if (x == 0) {
                dx = 2 * (at(1, y) - at(0, y));
            } else if (x == w - 1) {
                dx = 2 * (at(w - 1, y) - at(w - 2, y));
            } else {
                dx = at(x + 1, y) - at(x - 1, y);
            }
            float dy;
            if (y == 0) {
                dy = 2 * (at(x, 1) - at(x, 0));
            } else if (y == h - 1) {
                dy = 2 * (at(x, h - 1) - at(x, h - 2));
            } else {
                dy = at(x, y + 1) - at(x, y - 1);
            }
            normals[y * w + x] = math::Normalized(m_mapToLocal.TransformVector(math::Vec2(dx, dy)));
        }
    }
}

math::Vec2 Polygon::ClosestPoint(const math::Vec2& worldPoint) const {
    math::Vec2 best(0, 0);
    float best2 = math::Infinity();
    for (const Line& line : m_worldLines) {
        const math::Vec2 q = Project(line, worldPoint).point;
        const float d2 = (worldPoint - q).SquaredLength();
        if (d2 < best2) {
            best2 = d2;
            best = q;
        }
    }
    return best;
}

void Polygon::SetTransform(const Transform& localToWorld) {
    Geom::SetTransform(localToWorld);
    const Transform& t = GetTransform();

    m_worldOBB.centre = t.Apply(m_obb.centre);
    m_worldOBB.axis1 = t.ApplyToVector(m_obb.axis1);
    m_worldOBB.axis2 = t.ApplyToVector(m_obb.axis2);
    m_worldOBB.halfExtents = m_obb.halfExtents;

    m_worldCircle.centre = t.Apply(m_localCircle.centre);
    m_worldCircle.radius = m_localCircle.radius;

    const size_t n = m_vertices.size();
    m_boundingBox = math::BoundingBox2f();
    for (size_t i = 0; i < n; ++i) {
        m_worldVertices[i] = t.Apply(m_vertices[i]);
        m_boundingBox.Add(m_worldVertices[i]);
    }
    for (size_t i = 0; i < n; ++i) {
        m_worldLines[i] = {t.Apply(m_lines[i].a), t.Apply(m_lines[i].b)};
    }
}

math::Vec2List AssertMaxDist(const math::Vec2List& points, math::real maxDist) {
    math::Vec2List result;
    const size_t n = points.size();
    if (n == 0) {
        return result;
    }
    result.push_back(points[0]);
    for (size_t i = 1; i <= n; ++i) {
        const math::Vec2 a = points[i - 1];
        const math::Vec2 b = points[i % n];
        if (a == b) {
            continue;
        }
        const float d = (b - a).Length();
        if (d > maxDist) {
            const int k = static_cast<int>(std::ceil(d / maxDist));
            for (int j = 1; j < k; ++j) {
                result.push_back(a + (b - a) * (static_cast<float>(j) / static_cast<float>(k)));
            }
        }
        result.push_back(b);
    }
    CODE_ASSERT(result.back() == result.front());
    result.pop_back();
    return result;
}

bool Intersects(const Line& lineA, const Line& lineB) {
    const math::Vec2& p1 = lineA.a;
    const math::Vec2& p2 = lineA.b;
    const math::Vec2& q1 = lineB.a;
    const math::Vec2& q2 = lineB.b;
    if (p1 == q1 || p2 == q2) {
        return true;
    }
    if (p1 == q2 || q1 == p2) {
        return false;
    }
    const math::Vec2 r = p2 - p1;
    const math::Vec2 s = q2 - q1;
    const float den = math::Cross(r, s);
    if (math::NearZero(den)) {
        return false;
    }
    const math::Vec2 w = q1 - p1;
    const float tA = math::Cross(w, s) / den;
    const float tB = math::Cross(w, r) / den;
    return tA >= 0 && tA <= 1 && tB >= 0 && tB <= 1;
}

bool AnyIntersect(const LineList& lines) {
    const size_t n = lines.size();
    constexpr size_t kRun = 32;
    const size_t runs = (n + kRun - 1) / kRun;
    // Lines whose boxes lie apart cannot meet, but the test's rounding could still say so
    // for boxes a hair's breadth apart: the boxes grow by a margin well above that.
    std::vector<math::BoundingBox2f> boxes(runs);
    math::BoundingBox2f all;
    for (size_t i = 0; i < n; ++i) {
        boxes[i / kRun].Add(lines[i].a);
        boxes[i / kRun].Add(lines[i].b);
        all.Add(boxes[i / kRun]);
    }
    const float scale = std::max(
        {std::fabs(all.min.x), std::fabs(all.min.y), std::fabs(all.max.x), std::fabs(all.max.y)});
    const float margin = 1e-4f * scale;
    for (math::BoundingBox2f& box : boxes) {
        box = box.Expanded(margin);
    }
    for (size_t r = 0; r < runs; ++r) {
        for (size_t s = r; s < runs; ++s) {
            if (!boxes[r].Overlaps(boxes[s])) {
                continue;
            }
            const size_t endR = std::min(n, (r + 1) * kRun);
            const size_t endS = std::min(n, (s + 1) * kRun);
            for (size_t i = r * kRun; i < endR; ++i) {
                for (size_t j = std::max(i + 1, s * kRun); j < endS; ++j) {
                    if (Intersects(lines[i], lines[j])) {
                        return true;
                    }
                }
            }
        }
    }
    return false;
}

bool MayTouch(const Polygon& a, const Polygon& b) {
    const BoundingCircle ca = a.GetBoundingCircle();
    const BoundingCircle cb = b.GetBoundingCircle();
    const float reach = ca.radius + cb.radius;
    if (!((cb.centre - ca.centre).SquaredLength() < reach * reach)) {
        return false;
    }
    if (!OBBOverlap(a.GetOBB(), b.GetOBB())) {
        return false;
    }
    return a.Dist(cb.centre) <= cb.radius && b.Dist(ca.centre) <= ca.radius;
}

bool IsInside(const Polygon& inner, const Polygon& outer) {
    if (!MayTouch(inner, outer)) {
        return false;
    }
    for (const math::Vec2& v : inner.GetWorldVertices()) {
        if (!(outer.Dist(v) < 0)) {
            return false;
        }
    }
    for (const math::Vec2& v : outer.GetWorldVertices()) {
        if (inner.Dist(v) < 0) {
            return false;
        }
    }
    return true;
}

size_t CountCrossings(const Polygon& a, const Polygon& b) {
    size_t count = 0;
    for (const Line& lineA : a.GetWorldLines()) {
        for (const Line& lineB : b.GetWorldLines()) {
            if (Intersects(lineA, lineB)) {
                ++count;
            }
        }
    }
    return count;
}

}  // namespace physics
