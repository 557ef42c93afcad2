#pragma once

#include <vector>

#include "gui/AttribBinding.h"
#include "gui/Checkbox.h"

namespace gui {

class MultiAttribCheckbox;
using MultiAttribCheckboxPtr = util::SharedPtr<MultiAttribCheckbox>;
using BoolAttribWeakPtr = util::WeakPtr<script::TAttrib<bool>>;

// A checkbox for a switch that several objects have. It shows the first attribute's
// state, read again each frame, and a click writes the new state to all of them. The
// attributes are watched, not held: dead ones are skipped.
class MultiAttribCheckbox : public Checkbox {
public:
    MultiAttribCheckbox(const util::String& text, std::vector<BoolAttribWeakPtr> attribs);
    ~MultiAttribCheckbox() override;

    void Update(float dt) override;

    const std::vector<BoolAttribWeakPtr>& GetAttribs() const { return m_binding.GetAttribs(); }
    void SetAttribs(std::vector<BoolAttribWeakPtr> attribs);
    bool HasLiveAttrib() const { return m_binding.HasLive(); }
    // Shows the first live attribute's state.
    void Refresh();

protected:
    void CheckedChanged() override;

private:
    AttribBinding<bool> m_binding;
};

}  // namespace gui
