#pragma once

#include <vector>

#include "app/entities/Entity.h"
#include "math/BoundingBox2.h"
#include "util/CallbackSet.h"
#include "util/HashSet.h"
#include "util/Pointee.h"
#include "util/String.h"

namespace app {

class Group;
using GroupPtr = util::SharedPtr<Group>;
using EntitySet = util::HashSet<EntityPtr>;

// A named set of entities that tells its listeners of every change. The selection is one,
// the camera's followed entities another; an unnamed group is a passing answer.
class Group : public util::Pointee {
public:
    Group() = default;
    explicit Group(const util::String& name) : m_name(name) {}
    explicit Group(const EntitySet& entities) : m_entities(entities) {}
    explicit Group(const EntityPtr& entity);

    const util::String& GetName() const { return m_name; }
    void SetName(const util::String& name) { m_name = name; }

    void Add(const EntityPtr& entity);
    void Add(const Group& other);
    void Remove(const EntityPtr& entity);
    void Remove(const Group& other);
    void Clear();

    const EntitySet& GetEntities() const { return m_entities; }
    size_t size() const { return m_entities.size(); }
    bool empty() const { return m_entities.empty(); }
    bool Contains(const EntityPtr& entity) const { return m_entities.Contains(entity); }

    // The members in the order they stand in the list, for walks whose result must not
    // depend on where the members lie in memory.
    std::vector<EntityPtr> InOrder(const std::vector<EntityPtr>& order) const;

    // The union of the members' finite boxes; the inverted box when there is none.
    math::BoundingBox2f GetBoundingBox() const;

    // A's members that are not in b.
    static GroupPtr Without(const Group& a, const Group& b);

    // Fixes every member's geom to the ground; true when any moved.
    bool Glue() const;

    // What a transform of the group must move: with the members, with alt not held, the
    // geoms that share their bodies, the joints whose ends all lie among those, and the
    // pens on them; what is fixed to the ground stays.
    // The scene's entities give the order and what hangs on the members.
    std::vector<EntityPtr> GetTransformSet(const std::vector<EntityPtr>& scene, bool altHeld) const;

    util::CallbackSet& GetOnChange() { return m_onChange; }

private:
    util::String m_name;
    EntitySet m_entities;
    util::CallbackSet m_onChange;
};

}  // namespace app
