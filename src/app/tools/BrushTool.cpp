#include "app/tools/BrushTool.h"

#include <exception>

#include "app/Group.h"
#include "app/Scene.h"
#include "app/entities/PolyEntity.h"
#include "logging/Log.h"
#include "physics/Polygon.h"
#include "util/Exception.h"
#include "util/Profiler.h"

namespace app {

BrushTool::BrushTool() : StrokeTool("BrushTool") {}

BrushTool::~BrushTool() = default;

void BrushTool::Draw(Painter& painter) {
    VORRA_PROFILE("Line::Draw");
    DrawStroke(painter);
}

void BrushTool::AnalyzeDrawing() {
    if (m_points.size() < 2 || !stroke::AllFinite(m_points)) {
        return;
    }
    if (stroke::IsLine(m_points)) {
        TestEraseLine();
        return;
    }
    const physics::PolygonPtr polygon = IsPolygon();
    if (!polygon) {
        return;
    }
    if (!FreeDrawing() && Scene::Get().SelectInside(*polygon)) {
        return;
    }
    stroke::CommitStep("UndoPolygon", [&] {
        const EntityPtr entity(new PolyEntity(polygon));
        if (AutoGlue()) {
            Group(entity).Glue();
        }
        Scene::Get().AddEntity(entity);
        return true;
    });
}

bool BrushTool::TestEraseLine() {
    try {
        return stroke::TestEraseLine(m_points);
    } catch (const std::exception& e) {
        Log(logging::Warning, "BrushTool::TestEraseLine, ErasedBy: " + util::String(e.what()));
        return false;
    }
}

physics::PolygonPtr BrushTool::IsPolygon() const {
    try {
        return stroke::IsPolygon(m_points, MaxPointDist());
    } catch (const std::exception& e) {
        Log(logging::Debug, "Bad polygon: " + util::String(e.what()) + ", " + VORRA_LOCATION);
        return nullptr;
    }
}

}  // namespace app
