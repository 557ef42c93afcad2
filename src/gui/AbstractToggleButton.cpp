#include "gui/AbstractToggleButton.h"

namespace gui {

AbstractToggleButton::AbstractToggleButton(const util::String& name) : AbstractButton(name) {}

AbstractToggleButton::~AbstractToggleButton() = default;

void AbstractToggleButton::SetChecked(bool checked) {
    ApplyChecked(checked, true);
}

void AbstractToggleButton::Clicked() {
    SetChecked(!m_checked);
    AbstractButton::Clicked();
}

void AbstractToggleButton::ApplyChecked(bool checked, bool notify) {
    if (checked == m_checked) {
        return;
    }
    m_checked = checked;
    StateChanged();
    if (notify) {
        CheckedChanged();
        GetOnChange().CallAll();
    }
}

}  // namespace gui
