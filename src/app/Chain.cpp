#include "app/Chain.h"

#include "util/Assert.h"

namespace app {

namespace {

int s_nextNumber = 0;

}  // namespace

Chain::Chain() : m_number(s_nextNumber++) {}

Chain::~Chain() = default;

void Chain::AddEntity(size_t index, const EntityPtr& entity) {
    CODE_ASSERT(index < 100000);
    entity->SetChain(ChainPtr(this));
    if (m_entities.size() < index + 1) {
        m_entities.resize(index + 1);
    }
    m_entities[index] = entity;
}

int Chain::GetIndex(const Entity* entity) const {
    for (size_t i = 0; i < m_entities.size(); ++i) {
        if (m_entities[i].Get() == entity) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

std::vector<EntityPtr> Chain::GetEntities() const {
    std::vector<EntityPtr> alive;
    for (const util::WeakPtr<Entity>& entity : m_entities) {
        if (entity.Get()) {
            alive.emplace_back(entity.Get());
        }
    }
    return alive;
}

util::HashSet<EntityPtr> Chain::GetNeighbors(const EntityPtr& entity, bool includeLast) const {
    CODE_ASSERT(entity);
    util::HashSet<EntityPtr> neighbours;
    const int index = GetIndex(entity.Get());
    const int last = static_cast<int>(m_entities.size()) - 1;
    // The ends are what the chain hangs from: a click there takes the end alone.
    if (index <= 0 || index >= last) {
        return neighbours;
    }
    const int end = includeLast ? last : last - 1;
    for (int i = 1; i <= end; ++i) {
        if (m_entities[i].Get()) {
            neighbours.insert(EntityPtr(m_entities[i].Get()));
        }
    }
    return neighbours;
}

}  // namespace app
