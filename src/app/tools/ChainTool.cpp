#include "app/tools/ChainTool.h"

#include <cmath>

#include "app/App.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/JointEntity.h"
#include "app/tools/CreateTool.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"

namespace app {

ChainTool::ChainTool() : Tool("ChainTool") {}

ChainTool::~ChainTool() = default;

void ChainTool::OnDragBegin(input::DragEvent& event) {
    Tool::OnDragBegin(event);
    math::Vec2 start;
    if (!BeginGesture(event, start)) {
        return;
    }
    // Fixed for the whole drag, so that a zoom meanwhile does not mix link sizes.
    const float radius = kLinkRadiusInches * InchInWorld();
    if (!(radius > 0) || !math::IsFinite(radius)) {
        return;
    }
    m_startGeom = Scene::Get().GetGeomAt(start);
    m_startLocal = m_startGeom->GetInverseTransform().Apply(start);
    m_end = start;
    m_radius = radius;
    SetDrawing(true);
    event.consumed = true;
}

void ChainTool::OnDrag(input::DragEvent& event) {
    Tool::OnDrag(event);
    if (event.consumed || !IsDrawing()) {
        return;
    }
    Grow(ToWorld(event.position));
    event.consumed = true;
}

void ChainTool::OnDragEnd(input::DragEvent& event) {
    Tool::OnDragEnd(event);
    if (!EndGesture(event)) {
        return;
    }
    const math::Vec2 end = ToWorld(event.position);
    Grow(end);
    if (m_links == 0) {
        Reset();
        return;
    }
    TieEnd(end);
    const SnapshotPtr before = m_before;
    Reset();
    Undoer::Get().AddSnapshotStep(before, "UndoChain");
}

bool ChainTool::Cancel() {
    const std::vector<EntityPtr> made = m_made;
    const bool drawing = IsDrawing();
    Reset();
    // Joints leave while the links they hold are still there.
    for (const EntityPtr& entity : made) {
        if (dynamic_cast<JointEntity*>(entity.Get())) {
            Scene::Get().RemoveEntity(entity);
        }
    }
    for (const EntityPtr& entity : made) {
        if (!dynamic_cast<JointEntity*>(entity.Get())) {
            Scene::Get().RemoveEntity(entity);
        }
    }
    return drawing;
}

void ChainTool::Grow(const math::Vec2& point) {
    if (ShiftHeld() || !IsUsablePoint(point)) {
        return;
    }
    const float spacing = 2 * m_radius;
    const math::Vec2 d = point - m_end;
    const float distance = d.Length();
    // A jump farther than the links left to the drag is no mouse's: the chain stays.
    const float links = distance / spacing;
    if (!math::IsFinite(links) || links < 1 || links > static_cast<float>(kMaxLinks - m_links)) {
        return;
    }
    const math::Vec2 direction = d / distance;
    // The same direction all the way: the links stay on the segment to the point.
    for (size_t i = 1; i <= static_cast<size_t>(links); ++i) {
        AddLink(direction);
    }
}

void ChainTool::AddLink(const math::Vec2& direction) {
    physics::Simulation& sim = physics::Simulation::Get();
    const bool first = m_links == 0;
    if (first) {
        m_before = SnapshotPtr(new app::Snapshot());
        m_chain = ChainPtr(new Chain());
    }
    util::SharedPtr<physics::Circle> circle(new physics::Circle(m_radius));
    // Heavier than a plain shape, so that what hangs on the chain does not tear it.
    float factor = 1;
    if (App::IsAlive()) {
        factor = App::Get().GetModel().chainDensityFactor->Get();
    }
    circle->density = sim.defaultBodyDensity->Get() * factor;
    // Turned along the stroke.
    circle->SetTransform(physics::Transform::FromAngle(std::atan2(direction.y, direction.x),
                                                       m_end + direction * m_radius));
    util::SharedPtr<CircleEntity> link(new CircleEntity(circle));
    const bool glued = first && AutoGlue() && m_startGeom == sim.GetWorldGeom();
    if (glued) {
        sim.GetWorldBody()->AddGeom(circle);
    }
    // Places alternate: the hinge before a link, then the link; place 0 is the hinge the
    // chain hangs from, empty when the first link is glued.
    const size_t index = 2 * m_links + 1;
    m_chain->AddEntity(index, link);
    Scene::Get().AddEntity(link);
    m_made.push_back(link);
    // A link's ends lie on its rim along the stroke: while the world runs, the link before
    // may have fallen from the stroke, and the hinge pulls the two together rim to rim.
    const math::Vec2 nearEnd(-m_radius, 0);
    if (!first) {
        AddHinge(index - 1, m_lastLink->GetGeom(), math::Vec2(m_radius, 0), circle, nearEnd);
    } else if (!glued) {
        // The start's point as it was taken: the shape may have moved since.
        AddHinge(index - 1, m_startGeom, m_startLocal, circle, nearEnd);
    }
    m_lastLink = link;
    m_end = m_end + direction * (2 * m_radius);
    ++m_links;
}

EntityPtr ChainTool::AddHinge(size_t index, const physics::GeomPtr& geom0, const math::Vec2& local0,
                              const physics::GeomPtr& geom1, const math::Vec2& local1) {
    util::SharedPtr<HingeEntity> hinge(new HingeEntity(m_radius));
    hinge->SetEnds(geom0, local0, geom1, local1);
    m_chain->AddEntity(index, hinge);
    Scene::Get().AddEntity(hinge);
    m_made.push_back(hinge);
    return hinge;
}

void ChainTool::TieEnd(const math::Vec2& point) {
    const physics::GeomPtr& ground = physics::Simulation::Get().GetWorldGeom();
    const physics::GeomPtr& last = m_lastLink->GetGeom();
    physics::GeomPtr target = ground;
    if (IsUsablePoint(point)) {
        for (const physics::GeomPtr& geom : Scene::Get().GetGeomsAt(point)) {
            if (geom != last) {
                target = geom;
                break;
            }
        }
    }
    const EntityPtr hinge = AddHinge(2 * m_links, last, math::Vec2(m_radius, 0), target,
                                     target->GetInverseTransform().Apply(m_end));
    // Drawn from the background to the background, the chain hangs from its start alone.
    // The hinge leaves its place empty, so that the last link is no end of the chain, and a
    // click on it takes the whole.
    if (target == ground && m_startGeom == ground) {
        Scene::Get().RemoveEntity(hinge);
    }
}

void ChainTool::Reset() {
    m_chain.Reset();
    m_before.Reset();
    m_made.clear();
    m_lastLink.Reset();
    m_links = 0;
    m_startGeom.Reset();
    SetDrawing(false);
}

}  // namespace app
