#pragma once

#include <vector>

#include "app/Snapshot.h"
#include "app/entities/Entity.h"
#include "app/tools/Tool.h"
#include "math/BoundingBox2.h"
#include "math/Matrix3.h"

namespace app {

// Resizes the selection by handles on its box: one at each corner and one at the middle of
// each side. A corner scales both axes about the opposite corner, a side's handle its own
// axis about the opposite side; with Shift both axes keep their ratio. The preview moves
// only the drawing; at the end the resized copies replace the originals in one step.
class ScaleTool : public Tool {
public:
    // The handles, clockwise from the top left corner.
    enum Handle {
        kNone = -1,
        kNorthWest,
        kNorth,
        kNorthEast,
        kEast,
        kSouthEast,
        kSouth,
        kSouthWest,
        kWest,
        kHandleCount
    };

    ScaleTool();
    ~ScaleTool() override;

    void OnMouseMove(input::MouseMoveEvent& event) override;
    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    void Update(float dt) override;
    // The box and its handles, or while resizing the box as it will be.
    void Draw(Painter& painter) override;
    // Drops the preview; the scene was not changed yet.
    bool Cancel() override;
    // The arrow along the axes of the handle under the mouse, or of the one held.
    util::String GetCursorName() const override;

    // The handle at the world point, on the selection's box, or none.
    static Handle HandleAt(const math::Vec2& world);
    // Where the handle sits on the box.
    static math::Vec2 HandlePosition(const math::BoundingBox2f& box, Handle handle);

private:
    // The scale of the present gesture with the mouse at the window point, as a world
    // matrix.
    math::Mat3 ScaleFor(const math::Vec2& gui) const;
    void SetPreview(const math::Mat3& transform);

    Handle m_hover = kNone;
    Handle m_handle = kNone;
    math::BoundingBox2f m_box;
    SnapshotPtr m_before;
    std::vector<EntityPtr> m_entities;
    math::Mat3 m_preview = math::Mat3::Identity();
};

}  // namespace app
