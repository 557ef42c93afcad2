#pragma once

#include <deque>
#include <vector>

#include "app/Painter.h"
#include "app/entities/Entity.h"
#include "physics/Forward.h"

namespace app {

class PenEntity;
using PenEntityPtr = util::SharedPtr<PenEntity>;

// Rides on a geom and leaves a trail that fades. The trail grows at every simulation step
// in which the pen moved, and keeps its last 100000 points of the last ten minutes.
class PenEntity : public Entity {
public:
    static constexpr size_t kMaxTrailPoints = 100000;
    static constexpr double kMaxTrailAge = 600.0;

    struct TrailPoint {
        double time;
        math::Vec2 position;
        math::Vec2 normal;
    };
    using Trail = std::deque<TrailPoint>;

    explicit PenEntity(float size);
    ~PenEntity() override;

    // A new pen of the default size with this one's attributes, on nothing.
    PenEntityPtr ClonePen() const;

    // On the geom at a point of its local frame; the ground for a free world point.
    void SetGeom(const physics::GeomPtr& geom, const math::Vec2& localPoint);
    const physics::GeomPtr& GetGeom() const { return m_geom; }
    const math::Vec2& GetLocalPoint() const { return m_localPoint; }
    // Where the pen is: the point of record while transforming, else on its geom.
    math::Vec2 GetWorldPoint() const;

    // Pens have no physics of their own.
    void AddToSimulation() override {}
    void RemoveFromSimulation() override {}
    // On a geom other than the ground whose body is in the simulation.
    bool IsInSimulation() const override;
    void BeginTransform() override;
    void Transform(const physics::Transform& transform) override;
    // Takes hold of what lies under the point: the same geom if it still covers it.
    void EndTransform() override;
    bool Contains(const math::Vec2& point) const override;
    bool IntersectsLines(const physics::LineList& stroke) const override;
    bool IsInside(const physics::Polygon& polygon) const override;
    math::BoundingBox2f GetBoundingBox() const override;
    // The trail from just before the fade time, fading with age, then the dot.
    void Draw(Painter& painter) const override;

    // Once a simulation step.
    void OnSimUpdate();
    const Trail& GetTrail() const { return m_trail; }
    void SetTrail(const Trail& trail) { m_trail = trail; }
    // The first point the drawing starts at: one before the first within the fade time.
    size_t FindBegin() const;

    script::AttribPtr<float> size;
    script::AttribPtr<float> fadeTime;

private:
    physics::GeomPtr m_geom;
    math::Vec2 m_localPoint{0, 0};
    math::Vec2 m_worldPoint{0, 0};
    double m_time;
    Trail m_trail;
    // The trail as the painter takes it, kept between frames so that a long trail costs no
    // allocation each frame.
    mutable std::vector<TrailVertex> m_trailVertices;
};

}  // namespace app
