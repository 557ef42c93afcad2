#include "gui/AbstractRadioButton.h"

#include "gui/RadioGroup.h"

namespace gui {

AbstractRadioButton::AbstractRadioButton(const util::String& name, const util::String& text)
    : AbstractToggleButton(name, text) {}

AbstractRadioButton::~AbstractRadioButton() = default;

RadioGroup* AbstractRadioButton::GetGroup() const {
    return m_group.Get();
}

void AbstractRadioButton::SetGroup(RadioGroup* group) {
    m_group = util::WeakPtr<RadioGroup>(group);
}

void AbstractRadioButton::SetChecked(bool checked) {
    const util::LockPtr<RadioGroup> group(m_group);
    if (!group) {
        ApplyChecked(checked, true);
    } else if (checked) {
        group->Select(*this);
    } else if (IsChecked()) {
        group->SetSelected(RadioGroup::kNone);
    }
}

void AbstractRadioButton::Clicked() {
    if (!IsChecked()) {
        SetChecked(true);
    }
    AbstractButton::Clicked();
}

}  // namespace gui
