#pragma once

#include "app/tools/StrokeTool.h"
#include "physics/Forward.h"

namespace app {

// The plain drawing tool: a closed stroke is a polygon, or selects what it encircles, and
// a straight stroke erases. No joints come of its gestures.
class BrushTool : public StrokeTool {
public:
    BrushTool();
    ~BrushTool() override;

    // The stroke in progress.
    void Draw(Painter& painter) override;
    util::String GetCursorName() const override { return "brush"; }

protected:
    void AnalyzeDrawing() override;

private:
    bool TestEraseLine();
    // The stroke's polygon; null for a stroke that outlines none or one the geometry
    // rejects.
    physics::PolygonPtr IsPolygon() const;
};

}  // namespace app
