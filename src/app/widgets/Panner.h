#pragma once

#include "app/widgets/InfDraggable.h"

namespace app {

// Moves the view with a drag on its picture: the view goes the way of the mouse, twice as
// far, which is the other way from the scene's movement under the pan tool.
class Panner : public InfDraggable {
public:
    // The picture that suits it, in the data tree.
    static constexpr const char* kImage = "tools/pan.png";

    explicit Panner(const rendering::TextureHandle& texture = rendering::TextureHandle(),
                    float size = 32);
    ~Panner() override;

protected:
    void Dragged(const math::Vec2& delta) override;
};

}  // namespace app
