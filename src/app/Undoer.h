#pragma once

#include <deque>

#include "app/Action.h"
#include "app/Snapshot.h"
#include "util/CallbackSet.h"
#include "util/Singleton.h"

namespace app {

// The undo and redo stacks. Every change of the scene a user makes becomes one action
// here; the oldest are dropped beyond the limit, and with them the last references to
// entities erased long ago.
class Undoer : public util::Pointee, public util::Singleton<Undoer> {
public:
    using Stack = std::deque<ActionPtr>;

    static constexpr int kDefaultMaxUndo = 25;

    Undoer();
    ~Undoer() override;
    Undoer(const Undoer&) = delete;
    Undoer& operator=(const Undoer&) = delete;

    // A new step: redo is gone, the action does its change and goes on the undo stack.
    void Do(const ActionPtr& action);
    // A step whose change has happened already: pushed without calling Do.
    void AddDone(const ActionPtr& action);
    // The change from the snapshot to the scene as it is now, which has happened already:
    // redo is gone, and the step goes on the undo stack with a snapshot of now.
    void AddSnapshotStep(const SnapshotPtr& before, const char* label);
    // Each does nothing on an empty stack.
    void Undo();
    void Redo();
    // Drops the oldest actions of both stacks beyond the limit.
    void TrimStacks();
    // Empties both stacks.
    void Clear();

    // The limit of each stack; a lower one takes effect at the next change of a stack.
    int GetMaxUndo() const { return m_maxUndo; }
    void SetMaxUndo(int maxUndo) { m_maxUndo = maxUndo; }

    const Stack& GetUndoStack() const { return m_undoStack; }
    const Stack& GetRedoStack() const { return m_redoStack; }
    // The label of the action Undo or Redo would take, or null for an empty stack.
    const char* GetUndoLabel() const;
    const char* GetRedoLabel() const;

    // Called after every change of the stacks.
    util::CallbackSet& GetOnChange() { return m_onChange; }

private:
    // Takes the top action of one stack through the step onto the other.
    void Shift(Stack& from, Stack& to, void (Action::*step)());
    void Trim(Stack& stack) const;
    void Changed();

    Stack m_undoStack;
    Stack m_redoStack;
    int m_maxUndo = kDefaultMaxUndo;
    util::CallbackSet m_onChange;
};

}  // namespace app
