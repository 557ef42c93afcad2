#include "app/PopupActions.h"

#include <cmath>
#include <exception>

#include "app/Actions.h"
#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Chain.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/Snapshot.h"
#include "app/Undoer.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/EntityColor.h"
#include "app/entities/FiniteGeomEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/widgets/Widget.h"
#include "logging/Log.h"
#include "math/MathUtil.h"
#include "os/OS.h"
#include "physics/Body.h"
#include "physics/Particle.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"
#include "util/Assert.h"

namespace app {
namespace {

EntitySet ToSet(const std::vector<EntityPtr>& entities) {
    EntitySet set;
    for (const EntityPtr& entity : entities) {
        set.insert(entity);
    }
    return set;
}

// Shapes without a finite area (planes) belong to the ground and are never loosened.
bool HasFiniteArea(const GeomEntity& shape) {
    const float area = shape.GetGeom()->Area();
    return area > 0 && math::IsFinite(area);
}

// A body of its own for the shape, taken from whatever held it.
void FreeGeom(const GeomEntity& shape) {
    const physics::BodyPtr body(new physics::Body());
    body->SetGeom(shape.GetGeom());
    physics::Simulation::Get().AddBody(body);
}

// Gives each finite shape of the group that the test picks a body of its own. With act
// false it only tells whether there is one.
bool FreeShapesWhere(const Group& group, bool act,
                     bool (*held)(const physics::BodyPtr& body, const physics::BodyPtr& ground)) {
    const physics::BodyPtr& ground = physics::Simulation::Get().GetWorldBody();
    bool any = false;
    for (GeomEntity* shape : MembersOfKind<GeomEntity>(group, Scene::Get().GetEntities())) {
        if (HasFiniteArea(*shape) && held(shape->GetBody(), ground)) {
            any = true;
            if (act) {
                FreeGeom(*shape);
            }
        }
    }
    return any;
}

// The loosening steps, mildest first. With act false a step only tells whether it would
// free anything.
bool FreeFromGround(const Group& group, bool act) {
    return FreeShapesWhere(group, act,
                           [](const physics::BodyPtr& body, const physics::BodyPtr& ground) {
                               return body == ground;
                           });
}

bool FreeFromSharedBodies(const Group& group, bool act) {
    return FreeShapesWhere(group, act,
                           [](const physics::BodyPtr& body, const physics::BodyPtr& ground) {
                               return body && body != ground && body->GetGeoms().size() > 1;
                           });
}

bool RemoveFixJoints(const Group& group, bool act) {
    Scene& scene = Scene::Get();
    util::HashSet<physics::GeomPtr> geoms;
    for (GeomEntity* shape : MembersOfKind<GeomEntity>(group, scene.GetEntities())) {
        geoms.insert(shape->GetGeom());
    }
    std::vector<EntityPtr> joints;
    for (const EntityPtr& entity : scene.GetEntities()) {
        const auto* joint = dynamic_cast<const FixJointEntity*>(entity.Get());
        if (joint && (group.Contains(entity) || geoms.Contains(joint->GetGeom(0)) ||
                      geoms.Contains(joint->GetGeom(1)))) {
            joints.push_back(entity);
        }
    }
    if (act) {
        for (const EntityPtr& joint : joints) {
            scene.RemoveEntity(joint);
        }
    }
    return !joints.empty();
}

using LoosenStep = bool (*)(const Group&, bool);
constexpr LoosenStep kLoosenSteps[] = {FreeFromGround, FreeFromSharedBodies, RemoveFixJoints};

// The colour of each member from the function, each keeping its own opacity.
bool Recolor(const Group& group, const char* label, const std::function<math::Vec4()>& next) {
    const std::vector<EntityPtr> members = LiveMembers(group);
    return RecordStep(label, [&]() {
        for (const EntityPtr& entity : members) {
            math::Vec4 color = next();
            color.w = entity->color->Get().w;
            entity->color->SetNative(color);
        }
        return !members.empty();
    });
}

}  // namespace

bool RecordStep(const char* label, const std::function<bool()>& change) {
    const SnapshotPtr before(new Snapshot());
    if (!change()) {
        return false;
    }
    Undoer::Get().AddSnapshotStep(before, label);
    return true;
}

std::vector<EntityPtr> LiveMembers(const Group& group) {
    return group.InOrder(Scene::Get().GetEntities());
}

bool EraseMembers(const Group& group) {
    const std::vector<EntityPtr> members = LiveMembers(group);
    if (members.empty()) {
        return false;
    }
    Undoer::Get().Do(ActionPtr(new EraseEntities("UndoErase", ToSet(members))));
    return true;
}

bool CloneBeside(const Group& group) {
    const Group live(ToSet(LiveMembers(group)));
    return RecordStep("UndoClone", [&live]() {
        if (live.empty()) {
            return false;
        }
        Scene& scene = Scene::Get();
        const GroupPtr clones = scene.CloneGroup(live);
        // Right of the originals with a small gap, so that the two don't collide.
        const math::BoundingBox2f box = live.GetBoundingBox();
        const bool usable = !box.IsEmpty() && box.IsFinite();
        const float shift = usable ? box.Width() * 1.1f + 0.1f : 1.0f;
        scene.TransformEntities(*clones, physics::Transform::FromAngle(0, math::Vec2(shift, 0)));
        scene.GetSelection()->Clear();
        scene.GetSelection()->Add(*clones);
        return true;
    });
}

bool Liquify(const Group& group) {
    const std::vector<EntityPtr> members = LiveMembers(group);
    return RecordStep("UndoLiquify", [&members]() {
        const int maxPoints = App::IsAlive() ? App::Get().GetModel().maxSPHSpawn->Get()
                                             : FiniteGeomEntity::kDefaultMaxSPHSpawn;
        physics::Simulation& sim = physics::Simulation::Get();
        bool any = false;
        for (const EntityPtr& entity : members) {
            const auto* shape = dynamic_cast<const FiniteGeomEntity*>(entity.Get());
            if (!shape) {
                continue;
            }
            const math::Vec2List points = shape->GetLiquidPoints(maxPoints);
            Scene::Get().RemoveEntity(entity);
            for (const math::Vec2& point : points) {
                sim.AddParticle(
                    physics::ParticlePtr(new physics::Particle(point, math::Vec2(0, 0))));
            }
            any = true;
        }
        return any;
    });
}

bool GlueToBackground(const Group& group) {
    const Group live(ToSet(LiveMembers(group)));
    return RecordStep("UndoGlue", [&live]() { return live.Glue(); });
}

bool BringToFront(const Group& group) {
    // The drawing order is no step of the history, as with shift and the wheel.
    Scene::Get().MoveToFront(group);
    return true;
}

bool SendToBack(const Group& group) {
    Scene::Get().MoveToBack(group);
    return true;
}

bool DissolveChains(const Group& group) {
    const std::vector<EntityPtr> members = LiveMembers(group);
    return RecordStep("UndoDissolveChain", [&members]() {
        std::vector<EntityPtr> links;
        util::HashSet<ChainPtr> seen;
        for (const EntityPtr& entity : members) {
            const ChainPtr chain = entity->GetChain();
            if (chain && seen.insert(chain).second) {
                for (const EntityPtr& link : chain->GetEntities()) {
                    links.push_back(link);
                }
            }
        }
        for (const EntityPtr& link : links) {
            link->SetChain(ChainPtr());
        }
        return !links.empty();
    });
}

bool CenterHinges(const Group& group) {
    const std::vector<HingeEntity*> hinges =
        MembersOfKind<HingeEntity>(group, Scene::Get().GetEntities());
    return RecordStep("UndoCenterHinge", [&hinges]() {
        const physics::GeomPtr& ground = physics::Simulation::Get().GetWorldGeom();
        bool any = false;
        for (HingeEntity* hinge : hinges) {
            // The end that turns a shape of its own; the ground has no centre.
            const physics::GeomPtr& first = hinge->GetGeom(0);
            const physics::GeomPtr& geom = first && first != ground ? first : hinge->GetGeom(1);
            if (!geom || geom == ground || !math::IsFinite(geom->Area())) {
                continue;
            }
            const math::Vec2 centre = geom->GetPosition();
            const math::Vec2 points[2] = {centre, centre};
            hinge->Attach(points);
            any = true;
        }
        return any;
    });
}

EntityPtr TransformIntoCircle(const PolyEntityPtr& polyEnt) {
    CODE_ASSERT(polyEnt);
    const physics::Polygon& polygon = polyEnt->GetPolygon();
    const float area = polygon.Area();
    if (!(area > 0) || !math::IsFinite(area)) {
        return EntityPtr();
    }
    // The polygon's frame has its centre of mass at the origin: the circle takes it as is.
    const util::SharedPtr<physics::Circle> circle(new physics::Circle(std::sqrt(area / math::Pi)));
    circle->SetTransform(polygon.GetTransform());
    const util::SharedPtr<CircleEntity> circleEnt(new CircleEntity(circle));
    circleEnt->CopyAttributes(*polyEnt);

    Scene& scene = Scene::Get();
    // Into the polygon's body: what was glued or moving stays so.
    if (const physics::BodyPtr body = polyEnt->GetBody()) {
        body->AddGeom(circle);
    }
    scene.AddEntity(EntityPtr(circleEnt));

    const physics::GeomPtr& old = polyEnt->GetGeom();
    const physics::GeomPtr newGeom(circle);
    const auto local = [&circle](const math::Vec2& world) {
        return circle->GetInverseTransform().Apply(world);
    };
    for (const EntityPtr& entity : std::vector<EntityPtr>(scene.GetEntities())) {
        if (auto* joint = dynamic_cast<JointEntity*>(entity.Get())) {
            if (joint->GetGeom(0) != old && joint->GetGeom(1) != old) {
                continue;
            }
            physics::GeomPtr geoms[2];
            math::Vec2 locals[2];
            for (int end = 0; end < 2; ++end) {
                const bool moves = joint->GetGeom(end) == old;
                geoms[end] = moves ? newGeom : joint->GetGeom(end);
                locals[end] = moves ? local(joint->GetWorld(end)) : joint->GetLocal(end);
            }
            joint->SetEnds(geoms[0], locals[0], geoms[1], locals[1]);
        } else if (auto* pen = dynamic_cast<PenEntity*>(entity.Get())) {
            if (pen->GetGeom() == old) {
                pen->SetGeom(newGeom, local(pen->GetWorldPoint()));
            }
        }
    }
    scene.RemoveEntity(EntityPtr(polyEnt));
    return EntityPtr(circleEnt);
}

bool TurnIntoCircles(const Group& group) {
    const std::vector<EntityPtr> members = LiveMembers(group);
    return RecordStep("UndoToCircle", [&members]() {
        const GroupPtr& selection = Scene::Get().GetSelection();
        bool any = false;
        for (const EntityPtr& entity : members) {
            const PolyEntityPtr polygon(dynamic_cast<PolyEntity*>(entity.Get()));
            if (!polygon) {
                continue;
            }
            const bool selected = selection->Contains(entity);
            const EntityPtr circle = TransformIntoCircle(polygon);
            if (circle && selected) {
                selection->Add(circle);
            }
            any = any || circle;
        }
        return any;
    });
}

bool CanLoosen(const Group& group) {
    for (const LoosenStep step : kLoosenSteps) {
        if (step(group, false)) {
            return true;
        }
    }
    return false;
}

bool Loosen(const Group& group) {
    const Group live(ToSet(LiveMembers(group)));
    return RecordStep("UndoLoosen", [&live]() {
        for (const LoosenStep step : kLoosenSteps) {
            if (step(live, true)) {
                return true;
            }
        }
        return false;
    });
}

bool RandomColors(const Group& group) {
    const char* label = LiveMembers(group).size() == 1 ? "UndoRandomColor" : "UndoRandomColors";
    return Recolor(group, label, []() { return EntityColorSource::Next(); });
}

bool SetColors(const Group& group, const math::Vec4& color) {
    return Recolor(group, "UndoSliderChange", [&color]() { return color; });
}

void NewScene() {
    RecordStep("UndoNewScene", []() {
        Scene::Get().New();
        return true;
    });
}

void PasteSceneCode(const math::Vec2& world) {
    const util::String text = os::GetClipboardText();
    if (text.empty()) {
        return;
    }
    Scene& scene = Scene::Get();
    const SnapshotPtr before(new Snapshot());
    try {
        const GroupPtr pasted = Serializer::Get().Deserialize(text);
        if (!pasted || pasted->empty()) {
            return;
        }
        const math::BoundingBox2f box = pasted->GetBoundingBox();
        if (!box.IsEmpty() && box.IsFinite()) {
            scene.TransformEntities(*pasted,
                                    physics::Transform::FromAngle(0, world - box.Centre()));
        }
        scene.GetSelection()->Clear();
        scene.GetSelection()->Add(*pasted);
        Undoer::Get().AddSnapshotStep(before, "UndoCodePaste");
    } catch (const std::exception& e) {
        before->Restore();
        Log(logging::Warning, "An error occurred while pasting: " + util::String(e.what()));
    }
}

bool EraseAllWater() {
    return RecordStep("UndoErase", []() {
        if (physics::Simulation::Get().GetParticles().empty()) {
            return false;
        }
        Scene::Get().EraseWater(false);
        return true;
    });
}

void ShowPopupAt(const gui::ComponentPtr& popup, const math::Vec2& guiPoint) {
    if (!popup || !App::IsAlive()) {
        return;
    }
    if (auto* widget = dynamic_cast<Widget*>(popup.Get())) {
        widget->PlaceNear(guiPoint);
    }
    App::Get().GetAppGUI()->ShowPopup(popup);
}

gui::ComponentPtr FindPopup(const util::String& name) {
    if (App::IsAlive()) {
        for (const gui::ComponentPtr& popup :
             App::Get().GetAppGUI()->GetPopupLayer()->GetChildren()) {
            const auto* widget = dynamic_cast<const Widget*>(popup.Get());
            if (widget && widget->GetWidgetName() == name) {
                return popup;
            }
        }
    }
    return gui::ComponentPtr();
}

void CloseAllPopups() {
    if (App::IsAlive()) {
        App::Get().GetAppGUI()->ClosePopups();
    }
}

}  // namespace app
