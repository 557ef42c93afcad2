#include "app/tools/HingeTool.h"

#include "app/Scene.h"
#include "app/entities/HingeEntity.h"

namespace app {

HingeTool::HingeTool() : ClickCreateTool("HingeTool", "UndoHinge") {}

HingeTool::~HingeTool() = default;

EntityPtr HingeTool::Create(const math::Vec2& point) const {
    util::SharedPtr<HingeEntity> hinge(
        new HingeEntity(Scene::Get().GetCamera().GetDefaultJointSize()));
    const math::Vec2 points[2] = {point, point};
    hinge->Attach(points);
    // Over a joint or a pen on the background there is no second geom: nothing to hold.
    if (!hinge->GetGeom(0)) {
        return EntityPtr();
    }
    return hinge;
}

}  // namespace app
