#pragma once

#include "app/widgets/Window.h"

namespace app {

// The strip at the top of the screen: run and pause, undo and redo with the step each
// would take in its tooltip, the simulated time, and buttons that open the other windows.
// The reduced interface keeps only the first three. It can be folded, never closed.
class SimControl : public Window {
public:
    SimControl();
    ~SimControl() override;

    // Follows the simulation, the undo history and the interface mode.
    void Update(float dt) override;

    const SymbolButtonPtr& GetRunButton() const { return m_run; }
    const SymbolButtonPtr& GetUndoButton() const { return m_undo; }
    const SymbolButtonPtr& GetRedoButton() const { return m_redo; }
    // The simulated time as shown; empty in the reduced set.
    util::String GetTimeText() const;
    bool ShowsReducedSet() const { return m_reduced; }

    // Starts the simulation as one undo step, or pauses it, as the space key does.

    // "12.4 s".
    static util::String FormatTime(double seconds);

private:
    // The controls of the mode, afresh.
    void Build(bool reduced);
    // Symbols, enabled states, tooltips and the time as things stand now.
    void Refresh();

    SymbolButtonPtr m_run;
    SymbolButtonPtr m_undo;
    SymbolButtonPtr m_redo;
    gui::ComponentPtr m_time;
    bool m_reduced = false;
    // What the tooltips say now, so that they are made again only on a change.
    util::String m_undoTip;
    util::String m_redoTip;
    bool m_runTipRunning = false;
};

}  // namespace app
