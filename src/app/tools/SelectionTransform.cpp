#include "app/tools/SelectionTransform.h"

#include <cmath>

#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/entities/GeomEntity.h"
#include "physics/Body.h"
#include "physics/Simulation.h"
#include "util/HashSet.h"

namespace app {

bool SelectionTransform::TakeAt(const math::Vec2& world) {
    Scene& scene = Scene::Get();
    const EntityPtr entity = scene.GetEntityAt(world);
    if (!entity) {
        return false;
    }
    if (!scene.GetSelection()->Contains(entity)) {
        scene.SelectAt(world);
    }
    return true;
}

void SelectionTransform::Begin(const SnapshotPtr& before) {
    Scene& scene = Scene::Get();
    m_before = before;
    m_moved = false;
    m_entities =
        scene.GetSelection()->GetTransformSet(scene.GetEntities(), scene.GetModifiers().alt);
    for (const EntityPtr& entity : m_entities) {
        entity->BeginTransform();
    }
}

void SelectionTransform::Apply(const physics::Transform& transform) {
    if (!IsActive()) {
        return;
    }
    const physics::Transform identity;
    if (transform.rotation == identity.rotation && transform.translation == identity.translation) {
        return;
    }
    for (const EntityPtr& entity : m_entities) {
        entity->Transform(transform);
    }
    m_moved = true;
}

void SelectionTransform::Finish(const char* label, bool force) {
    if (!IsActive()) {
        return;
    }
    // Each moved body is rebuilt once from its geoms as they now lie, so that its centre
    // and frame match where the shapes went. The ground has no frame to speak of.
    const physics::Body* ground = physics::Simulation::Get().GetWorldBody().Get();
    util::HashSet<physics::Body*> bodies;
    for (const EntityPtr& entity : m_entities) {
        if (const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get())) {
            physics::Body* body = shape->GetBody().Get();
            if (body && body != ground) {
                bodies.insert(body);
            }
        }
    }
    for (physics::Body* body : bodies) {
        body->RecalcGeoms();
    }
    EndAll();
    const SnapshotPtr before = m_before;
    m_before.Reset();
    if (m_moved || force) {
        Undoer::Get().AddSnapshotStep(before, label);
    }
}

bool SelectionTransform::Revert() {
    if (!IsActive()) {
        return false;
    }
    EndAll();
    // Cleared first: the restore clears the scene, which cancels the tool in force, and
    // that may be the one reverting.
    const SnapshotPtr before = m_before;
    m_before.Reset();
    before->Restore();
    return true;
}

void SelectionTransform::EndAll() {
    const std::vector<EntityPtr> entities = std::move(m_entities);
    m_entities.clear();
    for (const EntityPtr& entity : entities) {
        entity->EndTransform();
    }
}

physics::Transform RotationAbout(const math::Vec2& pivot, float angle) {
    physics::Transform rotation = physics::Transform::FromAngle(angle, math::Vec2(0, 0));
    rotation.translation = pivot - rotation.ApplyToVector(pivot);
    return rotation;
}

}  // namespace app
