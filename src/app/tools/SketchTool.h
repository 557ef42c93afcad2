#pragma once

#include "app/tools/StrokeTool.h"
#include "physics/Forward.h"

namespace app {

// The default tool: what one stroke becomes is read from its shape and from what lies
// under it. A straight line erases what it crosses, or crosses the line before it to fix
// things together; a zigzag is a spring; a small circle on a shape is a hinge; a circle
// around things selects them; any other closed stroke is a new polygon.
class SketchTool : public StrokeTool {
public:
    SketchTool();
    ~SketchTool() override;

    // Forgets the previous line once the cross gesture can no longer use it.
    void Update(float dt) override;
    // The previous line in red, fading out, then the stroke in progress.
    void Draw(Painter& painter) override;
    // Drops the stroke in progress and the previous line.
    bool Cancel() override;
    util::String GetCursorName() const override { return "pencil"; }

    // The previous straight stroke, while the cross gesture may still use it.
    const stroke::Points& GetLastLine() const { return m_lastLine; }

    // Seconds within which a second line across the first makes a fix joint.
    static constexpr double kLastLineLife = 2.0;

protected:
    void AnalyzeDrawing() override;

private:
    void ExpireLastLine();
    // A line across the previous one, crossing it once: a fix joint where they cross.
    bool TestFixate();
    bool TestEraseLine();
    // A zigzag between two different shapes, or a shape and the background: a spring.
    bool TestSpring();
    // The closed stroke: a selection, a hinge or a polygon.
    void CreatePolygon();
    // A small round stroke on a shape: a hinge at its centre.
    bool TestHinge(const physics::PolygonPtr& polygon);

    stroke::Points m_lastLine;
    // Seconds on the program's clock when the previous line ended.
    double m_lastLineTime = 0;
};

}  // namespace app
