#pragma once

#include "script/Attributes.h"
#include "script/Reflected.h"

namespace app {

// What the object "App" offers without a window: the undo history's limit, the screen's
// resolution in pixels an inch, the undo and redo commands, and the advance of simulated
// time. The program's application root and
// the shell's stand-in both hold one, so scripts see the same App in both.
class AppModel {
public:
    // Registers the attributes and commands on the object published as "App".
    explicit AppModel(script::Reflected& app);

    // The frame's share of simulated time: the simulation, then the scene, then its camera.
    void Update(float dt);

    float GetDPI() const { return m_dpi->Get(); }

private:
    script::AttribGetSetPtr<int> m_maxUndo;
    script::AttribPtr<float> m_dpi;
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
