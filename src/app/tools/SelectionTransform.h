#pragma once

#include <vector>

#include "app/Snapshot.h"
#include "app/entities/Entity.h"
#include "math/Vector2.h"
#include "physics/Transform.h"

namespace app {

// One gesture's transform of the selection, shared by the move and rotate tools: the scene
// as it was, the entities the transform carries, and either one undo step at the end or
// the scene put back as it was.
class SelectionTransform {
public:
    // The entity under the point: when it is not selected, what a click there takes becomes
    // the selection. False when nothing lies there.
    static bool TakeAt(const math::Vec2& world);

    // The scene as it was before the gesture, taken by the caller, and the entities a
    // transform of the selection carries, each told that a transform begins.
    void Begin(const SnapshotPtr& before);
    bool IsActive() const { return bool(m_before); }
    // Composed onto every carried entity.
    void Apply(const physics::Transform& transform);
    // Ends the transform and records the change with the label; nothing is recorded when
    // nothing moved, unless forced.
    void Finish(const char* label, bool force);
    // Drops the gesture and puts the scene back from the snapshot; false when there was
    // none.
    bool Revert();

private:
    // Every carried entity ends its transform; the list goes.
    void EndAll();

    SnapshotPtr m_before;
    std::vector<EntityPtr> m_entities;
    bool m_moved = false;
};

// A rotation by the angle about the point.
physics::Transform RotationAbout(const math::Vec2& pivot, float angle);

}  // namespace app
