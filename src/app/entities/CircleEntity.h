#pragma once

#include "app/entities/FiniteGeomEntity.h"
#include "physics/Shapes.h"

namespace app {

// A circle. Its file key "radius" is the circle's radius.
class CircleEntity : public FiniteGeomEntity {
public:
    explicit CircleEntity(util::SharedPtr<physics::Circle> circle);

    EntityPtr Clone() const override;
    void Serialize(AttributeMap& out) const override;
    void Deserialize(const AttributeMap& in) override;

    physics::Circle& GetCircle() const { return *m_circle; }

private:
    util::SharedPtr<physics::Circle> m_circle;
};

}  // namespace app
