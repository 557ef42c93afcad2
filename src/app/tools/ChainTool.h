#pragma once

#include <vector>

#include "app/Chain.h"
#include "app/Snapshot.h"
#include "app/entities/CircleEntity.h"
#include "app/tools/Tool.h"
#include "input/Events.h"
#include "physics/Forward.h"

namespace app {

// Draws a chain along the drag: round links, each hinged to the one before, hanging from
// what lies under the start and tied to what lies under the end. Links go into the scene as
// the drag grows; the whole chain is one undo step, and Escape takes all of it back.
class ChainTool : public Tool {
public:
    // A link's radius in inches of the screen: links are as big as the view shows them,
    // and spaced at twice this.
    static constexpr float kLinkRadiusInches = 0.125f;
    // The most links one drag makes: a wild jump of the mouse must not flood the world.
    static constexpr size_t kMaxLinks = 1000;

    ChainTool();
    ~ChainTool() override;

    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    // Takes the links made so far out of the scene.
    bool Cancel() override;
    util::String GetCursorName() const override { return "crosshair"; }

    // The chain the drag is making; null between drags.
    const ChainPtr& GetChain() const { return m_chain; }

private:
    // Adds links toward the world point while a whole link fits; none with Shift held, so
    // that the chain goes on straight from where it stands.
    void Grow(const math::Vec2& point);
    // One link along the unit direction, hinged to what the chain hangs from.
    void AddLink(const math::Vec2& direction);
    // A hinge between the local points of the two geoms, into the chain's place and the
    // scene.
    EntityPtr AddHinge(size_t index, const physics::GeomPtr& geom0, const math::Vec2& local0,
                       const physics::GeomPtr& geom1, const math::Vec2& local1);
    // Ties the last link to what lies under the end, if it should be tied.
    void TieEnd(const math::Vec2& point);
    // Forgets the drag; what it made stays in the scene.
    void Reset();

    ChainPtr m_chain;
    SnapshotPtr m_before;
    // In the order they were made.
    std::vector<EntityPtr> m_made;
    util::SharedPtr<CircleEntity> m_lastLink;
    size_t m_links = 0;
    physics::GeomPtr m_startGeom;
    math::Vec2 m_startLocal{0, 0};
    // Where the next link begins.
    math::Vec2 m_end{0, 0};
    float m_radius = 0;
};

}  // namespace app
