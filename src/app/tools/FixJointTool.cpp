#include "app/tools/FixJointTool.h"

#include "app/Scene.h"
#include "app/entities/FixJointEntity.h"

namespace app {

FixJointTool::FixJointTool() : ClickCreateTool("FixJointTool", "UndoFixate") {}

FixJointTool::~FixJointTool() = default;

EntityPtr FixJointTool::Create(const math::Vec2& point) const {
    util::SharedPtr<FixJointEntity> joint(
        new FixJointEntity(Scene::Get().GetCamera().GetDefaultJointSize()));
    const math::Vec2 points[2] = {point, point};
    joint->Attach(points);
    // Over a joint or a pen on the background there is no second geom: nothing to hold.
    if (!joint->GetGeom(0)) {
        return EntityPtr();
    }
    return joint;
}

}  // namespace app
