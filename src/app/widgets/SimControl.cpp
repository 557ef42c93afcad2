#include "app/widgets/SimControl.h"

#include <cmath>
#include <cstdio>

#include "app/Actions.h"
#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Language.h"
#include "app/Undoer.h"
#include "app/widgets/OptionControls.h"
#include "app/widgets/Tooltip.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "physics/Simulation.h"

namespace app {
namespace {

// The other windows, each opened and closed by a button of its own name.
constexpr const char* kOpened[] = {"File", "Options", "Help", "About"};

const math::Colour kReadOutFill(0.03f, 0.03f, 0.05f, 1);
const math::Colour kReadOutLine(0.3f, 0.34f, 0.42f, 1);

bool InReducedMode() {
    return App::IsAlive() && App::Get().GetAppGUI()->simpleMode->Get();
}

// A text in a sunken box of fixed size, right-aligned: a figure that changes every frame
// without making the row around it jump.
class ReadOut : public gui::Component {
public:
    ReadOut(const util::String& widest, float height)
        : gui::Component("ReadOut"), m_font(gui::LookAndFeel::Get().GetFont()) {
        SetSize(m_font->GetWidth(widest) + 2 * kPadding, height);
    }

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text) { m_text = text; }

    void DrawComp() override {
        gui::Component::DrawComp();
        gui::ColorScope color(GetColor());
        const math::Vec2 size = GetOuterSize();
        gui::FillRect(0, 0, size.x, size.y, kReadOutFill);
        gui::FrameRect(0, 0, size.x, size.y, 1, kReadOutLine);
        gui::ColorScope ink(gui::LookAndFeel::Get().GetForegroundColor());
        m_font->Draw(m_text, size.x - kPadding - m_font->GetWidth(m_text),
                     (size.y - m_font->GetLineHeight()) / 2);
    }

private:
    static constexpr float kPadding = 6;
    gui::FontFormaterPtr m_font;
    util::String m_text;
};

// Room between the groups of a row.
gui::ComponentPtr Gap() {
    const gui::ComponentPtr gap(new gui::Component("Gap"));
    gap->SetSize(WindowStyle::kSpacing, 1);
    return gap;
}

}  // namespace

SimControl::SimControl()
    : Window("SimControl", Language::Get().Translate("SimControl")),
      m_run(new SymbolButton(SymbolButton::Symbol::Play)),
      m_undo(new SymbolButton(SymbolButton::Symbol::Undo)),
      m_redo(new SymbolButton(SymbolButton::Symbol::Redo)) {
    SetClosable(false);
    GetBody()->SetLayout(gui::LayoutPtr(new gui::ListLayout(0, WindowStyle::kSpacing)));
    const util::WeakPtr<util::Pointee> self(this);
    m_run->GetOnClick().Add(self, []() { AppGUI::ToggleRunning(); });
    m_undo->GetOnClick().Add(self, []() { Undoer::Get().Undo(); });
    m_redo->GetOnClick().Add(self, []() { Undoer::Get().Redo(); });
    Build(InReducedMode());
    PlaceByDefault(*this, DefaultPlace::TopCentre);
}

SimControl::~SimControl() = default;

util::String SimControl::FormatTime(double seconds) {
    char figure[32];
    std::snprintf(figure, sizeof figure, "%.1f ", seconds);
    return figure + Language::Get().Translate("Seconds");
}

util::String SimControl::GetTimeText() const {
    return m_time ? static_cast<const ReadOut&>(*m_time).GetText() : util::String();
}

void SimControl::Build(bool reduced) {
    m_reduced = reduced;
    const gui::ComponentPtr& body = GetBody();
    body->RemoveAllChildren();
    for (const SymbolButtonPtr& button : {m_run, m_undo, m_redo}) {
        body->Add(gui::ComponentPtr(button));
    }
    m_time = gui::ComponentPtr();
    if (!reduced) {
        m_time = gui::ComponentPtr(new ReadOut("9999.9 s", m_run->GetOuterSize().y));
        SetTooltipFor(*m_time, "SimControl_Time");
        body->Add(m_time);
        body->Add(Gap());
        for (const char* name : kOpened) {
            const util::String widget = name;
            body->Add(gui::ComponentPtr(MakeOptionButton(widget, [widget]() {
                if (App::IsAlive()) {
                    App::Get().GetAppGUI()->ToggleWidget(widget);
                }
            })));
        }
    }
    // Made again for the new children.
    m_undoTip.clear();
    m_redoTip.clear();
    m_runTipRunning = !physics::Simulation::Get().running->Get();
    Refresh();
}

void SimControl::Refresh() {
    const Language& language = Language::Get();
    const bool running = physics::Simulation::Get().running->Get();
    if (running != m_runTipRunning) {
        m_runTipRunning = running;
        m_run->SetSymbol(running ? SymbolButton::Symbol::Pause : SymbolButton::Symbol::Play);
        SetTooltipFor(*m_run, running ? "SimControl_Pause" : "SimControl_Run");
    }
    // Each history button names the step it would take, or that there is none.
    const Undoer& undoer = Undoer::Get();
    const struct {
        const SymbolButtonPtr& button;
        const char* label;
        const char* prefixKey;
        const char* noneKey;
        util::String& tip;
    } history[] = {
        {m_undo, undoer.GetUndoLabel(), "Undo_Tooltip", "NothingToUndo", m_undoTip},
        {m_redo, undoer.GetRedoLabel(), "Redo_Tooltip", "NothingToRedo", m_redoTip},
    };
    for (const auto& entry : history) {
        const util::String tip =
            entry.label ? language.Translate(entry.prefixKey) + language.Translate(entry.label)
                        : language.Translate(entry.noneKey);
        if (tip != entry.tip) {
            entry.tip = tip;
            entry.button->SetTooltip(MakeTooltip(tip));
        }
        if (entry.button->IsEnabled() != (entry.label != nullptr)) {
            entry.button->SetEnabled(entry.label != nullptr);
        }
    }
    if (m_time) {
        static_cast<ReadOut&>(*m_time).SetText(
            FormatTime(physics::Simulation::Get().GetSimulatedTime()));
    }
}

void SimControl::Update(float dt) {
    Window::Update(dt);
    if (InReducedMode() != m_reduced) {
        // The strip keeps its middle where it was, wider or narrower.
        const float width = GetOuterSize().x;
        Build(!m_reduced);
        MoveBy(math::Vec2(std::round((width - GetOuterSize().x) / 2), 0));
    }
    Refresh();
}

}  // namespace app
