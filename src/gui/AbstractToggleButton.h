#pragma once

#include "gui/AbstractButton.h"

namespace gui {

class AbstractToggleButton;
using AbstractToggleButtonPtr = util::SharedPtr<AbstractToggleButton>;

// A button with a checked state that each click flips. A change of the state, by a click
// or by SetChecked, calls the on-change callbacks (GetOnChange) before the click ones.
class AbstractToggleButton : public AbstractButton {
public:
    explicit AbstractToggleButton(const util::String& name = "AbstractToggleButton");
    ~AbstractToggleButton() override;

    bool IsChecked() const { return m_checked; }
    virtual void SetChecked(bool checked);

protected:
    void Clicked() override;
    // The state changed by the user or by SetChecked, not by ShowChecked.
    virtual void CheckedChanged() {}
    // Sets the state and, with notify, tells of it.
    void ApplyChecked(bool checked, bool notify);
    // Shows a state that comes from elsewhere, without telling anybody.
    void ShowChecked(bool checked) { ApplyChecked(checked, false); }

private:
    bool m_checked = false;
};

}  // namespace gui
