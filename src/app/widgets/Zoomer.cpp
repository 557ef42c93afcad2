#include "app/widgets/Zoomer.h"

#include "app/Scene.h"

namespace app {

Zoomer::Zoomer(const rendering::TextureHandle& texture, float size)
    : InfDraggable(texture, size, size) {
    SetReflectedName("Zoomer");
}

Zoomer::~Zoomer() = default;

void Zoomer::Dragged(const math::Vec2& delta) {
    // The window's y grows downward: a drag up is a negative delta.
    Scene::Get().GetCamera().ZoomBy(-delta.y / kUnitsPerStep);
    InfDraggable::Dragged(delta);
}

}  // namespace app
