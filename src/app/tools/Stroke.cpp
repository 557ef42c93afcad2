#include "app/tools/Stroke.h"

#include <algorithm>
#include <cmath>

#include "app/Actions.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/PlaneEntity.h"
#include "math/BoundingBox2.h"
#include "math/MathUtil.h"
#include "util/Exception.h"

namespace app::stroke {

namespace {

// Both segments of every crossing pair. Segments whose boxes lie apart are passed over;
// the boxes grow by a margin well above the crossing test's rounding, as the polygon's own
// test has them, so that both tests agree on what crosses.
std::vector<char> MarkCrossings(const physics::LineList& lines) {
    const size_t n = lines.size();
    std::vector<char> marked(n, 0);
    std::vector<math::BoundingBox2f> boxes(n);
    float scale = 0;
    for (size_t i = 0; i < n; ++i) {
        boxes[i].Add(lines[i].a);
        boxes[i].Add(lines[i].b);
        scale = std::max({scale, std::fabs(lines[i].a.x), std::fabs(lines[i].a.y),
                          std::fabs(lines[i].b.x), std::fabs(lines[i].b.y)});
    }
    const float margin = 1e-4f * scale;
    for (math::BoundingBox2f& box : boxes) {
        box = box.Expanded(margin);
    }
    for (size_t i = 0; i < n; ++i) {
        for (size_t j = i + 1; j < n; ++j) {
            if (boxes[i].Overlaps(boxes[j]) && physics::Intersects(lines[i], lines[j])) {
                marked[i] = 1;
                marked[j] = 1;
            }
        }
    }
    return marked;
}

// Twice the area the closed outline encloses, by the shoelace sum; in double, so that
// an outline along one line sums to exactly zero.
double SignedArea(const math::Vec2List& outline) {
    double sum = 0;
    for (size_t i = 0; i < outline.size(); ++i) {
        const math::Vec2& a = outline[i];
        const math::Vec2& b = outline[(i + 1) % outline.size()];
        sum += static_cast<double>(a.x) * b.y - static_cast<double>(b.x) * a.y;
    }
    return sum;
}

}  // namespace

bool Append(Points& points, const math::Vec2& point, float minDist) {
    if (points.empty()) {
        points.push_back(point);
        return true;
    }
    const math::Vec2 last = points.back();
    // Written so that a point that is not a number never passes.
    if (point != last && (point - last).Length() >= minDist) {
        points.push_back(point);
        return true;
    }
    return false;
}

physics::LineList ToLines(const Points& points) {
    physics::LineList lines;
    if (points.size() < 2) {
        return lines;
    }
    lines.reserve(points.size() - 1);
    for (size_t i = 0; i + 1 < points.size(); ++i) {
        lines.push_back({points[i], points[i + 1]});
    }
    return lines;
}

float Length(const Points& points) {
    float length = 0;
    for (size_t i = 0; i + 1 < points.size(); ++i) {
        length += (points[i + 1] - points[i]).Length();
    }
    return length;
}

bool AllFinite(const Points& points) {
    return std::all_of(points.begin(), points.end(),
                       [](const math::Vec2& p) { return math::IsFinite(p); });
}

std::optional<math::Vec2> Crossing(const physics::Line& a, const physics::Line& b) {
    if (!physics::Intersects(a, b)) {
        return std::nullopt;
    }
    // Meeting at a shared end point is a meeting there, parallel or not.
    if (a.a == b.a) {
        return a.a;
    }
    if (a.b == b.b) {
        return a.b;
    }
    const math::Vec2 r = a.b - a.a;
    const math::Vec2 s = b.b - b.a;
    const float t = math::Cross(b.a - a.a, s) / math::Cross(r, s);
    return a.a + r * t;
}

bool IsLine(const Points& points) {
    if (points.size() < 2) {
        return false;
    }
    const math::Vec2 a = points.front();
    const math::Vec2 ab = points.back() - a;
    const float chord = ab.Length();
    const float chord2 = ab.SquaredLength();
    for (const math::Vec2& p : points) {
        const float t = math::Dot(p - a, ab) / chord2;
        // Both ends at one point: no chord to measure against, and every point counts as on
        // it.
        float dist = 0;
        if (std::isfinite(t)) {
            const math::Vec2 nearest = t <= 0 ? a : (t >= 1 ? points.back() : a + ab * t);
            dist = (p - nearest).Length();
        }
        if (dist > 0.15f * chord) {
            return false;
        }
    }
    return !physics::AnyIntersect(ToLines(points));
}

CloseResult CloseStroke(Points& points) {
    const size_t n = points.size();
    if (n < 2) {
        return kOpen;
    }
    const physics::LineList lines = ToLines(points);
    const size_t count = lines.size();
    const std::vector<char> marked = MarkCrossings(lines);
    const size_t markedCount = static_cast<size_t>(std::count(marked.begin(), marked.end(), 1));
    const float total = Length(points);

    if (markedCount == 0) {
        const float gap = (points.back() - points.front()).Length();
        return gap >= total / 8 ? kOpen : kClosed;
    }
    if (markedCount == count) {
        return kFailed;
    }

    // The free segment that holds the stroke's middle, or comes nearest to it.
    size_t middle = count;
    float best = math::Infinity();
    float run = 0;
    for (size_t i = 0; i < count; ++i) {
        const float length = (lines[i].b - lines[i].a).Length();
        if (!marked[i]) {
            const float off = std::fabs(run + length / 2 - total / 2);
            if (off < best) {
                best = off;
                middle = i;
            }
        }
        run += length;
    }
    if (middle == count || middle == 0) {
        return kFailed;
    }

    // The nearest crossing segments on both sides; an end of the stroke no crossing cuts
    // stays whole.
    size_t forward = middle;
    while (forward + 1 < count && !marked[forward]) {
        ++forward;
    }
    size_t backward = middle;
    while (backward > 0 && !marked[backward]) {
        --backward;
    }
    // From the end of the segment behind to the start of the one ahead: the tails beyond
    // the crossings are cut off, and the crossing point closes the loop.
    const size_t first = marked[backward] ? backward + 1 : 0;
    const size_t last = marked[forward] ? forward : n - 1;
    Points loop;
    loop.reserve(last - first + 2);
    for (size_t i = first; i <= last; ++i) {
        if (loop.empty() || loop.back() != points[i]) {
            loop.push_back(points[i]);
        }
    }
    if (marked[backward] && marked[forward]) {
        std::optional<math::Vec2> crossing = Crossing(lines[backward], lines[forward]);
        // A stroke that came back through the very point it passed: the segment test
        // leaves out a start on the other's end, yet that point is where the loop closes.
        if (!crossing && lines[backward].a == lines[forward].b) {
            crossing = lines[backward].a;
        }
        if (crossing && *crossing != loop.back()) {
            loop.push_back(*crossing);
        }
    }
    points.swap(loop);
    return kClosed;
}

physics::PolygonPtr IsPolygon(const Points& points, float maxDist) {
    if (points.size() < 3) {
        return nullptr;
    }
    Points loop = points;
    if (CloseStroke(loop) != kClosed) {
        return nullptr;
    }
    const float strokeLength = Length(points);
    const float loopLength = Length(loop) + (loop.back() - loop.front()).Length();
    if (loopLength < strokeLength / 2) {
        return nullptr;
    }

    math::Vec2List outline;
    outline.assign(loop.data(), loop.data() + loop.size());
    if (maxDist > 0) {
        // The polygon refuses this many vertices anyway; counted first, so that a side
        // reaching far out of the view is not split into billions of points on the way.
        double pieces = 0;
        for (size_t i = 0; i < loop.size(); ++i) {
            const float side = (loop[(i + 1) % loop.size()] - loop[i]).Length();
            pieces += std::ceil(static_cast<double>(side) / static_cast<double>(maxDist));
        }
        if (!(pieces <= static_cast<double>(physics::Polygon::kMaxVertices))) {
            VORRA_THROW(::BadDataException, "Too many vertices in polygon");
        }
        outline = physics::AssertMaxDist(outline, maxDist);
    }
    if (outline.size() <= 2) {
        return nullptr;
    }
    // A stroke that went out and came back along itself encloses nothing. The polygon
    // would divide by its zero area, and a body would refuse it: refused here, before
    // anything holds it.
    if (!(std::fabs(SignedArea(outline)) > 0)) {
        VORRA_THROW(::BadDataException, "Polygon without area");
    }
    physics::PolygonPtr polygon(new physics::Polygon(outline));
    if (!(polygon->Area() > 0) || !math::IsFinite(polygon->InertiaPerMass())) {
        VORRA_THROW(::BadDataException, "Polygon without area");
    }
    return polygon;
}

bool TestEraseLine(const Points& points) {
    const physics::LineList lines = ToLines(points);
    Scene& scene = Scene::Get();
    const GroupPtr& selection = scene.GetSelection();
    EntitySet erased;
    bool selectedHit = false;
    for (const EntityPtr& entity : scene.GetEntities()) {
        if (entity->IntersectsLines(lines)) {
            erased.insert(entity);
            selectedHit = selectedHit || selection->Contains(entity);
        }
    }
    if (selectedHit) {
        for (const EntityPtr& entity : selection->GetEntities()) {
            erased.insert(entity);
        }
    }
    if (erased.size() > 1) {
        std::vector<EntityPtr> planes;
        for (const EntityPtr& entity : erased) {
            if (dynamic_cast<const PlaneEntity*>(entity.Get())) {
                planes.push_back(entity);
            }
        }
        for (const EntityPtr& plane : planes) {
            erased.erase(plane);
        }
    }
    if (erased.empty()) {
        return false;
    }
    Undoer::Get().Do(ActionPtr(new EraseEntities("UndoErase", erased)));
    return true;
}

bool CommitStep(const char* label, const std::function<bool()>& change) {
    const SnapshotPtr before(new Snapshot());
    bool done = false;
    try {
        done = change();
    } catch (...) {
        before->Restore();
        throw;
    }
    if (done) {
        Undoer::Get().AddSnapshotStep(before, label);
    }
    return done;
}

}  // namespace app::stroke
