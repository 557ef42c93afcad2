#pragma once

#include "math/Vector2.h"
#include "math/Vector3.h"
#include "math/Vector4.h"
#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/String.h"

namespace app {

// What the object "App" offers without a window: its settings (drawing, water, undo,
// gestures), the undo and redo commands, and the advance of simulated time. The program's
// application root and the shell's stand-in both hold one, so scripts and scene files see
// the same App in both.
class AppModel {
public:
    // Registers the attributes, in the order the object lists them, and the commands on the
    // object published as "App".
    explicit AppModel(script::Reflected& app);

    // The frame's share of simulated time: the simulation, then the scene, then its camera.
    void Update(float dt);

    float GetDPI() const { return dpi->Get(); }

    script::AttribPtr<util::String> language;
    // Line width and point size of the entity pass, in pixels.
    script::AttribPtr<float> lineWidth;
    script::AttribPtr<float> pointSize;
    // Debug overlays.
    script::AttribPtr<bool> drawOBBs;
    script::AttribPtr<bool> drawMapOBBs;
    script::AttribPtr<bool> drawBCs;
    script::AttribPtr<bool> drawVertices;
    script::AttribPtr<bool> drawCollisions;
    script::AttribPtr<bool> drawParticleCenters;
    script::AttribPtr<bool> drawBodyCenters;
    // Kept for scripts and files that set them.
    script::AttribPtr<math::Vec2> polyTCFactor;
    script::AttribPtr<math::Vec3> selectColor;
    // The echo of the previous frame: black switches it off.
    script::AttribPtr<math::Vec3> fadeColor;
    script::AttribPtr<math::Vec2> fadeScale;
    script::AttribPtr<math::Vec2> fadeTranslate;
    script::AttribPtr<float> fadeRotate;
    // Stroke sampling, in inches of the screen.
    script::AttribPtr<float> minPointDist;
    script::AttribPtr<float> maxPointDist;
    // Pixels an inch of the screen: every size given in inches follows it.
    script::AttribPtr<float> dpi;
    script::AttribPtr<int> maxSPHSpawn;
    script::AttribPtr<float> waterElongation;
    script::AttribPtr<float> waterMaxElongation;
    script::AttribPtr<float> metaCutoff;
    // Of a shape's border, in inches.
    script::AttribPtr<float> borderWidth;
    script::AttribGetSetPtr<int> maxUndo;
    script::AttribPtr<float> autosaveTime;
    script::AttribPtr<float> chainDensityFactor;
    script::AttribPtr<float> dragToolStrength;
    script::AttribPtr<math::Vec4> waterColor;
    script::AttribPtr<bool> simpleWater;
    script::AttribPtr<float> waterFanceyFactor;
    // Every shape draws its border, not only selected ones and those under the mouse.
    script::AttribPtr<bool> borders;
};

// "App" where there is no window: the shell's, and the program's until the window side
// publishes its own.
class HeadlessApp : public script::Reflected {
public:
    HeadlessApp();
    ~HeadlessApp() override;

    AppModel& GetModel() { return m_model; }

private:
    AppModel m_model;
};

}  // namespace app
