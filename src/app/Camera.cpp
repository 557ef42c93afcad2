#include "app/Camera.h"

#include <algorithm>
#include <cmath>

#include "app/Scene.h"
#include "app/entities/GeomEntity.h"
#include "math/MathUtil.h"
#include "physics/Geom.h"
#include "util/Assert.h"

namespace app {

Camera::Camera() : script::Reflected("Camera") {
    AddAttrib(pan, "pan", &Camera::GetPan, &Camera::StorePan, math::Vec2(0, 0));
    AddAttrib(zoom, "zoom", &Camera::GetZoom, &Camera::StoreZoom, kDefaultZoom);
}

Camera::~Camera() = default;

math::Vec2 Camera::GetCentre() const {
    return (m_viewMin + m_viewMax) * 0.5f;
}

math::Mat3 Camera::GetTransform() const {
    const math::Vec2 c = GetCentre();
    return math::Mat3(m_zoom, 0, c.x - m_zoom * m_pan.x, 0, -m_zoom, c.y + m_zoom * m_pan.y, 0, 0,
                      1);
}

math::Mat3 Camera::GetInverted() const {
    const math::Mat3 transform = GetTransform();
    const float det = transform.Determinant();
    CODE_ASSERT(det != 0);
    return math::Inverted(transform);
}

math::Vec2 Camera::GUIToWorld(const math::Vec2& window) const {
    // A view beyond the float range gives no finite point; callers cope with that.
    return GetInverted().TransformPoint(window);
}

math::Vec2 Camera::GUIToWorldDelta(const math::Vec2& window) const {
    return math::Vec2(window.x / m_zoom, -window.y / m_zoom);
}

math::Vec2 Camera::WorldToGUI(const math::Vec2& world) const {
    return GetTransform().TransformPoint(world);
}

void Camera::StorePan(const math::Vec2& newPan) {
    if (math::IsFinite(newPan)) {
        m_pan = newPan;
    }
}

void Camera::StoreZoom(float newZoom) {
    // Not a number goes to the lower limit, like every other bad value.
    m_zoom = newZoom >= kMinZoom ? std::min(newZoom, kMaxZoom) : kMinZoom;
}

void Camera::SetPan(const math::Vec2& newPan) {
    pan->SetNative(newPan);
}

void Camera::SetZoom(float newZoom) {
    zoom->SetNative(newZoom);
}

void Camera::Translate(const math::Vec2& pixels) {
    SetPan(m_pan - GUIToWorldDelta(pixels));
}

void Camera::ZoomBy(float steps) {
    SetZoom(m_zoom * std::pow(m_zoomFactor, steps));
}

void Camera::SetTransform(const math::Mat3& transform) {
    const math::Vec2 c = GetCentre();
    SetZoom(transform(0, 0));
    // The matrix's translation is c - zoom * pan in x and c + zoom * pan in y.
    const float z = transform(0, 0);
    if (z > 0) {
        SetPan(math::Vec2((c.x - transform(0, 2)) / z, (transform(1, 2) - c.y) / z));
    }
}

void Camera::FitBox(const math::BoundingBox2f& box) {
    const math::Vec2 view = m_viewMax - m_viewMin;
    const math::Vec2 size = box.Size() * 1.2f;
    // A box of no extent on an axis sets no limit there.
    const float zoomX = size.x > 0 ? view.x / size.x : kMaxZoom;
    const float zoomY = size.y > 0 ? view.y / size.y : kMaxZoom;
    SetZoom(std::min(zoomX, zoomY));
    SetPan(box.Centre());
}

void Camera::Reset() {
    SetZoom(kDefaultZoom);
    SetPan(math::Vec2(0, 0));
    SetTrackedGroup(nullptr);
}

void Camera::SetTrackedGroup(const GroupPtr& group) {
    if (group == m_tracked) {
        return;
    }
    if (m_tracked && !m_tracked->GetName().empty() && Scene::IsAlive()) {
        Scene::Get().RemoveGroup(m_tracked);
    }
    m_tracked = group;
    if (m_tracked) {
        m_tracked->SetName("tracked");
        if (Scene::IsAlive()) {
            Scene::Get().AddGroup(m_tracked);
        }
        m_lastTracked = GetTrackedCentre();
    }
}

math::Vec2 Camera::GetTrackedCentre() const {
    const EntitySet& members = m_tracked->GetEntities();
    if (members.size() == 1) {
        if (const auto* geom = dynamic_cast<const GeomEntity*>(members.begin()->Get())) {
            return geom->GetGeom()->GetPosition();
        }
    }
    const math::BoundingBox2f box = m_tracked->GetBoundingBox();
    if (box.IsEmpty()) {
        return math::Vec2(NAN, NAN);
    }
    return box.Centre();
}

void Camera::Update(float) {
    // A script may have asked for a zoom beyond the limits: its side follows the clamp.
    SetZoom(m_zoom);
    if (!m_tracked) {
        return;
    }
    const math::Vec2 centre = GetTrackedCentre();
    if (!m_userPanning) {
        if (!math::IsFinite(centre)) {
            SetTrackedGroup(nullptr);
            return;
        }
        SetPan(m_pan + centre - m_lastTracked);
    }
    m_lastTracked = centre;
}

void Camera::SetViewport(const math::Vec2& min, const math::Vec2& max) {
    m_viewMin = min;
    m_viewMax = max;
}

}  // namespace app
