#include "app/tools/PenTool.h"

#include "app/Scene.h"
#include "app/entities/PenEntity.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

namespace app {

PenTool::PenTool() : ClickCreateTool("PenTool", "UndoPen") {}

PenTool::~PenTool() = default;

EntityPtr PenTool::Create(const math::Vec2& point) const {
    const physics::GeomPtr geom = Scene::Get().GetGeomAt(point);
    // A pen on the ground would leave the scene at the next frame: a click on a joint over
    // the background makes none.
    if (geom == physics::Simulation::Get().GetWorldGeom()) {
        return EntityPtr();
    }
    PenEntityPtr pen(new PenEntity(Scene::Get().GetCamera().GetDefaultJointSize()));
    pen->SetGeom(geom, geom->GetInverseTransform().Apply(point));
    return pen;
}

}  // namespace app
