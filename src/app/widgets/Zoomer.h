#pragma once

#include "app/widgets/InfDraggable.h"

namespace app {

// Zooms the view with a drag on its picture: up zooms in, down zooms out, a step of the
// camera's zoom factor per few pixels.
class Zoomer : public InfDraggable {
public:
    // GUI units of upward motion for one step of the zoom factor.
    static constexpr float kUnitsPerStep = 10;

    explicit Zoomer(const rendering::TextureHandle& texture = rendering::TextureHandle(),
                    float size = 32);
    ~Zoomer() override;

protected:
    void Dragged(const math::Vec2& delta) override;
};

}  // namespace app
