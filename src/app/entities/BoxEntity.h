#pragma once

#include "app/entities/FiniteGeomEntity.h"
#include "physics/Shapes.h"

namespace app {

// A box. Its file key "size" is the full width and height.
class BoxEntity : public FiniteGeomEntity {
public:
    explicit BoxEntity(util::SharedPtr<physics::Box> box);

    EntityPtr Clone() const override;
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;

    physics::Box& GetBox() const { return *m_box; }

private:
    util::SharedPtr<physics::Box> m_box;
};

}  // namespace app
