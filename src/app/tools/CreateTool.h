#pragma once

#include "app/entities/Entity.h"
#include "app/entities/GeomEntity.h"
#include "app/tools/Tool.h"
#include "input/Events.h"
#include "math/Vector2.h"

namespace app {

// Adds a new shape as one undo step: the scene before it, the shape (on the ground body when
// glued) and the step. A failure is logged under the shape's name, and leaves the scene as it
// was. True when the shape is in.
bool AddShapeStep(const util::SharedPtr<GeomEntity>& shape, bool glue, const char* label,
                  const char* what);

// The tools that place one entity with a single left click on something: hinge, fix joint,
// pen. A click on the empty background makes nothing and stays unhandled.
class ClickCreateTool : public Tool {
public:
    ~ClickCreateTool() override;

    void OnClick(input::ClickEvent& event) override;
    util::String GetCursorName() const override { return "crosshair"; }

protected:
    ClickCreateTool(const util::String& name, const char* label);

    // The new entity at the clicked world point, not yet in the scene; null when nothing
    // useful can go there.
    virtual EntityPtr Create(const math::Vec2& point) const = 0;

private:
    const char* m_label;
};

// The tools that draw one shape with a drag from a start point: box, circle, plane. A drag
// that starts on an entity is left to the selection and the moving tools unless free
// drawing is on; a circle or a plane is previewed by an entity that is not in the
// simulation until the drag ends.
class ShapeDragTool : public Tool {
public:
    ~ShapeDragTool() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // The preview, if any.
    void Draw(Painter& painter) override;
    bool Cancel() override;
    util::String GetCursorName() const override { return "crosshair"; }

    // The shape the drag would make now; null while there is none.
    const util::SharedPtr<GeomEntity>& GetPreview() const { return m_preview; }

protected:
    explicit ShapeDragTool(const util::String& name);

    // The mouse is at the world point, a usable one, while the drag lasts and once more at
    // its end.
    virtual void Follow(const math::Vec2& /*point*/) {}
    // The drag ended, after the last Follow.
    virtual void Finish(const math::Vec2& point) = 0;

    const math::Vec2& GetStart() const { return m_start; }
    // The mouse in the world as it lies now: the view may have moved since the last event.
    math::Vec2 GetMouse() const { return ToWorld(m_mouseGui); }
    void SetPreview(const util::SharedPtr<GeomEntity>& preview) { m_preview = preview; }

private:
    math::Vec2 m_start{0, 0};
    math::Vec2 m_mouseGui{0, 0};
    util::SharedPtr<GeomEntity> m_preview;
};

}  // namespace app
