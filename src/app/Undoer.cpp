#include "app/Undoer.h"

#include <algorithm>

#include "app/Actions.h"

namespace app {

Undoer::Undoer() = default;

Undoer::~Undoer() = default;

void Undoer::Do(const ActionPtr& action) {
    m_redoStack.clear();
    action->Do();
    AddDone(action);
}

void Undoer::AddDone(const ActionPtr& action) {
    m_redoStack.clear();
    m_undoStack.push_back(action);
    TrimStacks();
    Changed();
}

void Undoer::AddSnapshotStep(const SnapshotPtr& before, const char* label) {
    // Redo goes first: its snapshots may hold the last references to erased entities.
    m_redoStack.clear();
    AddDone(ActionPtr(new SnapshotRestorer(label, before, SnapshotPtr(new Snapshot()))));
}

void Undoer::Undo() {
    Shift(m_undoStack, m_redoStack, &Action::Undo);
}

void Undoer::Redo() {
    Shift(m_redoStack, m_undoStack, &Action::Redo);
}

void Undoer::Shift(Stack& from, Stack& to, void (Action::*step)()) {
    if (from.empty()) {
        return;
    }
    const ActionPtr action = from.back();
    from.pop_back();
    (action.Get()->*step)();
    to.push_back(action);
    Trim(to);
    Changed();
}

void Undoer::TrimStacks() {
    Trim(m_undoStack);
    Trim(m_redoStack);
}

void Undoer::Clear() {
    m_undoStack.clear();
    m_redoStack.clear();
    Changed();
}

const char* Undoer::GetUndoLabel() const {
    return m_undoStack.empty() ? nullptr : m_undoStack.back()->GetLabel();
}

const char* Undoer::GetRedoLabel() const {
    return m_redoStack.empty() ? nullptr : m_redoStack.back()->GetLabel();
}

void Undoer::Trim(Stack& stack) const {
    // A limit below zero keeps nothing, as zero does.
    const size_t limit = static_cast<size_t>(std::max(m_maxUndo, 0));
    while (stack.size() > limit) {
        stack.pop_front();
    }
}

void Undoer::Changed() {
    m_onChange.CallAll();
}

}  // namespace app
