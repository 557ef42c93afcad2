#pragma once

#include "gui/AbstractToggleButton.h"

namespace gui {

class AbstractRadioButton;
using AbstractRadioButtonPtr = util::SharedPtr<AbstractRadioButton>;
class RadioGroup;

// A toggle that a click only ever checks. In a group, checking one unchecks the others;
// the group decides, so that it always knows which one is selected.
class AbstractRadioButton : public AbstractToggleButton {
public:
    explicit AbstractRadioButton(const util::String& name = "AbstractRadioButton",
                                 const util::String& text = "");
    ~AbstractRadioButton() override;

    void SetChecked(bool checked) override;
    // Null when it belongs to no group, or the group has gone.
    RadioGroup* GetGroup() const;

protected:
    void Clicked() override;

private:
    friend class RadioGroup;
    void SetGroup(RadioGroup* group);
    void SetCheckedByGroup(bool checked) { ApplyChecked(checked, true); }

    util::WeakPtr<RadioGroup> m_group;
};

}  // namespace gui
