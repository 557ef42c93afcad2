#include "app/widgets/SimInfo.h"

#include <cmath>

#include "app/Language.h"
#include "app/widgets/OptionControls.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "physics/Simulation.h"

namespace app {
namespace {

constexpr const char* kCaptionKeys[] = {"SimInfo_Speed", "SimInfo_Bodies", "SimInfo_Contacts",
                                        "SimInfo_Particles"};
constexpr float kWidth = 170;
// The weight of the latest measure in the shown speed.
constexpr double kSmoothing = 0.4;

// A caption at the left and its value at the right end of a fixed width.
class InfoRow : public gui::Component {
public:
    explicit InfoRow(const util::String& key)
        : gui::Component("InfoRow"),
          m_caption(new gui::Label(Language::Get().Translate(key))),
          m_value(new gui::Label()) {
        m_caption->SetTextColor(gui::LookAndFeel::Get().GetDimTextColor());
        SetTooltipFor(*this, key);
        Add(gui::ComponentPtr(m_caption));
        Add(gui::ComponentPtr(m_value));
        SetSize(kWidth, m_caption->GetOuterSize().y);
    }

    const util::String& GetValue() const { return m_value->GetText(); }
    void SetValue(const util::String& value) {
        if (value != m_value->GetText()) {
            m_value->SetText(value);
            m_value->SetPosition(GetSize().x - m_value->GetOuterSize().x, 0);
        }
    }

private:
    gui::LabelPtr m_caption;
    gui::LabelPtr m_value;
};

}  // namespace

SimInfo::SimInfo() : Window("SimInfo", Language::Get().Translate("SimInfo")) {
    GetBody()->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, 2)));
    for (const char* key : kCaptionKeys) {
        m_rows.emplace_back(new InfoRow(key));
        GetBody()->Add(m_rows.back());
    }
    m_lastSimulated = physics::Simulation::Get().GetSimulatedTime();
    Refresh();
    PlaceByDefault(*this, DefaultPlace::BottomLeft);
}

SimInfo::~SimInfo() = default;

const util::String& SimInfo::GetValue(Row row) const {
    return static_cast<const InfoRow&>(*m_rows.at(row)).GetValue();
}

void SimInfo::Update(float dt) {
    Window::Update(dt);
    m_sinceRefresh += dt;
    if (m_sinceRefresh >= kRefreshSeconds) {
        Refresh();
    }
}

void SimInfo::Refresh() {
    const physics::Simulation& sim = physics::Simulation::Get();
    const double simulated = sim.GetSimulatedTime();
    const double advanced = simulated - m_lastSimulated;
    // A load or an undo sets the time back: no measure across that.
    if (!sim.running->Get() || advanced < 0) {
        m_speed = -1;
    } else if (m_sinceRefresh > 0) {
        const double speed = advanced / m_sinceRefresh;
        m_speed = m_speed < 0 ? speed : (1 - kSmoothing) * m_speed + kSmoothing * speed;
    }
    m_lastSimulated = simulated;
    m_sinceRefresh = 0;

    const Language& language = Language::Get();
    util::String speed =
        language.Translate(sim.running->Get() ? "SimInfo_Measuring" : "SimInfo_Paused");
    if (m_speed >= 0) {
        speed = std::to_string(std::lround(m_speed * 100)) + "%";
    }
    size_t bodies = 0;
    for (const physics::BodyPtr& body : sim.GetBodies()) {
        // The ground holds planes and glued shapes; it never moves.
        bodies += body != sim.GetWorldBody() ? 1 : 0;
    }
    const util::String values[kRowCount] = {speed, std::to_string(bodies),
                                            std::to_string(sim.GetContacts().size()),
                                            std::to_string(sim.GetParticles().size())};
    for (size_t i = 0; i < m_rows.size(); ++i) {
        static_cast<InfoRow&>(*m_rows[i]).SetValue(values[i]);
    }
}

}  // namespace app
