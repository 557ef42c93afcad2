#pragma once

#include <functional>
#include <vector>

#include "app/Camera.h"
#include "app/Group.h"
#include "app/entities/Entity.h"
#include "physics/Forward.h"
#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/CallbackSet.h"
#include "util/HashSet.h"
#include "util/Singleton.h"

namespace app {

// The modifier keys that change what a click selects.
struct Modifiers {
    bool shift = false;
    bool ctrl = false;
    bool alt = false;
};

// Everything the user built: the entities from bottom to top, the named groups, the
// selection and the camera. It answers what lies under a point, runs the update of each
// frame, and keeps entities and physics consistent as things come and go.
class Scene : public script::Reflected, public util::Singleton<Scene> {
public:
    Scene();
    ~Scene() override;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // Appends and adds to the simulation; null is ignored.
    void AddEntity(const EntityPtr& entity);
    // Out of the list, out of every group, out of the simulation.
    void RemoveEntity(const EntityPtr& entity);
    const std::vector<EntityPtr>& GetEntities() const { return m_entities; }

    // Under the point, topmost first.
    std::vector<EntityPtr> GetEntitiesAt(const math::Vec2& point) const;
    EntityPtr GetEntityAt(const math::Vec2& point) const;
    // What a click on the point takes: the entity with its chain and its groups, or with
    // alt held the entity alone.
    GroupPtr GetEntityGroupAt(const math::Vec2& point) const;
    // The geoms under the point, topmost first, with the ground last: never empty.
    std::vector<physics::GeomPtr> GetGeomsAt(const math::Vec2& point) const;
    physics::GeomPtr GetGeomAt(const math::Vec2& point) const;
    // The geoms of the shapes that are in the simulation.
    util::HashSet<physics::GeomPtr> GetSimGeoms() const;

    // Stable, by depth; then each depth becomes the entity's place.
    void SortByZ();
    void RenumberZ();
    void MoveToBack(const Group& group);
    void MoveToFront(const Group& group);
    // All begin, then all move, then all end: joints reattach only once everything moved.
    void TransformEntities(const Group& group, const physics::Transform& transform);

    GroupPtr GetGroup(const util::String& name) const;
    GroupPtr GetOrCreateGroup(const util::String& name);
    void AddGroup(const GroupPtr& group);
    void RemoveGroup(const GroupPtr& group);
    const util::HashSet<GroupPtr>& GetGroups() const { return m_groups; }
    const GroupPtr& GetSelection() const { return m_selection; }

    // Into the selection by the modifier keys: added to an empty one, replacing it with
    // none held, taken out with shift, added with ctrl.
    void Select(const Group& group);
    bool SelectInside(const physics::Polygon& polygon);
    bool SelectAt(const math::Vec2& point);

    // Copies the members with their bodies, joints between them, pens on them and their
    // chains, into the scene; the copies as a new group.
    GroupPtr CloneGroup(const Group& group);
    // The same through a scale and a rigid placement: a mirror or a resize.
    GroupPtr CloneGroupTransformed(const Group& group, const math::Mat3& transform);

    // Drops the bodies no entity uses any more.
    void FlushBodies();
    // Once a frame: entities update, those that lost their physics leave, empty groups go.
    void Update(float dt);
    // Steps the world as if it were running, each step a frame of its own: formulas, the
    // scene's update, then the step. For runs without a window.
    void RunSteps(long count);
    // After a load: depths in order, unused bodies gone.
    void FinishLoading();
    // The view fits the scene, water included.
    void ZoomToScene();

    // Empties the scene and the world; settings stay.
    void Clear();
    // Clear, and every setting back to the value it was made with.
    void New();
    // Removes water: all of it, or only what lies in the selected shapes.
    void EraseWater(bool selectedOnly);

    Camera& GetCamera() const { return *m_camera; }
    const CameraPtr& GetCameraPtr() const { return m_camera; }

    // Told first thing at every clear: tools drop their strokes, windows bound to groups
    // close.
    util::CallbackSet& GetOnClear() { return m_onClear; }
    // Where the state of the modifier keys comes from; none held without one.
    void SetModifierSource(std::function<Modifiers()> source) { m_modifiers = std::move(source); }
    Modifiers GetModifiers() const { return m_modifiers ? m_modifiers() : Modifiers(); }

    script::AttribPtr<util::String> title;
    script::AttribPtr<util::String> author;
    script::AttribPtr<util::String> description;

private:
    // Both clone operations: plain copies without a transform, else scaled, placed and
    // reattached where they land.
    GroupPtr CloneGroupWith(const Group& group, const math::Mat3* transform);

    std::vector<EntityPtr> m_entities;
    util::HashSet<GroupPtr> m_groups;
    GroupPtr m_selection;
    CameraPtr m_camera;
    util::CallbackSet m_onClear;
    std::function<Modifiers()> m_modifiers;
};

}  // namespace app
