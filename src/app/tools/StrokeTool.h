#pragma once

#include "app/tools/Stroke.h"
#include "app/tools/Tool.h"
#include "math/Vector4.h"

namespace app {

// A tool that reads freehand strokes: the left button draws, points are sampled a fixed
// distance of the screen apart, Shift holds the stroke straight from its last point, and
// the finished stroke of two points or more goes to AnalyzeDrawing.
class StrokeTool : public Tool {
public:
    ~StrokeTool() override;

    // Escape cancels; the release of Shift during a stroke takes the mouse's position, so
    // that a straight edge ends where the mouse is.
    void OnKey(input::KeyEvent& event) override;
    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // Drops the stroke in progress.
    bool Cancel() override;

    // The stroke in progress, in world coordinates.
    const stroke::Points& GetPoints() const { return m_points; }

    // The colour of the stroke in progress.
    static constexpr math::Vec4 kStrokeColor{0.85f, 1, 0.85f, 1};

protected:
    explicit StrokeTool(const util::String& name);

    // Reads the finished stroke, m_points, of two points or more; the caller empties it
    // afterwards.
    virtual void AnalyzeDrawing() = 0;

    // The stroke in progress up to the mouse, one line per segment.
    void DrawStroke(Painter& painter) const;

    // The sampling distance and the longest polygon side, in world units: both are set
    // in inches of the screen, so they follow the zoom.
    static float MinPointDist();
    static float MaxPointDist();

    stroke::Points m_points;

private:
    void Append(const math::Vec2& gui);
};

}  // namespace app
