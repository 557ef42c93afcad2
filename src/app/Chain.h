#pragma once

#include <vector>

#include "app/entities/Entity.h"
#include "util/HashSet.h"
#include "util/Pointee.h"

namespace app {

class Chain;
using ChainPtr = util::SharedPtr<Chain>;

// The links of a chain and the joints between them, by place: a click takes the whole.
// An erased member leaves an empty place, so that loading and undo can put it back.
class Chain : public util::Pointee {
public:
    Chain();
    ~Chain() override;

    // Grows the chain to hold the index; asserts "index < 100000".
    void AddEntity(size_t index, const EntityPtr& entity);
    // The place of the entity, or -1.
    int GetIndex(const Entity* entity) const;
    // The members still alive, in order.
    std::vector<EntityPtr> GetEntities() const;
    size_t GetSize() const { return m_entities.size(); }

    // The members linked to the given one: the places before and after it, and with
    // includeLast the whole chain beyond. Empty for a non-member and for either end.
    util::HashSet<EntityPtr> GetNeighbors(const EntityPtr& entity, bool includeLast) const;

    // The number a file writes as "chain".
    int GetNumber() const { return m_number; }
    void SetNumber(int number) { m_number = number; }

private:
    std::vector<util::WeakPtr<Entity>> m_entities;
    int m_number;
};

}  // namespace app
