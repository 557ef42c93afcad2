#include "app/entities/PenEntity.h"

#include <algorithm>

#include "app/Scene.h"
#include "math/MathUtil.h"
#include "physics/AbstractBody.h"
#include "physics/Geom.h"
#include "physics/Simulation.h"

namespace app {

PenEntity::PenEntity(float penSize) : Entity("Pen") {
    AddAttrib(size, "size", penSize);
    AddAttrib(fadeTime, "fadeTime", 10.0f);
    physics::Simulation& sim = physics::Simulation::Get();
    m_time = sim.GetSimulatedTime();
    sim.GetStepCallbacks().Add(util::WeakPtr<util::Pointee>(this),
                               [this](float) { OnSimUpdate(); });
}

PenEntity::~PenEntity() = default;

PenEntityPtr PenEntity::ClonePen() const {
    PenEntityPtr clone(new PenEntity(Scene::Get().GetCamera().GetDefaultJointSize()));
    clone->CopyAttributes(*this);
    return clone;
}

void PenEntity::SetGeom(const physics::GeomPtr& geom, const math::Vec2& localPoint) {
    m_geom = geom;
    m_localPoint = localPoint;
    m_worldPoint = GetWorldPoint();
}

math::Vec2 PenEntity::GetWorldPoint() const {
    if (IsTransforming() || !m_geom) {
        return m_worldPoint;
    }
    return m_geom->GetTransform().Apply(m_localPoint);
}

bool PenEntity::IsInSimulation() const {
    if (!m_geom || m_geom == physics::Simulation::Get().GetWorldGeom()) {
        return false;
    }
    const physics::AbstractBody* body = m_geom->GetBody();
    return body && body->IsInWorld();
}

void PenEntity::BeginTransform() {
    m_worldPoint = GetWorldPoint();
    Entity::BeginTransform();
}

void PenEntity::Transform(const physics::Transform& transform) {
    m_worldPoint = transform.Apply(m_worldPoint);
}

void PenEntity::EndTransform() {
    Entity::EndTransform();
    if (!m_geom || m_geom->Dist(m_worldPoint) > 0.001f) {
        m_geom = Scene::Get().GetGeomAt(m_worldPoint);
    }
    if (m_geom != physics::Simulation::Get().GetWorldGeom()) {
        m_localPoint = m_geom->GetTransform().Inverted().Apply(m_worldPoint);
    }
}

bool PenEntity::Contains(const math::Vec2& point) const {
    return (point - GetWorldPoint()).Length() <= size->Get() / 2;
}

bool PenEntity::IntersectsLines(const physics::LineList& stroke) const {
    return StrokePassesNear(stroke, GetWorldPoint(), size->Get() / 2);
}

bool PenEntity::IsInside(const physics::Polygon& polygon) const {
    return polygon.Dist(GetWorldPoint()) < 0;
}

math::BoundingBox2f PenEntity::GetBoundingBox() const {
    math::BoundingBox2f box;
    box.Add(GetWorldPoint());
    return box.Expanded(size->Get() / 2);
}

void PenEntity::OnSimUpdate() {
    m_time = physics::Simulation::Get().GetSimulatedTime();
    while (m_trail.size() > kMaxTrailPoints) {
        m_trail.pop_front();
    }
    while (!m_trail.empty() && m_time - m_trail.front().time > kMaxTrailAge) {
        m_trail.pop_front();
    }
    if (m_trail.size() >= 2) {
        // A pen at rest replaces its newest point instead of adding ever more.
        const float inch = Scene::IsAlive() ? Scene::Get().GetCamera().GetInchInWorld() : 0.0f;
        const float d = std::min(0.1f * inch, 0.1f * size->Get());
        const size_t n = m_trail.size();
        if ((m_trail[n - 1].position - m_trail[n - 2].position).Length() < d) {
            m_trail.pop_back();
        }
    }
    const math::Vec2 at = GetWorldPoint();
    if (!m_trail.empty() && m_trail.back().position == at) {
        return;
    }
    m_trail.push_back({m_time, at, math::Vec2(0, 0)});
    const size_t n = m_trail.size();
    if (n < 2) {
        return;
    }
    const auto perpendicular = [](const math::Vec2& from, const math::Vec2& to) {
        const math::Vec2 along = math::Normalized(to - from);
        return math::Vec2(-along.y, along.x);
    };
    m_trail[n - 1].normal = perpendicular(m_trail[n - 2].position, m_trail[n - 1].position);
    if (n == 2) {
        m_trail[0].normal = m_trail[1].normal;
    } else {
        m_trail[n - 2].normal = perpendicular(m_trail[n - 3].position, m_trail[n - 1].position);
    }
}

void PenEntity::Draw(Painter& painter) const {
    const float penSize = size->Get();
    const float fade = fadeTime->Get();
    const math::Vec4 fill = color->Get();
    if (m_trail.size() >= 2 && fade > 0) {
        m_trailVertices.clear();
        for (size_t i = FindBegin(); i < m_trail.size(); ++i) {
            const TrailPoint& point = m_trail[i];
            // Below 0 for the point before the fade, so that the strip reaches 0 between
            // the two, where the fade time runs out.
            const float age = static_cast<float>(m_time - point.time);
            m_trailVertices.push_back({point.position, point.normal, 1 - age / fade});
        }
        painter.Trail(m_trailVertices.data(), m_trailVertices.size(), 0.7f * penSize, fill);
    }
    const math::Vec2 at = GetWorldPoint();
    painter.Sprite("dot", at, penSize, 0, fill);
    if (selected || mouseOver) {
        painter.Sprite("ring", at, 1.3f * penSize, 0, GetBorderColor());
    }
}

size_t PenEntity::FindBegin() const {
    size_t i = 0;
    while (i < m_trail.size() && m_time - m_trail[i].time > fadeTime->Get()) {
        ++i;
    }
    return i > 0 ? i - 1 : 0;
}

}  // namespace app
