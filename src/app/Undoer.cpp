#include "app/Undoer.h"

#include <algorithm>

namespace app {

Undoer::Undoer() = default;

Undoer::~Undoer() = default;

void Undoer::Do(const ActionPtr& action) {
    m_redoStack.clear();
    action->Do();
    m_undoStack.push_back(action);
    TrimStacks();
    Changed();
}

void Undoer::AddDone(const ActionPtr& action) {
    m_redoStack.clear();
    m_undoStack.push_back(action);
    TrimStacks();
    Changed();
}

void Undoer::Undo() {
    if (m_undoStack.empty()) {
        return;
    }
    const ActionPtr action = m_undoStack.back();
    m_undoStack.pop_back();
    action->Undo();
    m_redoStack.push_back(action);
    Trim(m_redoStack);
    Changed();
}

void Undoer::Redo() {
    if (m_redoStack.empty()) {
        return;
    }
    const ActionPtr action = m_redoStack.back();
    m_redoStack.pop_back();
    action->Redo();
    m_undoStack.push_back(action);
    Trim(m_undoStack);
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
