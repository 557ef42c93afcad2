#include "app/widgets/Panner.h"

#include "app/Scene.h"

namespace app {

Panner::Panner(const rendering::TextureHandle& texture, float size)
    : InfDraggable(texture, size, size) {
    SetReflectedName("Panner");
}

Panner::~Panner() = default;

void Panner::Dragged(const math::Vec2& delta) {
    Scene::Get().GetCamera().Translate(delta * -2.0f);
    InfDraggable::Dragged(delta);
}

}  // namespace app
