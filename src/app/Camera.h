#pragma once

#include "app/Group.h"
#include "math/BoundingBox2.h"
#include "math/Matrix3.h"
#include "math/Vector2.h"
#include "script/Attributes.h"
#include "script/Reflected.h"

namespace app {

class Camera;
using CameraPtr = util::SharedPtr<Camera>;

// Maps the world to window pixels, with y up in the world and down in the window, and
// follows a group of entities on request. Scripts reach it as a child of the scene.
class Camera : public script::Reflected {
public:
    static constexpr float kDefaultZoom = 150.0f;
    static constexpr float kMinZoom = 1.5f;
    static constexpr float kMaxZoom = 3000.0f;
    // Screen pixels per inch, until the application sets its own.
    static constexpr float kDefaultDPI = 86.0f;

    Camera();
    ~Camera() override;

    // World to window, and back.
    math::Mat3 GetTransform() const;
    math::Mat3 GetInverted() const;
    math::Vec2 GUIToWorld(const math::Vec2& window) const;
    // A window distance in world units: no translation.
    math::Vec2 GUIToWorldDelta(const math::Vec2& window) const;
    math::Vec2 WorldToGUI(const math::Vec2& world) const;

    const math::Vec2& GetPan() const { return m_pan; }
    float GetZoom() const { return m_zoom; }
    // Each writes through the attribute, clamped, and fires its callbacks.
    void SetPan(const math::Vec2& pan);
    void SetZoom(float zoom);
    // Pans by a window distance.
    void Translate(const math::Vec2& pixels);
    // Zooms by the zoom factor to the power of the steps.
    void ZoomBy(float steps);
    // Takes zoom and pan from a world-to-window matrix.
    void SetTransform(const math::Mat3& transform);
    // Centres the box and zooms so that it fills the view with a margin of a tenth of its
    // size on every side.
    void FitBox(const math::BoundingBox2f& box);
    // Zoom and pan as they were made; stops following.
    void Reset();

    // Follows the group, which is named "tracked"; null stops. A named group that was
    // followed before leaves the scene.
    void SetTrackedGroup(const GroupPtr& group);
    const GroupPtr& GetTrackedGroup() const { return m_tracked; }
    // Clamps the zoom, and moves the view by what the followed group moved since the last
    // update. A group with no finite centre ends the following.
    void Update(float dt);

    // The free part of the window that the view centres in, in pixels.
    void SetViewport(const math::Vec2& min, const math::Vec2& max);
    // While the pan tool is in force the user moves the view, and following holds still.
    void SetUserPanning(bool panning) { m_userPanning = panning; }
    void SetZoomFactor(float factor) { m_zoomFactor = factor; }
    void SetDPI(float dpi) { m_dpi = dpi; }

    // The world size of a pixel and of an inch of the screen at the present zoom.
    float GetPixelSize() const { return 1.0f / m_zoom; }
    float GetInchInWorld() const { return GetPixelSize() * m_dpi; }
    // The size a new joint gets.
    float GetDefaultJointSize() const { return GetInchInWorld() * 0.66667f; }

    script::AttribGetSetPtr<math::Vec2> pan;
    script::AttribGetSetPtr<float> zoom;

private:
    // What the attributes write: the pan if finite, the zoom clamped.
    void StorePan(const math::Vec2& newPan);
    void StoreZoom(float newZoom);
    math::Vec2 GetCentre() const;
    // The centre of the followed group: a lone shape's centre of mass, else the middle of
    // the members' finite boxes, else not a number.
    math::Vec2 GetTrackedCentre() const;

    math::Vec2 m_pan{0, 0};
    float m_zoom = kDefaultZoom;
    math::Vec2 m_viewMin{0, 0};
    math::Vec2 m_viewMax{800, 600};
    float m_zoomFactor = 1.1f;
    float m_dpi = kDefaultDPI;
    bool m_userPanning = false;
    GroupPtr m_tracked;
    math::Vec2 m_lastTracked{0, 0};
};

}  // namespace app
