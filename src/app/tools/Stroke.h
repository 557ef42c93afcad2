#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "math/Vector2.h"
#include "physics/Forward.h"
#include "physics/Polygon.h"

// What the drawing tools read from one stroke of the mouse: whether it is straight, the
// closed loop in it, the polygon it outlines, and what a straight stroke erases. The
// points are in world coordinates, in the order drawn.
namespace app::stroke {

using Points = std::vector<math::Vec2>;

// What CloseStroke made of a stroke.
enum CloseResult : int {
    kOpen = 0,    // no closed shape: the ends lie too far apart and nothing crosses
    kClosed = 1,  // the list is now a closed loop, the closing edge implied
    kFailed = 2,  // it crosses itself, but no loop around its middle could be cut out
};

// Appends the point when it lies at least minDist from the last one and differs from it,
// which is how every stroke is sampled; true when it was appended.
bool Append(Points& points, const math::Vec2& point, float minDist);

// One segment between each pair of neighbours.
physics::LineList ToLines(const Points& points);
// The summed length of the segments, open.
float Length(const Points& points);
// Every coordinate finite. Anything else would make each test below meaningless.
bool AllFinite(const Points& points);

// Where two segments meet, when physics::Intersects says they do.
std::optional<math::Vec2> Crossing(const physics::Line& a, const physics::Line& b);

// Within 15% of its chord everywhere, and no two segments crossing.
bool IsLine(const Points& points);

// Cuts the closed loop out of the stroke: a stroke that overshoots its start, or has a
// tail at both ends, loses the tails, and the loop around its middle stays.
CloseResult CloseStroke(Points& points);

// The polygon the stroke outlines, its sides split at maxDist; null when the stroke is
// open, fails to close or closes on a loop shorter than half its length. A polygon the
// geometry rejects throws, as the polygon's constructor does.
physics::PolygonPtr IsPolygon(const Points& points, float maxDist);

// The erase gesture: what the segments pass through is erased as one step ("UndoErase"),
// with the whole selection if a selected entity is hit. A plane goes only when it is all
// that was hit. True when anything was erased.
bool TestEraseLine(const Points& points);

// Runs the change as one step of the history: the scene is captured before it, and the
// step with the label goes on the stack after it. A change that answers false leaves no
// step, and one that throws is taken back before the exception goes on, so no failure
// leaves half an entity behind.
bool CommitStep(const char* label, const std::function<bool()>& change);

}  // namespace app::stroke
