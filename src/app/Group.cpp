#include "app/Group.h"

#include <algorithm>

#include "app/entities/GeomEntity.h"
#include "app/entities/JointEntity.h"
#include "app/entities/PenEntity.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"
#include "util/Assert.h"

namespace app {

Group::Group(const EntityPtr& entity) {
    Add(entity);
}

void Group::Add(const EntityPtr& entity) {
    CODE_ASSERT(entity);
    if (m_entities.insert(entity).second) {
        m_onChange.CallAll();
    }
}

void Group::Add(const Group& other) {
    for (const EntityPtr& entity : other.m_entities) {
        Add(entity);
    }
}

void Group::Remove(const EntityPtr& entity) {
    if (m_entities.erase(entity)) {
        m_onChange.CallAll();
    }
}

void Group::Remove(const Group& other) {
    for (const EntityPtr& entity : other.m_entities) {
        Remove(entity);
    }
}

void Group::Clear() {
    if (!m_entities.empty()) {
        m_entities.clear();
        m_onChange.CallAll();
    }
}

std::vector<EntityPtr> Group::InOrder(const std::vector<EntityPtr>& order) const {
    std::vector<EntityPtr> members;
    for (const EntityPtr& entity : order) {
        if (m_entities.Contains(entity)) {
            members.push_back(entity);
        }
    }
    return members;
}

math::BoundingBox2f Group::GetBoundingBox() const {
    math::BoundingBox2f box;
    for (const EntityPtr& entity : m_entities) {
        const math::BoundingBox2f entityBox = entity->GetBoundingBox();
        if (!entityBox.IsEmpty() && entityBox.IsFinite()) {
            box.Add(entityBox);
        }
    }
    return box;
}

GroupPtr Group::Without(const Group& a, const Group& b) {
    GroupPtr result(new Group());
    for (const EntityPtr& entity : a.m_entities) {
        if (!b.Contains(entity)) {
            result->m_entities.insert(entity);
        }
    }
    return result;
}

bool Group::Glue() const {
    physics::Simulation& sim = physics::Simulation::Get();
    const physics::BodyPtr& ground = sim.GetWorldBody();
    bool moved = false;
    for (const EntityPtr& entity : m_entities) {
        auto* shape = dynamic_cast<GeomEntity*>(entity.Get());
        if (!shape) {
            continue;
        }
        const physics::BodyPtr body = shape->GetBody();
        if (body == ground) {
            continue;
        }
        if (body) {
            if (body->GetGeoms().size() == 1) {
                sim.RemoveBody(body);
            } else {
                body->RemoveGeom(shape->GetGeom());
            }
        }
        ground->AddGeom(shape->GetGeom());
        moved = true;
    }
    return moved;
}

std::vector<EntityPtr> Group::GetTransformSet(const std::vector<EntityPtr>& scene,
                                              bool altHeld) const {
    if (altHeld) {
        return InOrder(scene);
    }
    const physics::AbstractBody* ground = physics::Simulation::Get().GetWorldBody().Get();
    // The bodies the members move; what is fixed to the ground stays.
    util::HashSet<const physics::AbstractBody*> bodies;
    for (const EntityPtr& entity : m_entities) {
        if (const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get())) {
            const physics::AbstractBody* body = shape->GetGeom()->GetBody();
            if (body && body != ground) {
                bodies.insert(body);
            }
        }
    }
    const auto moves = [&](const physics::GeomPtr& geom) {
        return geom && bodies.Contains(geom->GetBody());
    };
    std::vector<EntityPtr> set;
    for (const EntityPtr& entity : scene) {
        bool taken = m_entities.Contains(entity);
        if (const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get())) {
            taken = taken || moves(shape->GetGeom());
        } else if (const auto* joint = dynamic_cast<const JointEntity*>(entity.Get())) {
            taken = taken || (moves(joint->GetGeom(0)) && moves(joint->GetGeom(1)));
        } else if (const auto* pen = dynamic_cast<const PenEntity*>(entity.Get())) {
            taken = taken || moves(pen->GetGeom());
        }
        if (taken) {
            set.push_back(entity);
        }
    }
    return set;
}

}  // namespace app
