#include "app/tools/SketchTool.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>
#include <vector>

#include "app/Group.h"
#include "app/Painter.h"
#include "app/Scene.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/GeomEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/JointEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "math/OBB2D.h"
#include "physics/Polygon.h"
#include "physics/Simulation.h"
#include "util/Exception.h"

namespace app {

namespace {

// Equal but for the rounding of two crossing computations.
bool SamePoint(const math::Vec2& a, const math::Vec2& b) {
    const float scale = std::max({1.0f, std::fabs(a.x), std::fabs(a.y)});
    return std::fabs(a.x - b.x) <= 1e-5f * scale && std::fabs(a.y - b.y) <= 1e-5f * scale;
}

}  // namespace

SketchTool::SketchTool() : StrokeTool("SketchTool") {}

SketchTool::~SketchTool() = default;

void SketchTool::Update(float /*dt*/) {
    ExpireLastLine();
}

void SketchTool::ExpireLastLine() {
    if (!m_lastLine.empty() && Now() - m_lastLineTime > kLastLineLife) {
        m_lastLine.clear();
    }
}

bool SketchTool::Cancel() {
    m_lastLine.clear();
    return StrokeTool::Cancel();
}

void SketchTool::Draw(Painter& painter) {
    const double age = Now() - m_lastLineTime;
    if (m_lastLine.size() >= 2 && age < kLastLineLife) {
        const math::Vec4 red(1, 0, 0, static_cast<float>(1 - age / kLastLineLife));
        for (size_t i = 0; i + 1 < m_lastLine.size(); ++i) {
            painter.Line(m_lastLine[i], m_lastLine[i + 1], red);
        }
    }
    DrawStroke(painter);
}

void SketchTool::AnalyzeDrawing() {
    if (m_points.size() < 2) {
        m_points.clear();
        return;
    }
    // A point that is not a number means nothing as a gesture.
    if (!stroke::AllFinite(m_points)) {
        return;
    }
    // Without a frame in between, the previous line may be older than the gesture allows.
    ExpireLastLine();

    if (stroke::IsLine(m_points)) {
        if (TestFixate() || TestEraseLine()) {
            m_lastLine.clear();
            return;
        }
        m_lastLine = m_points;
        m_lastLineTime = Now();
        return;
    }
    if (TestSpring()) {
        return;
    }
    m_lastLine.clear();
    try {
        CreatePolygon();
    } catch (const std::exception& e) {
        Log(logging::Warning, "Error while creating polygon: " + util::String(e.what()));
    }
}

bool SketchTool::TestFixate() {
    if (m_lastLine.size() < 2 || m_points.size() < 2) {
        return false;
    }
    try {
        const physics::LineList first = stroke::ToLines(m_lastLine);
        const physics::LineList second = stroke::ToLines(m_points);
        std::optional<math::Vec2> crossing;
        for (const physics::Line& a : first) {
            for (const physics::Line& b : second) {
                const std::optional<math::Vec2> at = stroke::Crossing(a, b);
                // A line through a point of the other meets two of its segments there:
                // still one crossing.
                if (!at || (crossing && SamePoint(*crossing, *at))) {
                    continue;
                }
                // A wavy line crossing twice is no cross.
                if (crossing) {
                    return false;
                }
                crossing = at;
            }
        }
        if (!crossing) {
            return false;
        }
        const math::Vec2 at = *crossing;
        const float size = 0.7f * std::sqrt(stroke::Length(m_lastLine) * stroke::Length(m_points));
        if (!math::IsFinite(at) || !std::isfinite(size)) {
            return false;
        }
        // The snapshot comes before the joint attaches: attaching already merges bodies.
        return stroke::CommitStep("UndoFixate", [&] {
            const JointEntityPtr joint(new FixJointEntity(size));
            const math::Vec2 ends[2] = {at, at};
            joint->Attach(ends);
            Scene::Get().AddEntity(joint);
            return true;
        });
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        return false;
    }
}

bool SketchTool::TestEraseLine() {
    try {
        return stroke::TestEraseLine(m_points);
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        return false;
    }
}

bool SketchTool::TestSpring() {
    if (m_points.size() < 5) {
        return false;
    }
    const math::Vec2 a = m_points.front();
    const math::Vec2 b = m_points.back();
    const float length = (b - a).Length();
    // Ends at one point give the box no axis.
    if (!(length > 0) || !std::isfinite(length)) {
        return false;
    }
    const math::OBB2D box = math::OBB2D::Build(m_points.data(), m_points.size(), (b - a) / length);
    const float boxLength = 2 * box.halfExtents.x;
    const float width = 2 * box.halfExtents.y;
    if (boxLength > 1.05f * length || width < 0.15f * length || width > 0.5f * length) {
        return false;
    }
    try {
        return stroke::CommitStep("UndoSpring", [&] {
            const util::SharedPtr<SpringEntity> spring(new SpringEntity(width));
            const math::Vec2 ends[2] = {a, b};
            spring->Attach(ends);
            // Both ends on the background hold on to one geom: no spring between them.
            if (!spring->GetGeom(0) || !spring->GetGeom(1) ||
                spring->GetGeom(0) == spring->GetGeom(1)) {
                spring->RemoveFromSimulation();
                return false;
            }
            spring->length->SetNative(length);
            Scene::Get().AddEntity(spring);
            return true;
        });
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        return false;
    }
}

void SketchTool::CreatePolygon() {
    const physics::PolygonPtr polygon = stroke::IsPolygon(m_points, MaxPointDist());
    if (!polygon) {
        return;
    }
    Scene& scene = Scene::Get();
    const physics::GeomPtr& ground = physics::Simulation::Get().GetWorldGeom();
    const bool freeDrawing = FreeDrawing();

    // Joints held by the background inside the new shape move onto it; anything else it
    // encircles makes the stroke a selection.
    std::vector<JointEntityPtr> joints;
    Group encircled;
    bool encircles = false;
    for (const EntityPtr& entity : scene.GetEntities()) {
        bool collected = false;
        if (const JointEntityPtr joint = util::DynamicPointerCast<JointEntity>(entity)) {
            for (int end = 0; end < 2; ++end) {
                if (joint->GetGeom(end) == ground && polygon->Dist(joint->GetWorld(end)) < 0) {
                    collected = true;
                }
            }
            if (collected) {
                joints.push_back(joint);
            }
        }
        if (!freeDrawing && entity->IsInside(*polygon)) {
            encircled.Add(entity);
            encircles = encircles || !collected;
        }
    }
    if (encircles) {
        // Whatever the keys: the encircled things are the selection.
        const GroupPtr& selection = scene.GetSelection();
        selection->Clear();
        selection->Add(encircled);
        return;
    }
    if (joints.empty() && TestHinge(polygon)) {
        return;
    }

    stroke::CommitStep("UndoPolygon", [&] {
        Group moved;
        for (const JointEntityPtr& joint : joints) {
            physics::GeomPtr geoms[2] = {joint->GetGeom(0), joint->GetGeom(1)};
            math::Vec2 locals[2] = {joint->GetLocal(0), joint->GetLocal(1)};
            for (int end = 0; end < 2; ++end) {
                const math::Vec2 world = joint->GetWorld(end);
                if (geoms[end] == ground && polygon->Dist(world) != 0) {
                    geoms[end] = polygon;
                    locals[end] = polygon->GetTransform().Inverted().Apply(world);
                }
            }
            joint->SetEnds(geoms[0], locals[0], geoms[1], locals[1]);
            moved.Add(joint);
        }
        const EntityPtr entity(new PolyEntity(polygon));
        if (AutoGlue()) {
            Group(entity).Glue();
        }
        scene.AddEntity(entity);
        // A joint rebuilt before its new shape had a body is registered now that it has.
        for (const JointEntityPtr& joint : joints) {
            joint->EnsureInSimulation();
        }
        scene.MoveToFront(moved);
        return true;
    });
}

bool SketchTool::TestHinge(const physics::PolygonPtr& polygon) {
    try {
        const math::Vec2 centre = polygon->GetTransform().translation;
        const EntityPtr under = Scene::Get().GetEntityAt(centre);
        const auto* shape = dynamic_cast<const GeomEntity*>(under.Get());
        if (!shape) {
            return false;
        }
        const float area = polygon->Area();
        if (area > 0.5f * shape->GetGeom()->Area()) {
            return false;
        }
        const float radius = std::sqrt(area / math::Pi);
        for (const math::Vec2& point : m_points) {
            const float dist = (point - centre).Length();
            if (!(dist >= radius / 1.8f && dist <= radius * 1.8f)) {
                return false;
            }
        }
        return stroke::CommitStep("UndoHinge", [&] {
            const JointEntityPtr hinge(new HingeEntity(2 * radius));
            const math::Vec2 ends[2] = {centre, centre};
            hinge->Attach(ends);
            Scene::Get().AddEntity(hinge);
            return true;
        });
    } catch (const std::exception& e) {
        Log(logging::Warning, "Error while creating hinge: " + util::String(e.what()));
        return false;
    }
}

}  // namespace app
