#pragma once

#include "app/entities/SpringEntity.h"
#include "app/tools/Tool.h"
#include "input/Events.h"
#include "physics/Forward.h"

namespace app {

// Drags a spring from what lies under the start, the ground included, to what lies under the
// end. While the drag lasts a preview spring pulls from the start toward the mouse; it is in
// the simulation, not in the scene. A spring from a geom to itself is none.
class SpringTool : public Tool {
public:
    SpringTool();
    ~SpringTool() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // The preview's free end follows the mouse.
    void Update(float dt) override;
    void Draw(Painter& painter) override;
    // Takes the preview out of the simulation.
    bool Cancel() override;
    util::String GetCursorName() const override { return "crosshair"; }

    const util::SharedPtr<SpringEntity>& GetPreview() const { return m_preview; }

private:
    // Puts the preview's free end on the ground at the world point.
    void MoveFreeEnd(const math::Vec2& point);

    util::SharedPtr<SpringEntity> m_preview;
    physics::GeomPtr m_startGeom;
    math::Vec2 m_startLocal{0, 0};
    math::Vec2 m_mouseGui{0, 0};
};

}  // namespace app
