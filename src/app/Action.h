#pragma once

#include "util/ClassTracker.h"
#include "util/Pointee.h"

namespace app {

class Action;
using ActionPtr = util::SharedPtr<Action>;

// One step of the undo history. The label is the text key of the undo and redo buttons'
// tooltips ("UndoMove" and so on); it points at a string that lives as long as the program.
class Action : public util::Pointee, public util::ClassTracker<Action> {
public:
    explicit Action(const char* label) : m_label(label) {}
    ~Action() override = default;

    const char* GetLabel() const { return m_label; }

    // Makes the change for the first time.
    virtual void Do() = 0;
    virtual void Undo() = 0;
    // Makes the change again after an Undo; by default as the first time.
    virtual void Redo() { Do(); }

private:
    const char* m_label;
};

}  // namespace app
