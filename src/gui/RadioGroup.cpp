#include "gui/RadioGroup.h"

#include <algorithm>

#include "gui/Layout.h"
#include "gui/RadioButton.h"

namespace gui {

RadioGroup::RadioGroup(int axis, float spacing) : Component("RadioGroup") {
    SetLayout(LayoutPtr(new ListLayout(axis, spacing)));
}

RadioGroup::~RadioGroup() = default;

void RadioGroup::AddButton(const AbstractRadioButtonPtr& button) {
    if (!button || std::find(m_buttons.begin(), m_buttons.end(), button) != m_buttons.end()) {
        return;
    }
    if (RadioGroup* old = button->GetGroup()) {
        old->RemoveButton(button);
    }
    m_buttons.push_back(button);
    button->SetGroup(this);
    Add(button);
    if (button->IsChecked()) {
        SetSelected(static_cast<int>(m_buttons.size()) - 1);
    }
}

AbstractRadioButtonPtr RadioGroup::AddOption(const util::String& text) {
    AbstractRadioButtonPtr button(new RadioButton(text));
    AddButton(button);
    return button;
}

void RadioGroup::RemoveButton(const AbstractRadioButtonPtr& button) {
    auto it = std::find(m_buttons.begin(), m_buttons.end(), button);
    if (it == m_buttons.end()) {
        return;
    }
    const int index = static_cast<int>(it - m_buttons.begin());
    const AbstractRadioButtonPtr keep = button;
    m_buttons.erase(it);
    button->SetGroup(nullptr);
    Remove(button);
    if (index == m_selected) {
        m_selected = kNone;
        GetOnChange().CallAll();
    } else if (index < m_selected) {
        --m_selected;
    }
}

void RadioGroup::SetSelected(int index) {
    if (index < 0 || index >= static_cast<int>(m_buttons.size())) {
        index = kNone;
    }
    if (index == m_selected) {
        return;
    }
    m_selected = index;
    // A copy: a button's callbacks may change the group.
    const std::vector<AbstractRadioButtonPtr> buttons = m_buttons;
    for (size_t i = 0; i < buttons.size(); ++i) {
        if (static_cast<int>(i) != index) {
            buttons[i]->SetCheckedByGroup(false);
        }
    }
    if (index != kNone) {
        buttons[index]->SetCheckedByGroup(true);
    }
    GetOnChange().CallAll();
}

void RadioGroup::Select(const AbstractRadioButton& button) {
    for (size_t i = 0; i < m_buttons.size(); ++i) {
        if (m_buttons[i].Get() == &button) {
            SetSelected(static_cast<int>(i));
            return;
        }
    }
}

AbstractRadioButtonPtr RadioGroup::GetSelectedButton() const {
    return m_selected == kNone ? AbstractRadioButtonPtr() : m_buttons[m_selected];
}

}  // namespace gui
