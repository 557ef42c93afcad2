#pragma once

#include <vector>

#include "app/widgets/Window.h"

namespace app {

// How the simulation is doing, a few times a second: its speed against real time, and how
// many bodies, contacts and water particles it moves.
class SimInfo : public Window {
public:
    enum Row { kSpeed, kBodies, kContacts, kParticles, kRowCount };

    SimInfo();
    ~SimInfo() override;

    void Update(float dt) override;
    // What a row shows beside its caption.
    const util::String& GetValue(Row row) const;

    // Seconds between two refreshes.
    static constexpr float kRefreshSeconds = 0.25f;

private:
    void Refresh();

    std::vector<gui::ComponentPtr> m_rows;
    float m_sinceRefresh = 0;
    double m_lastSimulated = 0;
    // Simulated seconds a real second, smoothed; negative until measured.
    double m_speed = -1;
};

}  // namespace app
